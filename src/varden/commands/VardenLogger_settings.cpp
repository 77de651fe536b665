#include <cstdint>
#include <string>

#include "base/numbers.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Tools.h"
#include "varden/VardenLogger.h"
#include "varden/commands/shell.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

template <class Body>
void change(Form_Comm& link, const char* name, Body&& body) {
  ShellProcedure shell{link, name};
  shell.procedure.passesOn(NoCharacters, NoFinalCharacter, WrongCharacters);
  shell.procedure.run([&] { body(shell); });
}

const char* switchText(bool on) { return on ? "1" : "0"; }

}  // namespace

/// Without a date the present UTC time is set.
void VardenLogger::subSetVardenClock(std::optional<double> date) {
  change(link(), "subSetVardenClock", [&](ShellProcedure& shell) {
    const std::int32_t seconds = shell.procedure.statement(
        [&] { return fncDateToLoggerSeconds(date ? *date : TimeZoneTools().fncGetGMTTime()); });
    shell.ask(shell::ClockTime, std::to_string(seconds));
  });
}

void VardenLogger::subSetVardenAcqStop(std::int32_t seconds) {
  change(link(), "subSetVardenAcqStop", [&](ShellProcedure& shell) {
    shell.ask(shell::AcqStop, std::to_string(seconds));
    shell.procedure.statement([] { Tools().subDelay(2000); });
  });
}

void VardenLogger::subSetVardenMemoryPointer(std::int32_t address) {
  change(link(), "subSetVardenMemoryPointer", [&](ShellProcedure& shell) {
    shell.ask(shell::AcqPointer, hexadecimal(static_cast<std::uint32_t>(address)));
  });
}

void VardenLogger::subSetDataAvailFlag(bool available) {
  change(link(), "subSetDataAvailFlag",
         [&](ShellProcedure& shell) { shell.ask(shell::DataAvail, switchText(available)); });
}

void VardenLogger::subSetVardenSleep(bool sleep) {
  change(link(), "subSetVardenSleep",
         [&](ShellProcedure& shell) { shell.ask(shell::Sleep, switchText(sleep)); });
}

void VardenLogger::subClearVardenMemory() {
  change(link(), "subClearVardenMemory", [](ShellProcedure& shell) { shell.ask(shell::MemoryErase); });
}

void VardenLogger::subSetVardenMemoryLocation(std::int32_t address, std::uint8_t value) {
  change(link(), "subSetVardenMemoryLocation", [&](ShellProcedure& shell) {
    shell.ask(shell::WriteMemory,
              hexadecimal(static_cast<std::uint32_t>(address)) + " 0x" + hexadecimal(value));
    shell.procedure.statement([] { Tools().subDelay(100, 50); });
  });
}

/// The three commands have three sends together.
void VardenLogger::subVardenConfigCRCreset() {
  change(link(), "subVardenConfigCRCreset", [](ShellProcedure& shell) {
    std::string mode, otherMode;
    shell.askUntil(shell::ShowClockMode, {}, DamagedAnswer, "Checksum failed when reseting logger CRC",
                   [&](std::string& line) {
                     if (!fncCheckCRCandParse(line)) return false;
                     mode = line;
                     otherMode = leadingNumber(line) == 12 ? "24" : "12";
                     return true;
                   });
    shell.ask(shell::ClockMode, otherMode);
    shell.ask(shell::ClockMode, mode);
  });
}

}  // namespace hy_wristlog
