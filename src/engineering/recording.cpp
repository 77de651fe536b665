#include "engineering/recording.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/ascii.h"
#include "base/code_page.h"
#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "start_up/start_up.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/VardenLogger.h"
#include "workflows/main_state.h"

namespace hy_wristlog::engineering {
namespace {

constexpr std::size_t PacketBytes = 128;

/// The packets that would have brought these bytes.
PacketArray packetsOf(const ByteArray& bytes) {
  std::vector<Class_Packet> packets;
  for (std::size_t at = 0; at < bytes.size(); at += PacketBytes) {
    Class_Packet packet;
    packet.PacketSize = 1;
    packet.PacketNum = static_cast<std::uint8_t>(packets.size() + 1);
    const std::size_t end = std::min(bytes.size(), at + PacketBytes);
    packet.BinData.assign(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                          bytes.begin() + static_cast<std::ptrdiff_t>(end));
    packets.push_back(std::move(packet));
  }
  return packets;
}

[[noreturn]] void raiseNoDate(std::string_view text) {
  throw Failure(fault::TypeMismatch, "engineering.dateFromText",
                "\"" + std::string(text) +
                    "\" is no date: write yyyy-mm-dd or yyyy-mm-ddThh:mm[:ss], within the years 100 to 9999");
}

std::vector<OffsetPeriod> offsetsOf(const Class_TimeZoneInfo& zone, bool daylight, double fromUtc,
                                    double toUtc) {
  const std::int32_t standard = -zone.Bias;
  std::vector<OffsetPeriod> periods{{fromUtc, standard}};
  if (!daylight || zone.DaylightDate.wMonth == 0 || zone.StandardDate.wMonth == 0) return periods;

  std::vector<OffsetPeriod> changes;
  const std::int32_t lastYear = civilFromDate(toUtc).Year + 1;
  for (std::int32_t year = civilFromDate(fromUtc).Year - 1; year <= lastYear; ++year) {
    const double start = Class_TimeZoneTools::fncGetDaylightStart(year, zone);
    double end = Class_TimeZoneTools::fncGetStandardStart(year, zone);
    // In the south the clock that daylight time ends by is taken for one that shows standard time.
    if (end < start) end += zone.DaylightBias / MinutesPerDay;
    changes.push_back({start, standard - zone.DaylightBias});
    changes.push_back({end, standard});
  }
  std::stable_sort(changes.begin(), changes.end(),
                   [](const OffsetPeriod& a, const OffsetPeriod& b) { return a.FromUtc < b.FromUtc; });
  for (const OffsetPeriod& change : changes) {
    if (secondsBetween(change.FromUtc, fromUtc) >= 0)
      periods.front().Minutes = change.Minutes;
    else if (secondsBetween(change.FromUtc, toUtc) >= 0)
      periods.push_back(change);
  }
  return periods;
}

}  // namespace

std::vector<DockView> docks() {
  openLibrary();
  std::vector<DockView> views;
  for (const auto pointer : {LggrPntr_KRVivid, LggrPntr_KRII}) {
    const DockedModel& model = *dockedModel(pointer);
    VardenLogger logger;
    std::int16_t connected = 0;
    const std::int16_t port = model.findDock(logger, connected);
    views.push_back({pointer, model.Words, connected, connected == 1 ? port : 0});
  }
  return views;
}

std::string declaredDocksFile() {
  constexpr std::int32_t UserApplicationData = 26;
  platform::Environment& environment = platform::current().environment();
  const std::string named = environment.variable("HY_WRISTLOG_DOCKS").value_or("");
  return named.empty() ? environment.specialFolder(UserApplicationData) + "/HY_Wristlog/Docks.INI" : named;
}

std::string portTrouble(std::int32_t port) {
  try {
    platform::current().serialPorts().open(port);
    return {};
  } catch (const Failure& failure) {
    return failure.Description;
  }
}

std::vector<ZoneView> zones() {
  openLibrary();
  Class_TimeZoneTools& tools = TimeZoneTools();
  tools.fncPopulateTZICollection();
  const TimeZoneRef local = tools.fncLocalTimeZoneName().Zone;
  const double utc = Class_TimeZoneTools::fncGetGMTTime();
  std::vector<ZoneView> views;
  for (const TimeZoneRef& zone : tools.Get_TimeZoneArray()) {
    ZoneView view;
    view.Abbreviation = zone->Abbreviation;
    view.Key = zone->KeyName;
    view.DisplayName = zone->DisplayName;
    view.StandardName = zone->StandardName;
    view.Bias = zone->Bias;
    view.DaylightBias = zone->DaylightBias;
    view.HasDaylight = zone->DaylightDate.wMonth != 0 && zone->StandardDate.wMonth != 0;
    view.OffsetNow = static_cast<std::int32_t>(
        minutesBetween(utc, Class_TimeZoneTools::fncUTCToLocalDate(utc, *zone, true)));
    view.DaylightNow = view.OffsetNow != -zone->Bias;
    view.Local = zone == local;
    views.push_back(std::move(view));
  }
  return views;
}

std::shared_ptr<Class_VardenLogger> loggerFromConfig(std::string_view configHex) {
  openLibrary();
  const std::string_view hex = trimBlanks(configHex);
  if (hex.empty() || hex.size() % 2 != 0 || hex.find_first_not_of("0123456789abcdefABCDEF") != hex.npos)
    throw Failure(11503, "engineering.loggerFromConfig", "The configuration is not hexadecimal text");
  ByteArray bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2)
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
  auto logger = std::make_shared<Class_VardenLogger>();
  logger->inside().subDecodeVardenLoggerConfig(packetsOf(bytes));
  return logger;
}

