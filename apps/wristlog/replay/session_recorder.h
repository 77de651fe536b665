#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "platform/recorded_world.h"

namespace wristlog {

/// Writes the record of a session while it goes on, so that a crash leaves what there was until then. With
/// `redact` it waits for the end, since only then it is known what to leave out.
class SessionRecorder : public hy_wristlog::platform::WireSink,
                        public std::enable_shared_from_this<SessionRecorder> {
 public:
  /// Keeps the record in memory alone.
  explicit SessionRecorder(bool redact) : redact_(redact), keeps_(true) {}
  /// Makes the file; with `redact` only tries to, so that none is left when the program is killed. Raises
  /// PathFileAccess, or FileExists when there is one of this name: with `numbered` another name is taken
  /// then, "session-2.jsonl" for "session.jsonl".
  SessionRecorder(const std::string& file, bool redact, bool numbered);
  ~SessionRecorder() override;
  SessionRecorder(const SessionRecorder&) = delete;
  SessionRecorder& operator=(const SessionRecorder&) = delete;

  /// From now on what the session does in `world` is the record's; returns the world to do it in.
  std::shared_ptr<hy_wristlog::platform::Platform> begin(
      const std::shared_ptr<hy_wristlog::platform::Platform>& world,
      const std::vector<std::string>& arguments, const std::string& simulated);
  void take(const hy_wristlog::platform::WireEvent& event) noexcept override;
  /// The user asks to stop.
  void stop();

  /// The longest delay of the ports that were opened.
  std::chrono::microseconds delay() const { return delay_; }

  /// Keeps the record in memory too, from its beginning on.
  void keep() { keeps_ = true; }
  /// The record until now, of one that is kept in memory, as that of a session which ends so; redacted when
  /// that was asked for. Raises InvalidCall when it cannot be.
  std::string text(int exitStatus, const std::string& words = {},
                   const std::optional<hy_wristlog::Failure>& failed = {}) const;
  /// Ends the file. False, after telling why, when it could not be written to its end. A record from which
  /// the subject cannot be left out is not kept: that is told, and is no fault of the session.
  bool finish(int exitStatus, const std::optional<hy_wristlog::Failure>& failed = {});

 private:
  void create();
  void remove();
  void write(const std::string& line) noexcept;

  std::string wanted_, file_;
  int descriptor_ = -1;
  bool redact_, keeps_ = false, numbered_ = false;
  std::int32_t trouble_ = 0;  ///< errno of the write that failed
  std::string lines_;         ///< only when it is needed later
  std::shared_ptr<hy_wristlog::platform::Platform> world_;
  double began_ = 0;
  std::chrono::microseconds delay_{};
  std::int32_t latest_ = 0;  ///< opening of a port
};

/// What the option names or else, numbered, HY_WRISTLOG_RECORD; null when nothing is to be recorded.
std::shared_ptr<SessionRecorder> recorderFor(const std::string& option, bool redact);

}  // namespace wristlog
