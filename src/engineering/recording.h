#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hy_wristlog/Class_Subject.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"
#include "varden/decode/event_log.h"

/// What a service engineer's tools need of a logger besides its public class: its saved configuration, its
/// events, the buttons of its console. Not part of the library's promise to hosts.
namespace hy_wristlog::engineering {

/// The logger that a saved config block describes. `configHex` is the block as hexadecimal text. Raises
/// OutOfRange for text that is no hexadecimal block, UnknownStructure and DamagedConfig for a block that
/// cannot be read.
std::shared_ptr<Class_VardenLogger> loggerFromConfig(std::string_view configHex);

/// Presses the button "Generate Data Overrun" of the logger's diagnostic console: the packet that is on its
/// way counts as damaged, as if the port had lost data.
void generateDataOverrun(Class_VardenLogger& logger);
/// Presses "Clear": the console's text is emptied, and its sink's.
void clearConsole(Class_VardenLogger& logger);

/// The decoded events, with texts that are made on demand: a recording can have more than a million.
const EventLog& events(const Class_VardenLogger& logger);

/// The subject that the logger's configuration tells of.
Class_Subject subjectOf(const Class_VardenLogger& logger);

/// The battery in words.
std::string batteryWords(Class_VardenLogger& logger);

/// Whether a logger can keep the text unchanged: UTF-8 of at most `characters` characters, all of code page
/// 1252.
bool isStorable(std::string_view text, std::size_t characters);

}  // namespace hy_wristlog::engineering
