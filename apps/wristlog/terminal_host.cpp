#include "terminal_host.h"

#include <unistd.h>

#include <csignal>
#include <iostream>

namespace wristlog {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int) {
  interrupted = 1;
  std::signal(SIGINT, SIG_DFL);
}

class ProgressEvents : public hy_wristlog::VardenLoggerEvents {
 public:
  explicit ProgressEvents(TerminalHost& host) : host_(host) {}
  void CommProgress(std::string& text) override { host_.showProgress(text); }

 private:
  TerminalHost& host_;
};

}  // namespace

bool interruptRequested() { return interrupted != 0; }

TerminalHost::TerminalHost(bool showConsole)
    : showConsole_(showConsole), showProgress_(!showConsole && isatty(STDERR_FILENO) == 1) {
  std::signal(SIGINT, onInterrupt);
}

TerminalHost::~TerminalHost() { endProgress(); }

void TerminalHost::serveEvents() {
  if (interrupted != 0 && main_ != nullptr) main_->AbortComms();
}

void TerminalHost::workflowStarted(const std::shared_ptr<hy_wristlog::Class_VardenLogger>& logger) {
  if (showProgress_) logger->subscribe(std::make_shared<ProgressEvents>(*this));
}

void TerminalHost::downloadProgress(std::int32_t bytesSoFar, std::int32_t bytesExpected) {
  std::string text = "Read " + std::to_string(bytesSoFar);
  if (bytesExpected > 0) text += " of " + std::to_string(bytesExpected);
  showProgress(text + " bytes");
}

void TerminalHost::showProgress(const std::string& text) {
  if (!showProgress_) return;
  std::cerr << "\r\033[K" << text << std::flush;
  progressShown_ = true;
}

void TerminalHost::endProgress() {
  if (progressShown_) std::cerr << "\r\033[K" << std::flush;
  progressShown_ = false;
}

void TerminalHost::append(std::string_view text) {
  for (const char c : text)
    if (c != '\r') std::cerr << c;
  std::cerr << std::flush;
}

void TerminalHost::showLastError(std::string_view text) { std::cerr << "\nLast error: " << text << '\n'; }

}  // namespace wristlog
