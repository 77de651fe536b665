#pragma once

#include <functional>
#include <memory>
#include <string>

#include "debugger/debugger_screen.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/host.h"

namespace wristlog {

/// The library's host for the Communications Debugger. It sends traffic, progress and faults to the screen,
/// and the screen's buttons to the link of the workflow's logger.
class DebuggerHost : public hy_wristlog::Host, private hy_wristlog::ConsoleSink {
 public:
  explicit DebuggerHost(DebuggerScreen& screen);
  ~DebuggerHost() override;

  /// Called when the user wants the workflow to stop.
  std::function<void()> Abort;
  /// Sets what the buttons do. Without a link the host itself empties the screen's text.
  void attach(DebuggerScreen::Buttons link) { link_ = std::move(link); }

  void serveEvents() override;
  hy_wristlog::MessageBoxButton showMessageBox(std::string_view title, std::string_view text,
                                               std::int32_t buttons) override;
  void workflowStarted(const std::shared_ptr<hy_wristlog::Class_VardenLogger>& logger) override;
  void downloadProgress(std::int32_t bytesSoFar, std::int32_t bytesExpected) override;
  hy_wristlog::ConsoleSink* console() override { return this; }
  void copyToClipboard(std::string_view text) override { DebuggerScreen::copyToClipboard(text); }

 private:
  void append(std::string_view text) override;
  void clear() override;
  void showLastError(std::string_view text) override { screen_.showLastError(text); }
  void showReceiveCount(std::int32_t count) override { screen_.showReceiveCount(count); }

  DebuggerScreen& screen_;
  DebuggerScreen::Buttons link_;
  bool overrunWanted_ = false;
};

}  // namespace wristlog
