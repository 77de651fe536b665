#pragma once

#include <cstdint>
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
  for (const char c : bytes) {
    const auto byte = static_cast<std::uint8_t>(c);
    for (const unsigned nibble : {static_cast<unsigned>(byte >> 4), byte & 15U}) {
      const unsigned top = ((crc >> 12) ^ nibble) & 15U;
      crc = ((crc << 4) ^ (top * 0x1021U)) & 0xFFFFU;
    }
  }
  return crc;
}

inline std::string valueLine(const std::string& value) {
  char digits[8];
  std::snprintf(digits, sizeof digits, "#%04X", wireCrc(value));
  return value + digits + "\r>";
}

/// Somebody at the PC's end of the line of a bench, with the logger awake.
struct Wire {
  explicit Wire(const BenchOptions& options = vividBenchOptions()) : Lab(makeBench(options)) { connect(); }

  void connect() {
    Port.reset();
    Port = Lab.World->serialPorts().open(Lab.Dock->comPort());
    Port->configure(LoggerLine);
    Port->setDtr(true);
    Port->setRts(true);
    wait(100);
    Port->setRts(false);
    wait(200);
  }

  void wait(int milliseconds) { Lab.World->clock().sleep(std::chrono::milliseconds{milliseconds}); }
  void send(const std::string& bytes) {
    Port->write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  }
  std::string take() {
    std::string text(70000, '\0');
    text.resize(Port->read({reinterpret_cast<std::uint8_t*>(text.data()), text.size()}));
    return text;
  }
  /// Sends, waits, and returns what has come by then.
  std::string exchange(const std::string& bytes, int milliseconds = 100) {
    send(bytes);
    wait(milliseconds);
    return take();
  }

  /// An XMODEM download after its command; the joined data. ACKs whatever has a good frame.
  std::string download(const std::string& command, std::vector<std::string>* frames = nullptr) {
    exchange(command + "\r");
    std::string data, answer = "C";
    for (;;) {
      const std::string frame = exchange(answer, 400);
      if (frame == "\x04") {
        End = exchange("\x06");
        return data;
      }
      const std::size_t size = frame.starts_with('\x02') ? 1024 : 128;
      if (frame.size() != size + 5) return data + "<broken>";
      const std::string payload = frame.substr(3, size);
      const auto crc = static_cast<unsigned>(static_cast<std::uint8_t>(frame[size + 3]) * 256 +
                                             static_cast<std::uint8_t>(frame[size + 4]));
      const bool good = crc == wireCrc(payload) && (frame[1] ^ frame[2]) == '\xFF';
      if (frames) frames->push_back(frame);
      if (good) data += payload;
      answer = good ? "\x06" : "\x15";
    }
  }

  Bench Lab;
  std::unique_ptr<platform::SerialPort> Port;
  std::string End;  ///< what followed the ACK of the last download's end
};

/// A frame as the PC sends it.
inline std::string pcFrame(int number, const std::string& data) {
  std::string frame{data.size() == 1024 ? '\x02' : '\x01'};
  frame += static_cast<char>(number);
  frame += static_cast<char>(255 - number);
  const unsigned crc = wireCrc(data);
  return frame + data + static_cast<char>(crc >> 8) + static_cast<char>(crc & 255U);
}

}  // namespace hy_wristlog::simulator
