#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/text_memo.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "varden/VardenLogger.h"
#include "varden/failures.h"
#include "varden/files/data_files.h"
#include "varden/logging_modes.h"

namespace hy_wristlog {
namespace {

constexpr char Name[] = "subSaveDecodedDataToFile";

constexpr std::array<const char*, 18> ResultTexts{
    "",
    "The logger experienced a power reset, but the power-on-self-test FAILED! "
    "Decoding will proceed, but the logger hardware/firmware is questionable, "
    "and any data after the reset will be ignored.",
    "The logger experienced a power reset, but the power-on-self-test passed. "
    "Decoding will proceed, but any data after the reset will be ignored.",
    "Logger shutdown due to low battery condition. Proceeding with decode...",
    "Logger memory is full. Proceeding with decode...",
    "Error decoding data: Acquisition start event has date that is "
    "before the last stop event. Decoding will proceed, "
    "but any data after the reset will be ignored.",
    "An acquisition stop event was detected with a time that is before the last "
    "good data record. Decoding will proceed, but any data after the error will "
    "ignored.",
    "A marker event was detected outside acquisition. Decoding will proceed, "
    "but any data after the reset will be ignored.",
    "Invalid input. Aborting decode.",
    "Non event data was found outside of data acquisition times. Decoding will proceed..."
    "but this is VERY bad.",
    "An invalid event was detected, the data stream is damaged. Decoding will proceed "
    "but any data after the damaged event will be ignored.",
    "Overflow occurred. Decoding will proceed, but this indicate a problem with decoding "
    "or data acquisition.",
    "The event time for the acq start was before the config start time. Decoding failed.",
    "An invalid physiological data value was detected, the data stream is damaged. Decoding will "
    "proceed but any data after the damaged event will be ignored.",
    "Firmware versions 00.01.0028 or older have a defect where data over 65535 samples is not "
    "decodable. However, all data prior to the 65KB barrier was decoded successfully.",
    "There was more than 30 days between acq start and/or acq stop times. This indicates "
    "a potential problem with clock times in the logger. Decoding has occurred up to the "
    "error point.",
    "There was an acquisition stop time that is more than 30 "
    "days in the past. This is not a fatal error but used in the Retrieve Wizard to prevent "
    "the user from continuing/appending data to the existing data set. Data will be decoded.",
    "There was a reset that resulted in a stream of data that can't be distinguished "
    "from other physiological data. Data will be decoded but data after the POST will be ignore."};

void tellResult(enmDecodeResult result) {
  if (result == Decode_OK) return;
  const auto index = static_cast<std::size_t>(result);
  tell(index < ResultTexts.size() ? ResultTexts[index] : "Unknown Decode Result.");
}

/// A column of the report: its heading, the series that it shows and their number format (empty for none).
struct Column {
  const char* Heading;
  ActivitySeries VardenRecord::*Counts;
  LightSeries VardenRecord::*Light;  ///< both null: the wrist
  const char* Format;
};

constexpr const char *Counts = "#####0", *Lux = "#####0.0", *Irradiance = "0.000E+00", *Unformatted = "";

constexpr Column light(const char* heading, LightSeries VardenRecord::*series, const char* format) {
  return {heading, nullptr, series, format};
}

constexpr Column Activity{"Activity (Counts)", &VardenRecord::ActivityArray, nullptr, Counts};
constexpr Column Wrist{"Wrist Status (On/Off)", nullptr, nullptr, Unformatted};
constexpr Column Illuminance = light("Illuminance (Photopic Lux)", &VardenRecord::LightArray, Lux);
constexpr Column RawIlluminance = light("Illuminance (Photopic Lux)", &VardenRecord::LightArray, Unformatted);
constexpr Column Red = light("Red Light (Irradiance, uW/cm^2)", &VardenRecord::RedLightArray, Irradiance);
constexpr Column Green =
    light("Green Light (Irradiance, uW/cm^2)", &VardenRecord::GreenLightArray, Irradiance);
constexpr Column Blue = light("Blue Light (Irradiance, uW/cm^2)", &VardenRecord::BlueLightArray, Irradiance);
constexpr Column RedCurrent = light("Red Light (current)", &VardenRecord::RedLightArray, Unformatted);
constexpr Column GreenCurrent = light("Green Light (current)", &VardenRecord::GreenLightArray, Unformatted);
constexpr Column BlueCurrent = light("Blue Light (current)", &VardenRecord::BlueLightArray, Unformatted);
constexpr Column OffWristFrequency =
    light("Off Wrist Reporting Frequnecy", &VardenRecord::RedLightArray, Unformatted);

/// Raises WrongDeviceType or OutOfRange for a device or mode without columns.
std::vector<Column> columnsOf(const VardenRecord& record) {
  const LoggingMode& mode = requireLoggingMode(record, Name);
  std::vector<Column> columns;
  const auto add = [&](const auto&... more) { (columns.push_back(more), ...); };
  switch (mode.Activity) {
    case ActivityPart::None:
      break;
    case ActivityPart::Code:
      add(Activity);
      break;
    case ActivityPart::Raw:
      raiseFrom(Name, FailureNumber::OutOfRange, IncompatibleMode);
  }
  switch (mode.Light) {
    case LightPart::None:
      break;
    case LightPart::Lux:
      add(Illuminance);
      break;
    case LightPart::CalibrationLux:
      add(RawIlluminance);
      break;
    case LightPart::Colours:
      add(Red, Green, Blue);
      break;
    case LightPart::Currents:
      add(RedCurrent, GreenCurrent, BlueCurrent);
      break;
    case LightPart::Frequency:
      add(OffWristFrequency);
      break;
  }
  if (mode.arrays() & series::Wrist) add(Wrist);
  return columns;
}

/// The texts of one column. What was never stored is empty, except that the wrist then counts as on.
class Cells {
 public:
  Cells(const Column& column, const VardenRecord& record) : column_(column), record_(record) {
    if (*column.Format != '\0') format_.emplace(column.Format);
  }

