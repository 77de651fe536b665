#include "session/terminal_host.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "debugger/clipboard.h"
#include "session/process.h"
#include "words/say.h"

namespace wristlog {
namespace {

class ProgressEvents : public hy_wristlog::LoggerEvents {
 public:
  explicit ProgressEvents(TerminalHost& host) : host_(host) {}
  void CommProgress(std::string& text) override { host_.showProgress(text); }

 private:
  TerminalHost& host_;
};

}  // namespace

TerminalHost::TerminalHost(bool showConsole, std::function<void()> onStop,
                           std::function<void(const std::string&)> progress)
    : onStop_(std::move(onStop)),
      progress_(std::move(progress)),
      showConsole_(showConsole),
      showProgress_(progress_ || (!showConsole && isatty(STDERR_FILENO) == 1)) {
  if (!progress_) catchInterrupts();
}

TerminalHost::~TerminalHost() { endProgress(); }

void TerminalHost::serveEvents() {
  if (!interruptRequested() || main_ == nullptr) return;
  if (!stopAnnounced_) onStop_();
  main_->AbortComms();
  if (std::exchange(stopAnnounced_, true) || progress_) return;
  endProgress();
  complain() << "Stopping, and leaving the logger in order. Ctrl-C again ends at once.\n";
}

hy_wristlog::MessageBoxButton TerminalHost::showMessageBox(std::string_view title, std::string_view text,
                                                           std::int32_t buttons) {
  if (buttons == static_cast<std::int32_t>(hy_wristlog::MessageBoxButton::Ok)) {
    endProgress();
    complain().lines(text, "  ");
  }
  return Host::showMessageBox(title, text, buttons);
}

void TerminalHost::workflowStarted(const std::shared_ptr<hy_wristlog::Class_VardenLogger>& logger) {
  logger_ = logger;
  if (showProgress_) logger->subscribe(std::make_shared<ProgressEvents>(*this));
}

void TerminalHost::downloadProgress(std::int32_t bytesSoFar, std::int32_t bytesExpected) {
  // The last packet is padded, so more bytes come than the recording has.
  if (bytesExpected > 0) bytesSoFar = std::min(bytesSoFar, bytesExpected);
  std::string text = "Read " + std::to_string(bytesSoFar);
  if (bytesExpected > 0) text += " of " + std::to_string(bytesExpected);
  showProgress(text + " bytes");
}

void TerminalHost::showProgress(const std::string& text) {
  if (!showProgress_ || stopAnnounced_) return;
  if (progress_) return progress_(text);
  complain() << "\r\033[K" << text;
  complain().flush();
  progressShown_ = true;
}

void TerminalHost::endProgress() {
  if (progress_) return;
  if (progressShown_) complain() << "\r\033[K";
  complain().flush();
  progressShown_ = false;
}

void TerminalHost::append(std::string_view text) { complain().traffic(text).flush(); }

void TerminalHost::showLastError(std::string_view text) { complain() << "\nLast error: " << text << "\n"; }

void TerminalHost::copyToClipboard(std::string_view text) {
  for (const int file : {STDERR_FILENO, STDOUT_FILENO})
    if (isatty(file) == 1) {
      writeWhole(file, clipboardSequence(text));
      return;
    }
}

}  // namespace wristlog
