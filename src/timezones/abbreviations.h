#pragma once

#include <span>
#include <string_view>

namespace hy_wristlog {

/// A three-letter abbreviation and the zone key it stands for.
struct ZoneAbbreviation {
  std::string_view Abbreviation, Key;
};

/// The 85 pairs, in a fixed order. Loggers in the field carry these letters, which are not the usual short
/// names of the zones: rows may be added at the end, but none may ever change.
std::span<const ZoneAbbreviation> zoneAbbreviations();

}  // namespace hy_wristlog
