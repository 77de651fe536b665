#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "hy_wristlog/failure.h"
#include "simulator/bench.h"
#include "simulator/checksum.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog::session {

/// What came of a step, as "number module.procedure: description"; empty when it did not fail.
template <class Step>
std::string outcome(Step&& step) {
  try {
    step();
    return {};
  } catch (const Failure& failure) {
    const std::size_t from = failure.Source.find(':') + 1;
    const std::string procedure = failure.Source.substr(from, failure.Source.find('@') - from);
    return std::to_string(failure.Number) + " " + procedure + ": " + failure.Description;
  }
}

/// A logger object that works with a simulated logger in its dock.
struct Session {
  explicit Session(const simulator::BenchOptions& options)
      : bench(simulator::makeBench(options)), scope(bench) {}

  double elapsedDuring(const std::function<void()>& step) const {
    const double before = bench.World->elapsed();
    step();
    return bench.World->elapsed() - before;
  }
  const std::vector<std::string>& commands() const { return bench.Logger->commands(); }
  void connect() {
    if (bench.Logger->model() == simulator::LoggerModel::Vivid)
      logger->fncQuillanderLoggerConnected(true);
    else
      logger->fncTolkaLoggerConnected(true, false);
    bench.Logger->forgetCommands();
  }

  simulator::Bench bench;
  simulator::BenchScope scope;
  std::unique_ptr<VardenLogger> logger = std::make_unique<VardenLogger>();
};

/// A value line with its checksum, and the prompt.
inline std::string value(const std::string& text) {
  char crc[8];
  std::snprintf(crc, sizeof crc, "#%04X", simulator::checksum(text));
  return text + crc + "\r>";
}

enum class Hearing : std::uint8_t { Good, Deaf, Garbled };

/// What a scripted logger does, and what it saw.
struct Script {
  /// By command: the answers behind the echo, in turn; the last one stays.
  std::map<std::string, std::deque<std::string>> Answers{};
  /// How the typed commands are heard, one after another; later ones well.
  std::deque<Hearing> Hearings{};
  bool Dsr = true;
  std::vector<std::string> Lines{};  ///< the commands that came in whole
  std::string Written{};             ///< every byte
  std::vector<std::string> Signals{};
};

class ScriptedPort : public platform::SerialPort {
 public:
  explicit ScriptedPort(Script& script) : script_(script) {}

  void configure(const platform::LineSettings&) override {}
  std::size_t read(std::span<std::uint8_t> into) override {
    const std::size_t count = std::min(into.size(), toPc_.size());
    std::copy_n(toPc_.begin(), count, into.begin());
    toPc_.erase(0, count);
    return count;
  }
  std::size_t write(std::span<const std::uint8_t> bytes) override {
    for (const std::uint8_t byte : bytes) hear(static_cast<char>(byte));
    return bytes.size();
  }
  std::size_t outstanding() override { return 0; }
  void discardInput() override { toPc_.clear(); }
  void setDtr(bool on) override { script_.Signals.push_back(on ? "DTR up" : "DTR down"); }
  void setRts(bool on) override { script_.Signals.push_back(on ? "RTS up" : "RTS down"); }
  platform::ModemLines modemLines() override {
    return {.Cts = false, .Dsr = script_.Dsr, .Cd = false, .Ring = false};
  }
  platform::LineErrors takeErrors() override { return {}; }

 private:
  void hear(char byte) {
    script_.Written += byte;
    if (byte == '\r') {
      script_.Lines.push_back(std::exchange(typed_, {}));
      toPc_ += byte;
      answer(script_.Answers[script_.Lines.back()]);
      return;
    }
    if (byte < ' ') return;
    if (typed_.empty() && !script_.Hearings.empty()) {
      const Hearing hearing = script_.Hearings.front();
      script_.Hearings.pop_front();
      if (hearing == Hearing::Garbled) toPc_ += '~';
      if (hearing != Hearing::Good) return;
    }
    typed_ += byte;
    toPc_ += byte;
  }
  void answer(std::deque<std::string>& answers) {
    if (answers.empty()) return;
    toPc_ += answers.front();
    if (answers.size() > 1) answers.pop_front();
  }

  Script& script_;
  std::string typed_, toPc_;
};

/// A simulated world whose ports all lead to one scripted logger.
class ScriptedWorld : public simulator::SimulatedWorld, private platform::SerialPorts {
 public:
  Script script;
  platform::SerialPorts& serialPorts() override { return *this; }

 private:
  std::unique_ptr<platform::SerialPort> open(std::int32_t) override {
    script.Signals.clear();
    return std::make_unique<ScriptedPort>(script);
  }
};

/// A logger object whose port leads to a scripted logger.
struct ScriptedSession {
  explicit ScriptedSession(const Script& script) : ScriptedSession() {
    logger->link().subOpenPort(33, 13, 8, 3, 3, 0, false, true);
    world->script = script;
  }
  ScriptedSession() : former(platform::use(world)), logger(std::make_unique<VardenLogger>()) {}
  ScriptedSession(const ScriptedSession&) = delete;
  ScriptedSession& operator=(const ScriptedSession&) = delete;
  ~ScriptedSession() {
    logger.reset();
    platform::use(former);
  }

  std::shared_ptr<ScriptedWorld> world = std::make_shared<ScriptedWorld>();
  std::shared_ptr<platform::Platform> former;
  std::unique_ptr<VardenLogger> logger;
};

}  // namespace hy_wristlog::session
