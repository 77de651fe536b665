#include "varden/decode/event_log.h"

#include <algorithm>
#include <utility>

#include "base/dates.h"

namespace hy_wristlog {

void EventLog::restart(DateText dateText) {
  dateText_ = std::move(dateText);
  entries_.clear();
}

void EventLog::add(double time, const char* text, const char* suffix, std::span<const std::uint8_t> record) {
  if (time != UnknownDate) civilFromDate(time);
  const std::size_t length = std::min(record.size(), LongestRecord);
  Entry& entry = entries_.emplace_back(Entry{time, text, suffix, {}, static_cast<std::uint8_t>(length)});
  std::copy_n(record.begin(), length, entry.Record.begin());
}

std::string EventLog::words(std::size_t index) const {
  return std::string(entries_[index].Text) + entries_[index].Suffix;
}

std::string EventLog::recordHex(std::size_t index) const {
  const Entry& entry = entries_[index];
  std::string text;
  for (std::size_t i = 0; i < entry.Length; ++i) {
    constexpr char Digits[] = "0123456789ABCDEF";
    text += Digits[entry.Record[i] >> 4];
    text += Digits[entry.Record[i] & 15];
  }
  return text;
}

std::string EventLog::text(std::size_t index) const {
  const Entry& entry = entries_[index];
  const std::string time = entry.Time == UnknownDate ? "Time Unknown" : dateText_(entry.Time);
  std::string text;
  text.append("\"").append(time).append("\",\"").append(words(index)).append("\",\"");
  return text.append(recordHex(index)).append("\"");
}

}  // namespace hy_wristlog
