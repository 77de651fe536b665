#include "commands/many_recordings.h"

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>

#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "recording/json_output.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace platform = hy_wristlog::platform;

namespace {

/// The last part of a folder's path; of one that ends with ".." or is "." that of the folder meant.
std::string nameOfFolder(const std::string& folder) {
  std::error_code none;
  std::filesystem::path path = std::filesystem::path(folder + "/").lexically_normal().parent_path();
  if (path.empty() || path.filename() == "." || path.filename() == "..")
    path = std::filesystem::weakly_canonical(path.empty() ? "." : path, none);
  return path.filename().string();
}

std::optional<hw::Failure> failureOf(const std::function<void()>& work) {
  try {
    work();
    return std::nullopt;
  } catch (const hw::Failure& failure) {
    return failure;
  } catch (const platform::SystemError& error) {
    return hw::Failure(hw::FailureNumber::PathFileAccess, "wristlog",
                       platform::current().environment().errorText(error.Number));
  }
}

}  // namespace

std::vector<RecordingPlace> RecordingPlaces::all() const {
  if (Folders.empty()) return {Files};
  std::vector<RecordingPlace> places;
  for (const std::string& folder : Folders) places.push_back({folder, {}, {}, Files.Unchecked});
  return places;
}

std::vector<std::string> outputFolders(const std::vector<RecordingPlace>& places, const std::string& out) {
  if (places.size() == 1) return {out};
  std::vector<std::string> folders;
  std::map<std::string, std::string> taken;
  for (const RecordingPlace& place : places) {
    const std::string folder = out + "/" + nameOfFolder(place.Folder);
    if (const auto [other, isNew] = taken.try_emplace(folder, place.Folder); !isNew)
      throw hw::Failure(hw::FailureNumber::InvalidCall, "wristlog",
                        other->second + " and " + place.Folder + " would both be written to " + folder);
    folders.push_back(folder);
  }
  return folders;
}

int forEachRecording(const CommonOptions& common, const std::vector<RecordingPlace>& places,
                     const RecordingWork& work, Heading heading) {
  if (places.size() == 1) {
    const Json document = work(places.front(), 0);
    if (common.AsJson) print(document);
    return Good;
  }
  int status = Good;
  Json documents = Json::array();
  for (std::size_t i = 0; i < places.size(); ++i) {
    const std::string& folder = places[i].Folder;
    if (!common.AsJson && heading == Heading::Said) say() << folder << ":\n";
    Json document{{"recording", folder}};
    if (const auto failure = failureOf([&] { document.update(work(places[i], i)); })) {
      status = Unsuccessful;
      document.update(failureJson(*failure));
      if (!common.AsJson) complain() << folder << ": " << wordsFor(*failure) << '\n';
    }
    documents.push_back(std::move(document));
  }
  if (common.AsJson) print({{"recordings", documents}});
  return status;
}

}  // namespace wristlog
