#include "link/LoggerLink.h"

#include <utility>

#include "platform/platform.h"

namespace hy_wristlog {
namespace {

/// A listener may unsubscribe while it is told.
template <class Tell>
void tellAll(const std::vector<std::shared_ptr<LoggerEvents>>& listeners, Tell&& tell) {
  const auto present = listeners;  // NOLINT(performance-unnecessary-copy-initialization)
  for (const auto& listener : present) tell(*listener);
}

/// Asks whether the diagnostic window's text is to be kept, and closes the window.
void closeWindow(Form_Comm& link) {
  if (link.Get_Visible()) {
    constexpr std::int32_t YesNoCancel = static_cast<std::int32_t>(MessageBoxButton::Yes) |
                                         static_cast<std::int32_t>(MessageBoxButton::No) |
                                         static_cast<std::int32_t>(MessageBoxButton::Cancel);
    const auto pressed = platform::current().host().showMessageBox(
        "Copy diag to clipboard?",
        "Do you want a copy of the text in the diag window copied to the clipboard?", YesNoCancel);
    if (pressed == MessageBoxButton::Yes) link.cmdCopyAll();
  }
  link.hide();
}

}  // namespace

LoggerLink::~LoggerLink() {
  try {
    closeWindow(*mfrmComm_);
  } catch (...) {  // NOLINT(bugprone-empty-catch): a failing window must not keep a logger from ending
  }
}

void LoggerLink::subscribe(std::shared_ptr<LoggerEvents> events) {
  if (events) listeners.push_back(std::move(events));
}

void LoggerLink::unsubscribe(const std::shared_ptr<LoggerEvents>& events) { std::erase(listeners, events); }

void LoggerLink::CommEventError(std::int32_t ErrorNum, std::string& ErrorDescription) {
  tellAll(listeners, [&](auto& listener) { listener.CommEventError(ErrorNum, ErrorDescription); });
}

void LoggerLink::CommProgress(std::string& ProgressText) {
  tellAll(listeners, [&](auto& listener) { listener.CommProgress(ProgressText); });
}

void LoggerLink::tellDownload(std::int32_t BytesSoFar, std::int32_t BytesExpected) {
  tellAll(listeners, [&](auto& listener) { listener.DownloadProgress(BytesSoFar, BytesExpected); });
  platform::current().host().downloadProgress(BytesSoFar, BytesExpected);
}

void LoggerLink::AbortAcknowledged() {
  tellAll(listeners, [](auto& listener) { listener.AbortAcknowledged(); });
}

}  // namespace hy_wristlog
