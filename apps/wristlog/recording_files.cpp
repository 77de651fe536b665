#include "recording_files.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "hy_wristlog/failure.h"
#include "json_output.h"
#include "meanings.h"
#include "platform/platform.h"
#include "workflows/engineering.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;
namespace platform = hy_wristlog::platform;

namespace {

constexpr std::int32_t FileExists = 58;
constexpr std::int32_t PathFileAccess = 75;
constexpr double MinutesPerDay = 1440;
constexpr double SecondsPerDay = 86400;

constexpr std::array<const char*, 5> Names{"series.csv", "events.csv", "recording.json", "raw.bin",
                                           "config.ini"};

template <class Operation>
auto onFiles(const std::string& path, const Operation& operation) {
  try {
    return operation(platform::current().files());
  } catch (const platform::SystemError& error) {
    throw hw::Failure(PathFileAccess, "wristlog",
                      path + ": " + platform::current().environment().errorText(error.Number));
  }
}

std::string cell(std::int32_t value) { return value < 0 ? std::string() : std::to_string(value); }
std::string cell(hw::Tristate value) {
  return value == hw::Tristate::Empty ? std::string() : value == hw::Tristate::True ? "1" : "0";
}
std::string cell(float value) {
  if (std::isnan(value) || value < 0) return {};
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

template <class Series>
void addColumn(std::vector<std::string>& rows, const char* name, const Series& series) {
  if (series.empty()) return;
  rows[0] += std::string(",") + name;
  for (std::size_t i = 1; i < rows.size(); ++i)
    rows[i] += "," + (i - 1 < series.size() ? cell(series[i - 1]) : std::string());
}

std::string offsetText(std::int64_t minutes) {
  const auto two = [](std::int64_t n) { return (n < 10 ? "0" : "") + std::to_string(n); };
  const std::int64_t size = std::llabs(minutes);
  return (minutes < 0 ? "-" : "+") + two(size / 60) + ":" + two(size % 60);
}

std::string seriesCsv(const hw::Class_VardenLogger& logger) {
  const auto samples = static_cast<std::size_t>(std::max(0, logger.Get_Samples()));
  std::vector<std::string> rows(samples + 1);
  rows[0] = "local_time,utc";
  const double epoch = logger.Get_EpochLength() / SecondsPerDay;
  for (std::size_t i = 0; i < samples; ++i) {
    const double utc = logger.Get_StartTimeGMT() + static_cast<double>(i) * epoch;
    const double local = engineering::localTime(logger, utc);
    rows[i + 1] = engineering::isoDate(local, offsetText(std::llround((local - utc) * MinutesPerDay))) + "," +
                  engineering::isoDate(utc, "Z");
  }
  addColumn(rows, "activity", logger.Get_ActivityArray());
  addColumn(rows, "light_lux", logger.Get_LightArray());
  addColumn(rows, "red_uw_cm2", logger.Get_RedLightArray());
  addColumn(rows, "green_uw_cm2", logger.Get_GreenLightArray());
  addColumn(rows, "blue_uw_cm2", logger.Get_BlueLightArray());
  addColumn(rows, "marker", logger.Get_MarkerArray());
  addColumn(rows, "marker2", engineering::marker2(logger));
  addColumn(rows, "off_wrist", logger.Get_WristStatusArray());
  std::string text;
  for (const std::string& row : rows) text += row + "\n";
  return text;
}

std::string eventsCsv(const hw::Class_VardenLogger& logger) {
  std::string text = "\"Time\",\"Event\",\"Record\"\n";
  for (const std::string& event : engineering::events(logger)) text += event + "\n";
  return text;
}

}  // namespace

void RecordingFiles::prepare() const {
  onFiles(folder_, [&](platform::Files& files) {
    for (std::size_t at = folder_.find('/', 1);; at = folder_.find('/', at + 1)) {
      const std::string part = folder_.substr(0, at);
      if (files.state(part).Kind == platform::FileKind::Missing) files.makeFolder(part, false);
      if (at == std::string::npos) break;
    }
    for (const std::string& path : paths())
      if (!overwrite_ && files.state(path).Kind != platform::FileKind::Missing)
        throw hw::Failure(FileExists, "wristlog", path + " exists. Use --force to overwrite it.");
  });
}

void RecordingFiles::write(hw::Class_VardenLogger& logger, const Json& summary) const {
  writeRaw(logger);
  writeFile("series.csv", seriesCsv(logger));
  writeFile("events.csv", eventsCsv(logger));
  writeFile("recording.json", summary.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

void RecordingFiles::writeRaw(hw::Class_VardenLogger& logger) const {
  const std::vector<std::uint8_t> raw = engineering::rawData(logger);
  if (raw.empty()) return;
  writeFile("raw.bin", {raw.begin(), raw.end()});
  writeFile("config.ini",
            "[Configuration Bytes]\r\nRaw Config Bytes=" + engineering::rawConfigHex(logger) + "\r\n");
}

std::vector<std::string> RecordingFiles::paths() const {
  std::vector<std::string> all;
  for (const char* name : Names) all.push_back(path(name));
  return all;
}

void RecordingFiles::writeFile(const std::string& name, const std::string& content) const {
  onFiles(path(name), [&](platform::Files& files) { files.write(path(name), content); });
}

Json summaryJson(hw::Class_VardenLogger& logger, const hw::Class_Subject* subject,
                 std::optional<hw::enmDecodeResult> result, bool lowBattery) {
  Json summary = Json::object();
  summary["subject"] = subject != nullptr ? subjectJson(*subject) : Json();
  summary["time_zone"] = engineering::zoneName(logger);
  summary["start_utc"] = engineering::isoDate(logger.Get_StartTimeGMT(), "Z");
  summary["epoch_seconds"] = logger.Get_EpochLength();
  summary["samples"] = logger.Get_Samples();
  summary["markers"] = logger.Get_MarkerCount() + engineering::marker2Count(logger);
  summary["battery"] = engineering::batteryWords(logger);
  summary["low_battery_detected"] = lowBattery;
  summary["result"] = result ? nameOf(*result) : "";
  summary["result_in_words"] = result ? wordsFor(*result) : "";
  summary["configuration"] = loggerJson(logger);
  return summary;
}

}  // namespace wristlog
