#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "base/ascii.h"
#include "base/code_page.h"
#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "errors/GlobalState.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Tools.h"
#include "varden/VardenLogger.h"
#include "varden/commands/shell.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

/// The logger's answer about its battery; -1 for what could not be read.
struct BatteryReading {
  float Voltage = -1.0F, LoadedVoltage = -1.0F;
  double Date = UnknownDate;
};

bool isVoltage(std::string text) {
  std::erase(text, '.');
  return isNumeric(text);
}

float voltage(std::string_view text) {
  const double volts = leadingNumber(text);
  if (std::abs(volts) > std::numeric_limits<float>::max()) fault::raise(fault::Overflow);
  return static_cast<float>(volts);
}

/// The date of a text DDMMYYYY, unknown when a part is out of range. The 31st of a shorter month becomes a
/// day of the next month.
double batteryDate(std::string_view text) {
  if (!isNumeric(text)) return UnknownDate;
  const auto part = [&](std::size_t from, std::size_t size) {
    return leadingNumber(text.substr(from, size));
  };
  const double day = part(0, 2), month = part(2, 2), year = part(4, 4);
  const bool inRange = day >= 1 && day <= 31 && month >= 1 && month <= 12 && year >= 0 && year <= 9999;
  if (!inRange) return UnknownDate;
  return dateSerial(roundToInt32(year), roundToInt32(month), roundToInt32(day));
}

/// Reads voltage, date and, from a logger that measures it, the voltage under load, with blanks between them.
/// Of a line of another form nothing is taken. A date that is wrong leaves the voltages as read.
bool parseBattery(std::string_view line, bool hasLoadedVoltage, BatteryReading& reading) {
  constexpr std::size_t DateSize = 8;
  const auto fields = Tools().fncParseStringKeepString(line, 0, " ");
  if (fields.size() < (hasLoadedVoltage ? 3U : 2U)) return false;
  if (!isVoltage(fields[0]) || fields[1].size() != DateSize) return false;
  if (hasLoadedVoltage && !isVoltage(fields[2])) return false;
  reading.Voltage = voltage(fields[0]);
  if (hasLoadedVoltage) reading.LoadedVoltage = voltage(fields[2]);
  reading.Date = batteryDate(fields[1]);
  return reading.Date != UnknownDate;
}

}  // namespace

bool VardenLogger::fncGetVardenPrompt() {
  ShellProcedure shell{link(), "fncGetVardenPrompt"};
  shell.procedure.trap([](Failure& failure) {
    return failure.Number >= NoCharacters && failure.Number <= WrongCharacters ? TrapAnswer::Leave
                                                                               : TrapAnswer::Dispatch;
  });
  bool answered = false;
  shell.procedure.run([&] {
    shell.ask(shell::Wake);
    answered = true;
  });
  return answered;
}

void VardenLogger::fncReadVardenFWversion() {
  ShellProcedure shell{link(), "fncReadVardenFWversion"};
  shell.procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, DamagedAnswer);
  shell.procedure.run([&] {
    std::string version;
    shell.askUntil(shell::ShowVersion, {}, DamagedAnswer, "Checksum failed when retrieving logger time",
                   [&](std::string& line) {
                     if (!fncCheckCRCandParse(line)) return false;
                     version = line;
                     return true;
                   });
    shell.procedure.statement([&] { subParseVersionInfo(utf8FromAnsiText(trimBlanks(version))); });
  });
}

void VardenLogger::fncReadVardenBatteryVoltage() {
  ShellProcedure shell{link(), "fncReadVardenBatteryVoltage"};
  shell.procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, DamagedAnswer);
  shell.procedure.run([&] {
    const bool hasLoadedVoltage = shell.procedure.statement([&] { return fncHasLoadedVoltage(); });
    shell.askUntil(shell::ShowBattery, {}, DamagedAnswer,
                   "Checksum or format error when retrieving logger time", [&](std::string& line) {
                     BatteryReading reading;
                     const bool read =
                         fncCheckCRCandParse(line) && parseBattery(line, hasLoadedVoltage, reading);
                     record.BatteryVoltage = reading.Voltage;
                     record.BatteryDate = reading.Date;
                     record.LoadedBattVoltage = reading.LoadedVoltage;
                     return read;
                   });
  });
}

void VardenLogger::fncReadVardenTime() {
  ShellProcedure shell{link(), "fncReadVardenTime"};
  shell.procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, DamagedAnswer);
  shell.procedure.run([&] {
    record.LastLoggerTime = UnknownDate;
    shell.askUntil(shell::ShowClockTime, {}, DamagedAnswer, "Checksum failed when retrieving logger time",
                   [&](std::string& line) {
                     if (!fncCheckCRCandParse(line) || !isNumeric(line)) return false;
                     record.LastLoggerTime = fncLoggerSecondsToDate(roundToInt32(leadingNumber(line)));
                     record.LastTimeLoggerRead = TimeZoneTools().fncGetGMTTime();
                     return true;
                   });
  });
}

std::uint8_t VardenLogger::fncReadVardenMemoryLocation(std::int32_t address) {
  ShellProcedure shell{link(), "fncReadVardenMemoryLocation"};
  shell.procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters, MemoryReadFailure);
  return shell.procedure.run([&] {
    // The answer is "0x", the byte, "#" and a CRC, which is not checked.
    constexpr std::size_t LineSize = 9;
    std::uint8_t value = 0;
    shell.askUntil(shell::ReadMemory, hexadecimal(static_cast<std::uint32_t>(address)), MemoryReadFailure,
                   "Failed to read logger memory", [&](std::string& line) {
                     if (line.size() != LineSize) return false;
                     std::string digits = line.substr(2, 2);
                     value = fault::narrow<std::uint8_t>(Tools().fncConvertHexStringToLong(digits));
                     return true;
                   });
    return value;
  });
}

std::string VardenLogger::fncTimeStamp(std::int32_t index, std::optional<std::int32_t> EpochLength) const {
  Procedure procedure{"Class_VardenLogger", "fncTimeStamp"};
  return procedure.run([&] {
    const std::int32_t seconds = EpochLength.value_or(record.EpochLength);
    if (seconds == 0) fault::raise(fault::DivisionByZero);
    const std::int32_t epochsPerDay = roundToInt32(SecondsPerDay / seconds);
    if (epochsPerDay == 0) fault::raise(fault::DivisionByZero);
    return formatDate(record.StartTimeGMT + static_cast<double>(index) / epochsPerDay,
                      globals().ShortDateTimeFormat);
  });
}

}  // namespace hy_wristlog
