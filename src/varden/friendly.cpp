#include "varden/friendly.h"

#include "varden/config/wire_codes.h"

namespace hy_wristlog {

std::string fncFriendlyAcqModeFormat(enmVardenLoggingMode mode) { return std::string(friendlyText(mode)); }
std::string fncFriendlyButtonFormat(enmButtonMap map) { return std::string(friendlyText(map)); }
std::string fncFriendlyTimeFormat(enmTimeFormat format) { return std::string(friendlyText(format)); }
std::string fncFriendlyMemFullFormat(enmMemoryFull flag) { return std::string(friendlyText(flag)); }
std::string fncFriendlyDateFormat(enmDateFormat format) { return std::string(friendlyText(format)); }
std::string fncFriendlyLowPowerFormat(enmLowPowerShutdown flag) { return std::string(friendlyText(flag)); }
std::string fncFriendlyDataAvailableFormat(enmDataAvailable flag) { return std::string(friendlyText(flag)); }

std::string fncFriendlyKRmodel(std::uint8_t model) {
  if (model == 1) return "Tolka (1)";
  if (model == 2) return "Quillander (2)";
  return "Unknown (not Varden)";
}

}  // namespace hy_wristlog
