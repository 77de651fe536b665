#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "pendrel/Pendrel.h"
#include "simulator/bench.h"
#include "support/failures.h"
#include "support/scripted_world.h"

namespace hy_wristlog::pendrel_session {

/// Four digits: the sum of the character codes.
inline std::string sumOf(std::string_view text) {
  char digits[12];
  const auto add = [](unsigned sum, char c) { return sum + static_cast<std::uint8_t>(c); };
  std::snprintf(digits, sizeof digits, "%04X", std::accumulate(text.begin(), text.end(), 0U, add) & 0xFFFF);
  return digits;
}

/// Makes the logger a known model, with epochs of a minute.
inline void become(Pendrel& logger, int type) {
  logger.record.SerialNumber = type == KR_PENDREL_CRC_STEPS ? "B901234" : "C901234";
  logger.record.FirmwareVersion = type == KR_PENDREL ? 0x8F : 0x90;
  logger.record.MemorySizeKB = 64;
  logger.record.EpochLength = 60;
  logger.subInitRawData();
}

/// A logger object that works with a simulated logger in its reader.
struct Session {
  explicit Session(simulator::PendrelModel model) : bench(makeBench(model)), scope(bench.World) {
    logger.fncOpenCOMport(1, false);
  }
  static simulator::PendrelBench makeBench(simulator::PendrelModel model) {
    simulator::PendrelBenchOptions options;
    options.Logger.Model = model;
    return simulator::makePendrelBench(options);
  }

  simulator::PendrelBench bench;
  platform::WorldScope scope;
  Pendrel logger;
};

/// A logger object whose port leads to a logger that follows a script.
struct ScriptedSession {
  using Answers = std::map<std::string, std::string>;

  /// The answers stand after the echo of a command's last character; blocks come a second later. The first
  /// commands are heard well (' '), garbled ('~') or not at all ('.'), as `hearings` say.
  explicit ScriptedSession(Answers answers = {}, std::string hearings = {}, int type = KR_PENDREL_CRC)
      : answers_(std::move(answers)), hearings_(std::move(hearings)) {
    logger.fncOpenCOMport(7, false);
    become(logger, type);
    world->Journal.clear();
    world->OnWrite = [this](std::string_view bytes) {
      for (const char byte : bytes) hear(byte);
    };
  }
  /// What came of a step and how many seconds it took.
  std::pair<std::string, double> timed(const std::function<void()>& step) {
    const std::int64_t before = world->Now;
    std::string result = outcome(step);
    return {result, static_cast<double>(world->Now - before) / 1000};
  }

  scripted::InWorld world;
  Pendrel logger;

 private:
  void hear(char byte) {
    if (typed_.empty() && !hearings_.empty()) {
      const char hearing = hearings_.front();
      hearings_.erase(0, 1);
      if (hearing == '~') world->Incoming += hearing;
      if (hearing != ' ') return;
    }
    typed_ += byte;
    world->Incoming += byte;
    const auto found = answers_.find(typed_);
    if (found == answers_.end()) return;
    world->deliver(found->second, typed_.starts_with("***N") ? 1000 : 0);
    typed_.clear();
  }

  Answers answers_;
  std::string hearings_, typed_;
};

}  // namespace hy_wristlog::pendrel_session
