#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "errors/Procedure.h"
#include "link/SerialControl.h"

namespace hy_wristlog {

/// The serial control as a procedure uses it. Every operation is one statement of the procedure.
class PortSteps {
 public:
  PortSteps(SerialControl& control, Procedure& procedure) : control_(control), procedure_(procedure) {}

  void CommPort(std::int16_t number) const {
    procedure_.statement([&] { control_.CommPort(number); });
  }
  bool PortOpen() const { return control_.PortOpen(); }
  void PortOpen(bool open) const {
    procedure_.statement([&] { control_.PortOpen(open); });
  }
  const std::string& Settings() const { return control_.Settings(); }
  void Settings(std::string_view text) const {
    procedure_.statement([&] { control_.Settings(text); });
  }
  void Handshaking(std::int32_t mode) const {
    procedure_.statement([&] { control_.Handshaking(mode); });
  }
  bool DTREnable() const { return control_.DTREnable(); }
  void DTREnable(bool on) const {
    procedure_.statement([&] { control_.DTREnable(on); });
  }
  bool RTSEnable() const { return control_.RTSEnable(); }
  void RTSEnable(bool on) const {
    procedure_.statement([&] { control_.RTSEnable(on); });
  }
  void InputMode(SerialControl::Mode mode) const { control_.InputMode(mode); }
  void InputLen(std::int32_t length) const {
    procedure_.statement([&] { control_.InputLen(length); });
  }
  void InBufferSize(std::size_t size) const {
    procedure_.statement([&] { control_.InBufferSize(size); });
  }
  void RThreshold(std::int32_t count) const { control_.RThreshold(count); }
  std::size_t InBufferCount() const {
    return procedure_.statement([&] { return control_.InBufferCount(); });
  }
  void discardInput() const {
    procedure_.statement([&] { control_.discardInput(); });
  }
  std::string Input() const {
    return procedure_.statement([&] { return control_.Input(); });
  }
  std::size_t OutBufferCount() const {
    return procedure_.statement([&] { return control_.OutBufferCount(); });
  }
  void Output(std::string_view bytes) const {
    procedure_.statement([&] { control_.Output(bytes); });
  }

 private:
  SerialControl& control_;
  Procedure& procedure_;
};

/// Raises a failure of the procedure's own in a statement, so that a site's action may go on after it.
inline void raiseIn(Procedure& procedure, std::int32_t number, const char* source, const char* text) {
  procedure.statement([&] { throw Failure(number, source, text); });
}

/// Counts the PortStateFailures in one call of a procedure and opens the port again after each.
class PortRecovery {
 public:
  explicit PortRecovery(SerialControl& control) : control_(control) {}

  /// Closes an open port and opens it again. True when the failed statement is worth another try; false at
  /// once for a port that does not open.
  bool reopen() {
    return again([&] {
      control_.PortOpen(false);
      control_.PortOpen(true);
    });
  }

  /// Does the same but leaves the port closed.
  bool close() {
    return again([&] { control_.PortOpen(false); });
  }

  bool givenUp() const { return failures_ > MostRepeats; }

 private:
  static constexpr std::int32_t MostRepeats = 10;

  template <class Step>
  bool again(Step&& step) {
    if (++failures_ > MostRepeats) return false;
    if (!control_.PortOpen()) return true;
    try {
      step();
    } catch (const Failure&) {
      failures_ = MostRepeats + 1;
    }
    return !givenUp();
  }

  SerialControl& control_;
  std::int32_t failures_ = 0;
};

}  // namespace hy_wristlog
