#include "study/shared_places.h"

#include <algorithm>
#include <tuple>

#include "platform/platform.h"
#include "recording/decoded_recording.h"

namespace wristlog {

namespace platform = hy_wristlog::platform;

namespace {

bool isPart(const StudiedRecording& recording) { return recording.Row.at("part").get<bool>(); }

auto lengthOf(const StudiedRecording& recording) {
  return std::tuple(rawFileOf(recording.Files).Size, !isPart(recording));
}

bool agree(const Json& row, const Json& other, std::initializer_list<const char*> columns) {
  return std::all_of(columns.begin(), columns.end(),
                     [&](const char* column) { return row.at(column) == other.at(column); });
}

bool isBeginning(const std::string& path, const std::string& ofPath) {
  auto& files = platform::current().files();
  try {
    const RecordingPlace part{path, {}, {}}, whole{ofPath, {}, {}};
    return files.read(whole.raw()).starts_with(files.read(part.raw()));
  } catch (const platform::SystemError&) {
    return false;
  }
}

bool isIn(const SharingRecording& recording, const SharingRecording& chosen) {
  const Json &row = recording.Studied->Row, &other = chosen.Studied->Row;
  if (!agree(row, other, {"participant", "mode", "epoch_seconds", "start_local", "time_zone"})) return false;
  if (rawFileOf(recording.Studied->Files).Digest == rawFileOf(chosen.Studied->Files).Digest)
    return agree(row, other, {"epochs"});
  return isPart(*recording.Studied) && isBeginning(recording.Path, chosen.Path);
}

}  // namespace

SharedPlace sharedPlace(const std::vector<SharingRecording>& recordings) {
  const auto longest = std::max_element(
      recordings.begin(), recordings.end(),
      [](const auto& one, const auto& other) { return lengthOf(*one.Studied) < lengthOf(*other.Studied); });
  SharedPlace place{static_cast<std::size_t>(longest - recordings.begin()), {}};
  const auto fits = [&](const auto& each) { return &each == &*longest || isIn(each, *longest); };
  if (std::all_of(recordings.begin(), recordings.end(), fits)) return place;
  for (const auto& each : recordings)
    place.Conflict +=
        (place.Conflict.empty() ? "" : ", ") + each.Studied->Row.at("folder").get<std::string>();
  place.Conflict = "These are of one logger and start, but differ: " + place.Conflict +
                   ". None of them is in the series; move away those that are not to count";
  return place;
}

}  // namespace wristlog
