#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "hy_wristlog/enumerations.h"

/// The enumerations of the config block. Each of their values (a row) has a code on the wire and a text for
/// engineers. They are the logging mode, the time and date formats, the button maps and the three flags.
namespace hy_wristlog {

/// The unknown row for a code that has none.
template <class Row>
Row rowOfWire(std::int32_t wire);

/// No value for the unknown row and for values outside the enumeration.
template <class Row>
std::optional<std::uint8_t> wireOfRow(Row row);

/// "Unknown" for the unknown row and for values outside the enumeration.
template <class Row>
std::string_view friendlyText(Row row);

}  // namespace hy_wristlog
