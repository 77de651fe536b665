#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/linux_platform.h"
#include "platform/platform.h"

namespace hy_wristlog::scripted {

/// The machine with a clock that moves only when something waits, and one serial line whose far end follows a
/// script. Times are milliseconds.
class World final : public platform::Platform, platform::Clock, platform::SerialPorts {
 public:
  std::int64_t Now = 0;
  void after(std::int64_t delay, std::function<void()> action) {
    due_.emplace(Now + delay, std::move(action));
  }

  /// Bytes reach the port `delay` from now, or at once.
  void deliver(std::string_view bytes, std::int64_t delay = 0) {
    after(delay, [this, text = std::string(bytes)] { Incoming += text; });
    runDue();
  }
  /// The far end's answer to what the port writes.
  std::function<void(std::string_view)> OnWrite;
  /// Runs before each operation on the port with its name ("open", "configure", "read", ...); may raise.
  std::function<void(const std::string&)> Before;

  std::string Incoming, Written;
  std::vector<std::pair<std::int64_t, std::string>> Journal;  ///< operations that change the port
  platform::LineErrors Errors;
  platform::ModemLines Lines;
  std::size_t Outstanding = 0;
  bool IsOpen = false;

  std::string journal() {
    std::string text;
    for (const auto& [time, entry] : Journal) text += (text.empty() ? "" : "; ") + entry;
    Journal.clear();
    return text;
  }
  void note(const std::string& entry) { Journal.emplace_back(Now, entry); }
  void before(const std::string& operation) const {
    if (Before) Before(operation);
  }

  platform::Clock& clock() override { return *this; }
  platform::SerialPorts& serialPorts() override { return *this; }
  platform::DeviceTree& deviceTree() override { return machine_->deviceTree(); }
  platform::SettingsStore& settings() override { return machine_->settings(); }
  platform::ZoneRecords& zones() override { return machine_->zones(); }
  platform::Environment& environment() override { return machine_->environment(); }
  platform::Files& files() override { return machine_->files(); }
  platform::CryptographicProvider& cryptography() override { return machine_->cryptography(); }

 private:
  CivilTime utc() override { return {2026, 7, 1, 12, 34, 56, 789}; }
  CivilTime local() override { return utc(); }
  /// Passes midnight early.
  double timer() override { return 86399.5 + static_cast<double>(Now) / 1000; }
  void sleep(std::chrono::milliseconds duration) override { advance(duration.count()); }
  void idle() override { advance(1); }
  std::unique_ptr<platform::SerialPort> open(std::int32_t number) override;

  void advance(std::int64_t duration) {
    const std::int64_t end = Now + duration;
    while (!due_.empty() && due_.begin()->first <= end) {
      Now = std::max(Now, due_.begin()->first);
      runDue();
    }
    Now = end;
  }
  void runDue() {
    while (!due_.empty() && due_.begin()->first <= Now) {
      const auto action = std::move(due_.begin()->second);
      due_.erase(due_.begin());
      action();
    }
  }

  std::multimap<std::int64_t, std::function<void()>> due_;
  std::shared_ptr<Platform> machine_ = platform::makeLinuxPlatform();
};

/// The thread works in a World while this object lives.
class InWorld {
 public:
  InWorld() : former_(platform::use(world_)) {}
  InWorld(const InWorld&) = delete;
  InWorld& operator=(const InWorld&) = delete;
  ~InWorld() { platform::use(former_); }
  World* operator->() const { return world_.get(); }
  World& operator*() const { return *world_; }

 private:
  std::shared_ptr<World> world_ = std::make_shared<World>();
  std::shared_ptr<platform::Platform> former_;
};

}  // namespace hy_wristlog::scripted
