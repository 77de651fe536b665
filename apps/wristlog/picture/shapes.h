#pragma once

#include <string>

#include "picture/recording.h"

namespace wristlog::picture {

/// Small signs as path data, between `y` and `y + size` and centred on `x`. Lengths are pixels of the
/// picture.
std::string markerShape(int button, double x, double y, double size);
std::string signShape(Sign sign, double x, double y, double size);
/// The class that colours a sign.
const char* signClass(Sign sign);
const char* signWords(Sign sign);

/// The classes that fill, and the hatching's definition under an identifier of its own.
std::string hatchPattern(const std::string& id);

}  // namespace wristlog::picture
