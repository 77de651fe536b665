#include <cstdint>
#include <optional>

#include "base/faults.h"
#include "errors/Procedure.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "varden/VardenLogger.h"
#include "varden/commands/dock_products.h"
#include "varden/commands/shell.h"
#include "varden/failures.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr const char* Class = "Class_VardenLogger";

using dock_products::Quillander;
using dock_products::TolkaFirst;
using dock_products::TolkaSecond;
using dock_products::VendorID;

/// COM port of the only dock of a product; 0 unless there is one.
std::int16_t portOf(const dock_products::DockProduct& product, std::int16_t& numConnected) {
  return Tools().fncUSBdeviceCOMport(VendorID, product.ProductID, product.Class, numConnected);
}

/// What fncOpenTolkaPort and fncOpenQuillanderPort return.
enum OpenResult : std::int32_t {
  Unfinished = -1,
  Opened = 0,
  AlreadyOpen = 1,
  NoSuchPort = 2,
  PortFailed = 3,
  NoLogger = 4,
  LockedUp = 5,
};

/// The result that stands for a failure of opening a port.
std::optional<OpenResult> resultOfFailure(std::int32_t number) {
  switch (number) {
    case PortNotAvailable:
      return AlreadyOpen;
    case InvalidPort:
    case PortClosed:
      return NoSuchPort;
    case InvalidTimeout:
    case NotWhileDesigning:
    case InvalidDevice:
    case NoQueues:
    case DeviceOpen:
    case NoNotification:
    case EventMaskFailure:
    case ClosedWhileInUse:
    case DeviceBusy:
    case ReadFailure:
    case ControlBlockFailure:
      return PortFailed;
    case PortStateFailure:
      return LockedUp;
    default:
      return std::nullopt;
  }
}

/// Waits in steps of 5 ms until the DSR line is as wanted or `wait` milliseconds are over.
void awaitDsr(Procedure& procedure, Form_Comm& link, bool wanted, std::int32_t wait) {
  platform::Platform& world = platform::current();
  const double deadline = world.clock().timer() + wait / 1000.0;
  for (bool late = false, asWanted = false; !asWanted && !late;) {
    procedure.statement([] { Tools().subDelay(5); });
    late = world.clock().timer() >= deadline || world.endsWaits();
    asWanted = procedure.statement([&] { return link.DSRHolding(); }) == wanted;
  }
}

void openDockPort(Procedure& procedure, Form_Comm& link, std::int16_t port, bool delayAfterOpen) {
  procedure.statement([&] {
    link.subOpenPort(port, shell::Baud57600, shell::EightDataBits, shell::NoParity, shell::TwoStopBits,
                     delayAfterOpen ? 2000 : 0, false, true);
  });
}

}  // namespace

bool VardenLogger::fncIsVardenFromDeviceName(std::string_view name) {
  const auto contains = [&](std::string_view part) { return name.find(part) != std::string_view::npos; };
  return contains(VendorID) && (contains(TolkaFirst.ProductID) || contains(Quillander.ProductID) ||
                                contains(TolkaSecond.ProductID));
}

/// A dock of the first form counts, but it has no port here.
std::int16_t VardenLogger::fncTolkaDockCOMport(std::int16_t& NumConnected) {
  Procedure procedure{Class, "fncTolkaDockCOMport"};
  return procedure.run([&] {
    NumConnected = 0;
    std::int16_t seconds = 0;
    const std::int16_t first = procedure.statement([&] { return portOf(TolkaFirst, NumConnected); });
    const std::int16_t second = procedure.statement([&] { return portOf(TolkaSecond, seconds); });
    NumConnected = fault::narrow<std::int16_t>(NumConnected + seconds);
    return second != 0 ? second : first;
  });
}

std::int16_t VardenLogger::fncQuillanderDockCOMport(std::int16_t& NumConnected) {
  Procedure procedure{Class, "fncQuillanderDockCOMport"};
  return procedure.run([&] {
    NumConnected = 0;
    return portOf(Quillander, NumConnected);
  });
}

bool VardenLogger::fncTolkaLoggerConnected(bool KeepPortOpen, bool LongDSRwait) {
  constexpr const char* Name = "fncTolkaLoggerConnected";
  Procedure procedure{Class, Name};
  procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, DockPortFailure);
  return procedure.run([&] {
    record.DeviceType = KR_TOLKA;
    std::int16_t docks = 0;
    const std::int16_t port = procedure.statement([&] { return fncTolkaDockCOMport(docks); });
    bool connected = docks == 1 && port != 0;
    // When the dock was unplugged meanwhile, its port fails here and is opened anew.
    bool stillGood = false;
    if (connected && port == dockCOMport_ && link().Get_PortReady())
      ignoringFailures([&] { stillGood = link().DSRHolding(); });
    if (connected && !stillGood) {
      dockCOMport_ = port;
      const std::int32_t result =
          procedure.statement([&] { return fncOpenTolkaPort(port, false, LongDSRwait); });
      if (result == NoLogger)
        connected = false;
      else if (result == LockedUp)
        raiseIn(procedure, Name, DockPortFailure,
                "Kestrin 2 Communications Docking Station locked up, error 8015");
      else if (result != Opened)
        raiseIn(procedure, Name, DockPortFailure,
                "Kestrin 2 Communications Docking Station: Unable to open COM port");
    }
    if (connected) connected = procedure.statement([&] { return fncGetVardenPrompt(); });
    if (!KeepPortOpen) procedure.statement([&] { subCloseTolkaPort(); });
    return connected;
  });
}

