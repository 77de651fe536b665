#pragma once

#include <span>
#include <string_view>

namespace hy_wristlog::platform {

/// A zone key and the zone of the tz database that lives by the same clock today.
struct CatalogueZone {
  std::string_view Key;          ///< "Eastern Standard Time"
  std::string_view TzName;       ///< "America/New_York"
  std::string_view Description;  ///< "Eastern Time (US & Canada)"
};

/// The 85 zones that the library has abbreviations for.
std::span<const CatalogueZone> zoneCatalogue();

}  // namespace hy_wristlog::platform
