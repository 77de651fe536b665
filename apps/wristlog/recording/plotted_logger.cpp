#include "recording/plotted_logger.h"

#include <algorithm>

#include "engineering/docks.h"
#include "engineering/recording.h"
#include "engineering/zones.h"
#include "hy_wristlog/failure.h"
#include "recording/events_csv.h"
#include "recording/plotted_parts.h"
#include "recording/plotted_pendrel.h"
#include "varden/logging_modes.h"
#include "words/meanings.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

std::string activityWords(hw::ActivityPart part) {
  switch (part) {
    case hw::ActivityPart::None:
      return {};
    case hw::ActivityPart::Code:
      return "activity";
    case hw::ActivityPart::Raw:
      return "activity at 32 Hz";
  }
  return {};
}

struct LightOfMode {
  const char* Words;
  picture::LightScale Scale;
};

LightOfMode lightOf(hw::LightPart part) {
  const picture::LightScale lux{"lux", -1, 5};
  switch (part) {
    case hw::LightPart::None:
      return {"", lux};
    case hw::LightPart::Lux:
      return {"light", lux};
    case hw::LightPart::CalibrationLux:
      return {"light calibration", lux};
    case hw::LightPart::Colours:
      return {"light in three colours", {"µW/cm²", -2, 4}};
    case hw::LightPart::Currents:
      return {"light calibration", {"(current)", -12, 0}};
    case hw::LightPart::Frequency:
      return {"off-wrist frequency", {"", 0, 5}};
  }
  return {};
}

std::string modeWords(const hw::LoggingMode& mode) {
  const std::string activity = activityWords(mode.Activity), light = lightOf(mode.Light).Words;
  return activity + (activity.empty() || light.empty() ? "" : " and ") + light +
         (mode.Use == hw::ModeUse::Internal ? ", an internal mode" : "");
}

void addLight(picture::PlottedRecording& plot, const hw::Class_VardenLogger& logger,
              const hw::LoggingMode& mode) {
  using enum picture::LightColour;
  const auto add = [&](picture::LightColour colour, const hw::LightSeries& values) {
    if (!values.empty()) plot.Light.push_back({colour, seriesOf(values)});
  };
  add(mode.Light == hw::LightPart::Frequency ? Frequency : Red, logger.Get_RedLightArray());
  add(Green, logger.Get_GreenLightArray());
  add(Blue, logger.Get_BlueLightArray());
  // Gaps can leave a recording of colours with a light series that holds no value.
  if (plot.Light.empty()) add(Lux, logger.Get_LightArray());
  plot.LightAxis = lightOf(mode.Light).Scale;
}

picture::Sign signOf(EventKind kind) {
  switch (kind) {
    case EventKind::Reset:
      return picture::Sign::Reset;
    case EventKind::LowBattery:
      return picture::Sign::LowBattery;
    case EventKind::MemoryFull:
      return picture::Sign::MemoryFull;
    case EventKind::Damaged:
      return picture::Sign::Damage;
    default:
      return picture::Sign::None;
  }
}

void addEvents(picture::PlottedRecording& plot, const hw::Class_VardenLogger& logger) {
  const hw::EventLog& events = engineering::events(logger);
  for (std::size_t i = 0; i < events.size(); ++i) {
    picture::Event event;
    event.Words = events.words(i);
    event.Shown = signOf(eventKind(event.Words));
    if (events.time(i) != UnknownDate) event.Time = unixSeconds(events.time(i));
    if (plot.Events.size() < picture::MostListedEvents || event.Shown != picture::Sign::None)
      plot.Events.push_back(std::move(event));
    else
      ++plot.EventsLeftOut;
  }
}

void addFacts(picture::PlottedRecording& plot, const DecodedRecording& recording,
              const hw::LoggingMode& mode) {
  hw::Class_VardenLogger& logger = *recording.Logger;
  const auto add = [&](const char* label, const std::string& value) { addFact(plot, label, value); };
  addSubjectFacts(plot, logger);
  add("Logger", engineering::modelWords(logger.Get_DeviceType()));
  add("Serial number", logger.Get_SerialNumber());
  add("Firmware", logger.Get_FirmwareVersion());
  add("Recorded", modeWords(mode));
  addPeriodFacts(plot);
  add("Markers", std::to_string(logger.Get_MarkerCount()) + " of button 1, " +
                     std::to_string(logger.Get_Marker2Count()) + " of button 2");
  // A logger decoded from files that do not hold the voltage has none.
  if (logger.Get_BatteryVoltage() > 0) add("Battery", engineering::batteryWords(logger));
  add("Result", verdictOf(recording));
}

void addWarnings(picture::PlottedRecording& plot, const DecodedRecording& recording) {
  const hw::Class_VardenLogger& logger = *recording.Logger;
  if (recording.Result != hw::Decode_OK || recording.Unchecked || recording.Part)
    plot.Warnings.push_back(verdictOf(recording));
  if (recording.LowBattery) plot.Warnings.emplace_back("The logger's battery was low during the recording.");
  if (logger.Get_LowPowerShutdownFlag() == hw::LowPower_ShutdownOccurred)
    plot.Warnings.emplace_back("The logger has shut down on a low battery.");
  addResets(plot, logger.Get_Resets());
}

}  // namespace

std::string modeWords(const hw::Class_VardenLogger& logger) {
  const hw::LoggingMode* mode = hw::findLoggingMode(logger.Get_DeviceType(), logger.Get_AcquisitionMode());
  return mode != nullptr ? modeWords(*mode) : std::string();
}

picture::PlottedRecording plottedRecording(DecodedRecording recording) {
  if (recording.Pendrel) return plottedPendrel(recording);
  // A picture must not depend on how long ago a sound recording ended.
  if (recording.Result == hw::Decode_TooLongSinceLastAcqStop) recording.Result = hw::Decode_OK;
  hw::Class_VardenLogger& logger = *recording.Logger;
  const hw::LoggingMode* mode = hw::findLoggingMode(logger.Get_DeviceType(), logger.Get_AcquisitionMode());
  if (mode == nullptr)
    throw hw::Failure(hw::FailureNumber::OutOfRange, "plottedRecording", hw::IncompatibleMode);
  picture::PlottedRecording plot;
  plot.Subject = logger.Get_SubjectIdentity();
  plot.IsPart = recording.Part.has_value();
  plot.Logger = loggerWords(engineering::modelWords(logger.Get_DeviceType()), logger.Get_SerialNumber());
  plot.Zone = engineering::zoneName(logger);
  plot.Epoch = logger.Get_EpochLength();
  if (plot.Epoch > 0) plot.Epochs = static_cast<std::size_t>(std::max(0, logger.Get_Samples()));
  plot.Start = unixSeconds(logger.Get_StartTimeGMT());
  if (plot.Epochs > 0)
    for (const auto& period : engineering::offsetPeriods(logger, dateOf(plot.Start), dateOf(plot.end())))
      plot.Offsets.push_back({unixSeconds(period.FromUtc), period.Minutes});
  plot.Activity = seriesOf(logger.Get_ActivityArray());
  addLight(plot, logger, *mode);
  for (const hw::Tristate off : logger.Get_WristStatusArray())
    plot.OffWrist.push_back(off == hw::Tristate::True);
  addMarkers(plot, logger.Get_MarkerArray(), 1);
  addMarkers(plot, logger.Get_Marker2Array(), 2);
  addEvents(plot, logger);
  addFacts(plot, recording, *mode);
  addWarnings(plot, recording);
  return plot;
}

}  // namespace wristlog
