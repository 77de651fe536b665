#include "simulator/uart.h"

#include <bit>
#include <cmath>

namespace hy_wristlog::simulator {

using platform::LineParity;
using platform::LineSettings;
using platform::LineStopBits;

namespace {

bool parityBit(unsigned data, LineParity parity) {
  const bool odd = std::popcount(data) % 2 != 0;
  switch (parity) {
    case LineParity::Even:
      return odd;
    case LineParity::Odd:
      return !odd;
    case LineParity::Mark:
      return true;
    case LineParity::None:
    case LineParity::Space:
      break;
  }
  return false;
}

double stopBits(LineStopBits bits) {
  return bits == LineStopBits::Two ? 2.0 : bits == LineStopBits::OneAndHalf ? 1.5 : 1.0;
}

unsigned mask(const LineSettings& settings) { return (1U << settings.DataBits) - 1U; }

std::vector<bool> waveform(std::uint8_t byte, const LineSettings& sender) {
  const unsigned data = byte & mask(sender);
  std::vector<bool> levels{false};
  for (int bit = 0; bit < sender.DataBits; ++bit) levels.push_back(((data >> bit) & 1U) != 0);
  if (sender.Parity != LineParity::None) levels.push_back(parityBit(data, sender.Parity));
  return levels;
}

/// The line's level at a time counted in the sender's bits; it rests high.
bool levelAt(const std::vector<bool>& levels, double time) {
  if (time < 0 || time >= static_cast<double>(levels.size())) return true;
  return levels[static_cast<std::size_t>(time)];
}

/// The first falling edge not before a time; negative when there is none.
double fallingEdge(const std::vector<bool>& levels, double from) {
  for (auto i = static_cast<std::size_t>(std::ceil(from)); i < levels.size(); ++i)
    if (!levels[i] && levelAt(levels, static_cast<double>(i) - 0.5)) return static_cast<double>(i);
  return -1;
}

}  // namespace

nanoseconds characterTime(const LineSettings& settings) {
  const double bits = 1.0 + settings.DataBits + (settings.Parity == LineParity::None ? 0.0 : 1.0) +
                      stopBits(settings.StopBits);
  return nanoseconds{std::llround(bits * 1e9 / settings.Baud)};
}

bool understandEachOther(const LineSettings& a, const LineSettings& b) {
  return a.Baud == b.Baud && a.Parity == b.Parity && a.DataBits == b.DataBits;
}

std::vector<HeardCharacter> hear(std::uint8_t byte, const LineSettings& sender,
                                 const LineSettings& receiver) {
  const std::vector<bool> levels = waveform(byte, sender);
  const double step = static_cast<double>(sender.Baud) / receiver.Baud;
  std::vector<HeardCharacter> heard;
  for (double edge = 0; edge >= 0;) {
    double sample = edge + 0.5 * step;
    if (levelAt(levels, sample)) {
      edge = fallingEdge(levels, sample);
      continue;
    }
    HeardCharacter character;
    unsigned data = 0;
    for (int bit = 0; bit < receiver.DataBits; ++bit)
      if (levelAt(levels, sample += step)) data |= 1U << bit;
    if (receiver.Parity != LineParity::None)
      character.Parity = levelAt(levels, sample += step) != parityBit(data, receiver.Parity);
    character.Framing = !levelAt(levels, sample += step);
    character.Byte = static_cast<std::uint8_t>(data);
    heard.push_back(character);
    edge = fallingEdge(levels, sample);
  }
  return heard;
}

}  // namespace hy_wristlog::simulator
