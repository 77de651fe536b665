#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/ini_file.h"
#include "varden/record.h"

/// The configuration under the labels that engineers know it by.
namespace hy_wristlog {

inline constexpr std::string_view ConfigDataSection = "Config Data";
inline constexpr std::string_view ReadOnlyConfigSection = "Read Only Config Data";
inline constexpr std::string_view ConfigBytesSection = "Configuration Bytes";
inline constexpr std::string_view RawConfigBytesKey = "Raw Config Bytes";

/// Labels and values in the order of the files.
using ConfigItems = std::vector<std::pair<std::string, std::string>>;

/// All values but the raw bytes, enumerations in words. Raises InvalidCall for dates outside the years 100 to
/// 9999.
ConfigItems configInWords(const VardenRecord& record);

/// The keys that may be edited, as an INI file holds them: enumerations as their numbers.
ConfigItems editableConfig(const VardenRecord& record);
/// The keys that tell more of the logger and are not read back.
ConfigItems readOnlyConfig(const VardenRecord& record);

/// Takes the editable values of an INI file into the record. A missing number counts as 0 (an epoch as 1) and
/// a missing text as empty (an abbreviation as "UNK"). A date that is missing or blank stays. Raises
/// TypeMismatch for a value of the wrong form, which includes a date that is longer or shorter than its
/// pattern, and Overflow for a number that does not fit. The description names the key.
void readEditableConfig(const IniFile& file, VardenRecord& record);

}  // namespace hy_wristlog
