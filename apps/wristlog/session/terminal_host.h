#pragma once

#include <functional>
#include <memory>
#include <string>

#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/host.h"

namespace wristlog {

/// The library's host in a terminal: progress and console on standard error, Ctrl-C as an abort request.
class TerminalHost : public hy_wristlog::Host, private hy_wristlog::ConsoleSink {
 public:
  /// With `showConsole` the link's traffic is shown; `onStop` is called when the user asks to stop. With
  /// `progress` the caller shows progress and catches interrupts.
  TerminalHost(bool showConsole, std::function<void()> onStop,
               std::function<void(const std::string&)> progress = {});
  ~TerminalHost() override;

  /// Sets whom Ctrl-C aborts; null for nobody.
  void attach(hy_wristlog::Class_Main* main) { main_ = main; }
  void endProgress();
  /// The logger of the last workflow; null before the first.
  const std::shared_ptr<hy_wristlog::Class_VardenLogger>& logger() const { return logger_; }

  void serveEvents() override;
  /// Shows the text. A question is answered by its default, since nobody can answer it here.
  hy_wristlog::MessageBoxButton showMessageBox(std::string_view title, std::string_view text,
                                               std::int32_t buttons) override;
  void workflowStarted(const std::shared_ptr<hy_wristlog::Class_VardenLogger>& logger) override;
  void downloadProgress(std::int32_t bytesSoFar, std::int32_t bytesExpected) override;
  hy_wristlog::ConsoleSink* console() override { return showConsole_ ? this : nullptr; }
  /// The terminal's clipboard; without a terminal there is none.
  void copyToClipboard(std::string_view text) override;
  void showProgress(const std::string& text);

 private:
  void append(std::string_view text) override;
  /// Does nothing: what was printed stays.
  void clear() override {}
  void showLastError(std::string_view text) override;
  void showReceiveCount(std::int32_t) override {}

  hy_wristlog::Class_Main* main_ = nullptr;
  std::shared_ptr<hy_wristlog::Class_VardenLogger> logger_;
  std::function<void()> onStop_;
  std::function<void(const std::string&)> progress_;
  bool showConsole_;
  bool showProgress_;
  bool progressShown_ = false;
  bool stopAnnounced_ = false;
};

}  // namespace wristlog
