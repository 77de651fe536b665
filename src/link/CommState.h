#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/kept_text.h"
#include "link/Form_Comm.h"
#include "link/PortSteps.h"
#include "link/SerialControl.h"

namespace hy_wristlog {

inline constexpr std::size_t ReceiveBufferSize = 17000;

/// More than any logger's memory holds, with room for packets that come again.
inline constexpr std::size_t MostTransferBytes = std::size_t{20} << 20;

/// Bytes: three times what passes when a megabyte is retrieved.
inline constexpr std::size_t MostConsoleText = std::size_t{16} << 20;

/// The inside of a Form_Comm: its control, its world and its console.
struct CommState final : platform::EventSource {
  CommState(Form_Comm& form, CommEvents* owner);
  CommState(const CommState&) = delete;
  CommState& operator=(const CommState&) = delete;
  ~CommState();

  void serveEvents() override;

  double timer() const { return world->clock().timer(); }
  /// The end of a wait for an answer.
  double deadline(std::int32_t milliseconds) const {
    return timer() + milliseconds / 1000.0 + control.delay();
  }
  /// Whether a wait that nothing else breaks off is over.
  bool isOver(double deadline) const { return timer() > deadline || world->endsWaits(); }
  bool consoleInUse() const { return consoleVisible || form.RaiseEventOnChar; }
  void progress(std::string text) const;
  /// Serves events and lets so many milliseconds pass, also after an abort request.
  void pause(std::int32_t milliseconds) const;
  bool wakesOnInput() const { return world->wakesOnInput(); }
  /// One turn of a wait for bytes that ends at `deadline`: serves events, and lets `round` milliseconds pass
  /// or, where waits end with their bytes, idles. Returns how many milliseconds of waiting it stands for.
  std::int32_t turn(std::int32_t round, double deadline, std::size_t missing = 1);
  /// Lets a millisecond pass; where waits end with their bytes, the time until `missing` more than the `seen`
  /// ones may be there, until the next round of events or until `slack` milliseconds after the deadline,
  /// which are those by which a fixed round can pass it. Returns how many milliseconds of waiting it stands
  /// for, at least 1: a pause of the process does not count.
  std::int32_t idle(double deadline, std::size_t missing = 1, std::size_t seen = 0, std::int32_t slack = 1);
  /// Drops the bytes that wait, after showing them when the console is in use.
  void flush(const PortSteps& port);
  /// Shows bytes as "[" hexadecimal digits "]" when the console is in use.
  void showHex(std::string_view bytes, std::string_view lineEnd = {});
  /// The settings text; 0 means "as last set". Fails with InvalidSettings, with one source for all transfers.
  std::string transferSettings(Procedure& procedure, std::int32_t baudRate, std::int32_t dataBits,
                               std::int32_t parity, std::int32_t stopBits) const;
  void tellLost(std::int32_t attempt, std::int32_t most, std::int32_t packet) const {
    owner->XModemLostPacket(static_cast<std::int16_t>(attempt), static_cast<std::int16_t>(most),
                            static_cast<std::int16_t>(packet));
  }

  Form_Comm& form;
  CommEvents* owner;
  std::shared_ptr<platform::Platform> world;
  SerialControl control;
  std::int32_t lastCOMerrorNum = 0;
  bool doingXMODEM = false, abortRequested = false;
  std::size_t mostTransferBytes = MostTransferBytes;
  std::vector<Class_Packet> receivedPackets;  ///< the good ones of a transfer that has not ended well

  bool toggling = false;
  std::int16_t toggleInterval = 0;  ///< milliseconds
  double nextToggle = 0;

  ConsoleSink* sink = nullptr;
  bool consoleVisible = false;
  KeptText consoleText{MostConsoleText};
  std::size_t selectionStart = 0, selectionLength = 0;

 private:
  void comSerial_OnComm();

  CommEvents nobody_;
};

inline std::span<const std::uint8_t> asBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline std::string_view asText(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The frame of a procedure that changes the control's settings for a while. It repeats what failed because
/// of the port's state and restores the settings.
class TransferFrame {
 public:
  TransferFrame(CommState& state, const char* name)
      : procedure("Form_Comm", name),
        port(state.control, procedure),
        settings(state.control.Settings()),
        inputMode(state.control.InputMode()),
        inputLen(state.control.InputLen()),
        rThreshold(state.control.RThreshold()),
        recovery_(state.control) {
    procedure.trap([this](Failure& failure) {
      return failure.Number == FailureNumber::PortStateFailure && recovery_.reopen() ? TrapAnswer::Repeat
                                                                                     : TrapAnswer::Dispatch;
    });
  }

  bool portUsable() const { return !recovery_.givenUp(); }

  Procedure procedure;
  PortSteps port;
  const std::string settings;
  const SerialControl::Mode inputMode;
  const std::int32_t inputLen, rThreshold;

 private:
  PortRecovery recovery_;
};

}  // namespace hy_wristlog
