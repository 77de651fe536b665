#pragma once

#include <cstdint>
#include <vector>

#include "platform/platform.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// How long one character occupies the line: start, data, parity and stop bits.
nanoseconds characterTime(const platform::LineSettings& settings);

struct HeardCharacter {
  std::uint8_t Byte = 0;
  bool Framing = false, Parity = false;
};

/// What a receiver makes of one character sent with other settings: the waveform is sampled in the middle of
/// the receiver's own bits, so a wrong speed gives garbage, several characters, or none. The line rests after
/// each character.
std::vector<HeardCharacter> hear(std::uint8_t byte, const platform::LineSettings& sender,
                                 const platform::LineSettings& receiver);

/// True when the receiver hears exactly what the sender sends. The number of stop bits does not matter.
bool understandEachOther(const platform::LineSettings& a, const platform::LineSettings& b);

}  // namespace hy_wristlog::simulator
