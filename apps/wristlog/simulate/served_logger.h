#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "simulate/events.h"
#include "simulator/bench.h"

namespace wristlog {

/// A simulated logger whose time goes with the machine's: its dock's port is open as long as a client of
/// another process wants it to be. Somebody wears the logger while no one uses the port; who opens it docks
/// it.
class ServedLogger {
 public:
  /// `speed`, at least 1, is how much faster its time goes; but it waits for a client at the client's pace.
  ServedLogger(const hy_wristlog::simulator::ModelBench& bench, double speed, const ServedEvents& events);

  ~ServedLogger();
  ServedLogger(const ServedLogger&) = delete;
  ServedLogger& operator=(const ServedLogger&) = delete;

  /// Lets the simulated time catch up with the machine's, and tells what has happened.
  void catchUp();
  /// How long nothing will happen by itself.
  std::chrono::nanoseconds untilNext() const;

  /// Docks the logger and opens the port. When the dock refuses, its words are returned and told.
  std::optional<std::string> open();
  /// Closes the port once what was written has left, or cannot for a while. `allWritten`: nothing else is to
  /// be written. Returns whether it is closed.
  bool letGo(bool allWritten);
  void close();
  /// The open port, or null.
  hy_wristlog::platform::SerialPort* port() { return port_.get(); }
  /// False after the dock was unplugged; after some seconds it is plugged in again.
  bool plugged() const { return bench_.Dock->plugged(); }
  const hy_wristlog::simulator::ModelBench& bench() const { return bench_; }
  /// Tells what has happened to it.
  void tell(std::string_view event, const Json& facts, const std::string& words) const;
  void tellRefused(const std::string& words, const hy_wristlog::Failure& failure) const;
  /// True once after something was changed that is worth saving.
  bool takeChanged() { return std::exchange(changed_, false); }
  /// Takes the logger out of its dock, as it is while nobody serves it.
  void end();

 private:
  enum class Recording : std::uint8_t { No, Waiting, Yes };

  bool hurries() const;
  void tellChanges();
  void hear(hy_wristlog::simulator::Notice notice);
  Recording recording() const;
  std::int64_t recordedBytes() const;

  hy_wristlog::simulator::ModelBench bench_;
  hy_wristlog::simulator::Timeline& timeline_;
  double speed_;
  const ServedEvents& events_;
  double machineTime_;
  std::unique_ptr<hy_wristlog::platform::SerialPort> port_;
  hy_wristlog::simulator::Alarm takeOut_, plugAgain_;
  std::optional<hy_wristlog::simulator::Moment> letGo_;
  bool docked_ = false, plugged_ = true, changed_ = false;
  hy_wristlog::simulator::Traffic passedBefore_;
  Recording recording_;
};

}  // namespace wristlog
