#pragma once

#include <functional>
#include <string>

#include "recording/json.h"
#include "session/options.h"
#include "session/session.h"
#include "workflows/pendrel/PendrelWorkflows.h"

namespace wristlog {

/// Appended to a failure's words: how the command left the logger.
inline constexpr const char* Unchanged = " No logger was changed.";

/// One run of a command with the Pendreader.
class PendrelSession {
 public:
  /// Remembers a port that the user names, and that of a simulated reader, at once. Raises NotWritable when
  /// it cannot.
  PendrelSession(const CommonOptions& common, const ReaderOptions& reader, bool keepRecord = false);

  hy_wristlog::PendrelWorkflows& workflows() { return workflows_; }
  hy_wristlog::Class_Pendrel& logger() { return *workflows_.LegacyLogger(); }
  hy_wristlog::Class_Main& main() { return session_.main(); }
  void writeRecord(const RecordingFiles& files, std::int32_t code) {
    session_.writeRecord(files, code, meaningOf(code));
  }
  bool asJson() const { return session_.asJson(); }
  void showProgress(const std::string& text) { session_.showProgress(text); }

  std::string meaningOf(std::int32_t code);
  /// Prints what a good run says.
  using Words = std::function<void(const Speech&)>;
  /// Prints the code with its meaning, and the facts as JSON or, when it is good, the words. Returns the exit
  /// status. With another code `whenFailed` follows its meaning and says what became of the logger.
  int end(std::int32_t code, const Json& facts, const Words& words, const char* whenFailed = "");

 private:
  Session session_;
  hy_wristlog::PendrelWorkflows workflows_;
};

}  // namespace wristlog
