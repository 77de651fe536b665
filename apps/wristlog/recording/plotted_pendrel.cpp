#include "recording/plotted_pendrel.h"

#include <algorithm>

#include "engineering/saved_pendrel.h"
#include "engineering/zones.h"
#include "recording/plotted_parts.h"
#include "words/counted.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

bool countsSteps(const hw::Class_Pendrel& logger) {
  return logger.Get_AcquisitionMode() == hw::PD_Mode_ActivityAndSteps;
}

void addFacts(picture::PlottedRecording& plot, const hw::Class_Pendrel& logger, const std::string& model) {
  addSubjectFacts(plot, logger);
  addFact(plot, "Logger", model);
  addFact(plot, "Serial number", logger.Get_SerialNumber());
  addFact(plot, "Firmware", std::to_string(logger.Get_FirmwareVersion()));
  addFact(plot, "Recorded", modeWords(logger));
  addPeriodFacts(plot);
  addFact(plot, "Markers", std::to_string(logger.Get_MarkerCount()));
  addFact(plot, "Battery", batteryWords(logger));
}

}  // namespace

std::string modeWords(const hw::Class_Pendrel& logger) {
  return countsSteps(logger) ? "activity and steps" : "activity";
}

std::string batteryWords(const hw::Class_Pendrel& logger) {
  if (logger.Get_BatteryDate() == UnknownDate) return {};
  return "of " + dayWords(logger.Get_BatteryDate()) + ", about " +
         counted(std::lround(logger.Get_BattLifeRemaining()), "day") + " left when retrieved";
}

picture::PlottedRecording plottedPendrel(const DecodedRecording& recording) {
  const hw::Class_Pendrel& logger = *recording.Pendrel;
  const std::string model = engineering::modelWords(logger);
  picture::PlottedRecording plot;
  plot.IsPart = recording.Part.has_value();
  plot.Subject = logger.Get_SubjectIdentity();
  plot.Logger = loggerWords(model, logger.Get_SerialNumber());
  plot.Zone = logger.Get_TimeZoneAbbrev();
  plot.Epoch = logger.Get_EpochLength();
  const double start = engineering::startUtc(logger);
  if (plot.Epoch > 0 && start != UnknownDate)
    plot.Epochs = static_cast<std::size_t>(std::max(0, logger.Get_Samples()));
  plot.Start = unixSeconds(start);
  if (plot.Epochs > 0)
    for (const auto& period : engineering::offsetPeriods(logger, start, dateOf(plot.end())))
      plot.Offsets.push_back({unixSeconds(period.FromUtc), period.Minutes});
  plot.Activity = seriesOf(logger.Get_ActivityArray());
  if (countsSteps(logger)) plot.Steps = seriesOf(logger.Get_StepsArray());
  addMarkers(plot, logger.Get_MarkerArray(), 1);
  addFacts(plot, logger, model);
  if (recording.Part || recording.Unchecked) plot.Warnings.push_back(verdictOf(recording));
  addResets(plot, logger.Get_Resets());
  return plot;
}

}  // namespace wristlog
