#pragma once

#include <optional>
#include <string_view>

namespace hy_wristlog::platform {

/// The rule text after the data of a TZif file (RFC 9636, section 3.3). None for other files and for one that
/// is cut off, has version 1 or an empty footer.
std::optional<std::string_view> tzifFooter(std::string_view file);

/// Whether the data of a TZif file tell of changes of the clocks that a rule for every year does not give:
/// those after 2038, up to which the files of some systems repeat the rule. False for other files.
bool tzifOutlivesRule(std::string_view file);

}  // namespace hy_wristlog::platform
