#include <algorithm>
#include <chrono>
#include <utility>

#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "link/CommState.h"
#include "link/line_settings.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

const char* eventText(std::int32_t event) {
  switch (event) {
    case comm_event::Cts:
      return "Change in the CTS Line";
    case comm_event::Dsr:
      return "Change in the DSR Line";
    case comm_event::Cd:
      return "Change in the CD Line";
    case comm_event::Ring:
      return "Change in the Ring Indicator";
    case comm_event::Break:
      return "Break";
    case comm_event::CtsTimeout:
      return "Clear to Send Timeout";
    case comm_event::DsrTimeout:
      return "Data Set Ready Timeout";
    case comm_event::Framing:
      return "Framing Error";
    case comm_event::Overrun:
      return "Data Lost Error";
    case comm_event::CdTimeout:
      return "Carrier Detect Timeout";
    case comm_event::ReceiveOverflow:
      return "Receive Buffer Overflow Error";
    case comm_event::Parity:
      return "Parity Error";
    case comm_event::TransmitFull:
      return "Transmit Buffer Full Error";
    default:
      return "";
  }
}

template <class Step>
void asProcedure(const char* name, Step&& step) {
  Procedure procedure{"Form_Comm", name};
  procedure.run(step);
}

template <class Number>
void takeIfZero(Number& value, Number property) {
  if (value == 0) value = property;
}

}  // namespace

CommState::CommState(Form_Comm& link, CommEvents* events)
    : form(link),
      owner(events != nullptr ? events : &nobody_),
      world(platform::shareCurrent()),
      control(world->serialPorts()),
      sink(world->host().console()),
      consoleVisible(sink != nullptr) {
  control.OnComm = [this] { comSerial_OnComm(); };
  world->addEventSource(*this);
}

CommState::~CommState() { world->removeEventSource(*this); }

void CommState::serveEvents() {
  control.deliverEvents();
  if (!toggling || timer() < nextToggle) return;
  nextToggle = timer() + toggleInterval / 1000.0;
  ignoringFailures([&] { control.RTSEnable(!control.RTSEnable()); });
}

void CommState::comSerial_OnComm() {
  const std::int32_t event = control.CommEvent();
  lastCOMerrorNum = event;
  if (event == comm_event::Send || event == comm_event::Receive) return;
  std::string text = eventText(event);
  if (consoleVisible && sink != nullptr)
    sink->showLastError(std::to_string(event) + "  " + text + "  " +
                        formatDate(dateFromCivil(world->clock().local()), "HH:mm:ss.000"));
  owner->CommEventError(event, text);
}

void CommState::progress(std::string text) const { owner->CommProgress(text); }

void CommState::pause(std::int32_t milliseconds) const {
  world->serveEvents();
  world->clock().sleep(std::chrono::milliseconds{milliseconds});
}

std::int32_t CommState::turn(std::int32_t round, double deadline, std::size_t missing) {
  if (!wakesOnInput()) {
    pause(round);
    return round;
  }
  world->serveEvents();
  return idle(deadline, missing, 0, round);
}

std::int32_t CommState::idle(double deadline, std::size_t missing, std::size_t seen, std::int32_t slack) {
  using Milliseconds = std::chrono::duration<double, std::milli>;
  using Seconds = std::chrono::duration<double>;
  constexpr Milliseconds EventRound{50}, Tick{1};
  platform::Clock& clock = world->clock();
  if (!wakesOnInput()) {
    clock.idle();
    return 1;
  }
  if (control.received() > seen) return 1;
  const double began = timer();
  const Seconds left{deadline - began}, untilToggle{nextToggle - began};
  const Milliseconds end = left + Milliseconds{slack};
  const Milliseconds longest =
      std::clamp<Milliseconds>(toggling ? std::min<Milliseconds>(end, untilToggle) : end, Tick, EventRound);
  // Of many bytes nobody is woken for each one, but when the line can have brought nearly all.
  const auto settings = missing > 1 ? parseLineSettings(control.Settings()) : std::nullopt;
  const Milliseconds onTheLine =
      settings ? Seconds{static_cast<double>(missing - 1) * platform::characterSeconds(*settings)}
               : Seconds{0};
  if (onTheLine >= Tick)
    clock.sleep(std::chrono::floor<std::chrono::milliseconds>(std::min(onTheLine, longest)));
  else
    control.awaitInput(std::chrono::ceil<std::chrono::microseconds>(longest));
  if (timer() <= began) clock.idle();
  const Milliseconds passed = std::min<Milliseconds>(Seconds{timer() - began}, longest);
  return std::max(1, static_cast<std::int32_t>(passed.count()));
}

