#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/enumerations.h"
#include "session/options.h"
#include "simulator/bench.h"
#include "words/say.h"

namespace wristlog {

/// The return code of a workflow that was aborted.

class TerminalHost;

/// One run of a command: the world it works in, the library, and what the user sees.
class Session {
 public:
  /// With `keepTraffic` what passes on the link is kept for `traffic`.
  explicit Session(const CommonOptions& options, bool keepTraffic = false);
  /// In a world that the caller has made.
  Session(const CommonOptions& options, const hy_wristlog::simulator::DockBench& bench);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  hy_wristlog::Class_Main& main() { return *main_; }
  bool asJson() const { return options_.AsJson; }
  const std::string& traffic() const;
  /// The simulated dock's; none on the machine itself.
  std::optional<std::int16_t> simulatedPort() const;
  void showProgress(const std::string& text);
  /// Ends the progress line, so that what follows starts a line of its own.
  void endProgress();

 private:
  void start(bool keepTraffic);

  CommonOptions options_;
  std::optional<hy_wristlog::simulator::DockBench> bench_;
  std::optional<hy_wristlog::simulator::BenchScope> scope_;
  std::shared_ptr<TerminalHost> host_;
  std::unique_ptr<hy_wristlog::Class_Main> main_;
};

/// Raises `ReturnCode::Aborted` when the user has asked to stop an inquiry, which leaves a logger as it was.
void requireNotStopped();

/// The bench of `--simulate`: a docked logger that has been worn for some days.
hy_wristlog::simulator::DockBench makeWornBench(const std::string& model);

/// Whose name in --model is `name`: "vivid" or "kestrin2".
hy_wristlog::enmLoggerPointer modelFromName(const std::string& name);

}  // namespace wristlog
