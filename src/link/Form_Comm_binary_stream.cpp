#include <algorithm>
#include <vector>

#include "base/faults.h"
#include "link/CommState.h"
#include "link/line_settings.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr const char* Source = "Form_Comm.fncGetBinaryStream";

struct Arrival {
  std::size_t Count = 0;
  bool Overrun = false;
};

/// How many turns of about a millisecond a stream may take: its waits plus four times the line's own time.
std::int64_t mostTurns(std::string_view settings, std::size_t bytes, std::int64_t waits) {
  constexpr double BitsOfCharacter = 12, Leisure = 4, MillisecondsPerSecond = 1000, SlowestBaud = 110;
  const auto line = parseLineSettings(settings);
  const double baud = line ? line->Baud : SlowestBaud;
  const auto count = static_cast<double>(std::min(bytes, ReceiveBufferSize));
  return waits + static_cast<std::int64_t>(Leisure * MillisecondsPerSecond * count * BitsOfCharacter / baud);
}

/// Watches the receive buffer until it holds `enough` or has not grown for a while: `firstWait` before the
/// first growth, `nextWait` after each. Turns are counted instead of time, since a pause of the process is no
/// pause of the stream.
Arrival watchArrival(CommState& state, const PortSteps& port, std::size_t enough, std::int32_t firstWait,
                     std::int32_t nextWait) {
  Arrival arrival;
  std::int64_t turns = mostTurns(port.Settings(), enough, std::int64_t{firstWait} + nextWait);
  double deadline = state.deadline(firstWait);
  for (;;) {
    bool late = state.isOver(deadline);
    const std::size_t waiting = port.InBufferCount();
    if (waiting > arrival.Count) {
      arrival.Count = waiting;
      deadline = state.deadline(nextWait);
      late = state.world->endsWaits();
    }
    if (state.lastCOMerrorNum == comm_event::Overrun) {
      arrival.Overrun = true;
      state.lastCOMerrorNum = 0;
    }
    if (state.consoleInUse() && state.sink != nullptr)
      state.sink->showReceiveCount(static_cast<std::int32_t>(arrival.Count));
    state.world->serveEvents();
    if (late || arrival.Count >= enough || turns <= 0) return arrival;
    turns -= state.idle(deadline, enough - arrival.Count, arrival.Count);
  }
}

std::vector<std::uint8_t> takeBytes(CommState& state, const PortSteps& port) {
  const std::string read = port.Input();
  const auto bytes = asBytes(read);
  if (state.consoleInUse())
    for (const std::uint8_t byte : bytes) state.form.subShowCOM(std::to_string(byte) + "\r\n");
  return {bytes.begin(), bytes.end()};
}

}  // namespace

std::vector<std::uint8_t> Form_Comm::fncGetBinaryStream(std::int32_t& NumBytes, std::int32_t vBaudRate,
                                                        std::int32_t vDataBits, std::int32_t vParity,
                                                        std::int32_t vStopBits, std::int32_t PageDelay,
                                                        std::int32_t CmdDelay, bool IgnoreLength,
                                                        std::int32_t ByteDelay) {
  TransferFrame frame{*state_, "fncGetBinaryStream"};
  Procedure& procedure = frame.procedure;
  const PortSteps& port = frame.port;
  procedure.passesOn(InvalidSettings, TooFewBytes, DataOverrun);
  procedure.cleanUp([&] {
    if (!frame.portUsable()) return;
    SerialControl& control = state_->control;
    ignoringFailures([&] { control.Settings(frame.settings); });
    control.InputMode(frame.inputMode);
    Procedure leaving{"Form_Comm", "fncGetBinaryStream"};
    leaving.trap([](Failure&) { return TrapAnswer::Leave; });
    leaving.run([&] { state_->flush(PortSteps{control, leaving}); });
    control.InputLen(frame.inputLen);
    control.RThreshold(frame.rThreshold);
  });

  return procedure.run([&] {
    const std::string settings =
        state_->transferSettings(procedure, vBaudRate, vDataBits, vParity, vStopBits);
    if (PageDelay < 0) PageDelay = 4000;
    if (CmdDelay < 0) CmdDelay = 500;

    port.InputMode(SerialControl::Mode::Binary);
    port.Settings(settings);
    state_->flush(port);
    port.RThreshold(1);
    port.InputLen(0);

    std::vector<std::uint8_t> bytes;
    if (IgnoreLength) {
      const Arrival arrival = watchArrival(*state_, port, SIZE_MAX, PageDelay, ByteDelay);
      if (arrival.Overrun) raiseIn(procedure, DataOverrun, Source, "Data overrun error occurred, data lost");
      NumBytes = static_cast<std::int32_t>(arrival.Count);
      if (arrival.Count >= 1) bytes = takeBytes(*state_, port);
    } else {
      const auto wanted = static_cast<std::size_t>(std::max(NumBytes, 0));
      const Arrival arrival = watchArrival(*state_, port, wanted, PageDelay, PageDelay);
      if (arrival.Overrun) raiseIn(procedure, DataOverrun, Source, "Data overrun error occurred, data lost");
      if (arrival.Count < wanted)
        raiseIn(procedure, TooFewBytes, Source, "Insufficient number of binary data bytes received");
      bytes = takeBytes(*state_, port);
      procedure.statement([&] {
        if (NumBytes < 0) fault::raise(fault::Subscript);
        bytes.resize(wanted);
      });
    }
    Tools().subDelay(CmdDelay);
    return bytes;
  });
}

}  // namespace hy_wristlog
