#pragma once

#include <string>

#include "picture/recording.h"

namespace wristlog::picture {

/// "red light"
std::string lightName(LightColour colour);

/// Words with the unit behind them, if it is known.
std::string withUnit(const std::string& words, const char* between, const LightScale& scale);

}  // namespace wristlog::picture
