#include "support/far_end.h"

#include <algorithm>
#include <cstdio>

#include "simulator/checksum.h"
#include "support/logger_bytes.h"

namespace hy_wristlog::fuzz {
namespace {

constexpr std::size_t MostBytes = 300000, MostSteps = 4000, HeardBytes = 64;
constexpr char Soh = 1, Stx = 2, Eot = 4, Ack = 6, Nak = 21;
constexpr std::size_t FrameBytes = 133;

std::string fourDigits(std::uint32_t value) {
  char digits[12];
  std::snprintf(digits, sizeof digits, "%04X", value & 0xFFFF);
  return digits;
}

std::uint32_t sumOf(std::string_view text) {
  std::uint32_t sum = 0;
  for (const char c : text) sum += static_cast<std::uint8_t>(c);
  return sum;
}

}  // namespace

FarEnd::FarEnd(const QuietWorld& world, const std::vector<Line>& script) : world_(world) {
  for (const Line& line : script) read(line);
  world_->OnWrite = [this](std::string_view bytes) {
    for (const char byte : bytes) hear(byte);
  };
  answer();
}

void FarEnd::read(const Line& line) {
  if (steps_.size() > MostSteps || written_ > MostBytes) return;
  const auto count = static_cast<std::size_t>(line.number(1, 0, 100000));
  if (line.is("on")) begin(line.text(), 0, echo_);
  if (line.is("mute")) echo_ = false;
  if (line.is("late")) late_ = line.number(1, 0, 60000);
  if (line.is("error")) error_ = line.number(1);
  if (line.is("say")) add(line.text());
  if (line.is("value")) add(line.text() + "#" + fourDigits(simulator::checksum(line.text())) + "\r>");
  if (line.is("sum")) add(fourDigits(sumOf(line.text())) + "\r>");
  if (line.is("summed")) add(line.text() + "\r" + fourDigits(sumOf(line.text())) + "\r>");
  if (line.is("block")) {
    const auto bytes = anyBytes(4096, line.number(1));
    const std::string block(bytes.begin(), bytes.end());
    const std::uint32_t sum = sumOf(block) + static_cast<std::uint32_t>(line.number(2));
    add(block + static_cast<char>(sum >> 8) + static_cast<char>(sum));
  }
  if (line.is("hex")) {
    const auto bytes = line.bytes();
    add({bytes.begin(), bytes.end()});
  }
  if (line.is("config")) payload_ = configBlock(line.number(1), line.number(2));
  if (line.is("stream")) payload_ = activityRecording(line.number(1, 0, 100000), line.number(2));
  if (line.is("payload")) payload_ = anyBytes(count, line.number(2));
  if (line.is("packet")) {
    const std::size_t size = line.number(2) == 2 ? 1024 : 128;
    number_ = static_cast<std::uint8_t>(number_ + line.number(1));
    packet(anyBytes(size, line.number(3)), number_, size, static_cast<std::uint16_t>(line.number(4)));
  }
  if (line.is("send")) {
    const std::size_t size = line.number(1) == 2 ? 1024 : 128;
    for (std::size_t at = 0; at < payload_.size() && steps_.size() < MostSteps; at += size) {
      begin(at == 0 ? "C" : std::string(1, Ack), 0, false);
      const auto from = payload_.begin() + static_cast<std::ptrdiff_t>(at);
      const auto length = static_cast<std::ptrdiff_t>(std::min(size, payload_.size() - at));
      packet({from, from + length}, ++number_, size, 0);
    }
    begin(std::string(1, Ack), 0, false);
    add(std::string(1, Eot));
  }
  if (line.is("take")) {
    add("C");
    for (std::size_t i = std::min<std::size_t>(count, 300); i > 0; --i) {
      begin({}, FrameBytes, false);
      add(std::string(1, Ack));
    }
    begin(std::string(1, Eot), 0, false);
    add(std::string(1, Ack));
  }
  if (line.is("gone"))
    world_->Before = [this, last = line.number(1, 0, 1000000)](const std::string& operation) {
      if (++operations_ > last && operation != "open")
        throw Failure(FailureNumber::PortStateFailure, "MSComm", "gone");
    };
}

void FarEnd::begin(std::string on, std::size_t bytes, bool echo) {
  steps_.push_back({std::move(on), bytes, echo});
  late_ = 0;
}

void FarEnd::add(std::string text, bool isPacket) {
  written_ += text.size();
  steps_.back().Answer.push_back({std::move(text), late_, isPacket, std::exchange(error_, 0)});
}

/// A first packet of a transfer has number 1.
void FarEnd::packet(std::vector<std::uint8_t> data, std::uint8_t number, std::size_t size,
                    std::uint16_t spoil) {
  data.resize(size, 0x1A);
  const std::uint16_t crc = simulator::checksum(std::span<const std::uint8_t>(data));
  const auto told = static_cast<std::uint16_t>(crc ^ spoil);
  std::string frame{size == 128 ? Soh : Stx, static_cast<char>(number), static_cast<char>(255 - number)};
  frame.append(data.begin(), data.end());
  frame += static_cast<char>(told >> 8);
  frame += static_cast<char>(told & 255);
  if (spoil == 0) packets_.insert(std::move(data));
  add(std::move(frame), true);
}

void FarEnd::hear(char byte) {
  const bool waits = !steps_.empty();
  if (waits && steps_.front().Echo && (byte >= ' ' || byte == '\r')) world_->deliver(std::string(1, byte));
  if (!waits) return;
  const Step& step = steps_.front();
  heard_ += byte;
  if (heard_.size() > 2 * HeardBytes) heard_.erase(0, HeardBytes);
  ++count_;
  if (step.Bytes > 0 ? count_ >= step.Bytes : heard_.ends_with(step.On)) return answer();
  if (byte == Nak && !lastPacket_.empty()) world_->deliver(lastPacket_, 1);
}

void FarEnd::answer() {
  const Step step = std::move(steps_.front());
  steps_.pop_front();
  heard_.clear();
  lastPacket_.clear();
  count_ = 0;
  std::int64_t delay = 0;
  for (const Piece& piece : step.Answer) {
    delay += piece.Delay + 1;
    if (piece.IsPacket) lastPacket_ = piece.Text;
    if (piece.Error != 0)
      world_->after(delay, [this, kind = piece.Error] {
        auto& errors = world_->Errors;
        std::uint32_t* const kinds[] = {&errors.Overrun, &errors.Framing, &errors.Parity, &errors.Break,
                                        &errors.BufferOverflow};
        ++*kinds[static_cast<std::uint64_t>(kind) % 5];
      });
    world_->deliver(piece.Text, delay);
  }
}

bool FarEnd::hasSent(const std::vector<std::uint8_t>& data, std::size_t packetBytes) const {
  if (packetBytes == 0 || data.size() % packetBytes != 0) return false;
  for (auto at = data.begin(); at != data.end(); at += static_cast<std::ptrdiff_t>(packetBytes))
    if (!packets_.contains({at, at + static_cast<std::ptrdiff_t>(packetBytes)})) return false;
  return true;
}

}  // namespace hy_wristlog::fuzz