/// Shows only what waits when it begins, since a device that never stops would hold the caller here.
void CommState::flush(const PortSteps& port) {
  constexpr std::size_t ServedEvery = 1024;
  constexpr std::int32_t LongestShow = 500;  ///< milliseconds
  if (consoleInUse()) {
    const double end = deadline(LongestShow);
    std::size_t shown = 0;
    for (std::size_t left = port.InBufferCount(); left > 0 && timer() <= end;) {
      const std::string read = port.Input();
      if (read.empty()) break;
      left -= std::min(left, read.size());
      form.subShowCOM(read);
      if (++shown % ServedEvery == 0) world->serveEvents();
    }
  }
  port.discardInput();
}

std::string CommState::transferSettings(Procedure& procedure, std::int32_t baudRate, std::int32_t dataBits,
                                        std::int32_t parity, std::int32_t stopBits) const {
  takeIfZero(baudRate, form.BaudRate);
  takeIfZero(dataBits, form.DataBits);
  takeIfZero(parity, form.Parity);
  takeIfZero(stopBits, form.StopBits);
  const auto text = lineSettingsText(baudRate, dataBits, parity, stopBits);
  if (!text) raiseIn(procedure, InvalidSettings, "Form_Comm.fncGetBinaryStream", "Invalid COM Port Settings");
  return text.value_or("");
}

Form_Comm::Form_Comm(CommEvents* owner) : state_(std::make_unique<CommState>(*this, owner)) {}

Form_Comm::~Form_Comm() {
  ignoringFailures([&] { subClosePort(); });
}

std::int32_t Form_Comm::Get_LastCOMerrorNum() const { return state_->lastCOMerrorNum; }
bool Form_Comm::Get_PortReady() const { return state_->control.PortOpen(); }
bool Form_Comm::Get_DoingXMODEM() const { return state_->doingXMODEM; }
bool Form_Comm::DSRHolding() { return state_->control.DSRHolding(); }

void Form_Comm::subOpenPort(std::int16_t intPort, std::int32_t vBaudRate, std::int32_t vDataBits,
                            std::int32_t vParity, std::int32_t vStopBits, std::int32_t lngDelay,
                            bool RTSenableFirst, bool DTRenableFirst) {
  Procedure procedure{"Form_Comm", "subOpenPort"};
  procedure.passesOn(PortOpen, InvalidTimeout, InvalidPort, NotWhileDesigning, ReadOnlyProperty,
                     PortNotAvailable, InvalidDevice, InvalidPortSettings, InvalidByteSize, InvalidDefaults,
                     HardwareNotAvailable, NoQueues, PortClosed, DeviceOpen, NoNotification, EventMaskFailure,
                     ClosedWhileInUse, DeviceBusy, ReadFailure, ControlBlockFailure);
  PortRecovery recovery{state_->control};
  procedure.trap([&](Failure& failure) {
    if (failure.Number != PortStateFailure) return TrapAnswer::Dispatch;
    if (recovery.reopen()) return TrapAnswer::Repeat;
    failure.Source = "Form_Comm.subOpenPort";
    return TrapAnswer::Raise;
  });
  const PortSteps port{state_->control, procedure};
  const auto refuse = [&] {
    raiseIn(procedure, InvalidSettings, "Form_Comm.subOpenPort", "Invalid COM Port Settings");
  };

  procedure.run([&] {
    takeIfZero(intPort, CommPort);
    takeIfZero(vBaudRate, BaudRate);
    takeIfZero(vDataBits, DataBits);
    takeIfZero(vParity, Parity);
    takeIfZero(vStopBits, StopBits);
    if (intPort == 0 || vBaudRate == 0 || vDataBits == 0 || vParity == 0 || vStopBits == 0) refuse();

    procedure.statement([&] { subClosePort(); });
    port.CommPort(intPort);
    // A port that is missing or busy fails here, before anything else is changed.
    port.PortOpen(true);
    port.PortOpen(false);

    const auto settings = lineSettingsText(vBaudRate, vDataBits, vParity, vStopBits);
    if (!settings) refuse();
    port.Settings(settings.value_or(""));
    port.Handshaking(0);
    port.InputMode(SerialControl::Mode::Text);
    port.InputLen(1);
    port.InBufferSize(ReceiveBufferSize);
    port.RTSEnable(RTSenableFirst);
    port.DTREnable(DTRenableFirst);
    state_->flush(port);
    port.RThreshold(0);
    port.PortOpen(true);
    if (lngDelay > 0) Tools().subDelay(lngDelay);
    state_->flush(port);

    CommPort = intPort;
    BaudRate = vBaudRate;
    DataBits = vDataBits;
    StopBits = vStopBits;
    Parity = vParity;
  });
}

