#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "pendrel/Pendrel.h"
#include "simulator/bench.h"
#include "support/scripted_session.h"

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

struct ScriptedSession : scripted::Session<Pendrel> {
  using Answers = std::map<std::string, std::string>;

  /// The answers stand after the echo of a command's last character; blocks come a second later.
  explicit ScriptedSession(Answers answers = {}, std::string hearings = {}, int type = KR_PENDREL_CRC)
      : Session(std::move(hearings)), answers_(std::move(answers)) {
    logger.fncOpenCOMport(7, false);
    become(logger, type);
    world->Journal.clear();
  }

 private:
  void hear(char byte) override {
    if (!takes(byte)) return;
    const auto found = answers_.find(typed_);
    if (found == answers_.end()) return;
    world->deliver(found->second, typed_.starts_with("***N") ? 1000 : 0);
    typed_.clear();
  }

  Answers answers_;
};

}  // namespace hy_wristlog::pendrel_session
