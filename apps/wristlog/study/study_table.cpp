#include "study/study_table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>

#include "base/dates.h"
#include "engineering/dates.h"
#include "engineering/docks.h"
#include "engineering/recording.h"
#include "engineering/saved_pendrel.h"
#include "engineering/zones.h"
#include "hy_wristlog/Class_Main.h"
#include "recording/csv_parts.h"
#include "recording/data_package.h"
#include "recording/json_output.h"
#include "recording/plotted_logger.h"
#include "recording/plotted_parts.h"
#include "recording/plotted_pendrel.h"
#include "study/study_files.h"
#include "varden/logging_modes.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

using enum FieldType;
using enum Family;

constexpr std::string_view NotDecoded = "the recording could not be decoded";
constexpr std::string_view NoTimes = "it could not be decoded, or its samples are no epochs, as in mode 9";
constexpr double HighestEpoch = 32767, HighestMode = 9;

constexpr std::array Fields{
    Field{"folder", Text, "Where the recording is, below the folder that was studied"},
    Field{"logger", Text, "Serial number of the logger", NotDecoded},
    Field{"participant", Text, "Identity of the subject, as it was configured",
          "the logger has none, or it could not be decoded"},
    Field{"model", Text, "Model of the logger", NotDecoded},
    Field{"mode", Integer, "Logging mode", NotDecoded, Every, "", 0, HighestMode},
    Field{"recorded", Text, "What the mode records", NotDecoded},
    Field{"start_local", Local, "Begin of the first epoch by the clocks where the logger was worn",
          NotDecoded},
    Field{"start_utc", Utc, "Begin of the first epoch", NotDecoded},
    Field{"end_local", Local, "End of the last epoch by those clocks", NoTimes},
    Field{"end_utc", Utc, "End of the last epoch", NoTimes},
    Field{"time_zone", Text, "The logger's zone in words", "not known"},
    Field{"time_zone_iana", Text, "The zone of the tz database whose rule the local times follow",
          "no zone gives them, or it could not be decoded"},
    Field{"epoch_seconds", Integer, "Length of an epoch", NotDecoded, Every, "s", 0, HighestEpoch},
    Field{"epochs", Integer, "Rows in the series", NotDecoded, Every, "", 0},
    Field{"gaps", Integer, "Stretches of epochs without a value", NoTimes, Every, "", 0},
    Field{"gap_epochs", Integer, "Epochs in them", NoTimes, Every, "", 0},
    Field{"off_wrist_share", Number, "Share of the epochs off the wrist, of those that tell it",
          "no epoch tells it. Vivid only", Every, "", 0, 1},
    Field{"markers", Integer, "Markers of both buttons", NotDecoded, Every, "", 0},
    Field{"battery", Text, "The battery at the retrieval, in words", "not known"},
    Field{"low_battery", Flag, "1: the battery was low during the recording. Varden only", NotDecoded},
    Field{"result", Text, "Verdict of the decoder by its name. Varden only", NotDecoded},
    Field{"result_in_words", Text, "The verdict in words", NotDecoded},
    Field{"part", Flag, "1: only the beginning of the recording is there", NotDecoded},
    Field{"copies", Text, "Other folders with the same recording, or its beginning, \"; \" between them",
          "none"},
    Field{"error", Text, "Why the recording is not in the series", "it is there"},
};

/// Calls `use` with the series that has a value in each epoch that was recorded.
template <class Use>
void withSamples(const hw::Class_VardenLogger& logger, const Use& use) {
  if (const auto& activity = logger.Get_ActivityArray(); !activity.empty()) return use(activity);
  if (const auto& light = logger.Get_LightArray(); !light.empty()) return use(light);
  use(logger.Get_RedLightArray());
}

template <class Use>
void withSamples(const hw::Class_Pendrel& logger, const Use& use) {
  use(logger.Get_ActivityArray());
}

template <class Logger>
void putGaps(Json& row, const Logger& logger) {
  std::int64_t gaps = 0, epochs = 0;
  withSamples(logger, [&](const auto& samples) {
    bool inGap = false;
    for (const auto sample : samples) {
      const bool isEmpty = std::isnan(plotted(sample));
      gaps += isEmpty && !inGap ? 1 : 0;
      epochs += isEmpty ? 1 : 0;
      inGap = isEmpty;
    }
  });
  row["gaps"] = gaps;
  row["gap_epochs"] = epochs;
}

