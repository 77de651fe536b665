#include "link/XmodemSession.h"

namespace hy_wristlog {
namespace {

constexpr std::int32_t SilenceTime = 1000, MostTurnsForSilence = 100;

void sendControl(CommState& state, const char* name, std::string_view bytes) {
  Procedure procedure{"Form_Comm", name};
  procedure.run([&] {
    procedure.statement([&] { state.control.Output(bytes); });
    state.showHex(bytes, "\r\n");
  });
}

}  // namespace

XmodemSession::XmodemSession(CommState& link, const char* name, const char* source, std::int32_t timeout)
    : link_(link),
      frame_(link, name),
      port_(frame_.port),
      timeout_(timeout < 0 ? TransferTimeout : timeout),
      source_(source) {
  link_.abortRequested = false;
  link_.doingXMODEM = true;
  procedure().cleanUp([this] { leave(); });
}

void XmodemSession::leave() {
  if (frame_.portUsable()) {
    ignoringFailures([&] {
      if (link_.control.Settings() != frame_.settings) link_.control.Settings(frame_.settings);
    });
    link_.control.InputMode(frame_.inputMode);
    link_.control.InputLen(frame_.inputLen);
    link_.control.RThreshold(frame_.rThreshold);
  }
  link_.doingXMODEM = false;
}

void XmodemSession::setLine(const std::string& settings) {
  if (settings != frame_.settings) port_.Settings(settings);
  port_.InputMode(SerialControl::Mode::Binary);
  port_.RThreshold(1);
}

void XmodemSession::cancelTwice() {
  for (int i = 0; i < 2; ++i) procedure().statement([&] { link_.form.subSendXmodemAbort(); });
}

XmodemSession::Step XmodemSession::giveUp(std::int32_t number, const char* text) {
  cancelTwice();
  return failWith(number, text);
}

XmodemSession::Step XmodemSession::failWith(std::int32_t number, const char* text) {
  raiseIn(procedure(), number, source_, text);
  return Step::Failed;
}

void XmodemSession::awaitSilence() {
  std::size_t count = 0;
  double deadline = link_.deadline(SilenceTime);
  for (std::int32_t turn = 0; turn < MostTurnsForSilence; ++turn) {
    const bool late = link_.timer() > deadline;
    const std::size_t waiting = port_.InBufferCount();
    if (waiting > count) {
      count = waiting;
      deadline = link_.deadline(SilenceTime);
    } else if (late) {
      return;
    }
    link_.pause(PollInterval);
  }
}

void Form_Comm::subSendXmodemAbort() {
  constexpr char Cancels[] = {xmodem::Can, xmodem::Can};
  sendControl(*state_, "subSendXmodemAbort", {Cancels, sizeof Cancels});
}

void Form_Comm::subSendCTRLCabort() { sendControl(*state_, "subSendCTRLCabort", {&xmodem::CtrlC, 1}); }
void Form_Comm::subSendXmodemACK() { sendControl(*state_, "subSendXmodemACK", {&xmodem::Ack, 1}); }
void Form_Comm::subSendXmodemNAK() { sendControl(*state_, "subSendXmodemNAK", {&xmodem::Nak, 1}); }

std::string Form_Comm::fncGetFriendlyPacketText(const PacketArray& Packets) {
  constexpr std::size_t RoomForPacket = 5500;
  Procedure procedure{"Form_Comm", "fncGetFriendlyPacketText"};
  return procedure.run([&] {
    std::string text;
    if (!Packets) return text;
    text.reserve(Packets->size() * RoomForPacket);
    for (Class_Packet packet : *Packets) text += packet.Get_FriendlyPacketText();
    return text;
  });
}

}  // namespace hy_wristlog
