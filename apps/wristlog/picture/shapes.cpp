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

std::string pictureStyle() {
  return R"(.actogram{font-family:system-ui,"Segoe UI","Liberation Sans","DejaVu Sans",sans-serif}
.a-text{fill:#1d2733;font-size:12px}
.a-title{font-size:20px;font-weight:600}
.a-small{font-size:11px;fill:#52606d}
.a-tiny{font-size:9px;fill:#52606d}
.a-label{font-weight:600}
.a-warning{fill:#a3330c;font-weight:600}
.a-weekend{fill:#0b62a4}
.a-right{text-anchor:end}
.a-middle{text-anchor:middle}
.a-paper{fill:#fff}
.a-grid{fill:none;stroke:#dfe4e9;stroke-width:.6}
.a-midnight{fill:none;stroke:#9aa5b1;stroke-width:1}
.a-frame{fill:none;stroke:#9aa5b1;stroke-width:.8}
.a-bars{fill:#3b5268;stroke:#3b5268;stroke-width:.6}
.a-cut{fill:none;stroke:#e0218a;stroke-width:1.6}
.a-line{fill:none;stroke-width:1.1;stroke-linejoin:round}
.a-lux{stroke:#e06c00}
.a-red{stroke:#d1350f}
.a-green{stroke:#00916a}
.a-blue{stroke:#0a84d6}
.a-steps{stroke:#00916a}
.a-tint{fill:#f3e3f0}
.a-hatch{fill:none;stroke:#b0549b;stroke-width:.9}
.a-gap{fill:#d9dee4}
.a-gapline{fill:none;stroke:#7b8794;stroke-width:.8;stroke-dasharray:2 2}
.a-marker1{fill:#0b62a4;stroke:#0b62a4;stroke-width:.8}
.a-marker2{fill:#fff;stroke:#0b62a4;stroke-width:1.2}
.a-sign{fill:none;stroke:#c81e1e;stroke-width:1.6}
.a-solid{fill:#c81e1e}
.a-drop{fill:none;stroke:#c81e1e;stroke-width:.8;stroke-dasharray:3 2}
.a-change{fill:none;stroke:#1d2733;stroke-width:.9;stroke-dasharray:1 1.5}
@media screen and (prefers-color-scheme:dark){
.a-text{fill:#e4e8ec}
.a-small,.a-tiny{fill:#a9b4bf}
.a-warning{fill:#ffa07a}
.a-weekend{fill:#7cc4ff}
.a-paper{fill:#14191f}
.a-grid{stroke:#2c353f}
.a-midnight,.a-frame{stroke:#6b7886}
.a-bars{fill:#9db4c8;stroke:#9db4c8}
.a-cut{stroke:#ff6ec0}
.a-lux{stroke:#ff9a2e}
.a-red{stroke:#ff6a4d}
.a-green,.a-steps{stroke:#2fd6a3}
.a-blue{stroke:#4db1ff}
.a-tint{fill:#3a2636}
.a-hatch{stroke:#d98cc6}
.a-gap{fill:#333d48}
.a-gapline{stroke:#8c99a6}
.a-marker1{fill:#7cc4ff;stroke:#7cc4ff}
.a-marker2{fill:#14191f;stroke:#7cc4ff}
.a-sign,.a-drop{stroke:#ff7676}
.a-solid{fill:#ff7676}
.a-change{stroke:#e4e8ec}
}
)";
}

}  // namespace wristlog::picture
