#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <termios.h>

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "platform/linux/system_io.h"
#include "simulator/bench.h"
#include "support/surroundings.h"

namespace hy_wristlog {

/// Serves a simulated dock to other processes in real time, as a pseudo-terminal. `linesFile` stands for the
/// terminal's modem lines, see modem_lines.cpp.
class ServedDock {
 public:
  explicit ServedDock(const simulator::DockBench& bench) : bench_(bench) {
    std::array<char, 64> name{};
    EXPECT_TRUE(::grantpt(master_.get()) == 0 && ::unlockpt(master_.get()) == 0 &&
                ::ptsname_r(master_.get(), name.data(), name.size()) == 0);
    path_ = name.data();
    // As long as this end is open, none that closes is taken for a hang-up.
    slave_ = platform::Descriptor{::open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    termios raw{};
    ::tcgetattr(slave_.get(), &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(slave_.get(), TCSANOW, &raw);
    folder_.put("lines", std::string(2 * sizeof(int), '\0'));
    const platform::Descriptor file{::open(linesFile().c_str(), O_RDWR | O_CLOEXEC)};
    lines_ = static_cast<std::atomic<int>*>(
        ::mmap(nullptr, 2 * sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0));
    thread_ = std::thread([this] { serve(); });
  }
  ServedDock(const ServedDock&) = delete;
  ServedDock& operator=(const ServedDock&) = delete;
  ~ServedDock() {
    ends_ = true;
    thread_.join();
    ::munmap(lines_, 2 * sizeof(int));
  }

  const std::string& path() const { return path_; }
  std::string linesFile() const { return folder_ / "lines"; }

 private:
  void serve() {
    const auto port = bench_.Dock->open();
    port->configure(bench_.line().farSettings());
    const auto began = std::chrono::steady_clock::now();
    const double begins = bench_.World->elapsed();
    std::array<std::uint8_t, 4096> bytes{};
    for (pollfd state{master_.get(), POLLIN, 0}; !ends_;) {
      if (::poll(&state, 1, 1) > 0) {
        const ssize_t count = ::read(master_.get(), bytes.data(), bytes.size());
        if (count > 0) port->write(std::span(bytes).first(static_cast<std::size_t>(count)));
      }
      port->setDtr((lines_[0] & TIOCM_DTR) != 0);
      port->setRts((lines_[0] & TIOCM_RTS) != 0);
      const std::chrono::duration<double> due =
          std::chrono::steady_clock::now() - began -
          std::chrono::duration<double>(bench_.World->elapsed() - begins);
      bench_.World->advance(std::chrono::duration_cast<std::chrono::nanoseconds>(due));
      lines_[1] = port->modemLines().Dsr ? TIOCM_DSR : 0;
      for (std::size_t got = port->read(bytes); got > 0; got = port->read(bytes))
        EXPECT_EQ(::write(master_.get(), bytes.data(), got), static_cast<ssize_t>(got));
    }
  }

  simulator::DockBench bench_;
  platform::Descriptor master_{::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)}, slave_;
  std::string path_;
  TemporaryFolder folder_;
  std::atomic<int>* lines_ = nullptr;
  std::atomic<bool> ends_ = false;
  std::thread thread_;
};

}  // namespace hy_wristlog
