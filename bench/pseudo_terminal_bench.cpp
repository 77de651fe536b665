#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <time.h>
#include <unistd.h>

#include "link/Form_Comm.h"
#include "platform/platform.h"
#include "simulator/xmodem.h"

// These run in real time: a transfer over a pseudo-terminal, at whose far end a thread sends as slowly as a
// line of 57600 baud does.
namespace hy_wristlog {
namespace {

namespace xmodem = simulator::xmodem;
using Clock = std::chrono::steady_clock;

constexpr double BytesPerSecond = 57600.0 / 11;
constexpr std::size_t RecordingBytes = 24576;

class PacedSender {
 public:
  explicit PacedSender(std::size_t packetBytes) : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (::grantpt(master_) != 0 || ::unlockpt(master_) != 0) throw std::runtime_error("no pseudo-terminal");
    std::vector<std::uint8_t> data(packetBytes);
    std::iota(data.begin(), data.end(), std::uint8_t{0});
    for (std::size_t at = 0; at < RecordingBytes; at += packetBytes)
      frames_.push_back(xmodem::frame(static_cast<std::uint8_t>(frames_.size() + 1), data));
    frames_.push_back({xmodem::Eot});
  }
  PacedSender(const PacedSender&) = delete;
  PacedSender& operator=(const PacedSender&) = delete;
  ~PacedSender() {
    if (thread_.joinable()) thread_.join();
    ::close(master_);
  }

  std::string device() const { return ::ptsname(master_); }
  std::size_t bytes() const {
    return std::accumulate(frames_.begin(), frames_.end(), std::size_t{0},
                           [](std::size_t sum, const auto& frame) { return sum + frame.size(); });
  }
  void start() {
    thread_ = std::thread([this] {
      if (!hears(xmodem::CrcMode)) return;
      for (const auto& frame : frames_) {
        send(frame);
        if (!hears(xmodem::Ack)) return;
      }
    });
  }

 private:
  bool hears(std::uint8_t wanted) const {
    constexpr int Patience = 20000;
    for (pollfd ready{master_, POLLIN, 0}; ::poll(&ready, 1, Patience) > 0;) {
      std::uint8_t byte = 0;
      if (::read(master_, &byte, 1) != 1) return false;
      if (byte == wanted) return true;
    }
    return false;
  }
  void send(const std::vector<std::uint8_t>& frame) const {
    const auto begun = Clock::now();
    for (std::size_t sent = 0; sent < frame.size();) {
      std::this_thread::sleep_for(std::chrono::milliseconds{1});
      const double passed = std::chrono::duration<double>(Clock::now() - begun).count();
      const auto due = std::min(frame.size(), static_cast<std::size_t>(passed * BytesPerSecond));
      if (due > sent && ::write(master_, frame.data() + sent, due - sent) < 0) return;
      sent = due;
    }
  }

  int master_;
  std::vector<std::vector<std::uint8_t>> frames_;
  std::thread thread_;
};

double threadSeconds() {
  timespec used{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

/// What one dock's thread has seen.
struct Received {
  double CpuSeconds = 0;
  bool IsWhole = false;
};

Received receive(std::int16_t port, PacedSender& sender, std::size_t packetBytes, bool wakesOnInput) {
  platform::current().setWaits({wakesOnInput, nullptr});
  Form_Comm link;
  link.subOpenPort(port, 13, 8, 3, 3, 0, false, true);
  sender.start();
  const double used = threadSeconds();
  const PacketArray packets = link.fncReceiveXmodemPackets(13, 8, 3, 3, -1);
  return {threadSeconds() - used, packets && packets->size() == RecordingBytes / packetBytes};
}

/// `of_line` is the share of the line's 5236 bytes a second, in the mean of all docks at work at the same
/// time; `of_core` that of a core which their receivers need together.
void ReceiveOverPseudoTerminal(benchmark::State& state) {
  const std::size_t packetBytes = state.range(0) != 0 ? xmodem::LongData : xmodem::ShortData;
  const bool wakesOnInput = state.range(1) != 0;
  const auto count = static_cast<std::size_t>(state.range(2));
  state.SetLabel(std::string(state.range(0) != 0 ? "long packets" : "short packets") +
                 (wakesOnInput ? ", waking on input" : ""));
  const std::filesystem::path docks =
      std::filesystem::temp_directory_path() / ("docks-" + std::to_string(::getpid()) + ".ini");
  for (auto _ : state) {
    std::vector<std::unique_ptr<PacedSender>> senders;
    std::ofstream declared(docks);
    for (std::size_t i = 1; i <= count; ++i) {
      senders.push_back(std::make_unique<PacedSender>(packetBytes));
      declared << "[Dock " << i << "]\nCOMport=" << i << "\nDevice=" << senders.back()->device() << '\n';
    }
    declared.close();
    ::setenv("HY_WRISTLOG_DOCKS", docks.c_str(), 1);
    std::vector<Received> received(count);
    const auto begun = Clock::now();
    {
      std::vector<std::jthread> threads;
      for (std::size_t i = 0; i < count; ++i)
        threads.emplace_back([&, i] {
          received[i] = receive(static_cast<std::int16_t>(i + 1), *senders[i], packetBytes, wakesOnInput);
        });
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - begun).count();
    double used = 0;
    for (const Received& dock : received) {
      used += dock.CpuSeconds;
      if (!dock.IsWhole) state.SkipWithError("not all packets came");
    }
    state.counters["of_core"] = used / seconds;
    state.counters["of_line"] = static_cast<double>(senders.front()->bytes()) / seconds / BytesPerSecond;
  }
  std::filesystem::remove(docks);
}
BENCHMARK(ReceiveOverPseudoTerminal)
    ->ArgsProduct({{1, 0}, {0, 1}, {1}})
    ->Args({1, 1, 8})
    ->ArgNames({"long", "wakes", "docks"})
    ->Unit(benchmark::kSecond)
    ->Iterations(1)
    ->UseRealTime();

}  // namespace
}  // namespace hy_wristlog
