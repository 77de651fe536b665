#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "hy_wristlog/logger_events.h"
#include "link/Form_Comm.h"

namespace hy_wristlog {

/// A logger object's part of the link: its Form_Comm, the listeners of its events, and its diagnostic window.
/// When a logger ends while the window is shown, the user is asked whether to keep the text.
class LoggerLink : private CommEvents {
 public:
  LoggerLink() : mfrmComm_(new Form_Comm(this)) {}
  ~LoggerLink() override;
  LoggerLink(const LoggerLink&) = delete;
  LoggerLink& operator=(const LoggerLink&) = delete;

  Form_Comm& link() { return *mfrmComm_; }
  std::vector<std::shared_ptr<LoggerEvents>> listeners;

  /// Adds a listener; does nothing for null.
  void subscribe(std::shared_ptr<LoggerEvents> events);
  void unsubscribe(const std::shared_ptr<LoggerEvents>& events);

 protected:
  /// Tells the listeners and the host how many bytes of a recording have come; 0 expected: not known.
  void tellDownload(std::int32_t BytesSoFar, std::int32_t BytesExpected);

  void CommEventError(std::int32_t ErrorNum, std::string& ErrorDescription) override;
  void CommProgress(std::string& ProgressText) override;
  void AbortAcknowledged() override;

 private:
  std::unique_ptr<Form_Comm> mfrmComm_;
};

}  // namespace hy_wristlog
