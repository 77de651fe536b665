#pragma once

#include <string>

#include "recording/plotted_parts.h"

namespace wristlog {

/// The letters of the catalogue that `--zone` means: those themselves, small or capital, or those of the zone
/// that has the rules of a name in the tz database, "Europe/Paris", which is then told. Empty for an empty
/// text, which means the machine's own zone. Raises UnknownZone for a name, the machine's own too, that no
/// zone of the catalogue fits, and for a machine's zone that is not known. Any other text is given as it is.
std::string zoneLetters(const std::string& text);

/// The zone that `--tz` means, by the same letters and names; none for an empty text. Raises UnknownZone for
/// any other.
DrawnZone drawnZone(const std::string& text);

}  // namespace wristlog
