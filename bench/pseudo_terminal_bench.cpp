#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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

/// `of_line` is the share of the line's 5236 bytes a second, `of_core` that of a core which the receiver
/// needs.
void ReceiveOverPseudoTerminal(benchmark::State& state) {
  const std::size_t packetBytes = state.range(0) != 0 ? xmodem::LongData : xmodem::ShortData;
  const bool wakesOnInput = state.range(1) != 0;
  state.SetLabel(std::string(state.range(0) != 0 ? "long packets" : "short packets") +
                 (wakesOnInput ? ", waking on input" : ""));
  const std::filesystem::path docks =
      std::filesystem::temp_directory_path() / ("docks-" + std::to_string(::getpid()) + ".ini");
  for (auto _ : state) {
    PacedSender sender(packetBytes);
    std::ofstream(docks) << "[Dock 1]\nCOMport=7\nDevice=" << sender.device() << '\n';
    ::setenv("HY_WRISTLOG_DOCKS", docks.c_str(), 1);
    const platform::Waits former = platform::current().waits();
    platform::current().setWaits({wakesOnInput, nullptr});
    Form_Comm link;
    link.subOpenPort(7, 13, 8, 3, 3, 0, false, true);
    sender.start();
    const double used = threadSeconds();
    const auto begun = Clock::now();
    const PacketArray packets = link.fncReceiveXmodemPackets(13, 8, 3, 3, -1);
    const double seconds = std::chrono::duration<double>(Clock::now() - begun).count();
    state.counters["of_core"] = (threadSeconds() - used) / seconds;
    state.counters["of_line"] = static_cast<double>(sender.bytes()) / seconds / BytesPerSecond;
    if (!packets || packets->size() != RecordingBytes / packetBytes)
      state.SkipWithError("not all packets came");
    platform::current().setWaits(former);
  }
  std::filesystem::remove(docks);
}
BENCHMARK(ReceiveOverPseudoTerminal)
    ->ArgsProduct({{1, 0}, {0, 1}})
    ->ArgNames({"long", "wakes"})
    ->Unit(benchmark::kSecond)
    ->Iterations(1)
    ->UseRealTime();

}  // namespace
}  // namespace hy_wristlog
