#pragma once

#include <optional>
#include <string_view>

namespace hy_wristlog::platform {

/// The rule text behind the data of a TZif file (RFC 9636, section 3.3). None for what is no such file, is
/// cut off, has version 1 or an empty footer.
std::optional<std::string_view> tzifFooter(std::string_view file);

}  // namespace hy_wristlog::platform
