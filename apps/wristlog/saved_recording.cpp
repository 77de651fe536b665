#include "saved_recording.h"

#include <utility>

#include "workflows/engineering_files.h"

namespace wristlog {

namespace engineering = hy_wristlog::engineering;

std::shared_ptr<hy_wristlog::Class_VardenLogger> openRecording(const RecordingPlace& place) {
  constexpr std::int32_t OutOfRange = 11503;
  auto logger = engineering::loggerFromIni(place.config());
  auto raw = engineering::rawFromFile(place.raw());
  if (raw.empty())
    throw hy_wristlog::Failure(OutOfRange, "wristlog", place.raw() + " holds no recording: it is empty");
  engineering::setRawData(*logger, std::move(raw));
  return logger;
}

}  // namespace wristlog
