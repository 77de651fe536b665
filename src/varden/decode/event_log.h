#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <string>

namespace hy_wristlog {

/// What a logger wrote between its samples, in order. A recording can have more than a million entries, so
/// their texts are made on demand.
class EventLog {
 public:
  using DateText = std::function<std::string(double)>;

  /// Empties the log. `dateText` writes the dates of the entries to come.
  void restart(DateText dateText);
  /// `time` is `UnknownDate` when the record does not tell it. The entry's words are `text` and `suffix`,
  /// which must outlive the log. Raises InvalidCall for a date outside the years 100 to 9999.
  void add(double time, const char* text, const char* suffix, std::span<const std::uint8_t> record);

  std::size_t size() const { return entries_.size(); }
  double time(std::size_t index) const { return entries_[index].Time; }
  std::string words(std::size_t index) const;
  std::string recordHex(std::size_t index) const;
  /// Time, words and the record in hexadecimal: three fields in quotes with commas between them.
  std::string text(std::size_t index) const;

 private:
  static constexpr std::size_t LongestRecord = 7;

  struct Entry {
    double Time;
    const char *Text, *Suffix;
    std::array<std::uint8_t, LongestRecord> Record;
    std::uint8_t Length;
  };

  DateText dateText_;
  std::deque<Entry> entries_;
};

}  // namespace hy_wristlog
