#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Zones of the tz database as the catalogue has them.
namespace hy_wristlog::engineering {

struct CatalogueFit {
  /// The zone with the same standard offset and the same changes in the years to come, as "WES" and
  /// "(GMT+01:00) Amsterdam"; empty when the catalogue has none.
  std::string Abbreviation, DisplayName;
  /// When it has none: the three zones whose clocks are nearest over the year, as "AUE (GMT+10:00) Canberra".
  std::vector<std::string> Nearest;
};

/// How the catalogue fits a name in the tz database, "Europe/Paris"; none for a name that this does not have.
/// Raises NoZones when the system has no zones.
std::optional<CatalogueFit> catalogueFit(std::string_view name);

/// The name of the machine's own zone; empty when it has none in the tz database.
std::string localZoneName();

/// Why the machine's own zone is not known, in a sentence; empty when it is.
std::string localZoneTrouble();

/// Whether the catalogue has these three letters. Raises NoZones as above.
bool isInCatalogue(const std::string& abbreviation);

}  // namespace hy_wristlog::engineering
