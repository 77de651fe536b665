#pragma once

#include <functional>
#include <string>
#include <utility>

#include "support/failures.h"
#include "support/scripted_world.h"

namespace hy_wristlog::scripted {

/// A logger object whose port leads to a logger that follows a script.
template <class Logger>
struct Session {
  /// The first commands are heard well (' '), garbled ('~') or not at all ('.'), as `hearings` say.
  explicit Session(std::string hearings) : hearings_(std::move(hearings)) {
    world->OnWrite = [this](std::string_view bytes) {
      for (const char byte : bytes) hear(byte);
    };
  }
  virtual ~Session() = default;

  double elapsedDuring(const std::function<void()>& step) const {
    const std::int64_t before = world->Now;
    step();
    return static_cast<double>(world->Now - before) / 1000;
  }
  /// What came of a step and how many seconds it took.
  std::pair<std::string, double> timed(const std::function<void()>& step) const {
    std::string result;
    const double elapsed = elapsedDuring([&] { result = outcome(step); });
    return {result, elapsed};
  }

  InWorld world;
  Logger logger;

 protected:
  virtual void hear(char byte) = 0;
  /// Takes and echoes a character of a command that is heard.
  bool takes(char byte) {
    const char hearing = typed_.empty() && !hearings_.empty() ? hearings_.front() : ' ';
    if (typed_.empty()) hearings_.erase(0, 1);
    if (hearing == '~') world->Incoming += hearing;
    if (hearing != ' ') return false;
    typed_ += byte;
    world->Incoming += byte;
    return true;
  }

  std::string hearings_, typed_;
};

}  // namespace hy_wristlog::scripted