/// To four decimals.
Json offWristShare(const hw::TristateSeries& series) {
  constexpr double Decimals = 10000;
  const auto count = [&](hw::Tristate state) { return std::count(series.begin(), series.end(), state); };
  const auto off = count(hw::Tristate::True), known = off + count(hw::Tristate::False);
  if (known == 0) return {};
  return std::round(static_cast<double>(off) / static_cast<double>(known) * Decimals) / Decimals;
}

bool samplesAreEpochs(const hw::Class_VardenLogger& logger) {
  const auto* mode = hw::findLoggingMode(logger.Get_DeviceType(), logger.Get_AcquisitionMode());
  return mode == nullptr || mode->samplesAreEpochs();
}
bool samplesAreEpochs(const hw::Class_Pendrel&) { return true; }

/// What both families tell.
template <class Logger>
void putCommon(Json& row, const DecodedRecording& recording, Logger& logger) {
  const auto put = [&](const char* name, double utc) {
    row[std::string(name) + "_local"] = textOrNull(engineering::isoLocal(logger, utc));
    row[std::string(name) + "_utc"] = textOrNull(engineering::isoDate(utc, "Z"));
  };
  const double start = recording.startUtc();
  const bool isTimed = start != UnknownDate;
  row["logger"] = logger.Get_SerialNumber();
  row["participant"] = textOrNull(logger.Get_SubjectIdentity());
  row["mode"] = static_cast<int>(logger.Get_AcquisitionMode());
  row["recorded"] = textOrNull(modeWords(logger));
  row["epoch_seconds"] = recording.epochLength();
  row["epochs"] = recording.samples();
  if (isTimed) put("start", start);
  if (samplesAreEpochs(logger)) {
    putGaps(row, logger);
    if (isTimed) put("end", recording.endUtc());
  }
  row["time_zone_iana"] = textOrNull(engineering::ianaZone(logger));
}

void putOwn(Json& row, const DecodedRecording& recording, hw::Class_VardenLogger& logger) {
  row["model"] = engineering::modelWords(logger.Get_DeviceType());
  row["time_zone"] = textOrNull(engineering::zoneName(logger));
  row["off_wrist_share"] = offWristShare(logger.Get_WristStatusArray());
  row["markers"] = logger.Get_MarkerCount() + logger.Get_Marker2Count();
  row["battery"] = textOrNull(engineering::batteryWords(logger));
  row["low_battery"] = recording.LowBattery;
  row["result"] = hw::Class_Main::ResultName(recording.Result);
}
void putOwn(Json& row, const DecodedRecording&, hw::Class_Pendrel& logger) {
  row["model"] = engineering::modelWords(logger);
  row["time_zone"] = textOrNull(logger.Get_TimeZoneAbbrev());
  row["markers"] = logger.Get_MarkerCount();
  row["battery"] = textOrNull(batteryWords(logger));
}

std::string cellOf(const Json& value) {
  if (value.is_null()) return {};
  if (value.is_boolean()) return value.get<bool>() ? "1" : "0";
  return value.is_string() ? csvCell(value.get_ref<const std::string&>()) : value.dump();
}

}  // namespace

std::span<const Field> studyFields() { return Fields; }

Json rowOfTrouble(const std::string& folder, const std::string& words) {
  Json row = Json::object();
  for (const Field& field : Fields) row[std::string(field.Name)] = nullptr;
  row["folder"] = folder;
  row["error"] = words;
  return row;
}

Json rowOf(const std::string& folder, const DecodedRecording& recording) {
  Json row = rowOfTrouble(folder, {});
  row["error"] = nullptr;
  recording.with([&](auto& logger) {
    putCommon(row, recording, logger);
    putOwn(row, recording, logger);
  });
  row["result_in_words"] = verdictOf(recording);
  row["part"] = recording.Part.has_value();
  return row;
}

std::string tableOf(const std::vector<Json>& rows) {
  std::string text = headingOf(Fields);
  for (const Json& row : rows) {
    const char* between = "";
    for (const Field& field : Fields) {
      text.append(between).append(cellOf(row.at(std::string(field.Name))));
      between = ",";
    }
    text += '\n';
  }
  return text;
}

Json studyPackage(const StudyTables& tables) {
  Json resources = Json::array({tableResource("recordings", StudyTableName, Fields)});
  if (!tables.Series.empty()) resources.push_back(tableResource("series", tables.Series, seriesFields()));
  if (!tables.Events.empty()) resources.push_back(tableResource("events", tables.Events, eventFields()));
  return {{"profile", "data-package"},
          {"name", "wristlog-study"},
          {"title", "Recordings of wrist-worn activity loggers"},
          {"resources", resources}};
}

}  // namespace wristlog
