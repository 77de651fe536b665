#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "base/faults.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "varden/VardenLogger.h"
#include "varden/commands/shell.h"
#include "varden/config/packets.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

/// Far more than the 256 bytes of a configuration.
constexpr std::size_t MostConfigBytes = 16384;

/// Leaves room for packets that come again.
std::size_t mostDataBytes(std::int32_t bytesUsed) {
  constexpr std::size_t Any = std::size_t{20} << 20, Least = 65536;
  return bytesUsed > 0 ? std::min(Any, Least + 4 * static_cast<std::size_t>(bytesUsed)) : Any;
}

/// Receives a transfer. The link's count of packets overflows when the logger repeats packet 255. That
/// becomes RetriesExceeded, which another attempt may mend like any other failure of a transfer.
PacketArray receivePackets(ShellProcedure& shell, Form_Comm& link, std::size_t most) {
  link.boundTransfers(most);
  return shell.procedure.statement([&]() -> PacketArray {
    try {
      return link.fncReceiveXmodemPackets(shell::Baud57600, shell::EightDataBits, shell::NoParity,
                                          shell::TwoStopBits, shell::LinkTimeout);
    } catch (const Failure& failure) {
      if (failure.Number != fault::Overflow) throw;
    }
    shell.raise(RetriesExceeded, "Packet 255 was repeated");
    return {};
  });
}

void letLoggerSettle(ShellProcedure& shell) {
  shell.procedure.statement([] { Tools().subDelay(250, 50); });
}

/// Whether a stale CRC of the configuration, or a short disturbance of the line, can cause the failure.
bool curedByReset(std::int32_t failure) {
  constexpr std::array Curable{NoCharacters,    NoFinalCharacter, WrongCharacters,
                               RetriesExceeded, NoPacket,         DamagedConfig};
  return std::find(Curable.begin(), Curable.end(), failure) != Curable.end();
}

}  // namespace

std::unique_ptr<VardenLogger> VardenLogger::fncReadVardenConfig(bool NewLogger) {
  ShellProcedure shell{link(), "fncReadVardenConfig"};
  shell.procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, RetriesExceeded, NoPacket,
                           UnknownStructure, DamagedConfig);
  return shell.procedure.run([&] {
    std::unique_ptr<VardenLogger> fresh;
    if (NewLogger) fresh = std::make_unique<VardenLogger>();
    shell.procedure.statement([&] { subErase(); });
    shell.ask(shell::ShowConfig);
    const PacketArray packets = receivePackets(shell, link(), MostConfigBytes);
    if (!packets) shell.raise(NoPacket, "No packets received");
    shell.procedure.statement([&] { (fresh ? *fresh : *this).Let_ConfigPackets(packets); });
    letLoggerSettle(shell);
    return fresh;
  });
}

void VardenLogger::keepRead(std::vector<Class_Packet> packets) {
  if (packets.empty()) return;
  const std::size_t held = record.ConfigBlock.NextMemoryAddress, last = packets.back().BinData.size();
  ByteArray raw = joinPackets(packets);
  if (raw.size() < held) {
    keepConsecutivePackets(packets);
    raw = joinPackets(packets);
  }
  if (raw.size() > held && raw.size() - held < last) raw.resize(held);
  if (raw.size() > lastRead_.Raw.size() || !isSameRecording(lastRead_.Record, record))
    lastRead_ = {record, std::move(raw)};
}

/// After an abort during the transfer the raw data are as they were. The part that came is kept beside them.
void VardenLogger::fncReadVardenData() {
  ShellProcedure shell{link(), "fncReadVardenData"};
  shell.procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, RetriesExceeded, NoPacket,
                           UnknownStructure, DamagedConfig);
  shell.procedure.cleanUp([this] {
    PacketArray part = link().takeReceivedPackets();
    dropRepeatedPackets(part);
    keepRead(std::move(*part));
  });
  shell.procedure.run([&] {
    commsAborted_ = false;
    shell.ask(shell::ShowData);
    PacketArray packets = receivePackets(shell, link(), mostDataBytes(record.BytesUsed));
    if (commsAborted_) return;
    dropRepeatedPackets(packets);
    if (packets) keepRead(*packets);
    lastPacketBytes_ = packets && !packets->empty() ? packets->back().BinData.size() : 0;
    shell.procedure.statement([&] { subSetRawDataFromPackets(packets); });
    letLoggerSettle(shell);
  });
}

void VardenLogger::subSendVardenConfig() {
  ShellProcedure shell{link(), "subSendVardenConfig"};
  shell.sendFailureProcedure = "subSetVardenClock";
  shell.procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, NoInitiation, TransmitTooSlow,
                           NoAcknowledgement, RetriesExceeded, NoEndAcknowledgement);
  shell.procedure.run([&] {
    // A logger that heard "config" only in part may wait for packets already.
    shell.send(shell::Config.Text, [&] {
      ignoringFailures([&] { link().subSendXmodemAbort(); });
      ignoringFailures([&] { link().subSendXmodemAbort(); });
    });
    const PacketArray packets = shell.procedure.statement([&] { return Get_ConfigPackets(); });
    // Sent byte by byte, because the logger writes its memory while it receives.
    shell.procedure.statement([&] {
      link().subSendXmodemPackets(packets, shell::Baud57600, shell::EightDataBits, shell::NoParity,
                                  shell::TwoStopBits, shell::LinkTimeout, true, 1);
    });
    shell.readLine('>', 200);
  });
}

/// Reads configuration, firmware version, battery and clock. When the configuration cannot be read, the
/// logger is told once to make its CRC anew. An abort is no such failure.
void VardenLogger::fncReadVardenSetup() {
  Procedure procedure{"Class_VardenLogger", "fncReadVardenSetup"};
  procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, RetriesExceeded, NoPacket,
                     UnknownStructure, DamagedConfig, DamagedAnswer);
  enum class Reading : std::uint8_t { First, Failed, Settled } reading = Reading::First;
  procedure.trap([&](Failure& failure) {
    if (reading != Reading::First || commsAborted_ || !curedByReset(failure.Number))
      return TrapAnswer::Dispatch;
    reading = Reading::Failed;
    return TrapAnswer::GoOn;
  });
  procedure.run([&] {
    commsAborted_ = false;
    procedure.statement([&] { fncReadVardenConfig(false); });
    const bool again = std::exchange(reading, Reading::Settled) == Reading::Failed;
    if (again) {
      procedure.statement([&] { subVardenConfigCRCreset(); });
      procedure.statement([&] { fncReadVardenConfig(false); });
    }
    procedure.statement([&] { fncReadVardenFWversion(); });
    procedure.statement([&] { fncReadVardenBatteryVoltage(); });
    procedure.statement([&] { fncReadVardenTime(); });
  });
}

void VardenLogger::subAbortLoggerComms() {
  Procedure procedure{"Class_VardenLogger", "subAbortLoggerComms"};
  procedure.run([&] {
    abortMark_ = true;
    procedure.statement([&] { link().subAbortProcess(); });
    constexpr std::int32_t PromptTime = 250;
    // A logger that hears the cancelling answers with its prompt.
    if (platform::current().wakesOnInput())
      ignoringFailures([&] { link().fncGetCharLine('>', PromptTime); });
    else
      procedure.statement([] { Tools().subDelay(PromptTime, 50); });
  });
}

}  // namespace hy_wristlog
