#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>

/// What every column of a recording's tables and every field of its recording.json means. The headings of the
/// tables and datapackage.json are made from it, and docs/recordings.md is held against it.
namespace wristlog {

enum class FieldType : std::uint8_t {
  Text,
  Integer,
  Number,
  Boolean,
  Flag,         ///< 1 or 0 in a table
  Utc,          ///< ISO 8601 in UTC, with "Z"
  Local,        ///< ISO 8601 with the offset from UTC
  Clock,        ///< ISO 8601 of a local clock, without an offset
  UtcAndCount,  ///< two fields: NAME as `Utc`, NAME_date as days since 1899-12-30
  Day,
  TimeOfDay,
};

/// The loggers in whose files a field stands.
enum class Family : std::uint8_t { Every, Varden, Pendrel };

inline constexpr double Unbounded = std::numeric_limits<double>::infinity();

struct Field {
  std::string_view Name;  ///< "subject.age" is the member "age" of "subject"
  FieldType Type;
  std::string_view Meaning;
  std::string_view Empty{};  ///< what an empty cell or null means; empty: there is always a value
  Family In = Family::Every;
  std::string_view Unit{};                      ///< empty: none, or none that is known
  double Least = -Unbounded, Most = Unbounded;  ///< the range of a number
};

/// The columns of series.csv in their order.
enum class SeriesColumn : std::uint8_t {
  Logger,
  Participant,
  LocalTime,
  Utc,
  Activity,
  RawActivity,
  Steps,
  Light,
  Red,
  Green,
  Blue,
  OffWristFrequency,
  RedCurrent,
  GreenCurrent,
  BlueCurrent,
  Marker,
  Marker2,
  OffWrist,
};

std::span<const Field> seriesFields();
std::span<const Field> eventFields();
std::span<const Field> recordingFields();

/// The names with commas between them and a line end.
std::string headingOf(std::span<const Field> fields);
/// A number's range as "0 to 255" or "0 or more"; empty when it has none.
std::string rangeOf(const Field& field);

}  // namespace wristlog
