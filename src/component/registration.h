#pragma once

namespace hy_wristlog::component {

/// Writes each class into the settings store: under "CLSID\{...}" its name, "ProgID" and "InprocServer32"
/// with the library's file and "ThreadingModel", under its name "CLSID". False when the store refuses, which
/// then holds nothing of them.
bool registerClasses();
/// Takes it back, with keys that are empty then. False when the store refuses.
bool unregisterClasses();

}  // namespace hy_wristlog::component
