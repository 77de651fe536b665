#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace hy_wristlog {

/// What SerialControl::CommEvent can say.
namespace comm_event {
inline constexpr std::int32_t Send = 1, Receive = 2, Cts = 3, Dsr = 4, Cd = 5, Ring = 6, Break = 1001,
                              CtsTimeout = 1002, DsrTimeout = 1003, Framing = 1004, Overrun = 1006,
                              CdTimeout = 1007, ReceiveOverflow = 1008, Parity = 1009, TransmitFull = 1010;
}

/// One serial port with a receive buffer of its own, a transmit queue and events. Properties can be set while
/// the port is closed and take effect when it opens. Raises PortOpen (not while the port is open),
/// InvalidPort (no such port), PortNotAvailable (already open, or held by another program),
/// InvalidPortSettings (settings that are not settings), PortClosed (the port is closed) and PortStateFailure
/// (the port refuses its settings, or has gone).
class SerialControl {
 public:
  enum class Mode : std::uint8_t { Text, Binary };

  explicit SerialControl(platform::SerialPorts& ports) : ports_(ports) {}

  /// Called by deliverEvents once for each event, with CommEvent set.
  std::function<void()> OnComm;
  std::int32_t CommEvent() const { return commEvent_; }

  void CommPort(std::int16_t number);
  bool PortOpen() const { return port_ != nullptr; }
  void PortOpen(bool open);

  const std::string& Settings() const { return settings_; }
  void Settings(std::string_view text);
  /// Only 0, none, is supported.
  void Handshaking(std::int32_t mode) const;
  bool DTREnable() const { return dtr_; }
  void DTREnable(bool on);
  bool RTSEnable() const { return rts_; }
  void RTSEnable(bool on);
  /// False while the port is closed.
  bool DSRHolding();

  /// Kept for callers to read back only: Input gives raw bytes in both modes.
  Mode InputMode() const { return inputMode_; }
  void InputMode(Mode mode) { inputMode_ = mode; }
  /// How many bytes one Input takes; 0 for all that wait.
  std::int32_t InputLen() const { return inputLen_; }
  void InputLen(std::int32_t length);
  /// Bytes that arrive while this many wait are lost, which `ReceiveOverflow` tells.
  void InBufferSize(std::size_t size);
  /// How many waiting bytes cause a receive event; 0 for no such events.
  std::int32_t RThreshold() const { return rThreshold_; }
  void RThreshold(std::int32_t count) { rThreshold_ = count; }

  /// Bytes that have been taken from the port and wait to be read.
  std::size_t received() const { return received_.size() - taken_; }
  /// Waiting bytes; 0 while the port is closed.
  std::size_t InBufferCount();
  void discardInput();
  std::string Input();
  /// Returns when a byte may wait, and at the latest after `longest`.
  void awaitInput(std::chrono::microseconds longest);
  /// How much longer an answer is under way than at a port of this machine, in seconds.
  double delay() const { return port_ ? std::chrono::duration<double>(port_->delay()).count() : 0; }
  /// Bytes that have not left yet; 0 while the port is closed.
  std::size_t OutBufferCount();
  void Output(std::string_view bytes);

  /// Calls OnComm for what happened since the last call. A port that has gone causes no events; the next
  /// operation on it raises PortStateFailure.
  void deliverEvents();

 private:
  void open();
  void pump();
  void receive();

  platform::SerialPorts& ports_;
  std::unique_ptr<platform::SerialPort> port_;
  std::int16_t commPort_ = 1;
  std::string settings_ = "9600,n,8,1";
  bool dtr_ = false, rts_ = false;
  Mode inputMode_ = Mode::Text;
  std::int32_t inputLen_ = 0, rThreshold_ = 0, commEvent_ = 0;
  std::size_t inBufferSize_ = 1024;
  std::string received_;  ///< the waiting bytes begin at taken_
  std::size_t taken_ = 0;
  std::string unsent_;
  bool arrived_ = false, overflowed_ = false;
  platform::ModemLines lines_;
};

}  // namespace hy_wristlog
