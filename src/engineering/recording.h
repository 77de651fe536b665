#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"
#include "varden/decode/event_log.h"

/// What a service engineer's tools need of a logger beside its public class: its saved configuration, its
/// events, the buttons of its console. Not part of the library's promise to hosts.
namespace hy_wristlog::engineering {

/// A logger as its saved config block describes it. `configHex` is the block as hexadecimal text. Raises
/// OutOfRange for text that is no hexadecimal block, UnknownStructure and DamagedConfig for a block that
/// cannot be read.
std::shared_ptr<Class_VardenLogger> loggerFromConfig(std::string_view configHex);

/// Presses the button "Generate Data Overrun" of the logger's diagnostic console: a packet that is on its way
/// counts as damaged, as if the port had lost data.
void generateDataOverrun(Class_VardenLogger& logger);
/// Presses "Clear": the text of the console and that of its sink are emptied.
void clearConsole(Class_VardenLogger& logger);

/// The decoded events.
const EventLog& events(const Class_VardenLogger& logger);
const TristateSeries& marker2(const Class_VardenLogger& logger);
std::int32_t marker2Count(const Class_VardenLogger& logger);

/// The config block as it was read, hexadecimal.
std::string rawConfigHex(const Class_VardenLogger& logger);

/// The battery in words.
std::string batteryWords(Class_VardenLogger& logger);

/// Whether a logger can keep the text as it is: UTF-8 of the characters of code page 1252, at most
/// `characters`.
bool isStorable(std::string_view text, std::size_t characters);

}  // namespace hy_wristlog::engineering
