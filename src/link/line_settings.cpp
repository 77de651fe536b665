#include "link/line_settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

namespace hy_wristlog {
namespace {

using platform::ParityLetters;
using platform::StopBitTexts;

constexpr std::int32_t BaudRates[] = {110,   300,   600,   1200,  2400,  4800,   9600,   14400,
                                      19200, 28800, 38400, 56000, 57600, 115200, 128000, 256000};
constexpr std::int32_t FewestDataBits = 4, MostDataBits = 8;

/// The entry that stands for `index`, counted from 1; null when there is none.
template <class Table>
auto entry(const Table& table, std::int32_t index) {
  return index >= 1 && index <= std::ssize(table) ? &table[static_cast<std::size_t>(index) - 1] : nullptr;
}

/// The place of `value` in the table; no value when it is not there.
template <class Table, class Value>
std::optional<std::size_t> placeOf(const Table& table, const Value& value) {
  const auto found = std::find(std::begin(table), std::end(table), value);
  if (found == std::end(table)) return std::nullopt;
  return static_cast<std::size_t>(found - std::begin(table));
}

std::optional<std::int32_t> wholeNumber(std::string_view text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

std::optional<std::string> lineSettingsText(std::int32_t baudRate, std::int32_t dataBits, std::int32_t parity,
                                            std::int32_t stopBits) {
  const auto* baud = entry(BaudRates, baudRate);
  const auto* letter = entry(ParityLetters, parity);
  const auto* stop = entry(StopBitTexts, stopBits);
  if (baud == nullptr || letter == nullptr || stop == nullptr || dataBits < FewestDataBits ||
      dataBits > MostDataBits)
    return std::nullopt;
  return std::to_string(*baud) + ',' + *letter + ',' + std::to_string(dataBits) + ',' + std::string(*stop);
}

std::optional<platform::LineSettings> parseLineSettings(std::string_view text) {
  std::array<std::string_view, 4> fields;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const bool last = i + 1 == fields.size();
    const std::size_t end = last ? text.size() : text.find(',');
    if (end == std::string_view::npos) return std::nullopt;
    fields[i] = text.substr(0, end);
    text.remove_prefix(last ? end : end + 1);
  }
  const auto baud = wholeNumber(fields[0]);
  const auto parity = fields[1].size() == 1 ? placeOf(ParityLetters, fields[1].front()) : std::nullopt;
  const auto dataBits = wholeNumber(fields[2]);
  const auto stop = placeOf(StopBitTexts, fields[3]);
  if (!baud || !placeOf(BaudRates, *baud) || !parity || !dataBits || *dataBits < FewestDataBits ||
      *dataBits > MostDataBits || !stop)
    return std::nullopt;
  return platform::LineSettings{*baud, static_cast<platform::LineParity>(*parity), *dataBits,
                                static_cast<platform::LineStopBits>(*stop)};
}

}  // namespace hy_wristlog
