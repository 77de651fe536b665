#include "engineering/recording.h"

#include <algorithm>
#include <utility>

#include "base/code_page.h"
#include "base/inside.h"
#include "engineering/saved_facts.h"
#include "hy_wristlog/failure.h"
#include "start_up/start_up.h"
#include "varden/VardenLogger.h"
#include "varden/config/packets.h"
#include "workflows/subject_of.h"

namespace hy_wristlog::engineering {

std::shared_ptr<Class_VardenLogger> loggerFromConfig(std::string_view configHex) {
  openLibrary();
  const auto bytes = facts::bytesOfHex(configHex);
  if (!bytes)
    throw Failure(FailureNumber::OutOfRange, "engineering.loggerFromConfig",
                  "The configuration is not hexadecimal text");
  auto logger = std::make_shared<Class_VardenLogger>();
  Inside::of(*logger).subDecodeVardenLoggerConfig(splitIntoPackets(*bytes));
  return logger;
}

void generateDataOverrun(Class_VardenLogger& logger) { Inside::of(logger).link().cmdDataOverrun(); }
void clearConsole(Class_VardenLogger& logger) { Inside::of(logger).link().cmdClear(); }

const EventLog& events(const Class_VardenLogger& logger) { return Inside::of(logger).record.EventArray; }

Class_Subject subjectOf(const Class_VardenLogger& logger) {
  return hy_wristlog::subjectOf(Inside::of(logger).record);
}

std::string batteryWords(Class_VardenLogger& logger) { return Inside::of(logger).fncFriendlyBatteryStatus(); }

bool isStorable(std::string_view text, std::size_t characters) {
  const std::string inside = ansiTextFromUtf8(text);
  return inside.size() <= characters && utf8FromAnsiText(inside) == text;
}

}  // namespace hy_wristlog::engineering
