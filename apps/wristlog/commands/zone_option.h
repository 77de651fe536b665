#pragma once

#include <string>

namespace wristlog {

/// The letters of the catalogue that `--zone` means: those themselves, small or capital, or those of the zone
/// that has the rules of a name in the tz database, "Europe/Paris", which is then told. Empty for an empty
/// text, which means the machine's own zone. Raises UnknownZone for a name, the machine's own too, that no
/// zone of the catalogue fits. Any other text is given as it is.
std::string zoneLetters(const std::string& text);

}  // namespace wristlog
