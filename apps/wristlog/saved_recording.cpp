#include "saved_recording.h"

#include <cstdint>
#include <utility>
#include <vector>

#include "workflows/engineering.h"
#include "workflows/engineering_files.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

std::vector<std::string> RecordingPlace::files() const {
  std::vector<std::string> names{config(), raw()};
  std::erase(names, "");
  return names;
}

std::shared_ptr<hw::Class_VardenLogger> openRecording(const RecordingPlace& place) {
  constexpr std::int32_t OutOfRange = 11503;
  auto logger = engineering::loggerFromIni(place.config());
  auto raw = engineering::rawFromFile(place.raw());
  if (raw.empty())
    throw hw::Failure(OutOfRange, "wristlog", place.raw() + " holds no recording: it is empty");
  engineering::setRawData(*logger, std::move(raw));
  return logger;
}

DecodedRecording decodeRecording(const RecordingPlace& place, bool diagnostic) {
  DecodedRecording recording;
  recording.Logger = openRecording(place);
  recording.Result = engineering::naming(place.raw() + " does not fit " + place.config(), [&] {
    return engineering::decode(*recording.Logger, engineering::rawData(*recording.Logger), diagnostic,
                               recording.LowBattery);
  });
  return recording;
}

}  // namespace wristlog
