#pragma once

#include "tools/ini_file.h"

namespace hy_wristlog {

/// Checks one by one the editable values of an INI file, which must all be there. Raises OutOfRange for a
/// value that a logger would keep as another one (a number with a fraction or out of range, a text that is
/// too long or has characters outside code page 1252) and for an epoch below one second. Raises TypeMismatch,
/// Overflow and OutOfRange as reading and encoding the value do. The description names the key. An empty
/// "Unused 2" stands for zeros.
void checkEditedConfig(const IniFile& file);

}  // namespace hy_wristlog
