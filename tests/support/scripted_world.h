#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/linux_platform.h"
#include "platform/wrapped_platform.h"
#include "support/in_world.h"

namespace hy_wristlog::scripted {

/// The machine with a clock that moves only when something waits, and one serial line whose far end follows a
/// script. Times are milliseconds.
class World final : public platform::WrappedPlatform, platform::Clock, platform::SerialPorts {
 public:
  explicit World(std::shared_ptr<Platform> machine = platform::makeLinuxPlatform())
      : WrappedPlatform(std::move(machine)) {}

  std::int64_t Now = 0;
  void after(std::int64_t delay, std::function<void()> action) {
    due_.emplace(Now + delay, std::move(action));
  }
  /// Bytes reach the port `delay` from now, or at once.
  void deliver(std::string_view bytes, std::int64_t delay = 0) {
    after(delay, [this, text = std::string(bytes)] { Incoming += text; });
    advance(0);
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
    for (const auto& [time, entry] : std::exchange(Journal, {})) text += (text.empty() ? "" : "; ") + entry;
    return text;
  }

  platform::Clock& clock() override { return *this; }
  platform::SerialPorts& serialPorts() override { return *this; }

 private:
  struct Port final : platform::SerialPort {
    explicit Port(World& world) : Far(world) { Far.IsOpen = true; }
    ~Port() override {
      Far.IsOpen = false;
      Far.note("close");
    }
    void configure(const platform::LineSettings& settings) override {
      Far.before("configure");
      Far.note(std::to_string(settings.Baud) + ' ' + "emnos"[static_cast<int>(settings.Parity)] +
               std::to_string(settings.DataBits) + ' ' + std::to_string(static_cast<int>(settings.StopBits)));
    }
    std::size_t read(std::span<std::uint8_t> into) override {
      const std::size_t count = std::min(into.size(), Far.before("read").Incoming.size());
      std::copy_n(Far.Incoming.begin(), count, into.begin());
      Far.Incoming.erase(0, count);
      return count;
    }
    std::size_t write(std::span<const std::uint8_t> bytes) override {
      const std::string text(bytes.begin(), bytes.end());
      Far.before("write").Written += text;
      if (Far.OnWrite) Far.OnWrite(text);
      return bytes.size();
    }
    std::size_t outstanding() override { return Far.before("outstanding").Outstanding; }
    void discardInput() override { Far.before("discard").Incoming.clear(); }
    void setDtr(bool on) override { Far.before("dtr").note(on ? "dtr on" : "dtr off"); }
    void setRts(bool on) override { Far.before("rts").note(on ? "rts on" : "rts off"); }
    platform::ModemLines modemLines() override { return Far.before("lines").Lines; }
    platform::LineErrors takeErrors() override { return std::exchange(Far.before("errors").Errors, {}); }
    void awaitInput(std::chrono::microseconds) override { Far.advance(1); }
    World& Far;
  };

  World& before(const std::string& operation) {
    if (Before) Before(operation);
    return *this;
  }
  void note(const std::string& entry) { Journal.emplace_back(Now, entry); }

  CivilTime utc() override { return {2026, 7, 1, 12, 34, 56, 789}; }
  CivilTime local() override { return utc(); }
  /// Passes midnight early.
  double timer() override { return 86399.5 + static_cast<double>(Now) / 1000; }
  void sleep(std::chrono::milliseconds duration) override { advance(duration.count()); }
  void idle() override { advance(1); }
  std::unique_ptr<platform::SerialPort> open(std::int32_t number) override {
    before("open").note("open " + std::to_string(number));
    return std::make_unique<Port>(*this);
  }

  void advance(std::int64_t duration) {
    const std::int64_t end = Now + duration;
    while (!due_.empty() && due_.begin()->first <= end) {
      const auto next = due_.extract(due_.begin());
      Now = std::max(Now, next.key());
      next.mapped()();
    }
    Now = end;
  }

  std::multimap<std::int64_t, std::function<void()>> due_;
};

/// The thread works in a World while this object lives.
using InWorld = hy_wristlog::InWorld<World>;

}  // namespace hy_wristlog::scripted
