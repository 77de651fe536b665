#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "simulator/bench.h"
#include "simulator/checksum.h"
#include "support/scripted_session.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog::session {

/// A logger object that works with a simulated logger in its dock.
struct Session {
  explicit Session(const simulator::BenchOptions& options)
      : bench(simulator::makeBench(options)), scope(bench.World) {}

  double elapsedDuring(const std::function<void()>& step) const {
    const double before = bench.World->elapsed();
    step();
    return bench.World->elapsed() - before;
  }
  const std::vector<std::string>& commands() const { return bench.Logger->commands(); }
  void connect() {
    if (bench.Logger->model() == simulator::LoggerModel::Vivid)
      logger.fncQuillanderLoggerConnected(true);
    else
      logger.fncTolkaLoggerConnected(true, false);
    bench.Logger->forgetCommands();
  }

  simulator::Bench bench;
  platform::WorldScope scope;
  VardenLogger logger;
};

/// A value line with its checksum, and the prompt.
inline std::string value(const std::string& text) {
  char crc[8];
  std::snprintf(crc, sizeof crc, "#%04X", simulator::checksum(text));
  return text + crc + "\r>";
}

struct ScriptedSession : scripted::Session<VardenLogger> {
  using AnswersByCommand = std::map<std::string, std::deque<std::string>>;

  /// `answers` stand after the echo, in turn, and the last one stays.
  explicit ScriptedSession(AnswersByCommand answers = {}, std::string hearings = {})
      : Session(std::move(hearings)), Answers(std::move(answers)) {
    logger.link().subOpenPort(33, 13, 8, 3, 3, 0, false, true);
  }

  AnswersByCommand Answers;
  std::vector<std::string> Lines;  ///< the commands that came in whole

 private:
  void hear(char byte) override {
    std::string& toPc = world->Incoming;
    if (byte == '\r') {
      Lines.push_back(std::exchange(typed_, {}));
      toPc += byte;
      auto& answers = Answers[Lines.back()];
      if (!answers.empty()) toPc += answers.front();
      if (answers.size() > 1) answers.pop_front();
      return;
    }
    if (byte >= ' ') takes(byte);
  }
};

}  // namespace hy_wristlog::session
