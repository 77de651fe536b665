#include <array>
#include <cstdint>
#include <string>

#include "pendrel/Pendrel.h"
#include "pendrel/setup_answer.h"
#include "pendrel/starred.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr const char* LineEnd = "\r\n";

/// The status with which the opening of a port ended; 0 for failures that have none.
std::int32_t portStatus(std::int32_t failure) {
  constexpr std::int32_t InUse = 1, NoSuchPort = 2, Unusable = 3;
  switch (failure) {
    case PortNotAvailable:
      return InUse;
    case InvalidPort:
    case PortClosed:
      return NoSuchPort;
    case InvalidTimeout:
    case NotWhileDesigning:
    case InvalidDevice:
    case NoQueues:
    case DeviceOpen:
    case EventMaskFailure:
    case DeviceFailure:
    case ClosedWhileInUse:
    case ControlBlockFailure:
      return Unusable;
    default:
      return 0;
  }
}

/// The sum of the characters and of all carriage returns but the last line's.
std::int32_t sumOf(const SetupLines& lines) {
  constexpr std::int32_t CarriageReturn = '\r';
  std::int32_t sum = -CarriageReturn;
  for (const std::string& line : lines) sum += starred::checksumOf(line) + CarriageReturn;
  return sum;
}

/// The steps model keeps its acquisition mode in its memory.
void readMode(StarredProcedure& command, Pendrel& logger) {
  const std::uint8_t value =
      command.procedure.statement([&] { return logger.fncReadMemoryLocation(starred::ModeLocation); });
  takeMode(logger.record, value);
  logger.record.SetupText += modeText(value);
}

}  // namespace

std::int32_t Pendrel::fncOpenCOMport(std::int16_t intPort, bool settle) {
  constexpr std::int32_t SettleTime = 2000;
  StarredProcedure command{link(), "fncOpenCOMport"};
  std::int32_t status = 0;
  command.procedure.trap([&status](Failure& failure) {
    status = portStatus(failure.Number);
    return status != 0 ? TrapAnswer::Leave : TrapAnswer::Dispatch;
  });
  command.procedure.run([&] {
    if (intPort < 1) command.raise(PendrelPort, "Invalid COM Port Settings");
    command.procedure.statement([&] {
      link().subOpenPort(intPort, starred::Baud600, starred::EightDataBits, starred::NoParity,
                         starred::OneStopBit, settle ? SettleTime : 0, true, true);
    });
  });
  return status;
}

void Pendrel::subCloseCOMport(bool busyPointer) {
  StarredProcedure command{link(), "subCloseCOMport"};
  Host& host = platform::current().host();
  command.procedure.cleanUp([&host, busyPointer] {
    if (busyPointer) host.showBusy(false);
  });
  command.procedure.run([&] {
    if (busyPointer) host.showBusy(true);
    command.procedure.statement([&] { link().subClosePort(); });
  });
}

/// Only the sending of the carriage return is tried again; a missing answer means that there is no prompt.
bool Pendrel::fncGetPrompt() {
  constexpr std::int32_t Silence = 1000, Pause = 500, ServeInterval = 50;
  Procedure procedure{Module, "fncGetPrompt"};
  procedure.trap([](Failure& failure) {
    return starred::isLinkFailure(failure.Number) ? TrapAnswer::Leave : TrapAnswer::Dispatch;
  });
  bool answered = false;
  procedure.run([&] {
    for (std::int32_t attempt = 1; attempt <= starred::Attempts; ++attempt) {
      const std::int32_t failure = procedure.statement(
          [&] { return starred::failureToSend([&] { link().subSendChars({}, 3, 1, 0, 0, 0, 0); }); });
      if (failure == 0) {
        procedure.statement([&] { link().fncGetCharLine('\r', Silence); });
        procedure.statement([&] { link().fncGetCharLine('>', Silence); });
        answered = true;
        return;
      }
      if (attempt < starred::Attempts) procedure.statement([&] { Tools().subDelay(Pause, ServeInterval); });
    }
  });
  return answered;
}

void Pendrel::fncReadSetup() {
  StarredProcedure command{link(), "fncReadSetup"};
  command.procedure.run([&] {
    command.sendPatiently(starred::ReadSetup, "Failure to send read setup command");
    record.SetupText.clear();
    SetupLines lines;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      lines[i] = command.readLine();
      if (i > 0) record.SetupText += lines[i] + LineEnd;
    }
    command.procedure.statement([&] { takeDeviceRecord(record, lines.back()); });
    if (record.Get_CTcompliant()) {
      const std::string checksum = command.readLine();
      record.SetupText += checksum;
      command.readLine('>');
      if (checksum.size() < 4 || !starred::standsFor(checksum, sumOf(lines)))
        command.raise(PendrelChecksum, "fncReadZBsetup", starred::WrongChecksum);
    } else {
      command.readLine('>');
    }
    command.rest();

    command.procedure.statement([&] { takeSetup(record, lines); });
    switch (record.Get_DeviceType()) {
      case KR_PENDREL:
      case KR_PENDREL_CRC:
        record.AcquisitionMode = PD_Mode_ActivityOnly;
        break;
      case KR_PENDREL_CRC_STEPS:
        readMode(command, *this);
        break;
      default:
        break;
    }
  });
}

void Pendrel::subResetDevice() {
  StarredProcedure command{link(), "subResetDevice"};
  command.procedure.run([&] { command.send(starred::Reset); });
}

}  // namespace hy_wristlog