void Form_Comm::subClosePort() {
  Procedure procedure{"Form_Comm", "subClosePort"};
  PortRecovery recovery{state_->control};
  procedure.trap([&](Failure& failure) {
    if (failure.Number == PortClosed) return TrapAnswer::GoOn;
    return failure.Number == PortStateFailure && recovery.close() ? TrapAnswer::Repeat : TrapAnswer::Dispatch;
  });
  const PortSteps port{state_->control, procedure};
  procedure.run([&] {
    if (!port.PortOpen()) return;
    if (port.RTSEnable()) port.RTSEnable(false);
    if (port.DTREnable()) port.DTREnable(false);
    port.PortOpen(false);
  });
}

void Form_Comm::subEnableRTS() {
  asProcedure("subEnableRTS", [&] { state_->control.RTSEnable(true); });
}

void Form_Comm::subDisableRTS() {
  asProcedure("subDisableRTS", [&] { state_->control.RTSEnable(false); });
}

void Form_Comm::subEnableDTR() {
  asProcedure("subEnableDTR", [&] { state_->control.DTREnable(true); });
}

void Form_Comm::subDisableDTR() {
  asProcedure("subDisableDTR", [&] { state_->control.DTREnable(false); });
}

void Form_Comm::subToggleRTS() {
  asProcedure("subToggleRTS", [&] { state_->control.RTSEnable(!state_->control.RTSEnable()); });
}

void Form_Comm::subEnableRTStoggle(std::int16_t intInterval) {
  asProcedure("subEnableRTStoggle", [&] {
    if (intInterval != 0) RTStoggleInterval = intInterval;
    if (RTStoggleInterval == 0) return;
    if (RTStoggleInterval < 0) fault::raise(fault::InvalidCall);
    state_->toggleInterval = RTStoggleInterval;
    state_->nextToggle = state_->timer() + RTStoggleInterval / 1000.0;
    state_->toggling = true;
  });
}

void Form_Comm::subDisableRTStoggle() {
  state_->toggling = false;
  asProcedure("subDisableRTStoggle", [&] { state_->control.RTSEnable(false); });
}

void Form_Comm::subResetDevice(std::int32_t ResetEnableWidth, std::int32_t ResetDisableWidth,
                               std::int32_t NumResets, std::int32_t lngDelay) {
  Procedure procedure{"Form_Comm", "subResetDevice"};
  const PortSteps port{state_->control, procedure};
  procedure.run([&] {
    takeIfZero(ResetEnableWidth, 1);
    takeIfZero(ResetDisableWidth, 1);
    if (NumResets < 1) NumResets = 1;
    for (std::int32_t i = 0; i < NumResets; ++i) {
      port.RTSEnable(true);
      Tools().subDelay(ResetEnableWidth);
      port.RTSEnable(false);
      Tools().subDelay(ResetDisableWidth);
    }
    Tools().subDelay(lngDelay);
    state_->flush(port);
  });
}

void Form_Comm::subAbortProcess() {
  if (state_->doingXMODEM) {
    state_->abortRequested = true;
    return;
  }
  asProcedure("subAbortProcess", [&] { subSendCTRLCabort(); });
}

}  // namespace hy_wristlog
