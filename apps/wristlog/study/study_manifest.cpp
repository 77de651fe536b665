#include "study/study_manifest.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "hy_wristlog/failure.h"
#include "platform/digest.h"
#include "platform/platform.h"
#include "recording/recording_files.h"
#include "study/recording_folders.h"
#include "study/study_table.h"
#include "tools/Class_Tools.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace fs = std::filesystem;
namespace platform = hy_wristlog::platform;

namespace {

constexpr const char* MadeByStudy = "wristlog study";

std::string digestOf(const std::string& bytes) {
  return hw::Class_Tools::fncConvertByteArrayToHexString(
      platform::sha256({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
}

Json jsonOf(const StudiedRecording& recording) {
  Json files = Json::array();
  for (const InputFile& file : recording.Files)
    files.push_back(
        {{"name", file.Name}, {"size", file.Size}, {"changed", file.Changed}, {"sha256", file.Digest}});
  Json written;
  if (recording.Written)
    written = {{"series", recording.Written->Series}, {"events", recording.Written->Events}};
  return {{"version", recording.Version}, {"files", files}, {"written", written}, {"row", recording.Row}};
}

StudiedRecording studiedFrom(const Json& json) {
  StudiedRecording recording;
  recording.Version = json.at("version").get<std::string>();
  for (const Json& file : json.at("files"))
    recording.Files.push_back({file.at("name").get<std::string>(), file.at("size").get<std::int64_t>(),
                               file.at("changed").get<std::int64_t>(), file.at("sha256").get<std::string>()});
  if (const Json& written = json.at("written"); !written.is_null())
    recording.Written = {written.at("series").get<std::int64_t>(), written.at("events").get<std::int64_t>()};
  recording.Row = json.at("row");
  for (const Field& field : studyFields()) recording.Row.at(std::string(field.Name));
  return recording;
}

}  // namespace

std::vector<InputFile> inputFilesOf(const std::string& folder, const std::vector<InputFile>& former) {
  std::vector<InputFile> files;
  for (const char* name : RecordedFiles) {
    const std::string path = folder + "/" + name;
    std::error_code error;
    InputFile file{name, static_cast<std::int64_t>(fs::file_size(path, error)), 0, {}};
    if (error == std::errc::no_such_file_or_directory) continue;
    if (!error) file.Changed = fs::last_write_time(path, error).time_since_epoch().count();
    const auto refuse = [&](std::int32_t number) {
      throw hw::Failure(hw::FailureNumber::PathFileAccess, "wristlog",
                        path + ": " + platform::current().environment().errorText(number));
    };
    if (error) refuse(error.value());
    const auto same = std::find_if(former.begin(), former.end(), [&](const InputFile& other) {
      return other.Name == file.Name && other.Size == file.Size && other.Changed == file.Changed;
    });
    try {
      file.Digest = same != former.end() ? same->Digest : digestOf(platform::current().files().read(path));
    } catch (const platform::SystemError& failure) {
      refuse(failure.Number);
    }
    files.push_back(std::move(file));
  }
  return files;
}

bool haveSameBytes(const std::vector<InputFile>& files, const std::vector<InputFile>& others) {
  return std::equal(files.begin(), files.end(), others.begin(), others.end(),
                    [](const InputFile& file, const InputFile& other) {
                      return file.Name == other.Name && file.Digest == other.Digest;
                    });
}

InputFile rawFileOf(const std::vector<InputFile>& files) {
  for (const char* name : {WholeRaw, PartRaw})
    for (const InputFile& file : files)
      if (file.Name == name) return file;
  return {};
}

std::string StudyManifest::text() const {
  Json partitions = Json::array(), recordings = Json::object();
  for (const Partition& partition : Partitions)
    partitions.push_back({{"logger", partition.Logger}, {"start", partition.Start}});
  for (const auto& [folder, recording] : Recordings) recordings[folder] = jsonOf(recording);
  const Json document{
      {"made_by", MadeByStudy}, {"input", Input}, {"partitions", partitions}, {"recordings", recordings}};
  return document.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<StudyManifest> StudyManifest::from(const std::string& text) {
  try {
    const Json document = Json::parse(text);
    if (document.at("made_by") != MadeByStudy) return std::nullopt;
    StudyManifest manifest;
    manifest.Input = document.at("input").get<std::string>();
    for (const Json& partition : document.at("partitions"))
      manifest.Partitions.insert(
          {partition.at("logger").get<std::string>(), partition.at("start").get<std::string>()});
    for (const auto& [folder, recording] : document.at("recordings").items())
      manifest.Recordings[folder] = studiedFrom(recording);
    return manifest;
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

}  // namespace wristlog
