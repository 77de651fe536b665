#pragma once

#include <string>

#include "base/kept_text.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/host.h"

namespace wristlog {

/// What a host shows and keeps of a session.
struct HostOptions {
  bool ShowConsole = false;  ///< the link's traffic on standard error
  bool KeepTraffic = false;  ///< the same, kept for `traffic`
};

/// The library's host in a terminal: progress and console on standard error, Ctrl-C as an abort request.
class TerminalHost : public hy_wristlog::Host, private hy_wristlog::ConsoleSink {
 public:
  explicit TerminalHost(const HostOptions& options);
  ~TerminalHost() override;

  /// Sets whom Ctrl-C aborts; null for nobody.
  void attach(hy_wristlog::Class_Main* main) { main_ = main; }
  void endProgress();
  /// The session's traffic and the library's remarks; of more than some megabytes only the beginning and the
  /// end.
  const std::string& traffic() const { return traffic_.text(); }

  void serveEvents() override;
  /// Shows the text. A question is answered by its default, since nobody can answer it here.
  hy_wristlog::MessageBoxButton showMessageBox(std::string_view title, std::string_view text,
                                               std::int32_t buttons) override;
  void workflowStarted(const std::shared_ptr<hy_wristlog::Class_VardenLogger>& logger) override;
  void downloadProgress(std::int32_t bytesSoFar, std::int32_t bytesExpected) override;
  hy_wristlog::ConsoleSink* console() override {
    return options_.ShowConsole || options_.KeepTraffic ? this : nullptr;
  }
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
  HostOptions options_;
  bool showProgress_;
  bool progressShown_ = false;
  bool stopAnnounced_ = false;
  hy_wristlog::KeptText traffic_{std::size_t{8} << 20};
};

}  // namespace wristlog
