#include "recording/recording_files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "engineering/dates.h"
#include "engineering/recording.h"
#include "engineering/saved_pendrel.h"
#include "engineering/zones.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/failure.h"
#include "picture/actogram.h"
#include "picture/report.h"
#include "platform/folder_lock.h"
#include "platform/platform.h"
#include "recording/data_package.h"
#include "recording/events_csv.h"
#include "recording/json_output.h"
#include "recording/plotted_logger.h"
#include "recording/series_csv.h"
#include "recording/signals_held.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;
namespace platform = hy_wristlog::platform;

namespace {

constexpr const char* Source = "wristlog";
constexpr std::array PictureNames{"actogram.svg", "report.html"};
constexpr const char* FactsName = "recording.json";
constexpr const char* PackageName = "datapackage.json";
constexpr std::array Names{
    "series.csv",         "events.csv",   FactsName,     PackageName, WholeRaw,
    ConfigName,           "actogram.svg", "report.html", PartRaw,     "series.partial.csv",
    "events.partial.csv", SetupName,      PartReportName};

template <class Operation>
auto onFiles(const std::string& path, const Operation& operation) {
  try {
    return operation(platform::current().files());
  } catch (const platform::SystemError& error) {
    const std::string words = error.Number == EBUSY
                                  ? "another program is writing there"
                                  : platform::current().environment().errorText(error.Number);
    throw hw::Failure(hw::FailureNumber::PathFileAccess, Source, path + ": " + words);
  }
}

bool exists(const std::string& path) {
  return platform::current().files().state(path).Kind != platform::FileKind::Missing;
}

/// Makes a file's content of what goes to a sink.
template <class AddText>
auto contentOf(const AddText& addText) {
  return [addText](platform::NewFile& file) { addText([&file](std::string_view text) { file.add(text); }); };
}

std::string textOf(const Json& document) {
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

RecordingFiles::RecordingFiles(std::string folder, bool overwrite, Part part)
    : folder_(std::move(folder)), overwrite_(overwrite) {
  if (part == Part::Pictures)
    names_.assign(PictureNames.begin(), PictureNames.end());
  else
    names_.assign(Names.begin(), Names.end());
}

std::vector<std::string> RecordingFiles::missingFolders() const {
  std::vector<std::string> missing;
  for (std::size_t at = folder_.find('/', 1);; at = folder_.find('/', at + 1)) {
    const std::string part = folder_.substr(0, at);
    onFiles(folder_, [&](platform::Files& files) {
      if (files.state(part).Kind == platform::FileKind::Missing) missing.push_back(part);
    });
    if (at == std::string::npos) return missing;
  }
}

void RecordingFiles::prepare() const {
  const auto missing = missingFolders();
  const std::string inside =
      missing.empty() ? folder_ : std::filesystem::path(missing.front()).parent_path().string();
  const std::string present = inside.empty() ? "." : inside;
  const auto refuse = [](std::int32_t number, const std::string& words) {
    throw hw::Failure(number, Source, words);
  };
  onFiles(folder_, [&](platform::Files& files) {
    if (files.state(present).Kind != platform::FileKind::Folder)
      refuse(hw::FailureNumber::PathFileAccess, present + " is not a folder");
  });
  for (const std::string& path : paths())
    onFiles(path, [&](platform::Files& files) {
      const platform::FileState state = files.state(path);
      std::error_code none;
      if (std::filesystem::is_symlink(path, none))
        refuse(hw::FailureNumber::PathFileAccess, path + " is in the way: it is a link");
      if (state.Kind == platform::FileKind::Missing) return;
      if (!overwrite_ && !replacesPart_)
        refuse(hw::FailureNumber::FileExists, path + " exists. Use --force to overwrite it.");
      if (state.Kind != platform::FileKind::File)
        refuse(hw::FailureNumber::PathFileAccess, path + " is in the way: it is not a file");
      if (state.ReadOnly)
        refuse(hw::FailureNumber::PathFileAccess, path + " may not be overwritten: it is read-only");
    });
  onFiles(folder_, [&](platform::Files& files) {
    const SignalsHeld held;
    const std::string trial = present + "/.wristlog-trial";
    if (files.state(trial).Kind != platform::FileKind::Missing) return;
    files.write(trial, "");
    files.remove(trial);
  });
}

void RecordingFiles::prepareForDemo() {
  if (isFromDemo()) overwrite_ = true;
  // A report of the former demo goes with it.
  names_.emplace_back(ReportName);
  try {
    prepare();
  } catch (const hw::Failure& failure) {
    if (failure.Number != hw::FailureNumber::FileExists) throw;
    throw hw::Failure(
        hw::FailureNumber::FileExists, Source,
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
    if (const std::string name = entry.path().filename();
        name != ReportName && std::find(Names.begin(), Names.end(), name) == Names.end())
      return false;
  try {
    const Json found = Json::parse(
        platform::current().files().readUpTo(platform::Files::LongestText, path(FactsName)), nullptr, false);
    return found.is_object() && found.value("made_by", Json()) == MadeByDemo;
  } catch (const platform::SystemError&) {
    return false;
  }
}

std::vector<std::string> RecordingFiles::existing() const {
  auto all = paths();
  std::erase_if(all, [](const std::string& path) { return !exists(path); });
  return all;
}

bool RecordingFiles::holdAny() const { return !existing().empty(); }

void RecordingFiles::requireNoWhole() const {
  if (exists(path(WholeRaw)))
    throw hw::Failure(hw::FailureNumber::FileExists, Source,
                      folder_ + " holds a whole recording, which the beginning of one does not replace");
}

bool RecordingFiles::holdPart() const {
  return onFiles(folder_, [&](platform::Files&) { return exists(path(PartRaw)) && !exists(path(WholeRaw)); });
}

bool RecordingFiles::holdPartOf(const engineering::SavedRecording& recording) const {
  if (!holdPart()) return false;
  try {
    return engineering::savedRecording(path(ConfigName), path(PartRaw)).isPartOfSame(recording);
  } catch (const hw::Failure&) {
    return false;
  }
}

bool RecordingFiles::holdAsMuchOf(const engineering::SavedRecording& recording) const {
  try {
    const RecordingPlace place{folder_, {}, {}};
    const auto theirs = engineering::savedRecording(place.config(), place.raw());
    return theirs.Raw == recording.Raw || recording.isPartOfSame(theirs);
  } catch (const hw::Failure&) {
    return false;
  }
}

RecordingFiles RecordingFiles::beside() const {
  const std::string bare = folder_.substr(0, folder_.find_last_not_of('/') + 1);
  RecordingFiles files(folder_, false);
  for (int number = 2; files.folder_ == folder_ || exists(files.folder_); ++number)
    files.folder_ = bare + "-" + std::to_string(number);
  return files;
}

void RecordingFiles::claim(bool mayReplace) const {
  if (claim_) return;
  onFiles(folder_, [&](platform::Files& files) { claim_ = platform::lockFolder(files, folder_); });
  if (!overwrite_ && !mayReplace && holdAny())
    throw hw::Failure(hw::FailureNumber::FileExists, Source,
                      replacesPart_ ? folder_ + " holds the beginning of another recording"
                                    : "Another recording has been written to " + folder_ + " meanwhile");
}

/// Removes the files that were made of a former recording first, so that they never stand beside another
/// one's bytes. The bytes of a part stay until the whole ones are safe.
void RecordingFiles::writeRaw(const engineering::SavedRecording& recording) const {
  const std::string raw = recording.isPart() ? PartRaw : WholeRaw;
  const auto remove = [&](const std::string& name) {
    onFiles(path(name), [&](platform::Files& files) { files.remove(path(name)); });
  };
  if (missingFolders().empty()) {
    claim(replacesPart_ && holdPartOf(recording));
    for (const std::string& name : names_)
      if (name != raw && name != ConfigName && name != PartRaw) remove(name);
  }
  writeFile(raw, {recording.Raw.begin(), recording.Raw.end()});
  writeFile(ConfigName, recording.Ini);
  if (recording.isPendrel()) writeFile(SetupName, engineering::setupText(recording));
  if (raw != PartRaw) remove(PartRaw);
}

void RecordingFiles::writeDecoded(const DecodedRecording& recording, const Json& summary) const {
  const std::string ending = recording.Part ? ".partial.csv" : ".csv";
  const auto family = recording.Pendrel ? Family::Pendrel : Family::Varden;
  writeFile("series" + ending, contentOf([&](const TextSink& sink) { addSeriesCsv(sink, recording); }));
  if (recording.Logger)
    writeFile("events" + ending,
              contentOf([&](const TextSink& sink) { addEventsCsv(sink, *recording.Logger); }));
  writeFile(PackageName, textOf(dataPackage(family, recording.Part.has_value())));
  writeFile(FactsName, textOf(summary));
}

void RecordingFiles::requireEpochs(const DecodedRecording& recording) const {
  if (recording.samples() > 0) return;
  if (const auto former = existing(); !former.empty())
    throw hw::Failure(hw::FailureNumber::OutOfRange, Source,
                      "The recording holds no epochs, so " + former.front() + " is left as it is");
}

void RecordingFiles::writePictures(const picture::PlottedRecording& plot) const {
  const picture::RecordedDays days = picture::daysOf(plot);
  writeFile("actogram.svg", picture::actogramSvg(plot, days));
  writeFile("report.html", picture::reportHtml(plot, days));
}

void RecordingFiles::writePictures(const DecodedRecording& recording) const {
  try {
    writePictures(plottedRecording(recording));
  } catch (const hw::Failure& failure) {
    throw hw::Failure(failure.Number, failure.Source,
                      failure.Description + ". Only the pictures are missing: 'wristlog plot " + folder_ +
                          "' draws them from the recording's files");
  }
}

std::string RecordingFiles::writeSessionLog(const std::string& text) const {
  std::string name = "session.log";
  for (int number = 2; exists(path(name)); ++number) name = "session-" + std::to_string(number) + ".log";
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
  const auto made = missingFolders();
  try {
    onFiles(path(name), [&](platform::Files& files) {
      const SignalsHeld held;
      for (const std::string& folder : made) files.makeFolder(folder, false);
      // What is no file of the recording, as the session's record, replaces nothing.
      claim(std::find(names_.begin(), names_.end(), name) == names_.end());
      const auto file = files.create(path(name));
      addContent(*file);
      file->finish();
    });
  } catch (const hw::Failure&) {
    std::error_code none;
    for (auto folder = made.rbegin(); folder != made.rend(); ++folder) std::filesystem::remove(*folder, none);
    throw;
  }
}

namespace {

Json pendrelSummary(const DecodedRecording& recording) {
  hw::Class_Pendrel& logger = *recording.Pendrel;
  Json summary = Json::object();
  summary["model"] = engineering::modelWords(logger);
  summary["subject"] = subjectJson(engineering::subjectOf(logger));
  summary["time_zone"] = logger.Get_TimeZoneAbbrev();
  summary["time_zone_iana"] = textOrNull(engineering::ianaZone(logger));
  summary["start_local"] = engineering::isoDate(logger.Get_StartDate() + logger.Get_StartTime());
  summary["start_utc"] = engineering::isoDate(engineering::startUtc(logger), "Z");
  summary["epoch_seconds"] = logger.Get_EpochLength();
  summary["samples"] = logger.Get_Samples();
  summary["markers"] = logger.Get_MarkerCount();
  if (recording.Unchecked) summary["unchecked"] = true;
  if (recording.Part) summary.update(partJson(*recording.Part));
  summary["configuration"] = loggerJson(logger);
  return summary;
}

}  // namespace

Json summaryJson(const DecodedRecording& recording) {
  if (recording.Pendrel) return pendrelSummary(recording);
  hw::Class_VardenLogger& logger = *recording.Logger;
  Json summary = Json::object();
  summary["subject"] = subjectJson(engineering::subjectOf(logger));
  summary["time_zone"] = engineering::zoneName(logger);
  summary["time_zone_iana"] = textOrNull(engineering::ianaZone(logger));
  summary["start_utc"] = engineering::isoDate(logger.Get_StartTimeGMT(), "Z");
  summary["epoch_seconds"] = logger.Get_EpochLength();
  summary["samples"] = logger.Get_Samples();
  summary["markers"] = logger.Get_MarkerCount() + logger.Get_Marker2Count();
  summary["battery"] = engineering::batteryWords(logger);
  summary["low_battery_detected"] = recording.LowBattery;
  summary["result"] = hw::Class_Main::ResultName(recording.Result);
  summary["result_in_words"] = verdictOf(recording);
  if (recording.Unchecked) summary["unchecked"] = true;
  if (recording.Part) summary.update(partJson(*recording.Part));
  summary["configuration"] = loggerJson(logger);
  return summary;
}

}  // namespace wristlog
