#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "hy_wristlog/api.h"

namespace hy_wristlog {

class Class_VardenLogger;

/// Buttons of a message box; a set is their sum.
enum class MessageBoxButton : std::int32_t { Ok = 1, Yes = 2, No = 4, Cancel = 8 };

/// Receives the text of the console: the link's traffic, shown. Text is UTF-8; lines end with CR LF. It holds
/// what a logger sent unchanged, with control characters: a sink that writes to a terminal must not pass
/// those on.
class HY_WRISTLOG_API ConsoleSink {
 public:
  virtual ~ConsoleSink() = default;
  virtual void append(std::string_view text) = 0;
  /// The text so far is to be removed.
  virtual void clear() = 0;
  /// The "Last error:" field.
  virtual void showLastError(std::string_view text) = 0;
  /// The "Chars in RX buffer:" field.
  virtual void showReceiveCount(std::int32_t count) = 0;
};

/// What the library asks of the application. Every member has a default that suits a program without windows.
/// All calls come on the thread that called the library.
class HY_WRISTLOG_API Host {
 public:
  virtual ~Host() = default;

  /// Called while the library waits for a logger. The only place where an application may call
  /// `Class_Main::AbortComms` during a workflow.
  virtual void serveEvents() {}

  /// Shows a box with `buttons` (a sum of MessageBoxButton) and returns the one pressed. The default shows
  /// nothing and answers with the first of Cancel, No, Yes, Ok that is offered, so that it never consents.
  virtual MessageBoxButton showMessageBox(std::string_view title, std::string_view text,
                                          std::int32_t buttons);

  /// The library has become busy, or is not any more.
  virtual void showBusy(bool /*busy*/) {}

  /// A workflow has made its logger. A host that wants all events of the logger subscribes here.
  virtual void workflowStarted(const std::shared_ptr<Class_VardenLogger>& /*logger*/) {}

  /// How many bytes of the running download have come, and how many are expected; 0 is an unknown number.
  virtual void downloadProgress(std::int32_t /*bytesSoFar*/, std::int32_t /*bytesExpected*/) {}

  /// When not null, every link shows its traffic there from its start. The sink must outlive the link.
  virtual ConsoleSink* console() { return nullptr; }

  /// Replaces what the clipboard holds.
  virtual void copyToClipboard(std::string_view /*text*/) {}
};

/// Sets the host of the calling thread; null brings the default back.
HY_WRISTLOG_API void setHost(std::shared_ptr<Host> host);

}  // namespace hy_wristlog