bool VardenLogger::fncQuillanderLoggerConnected(bool KeepPortOpen) {
  constexpr const char* Name = "fncQuillanderLoggerConnected";
  Procedure procedure{Class, Name};
  procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, DockPortFailure);
  return procedure.run([&] {
    record.DeviceType = KR_QUILLANDER;
    std::int16_t docks = 0;
    const std::int16_t port = procedure.statement([&] { return fncQuillanderDockCOMport(docks); });
    bool connected = docks == 1 && port != 0;
    const bool stillGood = connected && port == dockCOMport_ && link().Get_PortReady();
    if (connected && !stillGood) {
      dockCOMport_ = port;
      const std::int32_t result = procedure.statement([&] { return fncOpenQuillanderPort(port, false); });
      if (result == AlreadyOpen || result == NoSuchPort)
        raiseIn(procedure, Name, DockPortFailure,
                "Kestrin Vivid Communications Docking Station: Unable to open COM port");
    }
    if (connected) connected = procedure.statement([&] { return fncGetVardenPrompt(); });
    if (!KeepPortOpen) procedure.statement([&] { subCloseQuillanderPort(); });
    return connected;
  });
}

/// The dock shows on DSR, after DTR was raised, that a logger sits in it. Returns 0 opened, 1 port in use, 2
/// no such port, 3 port failed, 4 no logger, 5 dock locked up, and -1 when a site's action for another
/// failure is to leave quietly. Raises InvalidDockPort for a port below 1.
std::int32_t VardenLogger::fncOpenTolkaPort(std::int16_t intPort, bool DelayAfterOpen, bool LongDSRwait) {
  constexpr const char* Name = "fncOpenTolkaPort";
  Procedure procedure{Class, Name};
  std::int32_t result = Unfinished;
  procedure.trap([&](Failure& failure) {
    const auto ofFailure = resultOfFailure(failure.Number);
    if (!ofFailure) return TrapAnswer::Dispatch;
    result = *ofFailure;
    return TrapAnswer::Leave;
  });
  procedure.run([&] {
    if (intPort < 1) raiseIn(procedure, Name, InvalidDockPort, "Invalid COM Port Settings");
    openDockPort(procedure, link(), intPort, DelayAfterOpen);
    procedure.statement([&] { link().subEnableDTR(); });
    awaitDsr(procedure, link(), true, LongDSRwait ? 5000 : 1000);
    const bool seated = procedure.statement([&] { return link().DSRHolding(); });
    if (!seated) procedure.statement([&] { link().subClosePort(); });
    result = seated ? Opened : NoLogger;
  });
  return result;
}

/// The dock has no signal for a seated logger, so the logger is woken and asked for its prompt. Returns what
/// fncOpenTolkaPort returns, but 3 for a dock that is locked up and for a logger that does not answer.
std::int32_t VardenLogger::fncOpenQuillanderPort(std::int16_t intPort, bool DelayAfterOpen) {
  constexpr const char* Name = "fncOpenQuillanderPort";
  Procedure procedure{Class, Name};
  std::int32_t result = Unfinished;
  procedure.trap([&](Failure& failure) {
    auto ofFailure = resultOfFailure(failure.Number);
    if (ofFailure == LockedUp || failure.Number == NoCharacters || failure.Number == NoFinalCharacter)
      ofFailure = PortFailed;
    if (!ofFailure) return TrapAnswer::Dispatch;
    result = *ofFailure;
    return TrapAnswer::Leave;
  });
  procedure.run([&] {
    if (intPort < 1) raiseIn(procedure, Name, InvalidDockPort, "Invalid COM Port Settings");
    openDockPort(procedure, link(), intPort, DelayAfterOpen);
    procedure.statement([&] { subResetQuillander(); });
    procedure.statement([&] { link().subEnableDTR(); });
    for (int times = 0; times < 2; ++times)
      procedure.statement([&] { link().subSendChars({}, 3, 1, 1, 0, 0, 100); });
    procedure.statement([&] { link().fncGetCharLine('>', 3000); });
    result = Opened;
  });
  return result;
}

void VardenLogger::subResetQuillander() {
  Procedure procedure{Class, "subResetQuillander"};
  procedure.run([&] {
    procedure.statement([&] { link().subDisableRTS(); });
    procedure.statement([] { Tools().subDelay(5); });
    procedure.statement([&] { link().subEnableRTS(); });
    procedure.statement([] { Tools().subDelay(100); });
    procedure.statement([&] { link().subDisableRTS(); });
  });
}

void VardenLogger::subCloseTolkaPort() {
  Procedure procedure{Class, "subCloseTolkaPort"};
  // Closes the port also when the dock has gone and every question to it fails.
  procedure.cleanUp([this] { link().subClosePort(); });
  procedure.run([&] {
    if (procedure.statement([&] { return link().DSRHolding(); })) {
      procedure.statement([&] { link().subDisableDTR(); });
      awaitDsr(procedure, link(), false, 1000);
      std::int16_t docks = 0;
      const std::int16_t port = procedure.statement([&] { return portOf(TolkaFirst, docks); });
      // This form of the dock needs a while to settle.
      if (port > 0) procedure.statement([] { Tools().subDelay(1000, 5); });
    }
    procedure.statement([&] { link().subClosePort(); });
  });
}

void VardenLogger::subCloseQuillanderPort() {
  Procedure procedure{Class, "subCloseQuillanderPort"};
  procedure.run([&] { link().subClosePort(); });
}

void VardenLogger::subCloseDevicePort() {
  Procedure procedure{Class, "subCloseDevicePort"};
  procedure.cleanUp([this] { link().subClosePort(); });
  procedure.run([&] {
    if (record.DeviceType == KR_QUILLANDER)
      procedure.statement([&] { subCloseQuillanderPort(); });
    else if (record.DeviceType == KR_TOLKA)
      procedure.statement([&] { subCloseTolkaPort(); });
    procedure.statement([&] { link().subClosePort(); });
  });
}

}  // namespace hy_wristlog
