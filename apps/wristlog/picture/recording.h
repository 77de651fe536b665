#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

/// The plain data that pictures are drawn from, whatever logger they come from. Moments are UTC seconds since
/// 1970, texts UTF-8 of any content.
namespace wristlog::picture {

/// One element an epoch.
using Series = std::vector<float>;
inline constexpr float NoValue = std::numeric_limits<float>::quiet_NaN();

/// What a line of light tells; an internal mode of a Vivid records a frequency in its place.
enum class LightColour : std::uint8_t { Lux, Red, Green, Blue, Frequency };

struct LightLine {
  LightColour Colour = LightColour::Lux;
  Series Values;
};

/// Light is drawn on a logarithmic scale, between two powers of ten.
struct LightScale {
  std::string Unit;  ///< empty: not known
  int LowestPower = -1, HighestPower = 5;
};

/// From a moment on local time is so many minutes ahead of UTC.
struct ClockOffset {
  std::int64_t From = 0;
  std::int32_t Minutes = 0;

  bool operator==(const ClockOffset&) const = default;
};

struct Marker {
  std::int64_t Time = 0;
  int Button = 1;  ///< 1 or 2
};

/// How an event is shown in the picture.
enum class Sign : std::uint8_t { None, Reset, LowBattery, MemoryFull, Damage };
inline constexpr std::size_t Signs = 5;

struct Event {
  std::optional<std::int64_t> Time;  ///< none: drawn at the end of the recording
  std::string Words;
  Sign Shown = Sign::None;
};

/// How many events, from the first on, are listed in words.
inline constexpr std::size_t MostListedEvents = 2000;

struct Fact {
  std::string Label, Value;
};

/// How the rows of a picture are laid out.
struct Layout {
  int DaysAcross = 2;        ///< 1: a row shows a day; 2: a day and the day that follows it
  int StartHour = 0;         ///< the local hour at which rows begin
  double ActivityScale = 0;  ///< counts an epoch at a row's top; 0: what fits the recording
};

struct PlottedRecording {
  std::string Subject;
  std::string Logger;     ///< model and serial number
  bool IsPart = false;    ///< only the beginning of a recording
  std::string Zone;       ///< the logger's
  std::string DrawnZone;  ///< another zone whose time is drawn; empty: the logger's
  std::int64_t Start = 0;
  std::int32_t Epoch = 0;  ///< seconds; with 0 there is nothing to draw
  std::size_t Epochs = 0;
  std::vector<ClockOffset> Offsets;  ///< in order of time; UTC before the first

  // A series is empty when the logger did not record it; single elements without a value are NoValue.
  Series Activity;
  Series Steps;
  std::vector<LightLine> Light;
  LightScale LightAxis;
  std::vector<bool> OffWrist;

  std::vector<Marker> Markers;
  std::vector<Event> Events;
  std::size_t EventsLeftOut = 0;  ///< after the listed ones; they have no sign either
  std::vector<Fact> Facts;
  std::vector<std::string> Warnings;
  picture::Layout Layout;

  std::int64_t end() const { return Start + static_cast<std::int64_t>(Epochs) * Epoch; }
};

}  // namespace wristlog::picture
