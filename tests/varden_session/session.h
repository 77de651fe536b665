#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "simulator/bench.h"
#include "simulator/checksum.h"
#include "support/failures.h"
#include "support/scripted_world.h"
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

enum class Hearing : std::uint8_t { Good, Deaf, Garbled };

/// A logger object whose port leads to a logger that follows a script.
struct ScriptedSession {
  using AnswersByCommand = std::map<std::string, std::deque<std::string>>;

  /// `answers` stand after the echo, in turn, and the last one stays. The typed commands are heard as
  /// `hearings` say, one after another, and later ones well.
  explicit ScriptedSession(AnswersByCommand answers = {}, std::deque<Hearing> hearings = {})
      : Answers(std::move(answers)), Hearings(std::move(hearings)) {
    world->OnWrite = [this](std::string_view bytes) {
      for (const char byte : bytes) hear(byte);
    };
    logger.link().subOpenPort(33, 13, 8, 3, 3, 0, false, true);
  }

  double elapsedDuring(const std::function<void()>& step) {
    const std::int64_t before = world->Now;
    step();
    return static_cast<double>(world->Now - before) / 1000;
  }
  /// What came of a step and how long it took.
  std::pair<std::string, double> timed(const std::function<void()>& step) {
    std::string result;
    const double elapsed = elapsedDuring([&] { result = outcome(step); });
    return {result, elapsed};
  }

  scripted::InWorld world;
  VardenLogger logger;
  AnswersByCommand Answers;
  std::deque<Hearing> Hearings;
  std::vector<std::string> Lines;  ///< the commands that came in whole

 private:
  void hear(char byte) {
    std::string& toPc = world->Incoming;
    if (byte == '\r') {
      Lines.push_back(std::exchange(typed_, {}));
      toPc += byte;
      auto& answers = Answers[Lines.back()];
      if (!answers.empty()) toPc += answers.front();
      if (answers.size() > 1) answers.pop_front();
      return;
    }
    if (byte < ' ') return;
    if (typed_.empty() && !Hearings.empty()) {
      const Hearing hearing = Hearings.front();
      Hearings.pop_front();
      if (hearing == Hearing::Garbled) toPc += '~';
      if (hearing != Hearing::Good) return;
    }
    typed_ += byte;
    toPc += byte;
  }

  std::string typed_;
};

}  // namespace hy_wristlog::session