  void append(std::string& text, std::int64_t index) {
    const auto formatted = [this](std::string& to, auto number) { format_->append(to, number); };
    if (column_.Counts != nullptr) {
      const std::int32_t counts = fault::at(record_.*column_.Counts, index);
      if (counts != EmptyActivity) memo_.append(text, counts, formatted);
    } else if (column_.Light == nullptr) {
      text += fault::at(record_.WristStatusArray, index) == Tristate::True ? "Off" : "On";
    } else if (const float value = fault::at(record_.*column_.Light, index); !std::isnan(value)) {
      if (format_)
        memo_.append(text, value, formatted);
      else
        memo_.append(text, value, [](std::string& to, float single) { to += textOfSingle(single); });
    }
  }

 private:
  const Column& column_;
  const VardenRecord& record_;
  std::optional<NumberFormat> format_;
  TextMemo memo_;
};

double localStart(const VardenRecord& record) {
  return addTime(record.StartTimeGMT, record.GMToffset / MinutesPerDay);
}

void addHeading(DataFile& file, const VardenRecord& record) {
  const DateFormat date(globals().LongDateTimeFormat);
  file.line("QV/HY Decoded Data Output File");
  file.line("Start Time (GMT/UTC):", date(record.StartTimeGMT));
  file.line("Start Time (Local):", date(localStart(record)));
  file.line("Serial Number:", record.SerialNumber);
  file.line("Epoch Length:", std::to_string(record.EpochLength) + " seconds");
  file.line("Model:", std::to_string(record.Model));
  file.line("Firmware Version:", record.FirmwareVersion);
  file.line("Acquisition Mode:", std::to_string(record.ConfigBlock.AcquisitionMode));
  file.line();
}

/// The time of an epoch follows from the exact number of epochs in a day. The decoder rounds that number.
void addRows(DataFile& file, const VardenRecord& record, const std::vector<Column>& columns) {
  file.field("Date/Time Stamp (Local)");
  for (const Column& column : columns) file.field(column.Heading);
  file.endLine();
  if (record.Samples > 0 && record.EpochLength == 0) fault::raise(fault::DivisionByZero);
  DateSequence dates(globals().ShortDateTimeFormat);
  std::vector<Cells> cells;
  cells.reserve(columns.size());
  for (const Column& column : columns) cells.emplace_back(column, record);
  const double start = localStart(record), epochsPerDay = SecondsPerDay / record.EpochLength;
  for (std::int64_t index = 0; index < record.Samples; ++index) {
    file.field(
        [&](std::string& text) { dates.append(text, start + static_cast<double>(index) / epochsPerDay); });
    for (Cells& cell : cells) file.field([&](std::string& text) { cell.append(text, index); });
    file.endLine();
  }
}

void addEvents(DataFile& file, const VardenRecord& record) {
  file.line();
  file.line("----------- EVENT ARRAY -------------");
  for (std::size_t i = 0; i < record.EventArray.size(); ++i) file.plain(record.EventArray.text(i)).endLine();
}

}  // namespace

void VardenLogger::subSaveDecodedDataToFile(std::string_view path) {
  saveDataFile(record, Name, path, [this](Procedure& procedure, DataFile& file) {
    procedure.statement([&] { addHeading(file, record); });
    bool lowBattery = false;
    tellResult(procedure.statement([&] { return fncDecodeDataArrays(lowBattery, std::nullopt, true); }));
    if (lowBattery) tell("Low battery condition detected (but not shutdown.");
    const auto columns = procedure.statement([&] { return columnsOf(record); });
    procedure.statement([&] {
      addRows(file, record, columns);
      addEvents(file, record);
    });
  });
}

}  // namespace hy_wristlog
