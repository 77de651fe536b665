#pragma once

#include <functional>
#include <string>

#include "recording/json.h"
#include "session/options.h"
#include "session/session.h"
#include "workflows/pendrel/PendrelWorkflows.h"

namespace wristlog {

/// How a command that failed left the logger, behind what it failed with.
inline constexpr const char* Unchanged = " No logger was changed.";

/// One run of a command with the Pendreader.
class PendrelSession {
 public:
  /// A port that the user names is remembered at once, as is that of a simulated reader. Raises NotWritable
  /// when it cannot be.
  PendrelSession(const CommonOptions& common, const ReaderOptions& reader, bool keepTraffic = false);

  hy_wristlog::PendrelWorkflows& workflows() { return workflows_; }
  hy_wristlog::Class_Pendrel& logger() { return *workflows_.LegacyLogger(); }
  hy_wristlog::Class_Main& main() { return session_.main(); }
  const std::string& traffic() const { return session_.traffic(); }
  bool asJson() const { return session_.asJson(); }
  void showProgress(const std::string& text) { session_.showProgress(text); }

  std::string meaningOf(std::int32_t code);
  /// What a good run says in words.
  using Words = std::function<void(const Speech&)>;
  /// Prints the code with its meaning, and the facts as JSON or, when it is good, the words. Returns the exit
  /// status. `whenFailed` goes on behind the meaning of another code: what became of the logger.
  int end(std::int32_t code, const Json& facts, const Words& words, const char* whenFailed = "");

 private:
  Session session_;
  hy_wristlog::PendrelWorkflows workflows_;
};

}  // namespace wristlog
