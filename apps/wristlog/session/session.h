#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/enumerations.h"
#include "recording/recording_files.h"
#include "session/options.h"
#include "simulator/bench.h"
#include "words/say.h"

namespace wristlog {

class SessionRecorder;
class TerminalHost;

/// One run of a command: the world it works in, the library, and what the user sees.
class Session {
 public:
  /// With `keepRecord` the session is recorded for `writeRecord`, whether the user wants a record or not.
  explicit Session(const CommonOptions& options, bool keepRecord = false);
  /// Works in a world that the caller has made.
  Session(const CommonOptions& options, const hy_wristlog::simulator::DockBench& bench);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  hy_wristlog::Class_Main& main() { return *main_; }
  /// The logger of the last workflow; null before the first.
  std::shared_ptr<hy_wristlog::Class_VardenLogger> logger() const;
  bool asJson() const { return options_.AsJson; }
  /// The port of the Pendreader that was chosen as the dock; 0 for none.
  std::int16_t chosenReaderPort() const { return chosenReaderPort_; }
  /// Leaves the record of a session that failed with `code` in session.log beside `files`, and tells where.
  void writeRecord(const RecordingFiles& files, std::int32_t code, const std::string& meaning);
  /// The port of the simulated dock; none on the machine itself.
  std::optional<std::int16_t> simulatedPort() const;
  /// How much longer an answer was under way than at a port of this machine, in seconds; 0 without a record.
  double networkDelay() const;
  void showProgress(const std::string& text);
  /// Ends the progress line, so that what follows starts a line of its own.
  void endProgress();

 private:
  void start(bool keepRecord);

  CommonOptions options_;
  std::optional<hy_wristlog::simulator::DockBench> bench_;
  std::optional<hy_wristlog::platform::WorldScope> scope_;
  std::shared_ptr<SessionRecorder> recorder_;
  std::optional<hy_wristlog::platform::WorldScope> chosen_, recorded_;
  std::int16_t chosenReaderPort_ = 0;
  std::shared_ptr<TerminalHost> host_;
  std::unique_ptr<hy_wristlog::Class_Main> main_;
};

/// Raises `ReturnCode::Aborted` when the user has asked to stop an inquiry, which leaves a logger as it was.
void requireNotStopped();

/// The bench of `--simulate`: a docked logger that has been worn for some days.
hy_wristlog::simulator::DockBench makeWornBench(const std::string& model);

/// `world` as a command sees it: with the one dock that --dock names or, without that option, the variable
/// HY_WRISTLOG_DOCK. Raises what `useDock` raises, and WrongLogger for a Pendreader that is not asked for. A
/// command that uses no link has no dock.
std::shared_ptr<hy_wristlog::platform::Platform> worldFor(
    const CommonOptions& options, const std::shared_ptr<hy_wristlog::platform::Platform>& world);

/// The model that --model names "vivid" or "kestrin2"; without a name the only one of which docks are
/// connected. Raises TooManyDocks for docks of both and NotFound without any.
hy_wristlog::enmLoggerPointer modelFromName(const std::string& name);

}  // namespace wristlog
