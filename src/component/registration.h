#pragma once

namespace hy_wristlog::component {

/// Writes each class into the settings store: under "CLSID\{...}" its name, "ProgID" and "InprocServer32"
/// with the library's file and "ThreadingModel"; under its name "CLSID". False when the store refuses: then
/// nothing of the classes stays in it.
bool registerClasses();
/// Removes the classes again, and the keys above them that are empty then. False when the store refuses.
bool unregisterClasses();

}  // namespace hy_wristlog::component
