#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace hy_wristlog {

/// Baud, parity, data bits and stop bits as the serial control takes them ("57600,n,8,2"), from their
/// indices. No value when an index lies outside its table.
std::optional<std::string> lineSettingsText(std::int32_t baudRate, std::int32_t dataBits, std::int32_t parity,
                                            std::int32_t stopBits);

/// The settings of a text; no value when lineSettingsText cannot have made it.
std::optional<platform::LineSettings> parseLineSettings(std::string_view text);

}  // namespace hy_wristlog
