#include "recording_files.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>

#include "hy_wristlog/failure.h"
#include "json_output.h"
#include "meanings.h"
#include "picture/actogram.h"
#include "picture/report.h"
#include "platform/platform.h"
#include "plotted_logger.h"
#include "process.h"
#include "series_csv.h"
#include "workflows/engineering.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;
namespace platform = hy_wristlog::platform;

namespace {

constexpr const char* Source = "wristlog";
constexpr std::int32_t FileExists = 58;
constexpr std::int32_t PathFileAccess = 75;
constexpr std::array PictureNames{"actogram.svg", "report.html"};
constexpr std::array Names{"series.csv", "events.csv",   "recording.json", "raw.bin",
                           "config.ini", "actogram.svg", "report.html"};

template <class Operation>
auto onFiles(const std::string& path, const Operation& operation) {
  try {
    return operation(platform::current().files());
  } catch (const platform::SystemError& error) {
    throw hw::Failure(PathFileAccess, Source,
                      path + ": " + platform::current().environment().errorText(error.Number));
  }
}

void addEventsCsv(platform::NewFile& file, const hw::Class_VardenLogger& logger) {
  file.add("\"Time\",\"Event\",\"Record\"\n");
  for (const std::string& event : engineering::events(logger)) file.add(event + "\n");
}

}  // namespace

RecordingFiles::RecordingFiles(std::string folder, bool overwrite, Part part)
    : folder_(std::move(folder)), overwrite_(overwrite) {
  if (part == Part::Pictures)
    names_.assign(PictureNames.begin(), PictureNames.end());
  else
    names_.assign(Names.begin(), Names.end());
}

void RecordingFiles::prepare() const {
  onFiles(folder_, [&](platform::Files& files) {
    for (std::size_t at = folder_.find('/', 1);; at = folder_.find('/', at + 1)) {
      const std::string part = folder_.substr(0, at);
      if (files.state(part).Kind == platform::FileKind::Missing) files.makeFolder(part, false);
      if (at == std::string::npos) break;
    }
    if (files.state(folder_).Kind != platform::FileKind::Folder)
      throw hw::Failure(PathFileAccess, Source, folder_ + " is not a folder");
  });
  for (const std::string& path : paths())
    onFiles(path, [&](platform::Files& files) {
      const platform::FileKind kind = files.state(path).Kind;
      if (kind != platform::FileKind::Missing && !overwrite_)
        throw hw::Failure(FileExists, Source, path + " exists. Use --force to overwrite it.");
      if (kind != platform::FileKind::Missing && kind != platform::FileKind::File)
        throw hw::Failure(PathFileAccess, Source, path + " is in the way: it is not a file");
    });
  onFiles(folder_, [&](platform::Files& files) {
    const SignalsHeld held;
    const std::string trial = path(".wristlog-trial");
    if (files.state(trial).Kind != platform::FileKind::Missing) return;
    files.write(trial, "");
    files.remove(trial);
  });
}

void RecordingFiles::prepareForDemo() {
  if (isFromDemo()) overwrite_ = true;
  try {
    prepare();
  } catch (const hw::Failure& failure) {
    if (failure.Number != FileExists) throw;
    throw hw::Failure(
        FileExists, Source,
        "The folder " + folder_ +
            " exists and holds more than an earlier demo's recording. Choose another with --out, or "
            "use --force.");
  }
}

bool RecordingFiles::isFromDemo() const {
  std::error_code error;
  std::filesystem::directory_iterator entries(folder_, error);
  if (error) return false;
  for (const auto& entry : entries)
    if (std::find(Names.begin(), Names.end(), entry.path().filename()) == Names.end()) return false;
  try {
    const Json found = Json::parse(platform::current().files().read(path("recording.json")), nullptr, false);
    return found.is_object() && found.value("made_by", Json()) == MadeByDemo;
  } catch (const platform::SystemError&) {
    return false;
  }
}

void RecordingFiles::write(hw::Class_VardenLogger& logger, const Json& summary) const {
  writeRaw(logger);
  writeFile("series.csv", [&](platform::NewFile& file) { addSeriesCsv(file, logger); });
  writeFile("events.csv", [&](platform::NewFile& file) { addEventsCsv(file, logger); });
  writeFile("recording.json", summary.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

void RecordingFiles::writeRaw(hw::Class_VardenLogger& logger) const {
  const std::vector<std::uint8_t> raw = engineering::rawData(logger);
  if (raw.empty()) return;
  writeFile("raw.bin", {raw.begin(), raw.end()});
  writeFile("config.ini",
            "[Configuration Bytes]\r\nRaw Config Bytes=" + engineering::rawConfigHex(logger) + "\r\n");
}

void RecordingFiles::writePictures(const picture::PlottedRecording& plot) const {
  const picture::RecordedDays days = picture::daysOf(plot);
  writeFile("actogram.svg", picture::actogramSvg(plot, days));
  writeFile("report.html", picture::reportHtml(plot, days));
}

void RecordingFiles::writePictures(hw::Class_VardenLogger& logger, hw::enmDecodeResult result,
                                   bool lowBattery) const {
  try {
    writePictures(plottedRecording(logger, result, lowBattery));
  } catch (const hw::Failure& failure) {
    throw hw::Failure(failure.Number, failure.Source,
                      failure.Description + ". Only the pictures are missing: 'wristlog plot " + folder_ +
                          "' draws them from the recording's files");
  }
}

std::string RecordingFiles::writeSessionLog(const std::string& text) const {
  std::string name = "session.log";
  for (int number = 2; std::filesystem::exists(path(name)); ++number)
    name = "session-" + std::to_string(number) + ".log";
  writeFile(name, text);
  return path(name);
}

std::vector<std::string> RecordingFiles::paths() const {
  std::vector<std::string> all;
  all.reserve(names_.size());
  for (const std::string& name : names_) all.push_back(path(name));
  return all;
}

void RecordingFiles::writeFile(const std::string& name, const std::string& content) const {
  writeFile(name, [&](platform::NewFile& file) { file.add(content); });
}

void RecordingFiles::writeFile(const std::string& name,
                               const std::function<void(platform::NewFile&)>& addContent) const {
  onFiles(path(name), [&](platform::Files& files) {
    const SignalsHeld held;
    const auto file = files.create(path(name));
    addContent(*file);
    file->finish();
  });
}

Json summaryJson(hw::Class_VardenLogger& logger, const hw::Class_Subject& subject,
                 std::optional<hw::enmDecodeResult> result, bool lowBattery) {
  Json summary = Json::object();
  summary["subject"] = subjectJson(subject);
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
