#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/dates.h"
#include "hy_wristlog/series.h"
#include "picture/recording.h"

/// What the pictures of every family of loggers have in common.
namespace wristlog {

using hy_wristlog::UnknownDate;

/// Conversions between the library's dates and the pictures' moments.
std::int64_t unixSeconds(double date);
double dateOf(std::int64_t unixSeconds);

inline float plotted(std::int32_t value) { return value >= 0 ? static_cast<float>(value) : picture::NoValue; }
inline float plotted(float value) { return std::isfinite(value) && value >= 0 ? value : picture::NoValue; }

template <class Values>
picture::Series seriesOf(const Values& values) {
  picture::Series series(values.size());
  std::transform(values.begin(), values.end(), series.begin(), [](auto value) { return plotted(value); });
  return series;
}

/// A logger's model and serial number; of an unknown model the number alone.
std::string loggerWords(const std::string& model, const std::string& serialNumber);

/// Adds a fact; does nothing for an empty value.
void addFact(picture::PlottedRecording& plot, const char* label, const std::string& value);
/// Adds the facts on the recording's epochs, begin and end.
void addPeriodFacts(picture::PlottedRecording& plot);
void addMarkers(picture::PlottedRecording& plot, const hy_wristlog::TristateSeries& series, int button);

/// A zone of the catalogue, by its letters, and the name that it was asked for by. Both are empty for none.
struct DrawnZone {
  std::string Letters, Name;
};
/// Lets a recording be drawn in the time of another zone, if its clocks differ from the logger's.
void drawIn(picture::PlottedRecording& plot, const DrawnZone& zone);

void addResets(picture::PlottedRecording& plot, int resets);

/// A date's day as "2026-03-02"; empty when the date is unknown.
std::string dayWords(double date);
/// A height or a weight; empty when it is unknown.
std::string sizeWords(float value);

template <class Logger>
void addSubjectFacts(picture::PlottedRecording& plot, const Logger& logger) {
  addFact(plot, "Subject", logger.Get_SubjectIdentity());
  addFact(plot, "Initials", logger.Get_SubjectInitials());
  addFact(plot, "Gender", logger.Get_SubjectGender());
  addFact(plot, "Date of birth", dayWords(logger.Get_SubjectDOB()));
  addFact(plot, "Height", sizeWords(logger.Get_SubjectHeight()));
  addFact(plot, "Weight", sizeWords(logger.Get_SubjectWeight()));
}

}  // namespace wristlog