void generateDataOverrun(Class_VardenLogger& logger) { logger.inside().link().cmdDataOverrun(); }
void clearConsole(Class_VardenLogger& logger) { logger.inside().link().cmdClear(); }

const EventLog& events(const Class_VardenLogger& logger) { return logger.inside().record.EventArray; }
const TristateSeries& marker2(const Class_VardenLogger& logger) {
  return logger.inside().record.Marker2Array;
}
std::int32_t marker2Count(const Class_VardenLogger& logger) { return logger.inside().record.Marker2Count; }

std::string rawConfigHex(const Class_VardenLogger& logger) { return logger.inside().record.RawConfigHex; }

std::string batteryWords(Class_VardenLogger& logger) { return logger.inside().fncFriendlyBatteryStatus(); }

std::vector<OffsetPeriod> offsetPeriods(const Class_VardenLogger& logger, double fromUtc, double toUtc) {
  const VardenRecord& record = logger.inside().record;
  if (!record.TimeZone) return {{fromUtc, record.GMToffset}};
  return offsetsOf(*record.TimeZone, record.AutoDSTadjust, fromUtc, toUtc);
}

std::vector<OffsetPeriod> offsetPeriods(const Class_Pendrel& logger, double fromUtc, double toUtc) {
  const std::int32_t told = logger.Get_GMToffset();
  if (const TimeZoneRef zone = TimeZoneTools().fncGetTZIfromAbbrev(logger.Get_TimeZoneAbbrev())) {
    auto periods = offsetsOf(*zone, logger.Get_AutoDSTadjust(), fromUtc, toUtc);
    if (periods.front().Minutes == told) return periods;
  }
  return {{fromUtc, told}};
}

double startUtc(const Class_Pendrel& logger) {
  constexpr std::int16_t NoOffset = -32768;
  if (logger.Get_StartDate() == UnknownDate || logger.Get_StartTime() == UnknownDate ||
      logger.Get_GMToffset() == NoOffset)
    return UnknownDate;
  return addTime(logger.Get_StartDate(), logger.Get_StartTime() - logger.Get_GMToffset() / MinutesPerDay);
}

double localTime(const Class_VardenLogger& logger, double utc) {
  return addTime(utc, offsetPeriods(logger, utc, utc).front().Minutes / MinutesPerDay);
}

bool isStorable(std::string_view text, std::size_t characters) {
  const std::string inside = ansiTextFromUtf8(text);
  return inside.size() <= characters && utf8FromAnsiText(inside) == text;
}

std::string zoneName(const Class_VardenLogger& logger) {
  const TimeZoneRef& zone = logger.inside().record.TimeZone;
  return zone ? zone->DisplayName : std::string{};
}

std::string isoDate(double date, std::string_view suffix) {
  try {
    const CivilTime time = civilFromDate(date);
    const auto two = [](std::int32_t n) { return formatNumber(n, "00"); };
    return formatNumber(time.Year, "0000") + "-" + two(time.Month) + "-" + two(time.Day) + "T" +
           two(time.Hour) + ":" + two(time.Minute) + ":" + two(time.Second) + std::string(suffix);
  } catch (const Failure&) {
    return {};
  }
}

double dateFromText(std::string_view text) {
  const std::string_view asked = text;
  text = trimBlanks(text);
  if (text.ends_with('Z')) text.remove_suffix(1);
  const auto field = [&](std::size_t at, std::size_t length, std::int32_t highest) {
    const std::string_view digits = text.substr(std::min(at, text.size()), length);
    if (digits.size() != length || !isDigits(digits) || leadingNumber(digits) > highest) raiseNoDate(asked);
    return roundToInt32(leadingNumber(digits));
  };
  if (text.find('-', 1) == text.npos) {
    if (!isNumeric(text) || isoDate(leadingNumber(text)).empty()) raiseNoDate(asked);
    return leadingNumber(text);
  }
  const auto separatedBy = [&](std::size_t at, std::string_view separators) {
    return text.size() <= at || separators.find(text[at]) != separators.npos;
  };
  const bool lengthFits = text.size() == 10 || text.size() == 16 || text.size() == 19;
  if (!lengthFits || !separatedBy(4, "-") || !separatedBy(7, "-") || !separatedBy(10, "T ") ||
      !separatedBy(13, ":") || !separatedBy(16, ":"))
    raiseNoDate(asked);
  double date = dateSerial(field(0, 4, 9999), field(5, 2, 12), field(8, 2, 31));
  // A day that its month does not have has moved on to another date.
  if (isoDate(date).substr(0, 10) != text.substr(0, 10)) raiseNoDate(asked);
  if (text.size() > 10)
    date = addTime(date,
                   timeSerial(field(11, 2, 23), field(14, 2, 59), text.size() == 19 ? field(17, 2, 59) : 0));
  return date;
}

}  // namespace hy_wristlog::engineering
