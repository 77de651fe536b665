#include "picture/shapes.h"

#include <initializer_list>

#include "picture/markup.h"

namespace wristlog::picture {
namespace {

struct Point {
  double X, Y;
};

std::string closed(std::initializer_list<Point> points) {
  std::string data;
  for (const Point& point : points)
    data += (data.empty() ? "M" : "L") + number(point.X) + " " + number(point.Y);
  return data + "z";
}

std::string cross(double x, double y, double size) {
  const double half = size / 2;
  return "M" + number(x - half) + " " + number(y) + "l" + number(size) + " " + number(size) + "M" +
         number(x + half) + " " + number(y) + "l" + number(-size) + " " + number(size);
}

/// The outline of an almost empty battery.
std::string battery(double x, double y, double size) {
  const double half = size * 0.7;
  return closed({{x - half, y + 1}, {x + half, y + 1}, {x + half, y + size - 1}, {x - half, y + size - 1}}) +
         "M" + number(x + half + 1) + " " + number(y + size * 0.4) + "v" + number(size * 0.3) + "M" +
         number(x - half + 1.5) + " " + number(y + 2.5) + "v" + number(size - 5);
}

}  // namespace

std::string markerShape(int button, double x, double y, double size) {
  const double half = size * 0.55;
  return button == 2 ? closed({{x - half, y + size}, {x + half, y + size}, {x, y}})
                     : closed({{x - half, y}, {x + half, y}, {x, y + size}});
}

std::string signShape(Sign sign, double x, double y, double size) {
  const double half = size / 2;
  switch (sign) {
    case Sign::None:
      return {};
    case Sign::Reset:
      return cross(x, y, size);
    case Sign::LowBattery:
      return battery(x, y, size);
    case Sign::MemoryFull:
      return closed({{x - half, y}, {x + half, y}, {x + half, y + size}, {x - half, y + size}});
    case Sign::Damage:
      return closed({{x, y}, {x + half, y + half}, {x, y + size}, {x - half, y + half}});
  }
  return {};
}

const char* signClass(Sign sign) {
  return sign == Sign::MemoryFull || sign == Sign::Damage ? "a-sign a-solid" : "a-sign";
}

const char* signWords(Sign sign) {
  switch (sign) {
    case Sign::None:
      return "";
    case Sign::Reset:
      return "Reset";
    case Sign::LowBattery:
      return "Low battery";
    case Sign::MemoryFull:
      return "Memory full";
    case Sign::Damage:
      return "Damaged data";
  }
  return "";
}

std::string hatchPattern(const std::string& id) {
  return "<pattern id=\"" + id +
         "\" width=\"5\" height=\"5\" patternUnits=\"userSpaceOnUse\"><rect class=\"a-tint\" width=\"5\" "
         "height=\"5\"/><path class=\"a-hatch\" d=\"M-1 1l2-2M0 5l5-5M4 6l2-2\"/></pattern>";
}

}  // namespace wristlog::picture
