#include "picture/light_words.h"

namespace wristlog::picture {

std::string lightName(LightColour colour) {
  switch (colour) {
    case LightColour::Lux:
      return "light";
    case LightColour::Red:
      return "red light";
    case LightColour::Green:
      return "green light";
    case LightColour::Blue:
      return "blue light";
    case LightColour::Frequency:
      return "off-wrist frequency";
  }
  return {};
}

std::string withUnit(const std::string& words, const char* between, const LightScale& scale) {
  return scale.Unit.empty() ? words : words + between + scale.Unit;
}

}  // namespace wristlog::picture
