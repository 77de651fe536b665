#pragma once

#include <string>

#include "picture/days.h"
#include "picture/scales.h"

namespace wristlog::picture {

/// Pixels of the picture: a row has a lane for markers and signs above the plot.
struct RowShape {
  double Height = 64, Lane = 10, DayWidth = 432;

  double plot() const { return Height - Lane - 1; }
  double base() const { return Height - 1; }
  /// Lines keep off the base line, so that no activity can be seen in the dark.
  double lineBase() const { return base() - 2.5; }
  double linePlot() const { return lineBase() - Lane; }
};

/// The shape of a row in a picture of so many days, of which a row shows `daysAcross`: tall for a week, low
/// for a year.
RowShape rowShapeFor(std::size_t days, int daysAcross);

/// One day, from 0 to the row's `DayWidth` and from 0 to its height, as SVG elements: one path for everything
/// of a kind. `hatch` is the identifier of the hatching.
std::string drawDay(const Day& day, const PlottedRecording& recording, const Scales& scales,
                    const RowShape& row, const std::string& hatch);

const char* lineClass(LightColour colour);

}  // namespace wristlog::picture
