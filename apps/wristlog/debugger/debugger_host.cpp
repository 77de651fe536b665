#include "debugger/debugger_host.h"

#include <algorithm>

#include "engineering/recording.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

class Progress : public hw::LoggerEvents {
 public:
  explicit Progress(DebuggerScreen& screen) : screen_(screen) {}
  void CommProgress(std::string& text) override { screen_.showState(text); }

 private:
  DebuggerScreen& screen_;
};

/// Runs a button's action on the logger; false when the logger has ended.
template <class Press>
bool pressing(const std::weak_ptr<hw::Class_VardenLogger>& logger, Press&& press) {
  const auto present = logger.lock();
  if (present) press(*present);
  return present != nullptr;
}

}  // namespace

DebuggerHost::DebuggerHost(DebuggerScreen& screen) : screen_(screen) {
  // A key may be pressed while the library is busy, so the overrun is passed to the link when events are
  // served.
  screen_.Pressed = {[this] { link_.Clear ? link_.Clear() : clear(); }, [this] { overrunWanted_ = true; }};
}

DebuggerHost::~DebuggerHost() { screen_.Pressed = {}; }

void DebuggerHost::serveEvents() {
  screen_.attend();
  if (screen_.stopRequested() && Abort) Abort();
  if (overrunWanted_ && link_.DataOverrun) link_.DataOverrun();
  overrunWanted_ = false;
}

/// Hides an ending logger's question whether to keep the console's text, since there are keys for that. Other
/// boxes become a line among the traffic. The answer is the default.
hw::MessageBoxButton DebuggerHost::showMessageBox(std::string_view title, std::string_view text,
                                                  std::int32_t buttons) {
  if (title != "Copy diag to clipboard?")
    append("\n-- " + std::string(title) + ": " + std::string(text) + "\n");
  return Host::showMessageBox(title, text, buttons);
}

void DebuggerHost::workflowStarted(const std::shared_ptr<hw::Class_VardenLogger>& logger) {
  logger->subscribe(std::make_shared<Progress>(screen_));
  const std::weak_ptr<hw::Class_VardenLogger> present = logger;
  attach({[this, present] {
            if (!pressing(present, engineering::clearConsole)) clear();
          },
          [present] { pressing(present, engineering::generateDataOverrun); }});
}

void DebuggerHost::downloadProgress(std::int32_t bytesSoFar, std::int32_t bytesExpected) {
  // The last packet is padded, so more bytes come than the recording has.
  if (bytesExpected > 0) bytesSoFar = std::min(bytesSoFar, bytesExpected);
  std::string text = "Read " + std::to_string(bytesSoFar);
  if (bytesExpected > 0) text += " of " + std::to_string(bytesExpected);
  screen_.showState(text + " bytes");
}

void DebuggerHost::append(std::string_view text) {
  screen_.Text.append(text);
  screen_.textChanged();
}

void DebuggerHost::clear() {
  screen_.Text.clear();
  screen_.textChanged();
}

}  // namespace wristlog
