#include <algorithm>
#include <chrono>
#include <cmath>

#include "base/ascii.h"
#include "base/dates.h"
#include "base/numbers.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/guarded.h"

namespace hy_wristlog {
namespace {

bool continuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80; }

std::size_t firstCharacterLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && continuesCharacter(text[length])) ++length;
  return length;
}

bool isLongerThanOneCharacter(std::string_view text) {
  return !text.empty() && firstCharacterLength(text) < text.size();
}

/// Hands each field to `take`. After a delimiter the walk goes on one character further, not after all of it.
template <class Take>
void forEachField(std::string_view text, std::string_view delimiter, Take take) {
  std::size_t position = 0;
  do {
    const std::size_t end = std::min(text.find(delimiter, position), text.size());
    take(text.substr(position, end - position));
    position = end + firstCharacterLength(delimiter);
  } while (position < text.size());
}

/// Hands each piece that a delimiter ends to `take`, and the rest when it is longer than one character.
template <class Take>
void forEachLine(std::string_view text, std::string_view delimiter, Take take) {
  for (auto end = text.find(delimiter); end != std::string_view::npos; end = text.find(delimiter)) {
    take(text.substr(0, end));
    text.remove_prefix(end + delimiter.size());
  }
  if (isLongerThanOneCharacter(text)) take(text);
}

constexpr double LongestEventInterval = 50;  ///< milliseconds

/// Ends with the time or with an abort request.
void pauseUnlessAborted(platform::Platform& world, std::int32_t milliseconds, double eventInterval) {
  using Seconds = std::chrono::duration<double>;
  constexpr Seconds Rounding{1e-6};
  const double end = world.clock().timer() + milliseconds / 1000.0;
  while (!world.endsWaits()) {
    const Seconds left = Seconds{end - world.clock().timer()} - Rounding;
    if (left <= Seconds{0}) return;
    const Seconds round = std::min<Seconds>(left, std::chrono::duration<double, std::milli>{eventInterval});
    world.clock().sleep(std::chrono::ceil<std::chrono::milliseconds>(round));
    world.serveEvents();
  }
}

}  // namespace

GrowingArray<NumberOrText> Class_Tools::fncParseString(std::string_view text, std::int16_t lowerBound,
                                                       std::string_view delimiter) {
  GrowingArray<NumberOrText> fields;
  forEachField(text, delimiter, [&](std::string_view field) {
    NumberOrText& element = fields[fncRedimArray(fields, lowerBound)];
    if (isNumeric(field))
      element = leadingNumber(field);
    else
      element = std::string(field);
  });
  return fields;
}

GrowingArray<std::string> Class_Tools::fncParseStringKeepString(std::string_view text,
                                                                std::int16_t lowerBound,
                                                                std::string_view delimiter) {
  GrowingArray<std::string> fields;
  forEachField(text, delimiter, [&](std::string_view field) {
    if (!field.empty()) fields[fncRedimArray(fields, lowerBound)] = field;
  });
  return fields;
}

GrowingArray<std::string> Class_Tools::fncStringToLineArray(std::string_view text,
                                                            std::string_view delimiter) {
  return guarded("fncStringToLineArray", [&] {
    if (delimiter.empty()) fault::raise(fault::InvalidCall);
    GrowingArray<std::string> lines;
    forEachLine(text, delimiter, [&](std::string_view line) { lines[fncRedimArray(lines)] = line; });
    return lines;
  });
}

std::string Class_Tools::fncStripVbCrLf(std::string_view text) {
  std::string joined;
  forEachLine(text, "\r\n", [&](std::string_view line) {
    joined += ' ';
    joined += line;
  });
  return std::string(trimBlanks(joined));
}

std::string Class_Tools::fncStripBlanksForFileName(std::string_view text) {
  std::string name;
  for (const char c : text) {
    if (c == ' ' || c == '/' || c == ':')
      name += '_';
    else if (c > ' ' && c <= '~')
      name += c;
  }
  return name;
}

std::string Class_Tools::fncTrimNull(std::string_view text) { return std::string(cutAtNul(text)); }

double Class_Tools::fncTrueCeiling(double value) {
  const double floor = std::floor(value);
  return floor == value ? value : floor + 1.0;
}

std::int16_t Class_Tools::fncAgeDiff(double from, double to) {
  if (from == 0.0) return 0;
  return guarded("fncAgeDiff", [&] {
    const CivilTime born = civilFromDate(from);
    const std::int32_t year = civilFromDate(to).Year;
    const double birthday = dateSerial(year, born.Month, born.Day);
    const std::int32_t years = year - born.Year - (datePart(to) < birthday ? 1 : 0);
    return static_cast<std::int16_t>(years);
  });
}

void Class_Tools::subDelay(std::int32_t milliseconds, std::optional<double> eventInterval) {
  guarded("subDelay", [&] {
    platform::Platform& world = platform::current();
    platform::Clock& clock = world.clock();
    world.serveEvents();
    if (world.wakesOnInput())
      return pauseUnlessAborted(world, milliseconds, eventInterval.value_or(LongestEventInterval));
    if (!eventInterval) {
      if (milliseconds > 0) clock.sleep(std::chrono::milliseconds(milliseconds));
      return;
    }
    const double end = clock.timer() + milliseconds / 1000.0;
    double lastServed = clock.timer();
    for (;;) {
      const double now = clock.timer();
      if (now >= lastServed + *eventInterval / 1000.0) {
        lastServed = now;
        world.serveEvents();
      }
      if (clock.timer() >= end) return;
      clock.idle();
    }
  });
}

}  // namespace hy_wristlog
