#pragma once

#include <string>

#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/host.h"

namespace wristlog {

/// The library's host in a terminal: progress and console on standard error, Ctrl-C as an abort request.
class TerminalHost : public hy_wristlog::Host, private hy_wristlog::ConsoleSink {
 public:
  explicit TerminalHost(bool showConsole);
  ~TerminalHost() override;

  /// Whom Ctrl-C aborts; null for nobody.
  void attach(hy_wristlog::Class_Main* main) { main_ = main; }
  void endProgress();

  void serveEvents() override;
  void workflowStarted(const std::shared_ptr<hy_wristlog::Class_VardenLogger>& logger) override;
  void downloadProgress(std::int32_t bytesSoFar, std::int32_t bytesExpected) override;
  hy_wristlog::ConsoleSink* console() override { return showConsole_ ? this : nullptr; }
  void showProgress(const std::string& text);

 private:
  void append(std::string_view text) override;
  void showLastError(std::string_view text) override;
  void showReceiveCount(std::int32_t) override {}

  hy_wristlog::Class_Main* main_ = nullptr;
  bool showConsole_;
  bool showProgress_;
  bool progressShown_ = false;
};

/// True once the user has pressed Ctrl-C. A second Ctrl-C ends the program.
bool interruptRequested();

}  // namespace wristlog
