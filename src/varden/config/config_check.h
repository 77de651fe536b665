#pragma once

#include "tools/ini_file.h"

namespace hy_wristlog {

/// Checks the editable values of an INI file, all of which are there, one by one: raises OutOfRange for one
/// that a logger would keep as another value (a number with a fraction or out of range, a text that is too
/// long or has characters outside code page 1252) and for an epoch below one second, and what reading and
/// encoding the value raise (13, 6, OutOfRange). The description names the key. An empty "Unused 2" stands
/// for zeros.
void checkEditedConfig(const IniFile& file);

}  // namespace hy_wristlog
