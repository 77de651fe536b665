#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "simulator/bench.h"

namespace hy_wristlog::simulator {

using namespace std::chrono_literals;

inline constexpr platform::LineSettings LoggerLine{57600, platform::LineParity::None, 8,
                                                   platform::LineStopBits::Two};

/// CRC-16/XMODEM once more, by nibbles, so that a slip in the simulator's own does not go unseen.
inline unsigned wireCrc(const std::string& bytes) {
  unsigned crc = 0;
  for (const char c : bytes)
    for (const int shift : {4, 0}) {
      const unsigned top = ((crc >> 12) ^ (static_cast<std::uint8_t>(c) >> shift)) & 15U;
      crc = ((crc << 4) ^ (top * 0x1021U)) & 0xFFFFU;
    }
  return crc;
}

inline std::string valueLine(const std::string& value) {
  char digits[8];
  std::snprintf(digits, sizeof digits, "#%04X", wireCrc(value));
  return value + digits + "\r>";
}

/// An XMODEM frame.
inline std::string frameOf(unsigned number, const std::string& data) {
  const unsigned crc = wireCrc(data);
  return std::string{data.size() == 1024 ? '\x02' : '\x01'} + static_cast<char>(number) +
         static_cast<char>(255 - number) + data + static_cast<char>(crc >> 8) + static_cast<char>(crc & 255U);
}

inline std::string textOf(const auto& bytes) { return {bytes.begin(), bytes.end()}; }
inline std::string imageOf(SimulatedLogger& logger) { return textOf(logger.block().image()); }

/// Somebody at the PC's end of the line of a bench.
template <class Bench>
struct FarEnd {
  explicit FarEnd(Bench bench)
      : Lab(std::move(bench)), Port(Lab.World->serialPorts().open(Lab.Dock->comPort())) {
    Port->setDtr(true);
    Port->setRts(true);
  }
  void wait(int milliseconds) { Lab.World->clock().sleep(std::chrono::milliseconds{milliseconds}); }
  /// Sends, waits, and returns what has come by then.
  std::string exchange(const std::string& bytes, int milliseconds = 100) {
    Port->write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    wait(milliseconds);
    std::string text(70000, '\0');
    text.resize(Port->read({reinterpret_cast<std::uint8_t*>(text.data()), text.size()}));
    return text;
  }

  Bench Lab;
  std::unique_ptr<platform::SerialPort> Port;
};

/// With the logger awake.
struct Wire : FarEnd<Bench> {
  explicit Wire(const BenchOptions& options = vividBenchOptions()) : FarEnd(makeBench(options)) {
    Port->configure(LoggerLine);
    wait(100);
    Port->setRts(false);
    wait(200);
  }
};

}  // namespace hy_wristlog::simulator
