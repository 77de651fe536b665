#pragma once

#include <cstdint>
#include <string_view>

#include "link/CommState.h"

namespace hy_wristlog {

/// Control bytes of XMODEM-CRC (Chuck Forsberg, "XMODEM/YMODEM Protocol Reference").
namespace xmodem {
inline constexpr char Soh = 1, Stx = 2, CtrlC = 3, Eot = 4, Ack = 6, Nak = 21, Can = 24, WantCrc = 67;
}

inline constexpr const char* RetriesExceededText = "Maximum number of packet transmission retries exceeded";
inline constexpr std::int32_t PollInterval = 50;  ///< milliseconds
/// Milliseconds for each wait for an answer, unless the caller of a transfer names others.
inline constexpr std::int32_t TransferTimeout = 3000;

/// What both directions of one transfer share. Its procedure's clean-up restores the line's settings.
class XmodemSession {
 public:
  XmodemSession(CommState& link, const char* name, const char* source, std::int32_t timeout);
  XmodemSession(const XmodemSession&) = delete;
  XmodemSession& operator=(const XmodemSession&) = delete;

  Procedure& procedure() { return frame_.procedure; }

 protected:
  /// How a step of the transfer ended.
  enum class Step : std::uint8_t { GoOn, Done, Aborted, Failed };

  ~XmodemSession() = default;

  /// Changes the line's settings when they differ, and reads from now on `inputLen` bytes at a time.
  void setLine(const std::string& settings);
  bool abortRequested() const { return link_.abortRequested; }
  void cancelTwice();
  /// Cancels the transfer at the logger and fails.
  Step giveUp(std::int32_t number, const char* text);
  Step failWith(std::int32_t number, const char* text);
  /// Waits until no more bytes have come for a second, or five seconds of a peer that never stops.
  void awaitSilence();

  CommState& link_;
  TransferFrame frame_;
  const PortSteps& port_;
  const std::int32_t timeout_;

 private:
  void leave();

  const char* source_;
};

}  // namespace hy_wristlog
