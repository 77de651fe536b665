#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engineering/files.h"
#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/api.h"
#include "hy_wristlog/enumerations.h"
#include "varden/decode/event_log.h"

/// What a service engineer's tools need beside the public classes: the raw recording, saved recordings, docks
/// and zones. Not part of the library's promise to hosts.
namespace hy_wristlog::engineering {

/// A dock of a model, as far as it can be seen without opening its port.
struct HY_WRISTLOG_API DockView {
  enmLoggerPointer Model = LggrPntr_None;
  std::string Words;           ///< "Kestrin Vivid"
  std::int32_t Connected = 0;  ///< how many docks of the model there are
  std::int32_t Port = 0;       ///< COM port of the only one; 0 when there is none, several, or no port
};

/// One row a model. Raises the failures of the device search.
HY_WRISTLOG_API std::vector<DockView> docks();

/// The file in which docks are declared that the USB tree does not show. It need not exist.
HY_WRISTLOG_API std::string declaredDocksFile();

/// Why COM port `port` cannot be opened, and what to do about it; empty when it can be opened.
HY_WRISTLOG_API std::string portTrouble(std::int32_t port);

struct HY_WRISTLOG_API ZoneView {
  std::string Abbreviation, Key, DisplayName, StandardName;
  std::int32_t Bias = 0;          ///< minutes from local time to UTC
  std::int32_t DaylightBias = 0;  ///< added in daylight time
  bool HasDaylight = false;
  bool DaylightNow = false;
  std::int32_t OffsetNow = 0;  ///< minutes to add to UTC at this moment
  bool Local = false;          ///< the machine's own zone
};

/// The zone catalogue in its order.
HY_WRISTLOG_API std::vector<ZoneView> zones();

/// A logger as its saved config block describes it. `configHex` is the block as hexadecimal text. Raises
/// 11503 for text that is no hexadecimal block, 11504 and 11505 for a block that cannot be read.
HY_WRISTLOG_API std::shared_ptr<Class_VardenLogger> loggerFromConfig(std::string_view configHex);

/// Presses the button "Generate Data Overrun" of the logger's diagnostic console: a packet that is on its way
/// counts as damaged, as if the port had lost data.
HY_WRISTLOG_API void generateDataOverrun(Class_VardenLogger& logger);
/// Presses "Clear": the text of the console and that of its sink are emptied.
HY_WRISTLOG_API void clearConsole(Class_VardenLogger& logger);

/// The decoded events.
HY_WRISTLOG_API const EventLog& events(const Class_VardenLogger& logger);
HY_WRISTLOG_API const TristateSeries& marker2(const Class_VardenLogger& logger);
HY_WRISTLOG_API std::int32_t marker2Count(const Class_VardenLogger& logger);

/// The config block as it was read, hexadecimal.
HY_WRISTLOG_API std::string rawConfigHex(const Class_VardenLogger& logger);

/// The battery in words.
HY_WRISTLOG_API std::string batteryWords(Class_VardenLogger& logger);

/// How far the clocks where a logger was worn were ahead of UTC, from a moment on.
struct HY_WRISTLOG_API OffsetPeriod {
  double FromUtc = 0;
  std::int32_t Minutes = 0;
};

/// The offsets of the logger's zone from one moment to another: the first holds from `fromUtc` on, each later
/// one from a change of the clocks on. Daylight time counts when the logger adjusts for it.
HY_WRISTLOG_API std::vector<OffsetPeriod> offsetPeriods(const Class_VardenLogger& logger, double fromUtc,
                                                        double toUtc);

/// The same for a Pendrel logger: its offset at its start, and the changes of the zone that it names, if that
/// zone had the offset at that time.
HY_WRISTLOG_API std::vector<OffsetPeriod> offsetPeriods(const Class_Pendrel& logger, double fromUtc,
                                                        double toUtc);
/// When the logger's recording started; the unknown date (-1) when it does not tell.
HY_WRISTLOG_API double startUtc(const Class_Pendrel& logger);

/// A UTC date in the logger's zone, daylight time included when the logger adjusts for it.
HY_WRISTLOG_API double localTime(const Class_VardenLogger& logger, double utc);

/// The name of the logger's zone; empty when it has none.
HY_WRISTLOG_API std::string zoneName(const Class_VardenLogger& logger);

/// Whether a logger can keep the text as it is: UTF-8 of the characters of code page 1252, at most
/// `characters`.
HY_WRISTLOG_API bool isStorable(std::string_view text, std::size_t characters);

/// A date as ISO 8601: "2026-11-21T03:30:00"; `suffix` stands behind it. Empty for a date outside the years
/// 100 to 9999.
HY_WRISTLOG_API std::string isoDate(double date, std::string_view suffix = {});

/// "yyyy-mm-dd", with "Thh:mm[:ss]" or " hh:mm[:ss]" behind it, a "Z" allowed; or a day count. Raises 13 for
/// anything else and for days that are not on the calendar.
HY_WRISTLOG_API double dateFromText(std::string_view text);

}  // namespace hy_wristlog::engineering
