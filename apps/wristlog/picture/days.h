#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "picture/local_time.h"
#include "picture/recording.h"

namespace wristlog::picture {

inline constexpr std::size_t MostLightLines = 3;

/// What a column of the picture shows: the means of the values in its minutes of the day.
struct Column {
  float Activity = NoValue, Steps = NoValue;
  std::array<float, MostLightLines> Light{NoValue, NoValue, NoValue};
  bool Covered = false;   ///< the recording reaches over it
  bool OffWrist = false;  ///< at least half of it

  bool hasValue() const;
};

/// Sum and count of the values of a series.
struct Total {
  double Sum = 0;
  std::int64_t Count = 0;

  void add(float value);
  double mean() const { return Count > 0 ? Sum / static_cast<double>(Count) : NoValue; }
};

/// Sums over all epochs that begin in a stretch of time, independent of columns. Activity and light leave out
/// the epochs off the wrist.
struct Totals {
  std::int64_t Epochs = 0, Valued = 0, OffWrist = 0;
  Total Activity, Steps;
  std::array<Total, MostLightLines> Light;
  std::array<std::int64_t, 2> Markers{};

  void add(const Totals& other);
};

struct ClockChange {
  std::size_t Column = 0;  ///< the time that the clocks showed when they were changed
  std::int64_t Seconds = 0;
};

/// A day of a recording, from midnight or from another hour of local time on. An hour that the clocks skip
/// has no covered columns. In an hour that they repeat a column shows the larger of its two values.
struct Day {
  std::int64_t Number = 0;  ///< the date on which it begins, in days from 1970-01-01
  std::vector<Column> Columns;
  std::array<std::vector<std::size_t>, 2> Markers;  ///< columns with a marker, by button, each once
  std::vector<std::pair<std::size_t, Sign>> Signs;  ///< in the order of their columns
  std::vector<ClockChange> Changes;
  picture::Totals Totals;
};

/// A recording cut into local days. Every day from the first to the last is there.
struct RecordedDays {
  std::size_t ColumnsPerDay = 0;
  std::vector<Day> Days;
  picture::Totals Totals;
  bool Cut = false;  ///< the recording is longer than `MostDays`
};

inline constexpr std::int64_t MostDays = 4000;

/// Days that begin at a local hour, 0 to 23.
RecordedDays daysOf(const PlottedRecording& recording, int startHour = 0);

}  // namespace wristlog::picture
