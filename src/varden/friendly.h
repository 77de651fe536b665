#pragma once

#include <cstdint>
#include <string>

#include "hy_wristlog/enumerations.h"

/// The values of a logger's record in the words of engineers' files and pages. A value without words gives
/// "Unknown".
namespace hy_wristlog {

std::string fncFriendlyAcqModeFormat(enmVardenLoggingMode mode);
std::string fncFriendlyButtonFormat(enmButtonMap map);
std::string fncFriendlyTimeFormat(enmTimeFormat format);
std::string fncFriendlyMemFullFormat(enmMemoryFull flag);
std::string fncFriendlyDateFormat(enmDateFormat format);
std::string fncFriendlyLowPowerFormat(enmLowPowerShutdown flag);
std::string fncFriendlyDataAvailableFormat(enmDataAvailable flag);
/// "Unknown (not Varden)" for other models than 1 and 2.
std::string fncFriendlyKRmodel(std::uint8_t model);

}  // namespace hy_wristlog
