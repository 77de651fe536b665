#include "engineering/saved_pendrel.h"

#include <algorithm>
#include <charconv>
#include <concepts>
#include <span>
#include <utility>

#include "base/ascii.h"
#include "base/code_page.h"
#include "base/dates.h"
#include "base/inside.h"
#include "engineering/dates.h"
#include "engineering/saved_facts.h"
#include "pendrel/Pendrel.h"
#include "pendrel/setup_answer.h"
#include "start_up/start_up.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Tools.h"
#include "workflows/subject_of.h"

namespace hy_wristlog::engineering {
namespace {

using namespace facts;

constexpr Key Setup{"Pendrel Set-up", "Raw Set-up Bytes"}, RecordedBytes{RecordingSection, "Recorded Bytes"},
    SetupDigest{RecordingSection, "Set-up SHA-256"}, StartDate{RecordingSection, "Start Date"},
    StartTime{RecordingSection, "Start Time"}, Epoch{RecordingSection, "Epoch Length"},
    Offset{RecordingSection, "Offset"}, Daylight{RecordingSection, "Daylight Time"};
/// What the file keeps besides the answer, in its order.
constexpr Key Facts[] = {Bytes,     BytesInLogger, Digest, SetupDigest, Part,   Retrieved, RecordedBytes,
                         StartDate, StartTime,     Epoch,  Zone,        Offset, Daylight};

constexpr std::size_t DayLength = 10;

[[noreturn]] void refuse(const std::string& words) {
  throw Failure(FailureNumber::OutOfRange, "engineering.openPendrel", words);
}

std::string digestOfSetup(const IniFile& file) {
  return digestOf(bytesOfHex(value(file, Setup)).value_or(std::vector<std::uint8_t>()));
}

/// The values as the answer tells them.
PendrelRecord toldBy(const IniFile& file) {
  const auto bytes = bytesOfHex(value(file, Setup));
  if (!bytes) refuse("The set-up answer is not hexadecimal text");
  PendrelRecord record;
  record.SetupText.assign(bytes->begin(), bytes->end());
  if (!takeSetupText(record)) refuse("The set-up answer is not whole");
  return record;
}

/// Raises TypeMismatch for a text that is no number of the range.
template <std::integral Number>
void take(const IniFile& file, const Key& key, std::int64_t least, std::int64_t most, Number& number) {
  const std::string_view text = value(file, key);
  if (text.empty()) return;
  std::int64_t read = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, read);
  if (error != std::errc() || stopped != end || read < least || read > most)
    throw Failure(FailureNumber::TypeMismatch, "engineering.openPendrel",
                  std::string(key.Name) + ": \"" + std::string(text) + "\" is no number from " +
                      std::to_string(least) + " to " + std::to_string(most));
  number = static_cast<Number>(read);
}

/// The same values with those that a retrieval has put in their place.
PendrelRecord recordOf(const IniFile& file) {
  constexpr std::int64_t MostOffset = 1440;  // minutes
  PendrelRecord record = toldBy(file);
  take(file, RecordedBytes, 0, record.Get_MaxBytesUsed(), record.BytesUsed);
  if (const auto day = date(file, StartDate)) record.StartDate = datePart(*day);
  if (const std::string_view time = value(file, StartTime); !time.empty()) {
    const double moment = dateFromText("2000-01-01T" + std::string(time));
    record.StartTime = moment - datePart(moment);
  }
  take(file, Epoch, 15, 60, record.EpochLength);
  if (const std::string_view zone = value(file, Zone); !zone.empty()) record.TimeZoneAbbrev = zone;
  take(file, Offset, -MostOffset, MostOffset, record.GMToffset);
  take(file, Daylight, 0, 1, record.AutoDSTadjust);
  return record;
}

void requireTold(const PendrelRecord& record) {
  const std::pair<bool, const char*> needed[] = {
      {record.Get_DeviceType() != Device_Unknown, "the model"},
      {record.ActivityCalibration != 0, "the calibration"},
      {record.AcquisitionMode != PD_Mode_Unknown, "the mode"},
      {record.BytesUsed != PendrelRecord::NoLength, "the length"},
      {record.StartDate != UnknownDate && record.StartTime != UnknownDate, "the start"},
      {record.hasUsualEpoch(), "an epoch of 15, 30 or 60 seconds"},
      {!record.TimeZoneAbbrev.empty() && record.TimeZoneAbbrev != PendrelRecord::UnknownZone &&
           record.GMToffset != PendrelRecord::NoOffset,
       "the zone"}};
  for (const auto& [isTold, what] : needed)
    if (!isTold)
      refuse(std::string("The set-up answer does not tell ") + what +
             " of the recording, nor is there what a repair has put in its place");
}

/// What the answer tells of a recording, apart from how long it is.
auto identityOf(const PendrelRecord& record) {
  return std::tie(record.SerialNumber, record.FirmwareVersion, record.ActivityCalibration, record.SubjectInfo,
                  record.StartDate, record.StartTime, record.EpochLength, record.AcquisitionMode);
}

template <class Series>
void leaveOutLast(Series& series, std::size_t samples) {
  if (series.size() == samples) series.pop_back();
}

}  // namespace

bool isPendrelConfig(std::string_view text) {
  const IniFile file(text);
  if (file.value(Setup.Section, Setup.Name)) return true;
  if (file.hasSections()) return false;
  PendrelRecord record;
  record.SetupText = ansiTextFromUtf8(text);
  takeSetupText(record);
  return record.Get_DeviceType() != Device_Unknown;
}

SavedRecording savedRecording(const Class_Pendrel& retrieved, std::vector<std::uint8_t> memory) {
  const PendrelRecord& record = Inside::of(retrieved).record;
  SavedRecording saved;
  saved.Raw = std::move(memory);
  saved.Ini = pendrelIni(utf8FromAnsiText(record.SetupText));
  IniFile file(saved.Ini);
  putBytes(file, saved.Raw, std::int64_t{record.Get_BlocksToDownload()} * PendrelRecord::BlockBytes);
  put(file, SetupDigest, digestOfSetup(file));
  put(file, Retrieved, isoDate(Class_TimeZoneTools::fncGetGMTTime(), "Z"));
  const PendrelRecord told = toldBy(file);
  const auto number = [&](const Key& key, std::int64_t was, std::int64_t is) {
    if (was != is) put(file, key, is);
  };
  number(RecordedBytes, told.BytesUsed, record.BytesUsed);
  if (told.StartDate != record.StartDate)
    put(file, StartDate, isoDate(record.StartDate).substr(0, DayLength));
  if (told.StartTime != record.StartTime)
    put(file, StartTime, isoDate(record.StartTime).substr(DayLength + 1));
  number(Epoch, told.EpochLength, record.EpochLength);
  if (told.TimeZoneAbbrev != record.TimeZoneAbbrev) put(file, Zone, record.TimeZoneAbbrev);
  number(Offset, told.GMToffset, record.GMToffset);
  number(Daylight, told.AutoDSTadjust ? 1 : 0, record.AutoDSTadjust ? 1 : 0);
  saved.Ini = file.content();
  return saved;
}

std::string pendrelIni(std::string_view text) {
  const IniFile source(text);
  IniFile file("");
  if (!source.value(Setup.Section, Setup.Name)) {
    const std::string answer = ansiTextFromUtf8(text);
    put(file, Setup,
        Class_Tools::fncConvertByteArrayToHexString(std::vector<std::uint8_t>(answer.begin(), answer.end())));
  } else {
    put(file, Setup, value(source, Setup));
    copy(source, Facts, file);
  }
  return file.content();
}

void markOlderPart(SavedRecording& recording) {
  IniFile file(recording.Ini);
  const auto count = static_cast<std::int64_t>(recording.Raw.size());
  if (!value(file, Bytes).empty() || count % PendrelRecord::BlockBytes != 0 ||
      count >= pendrelBytes(recording.Ini))
    return;
  put(file, Part, std::int64_t{1});
  recording.Ini = file.content();
}

std::string setupMismatch(const std::string& ini) {
  const IniFile file(ini);
  const std::string_view told = value(file, SetupDigest);
  if (told.empty() || equalsIgnoringCase(told, digestOfSetup(file))) return {};
  return "the set-up answer is not the one that was retrieved";
}

void refusePendrel(const char* source) {
  throw Failure(
      FailureNumber::OutOfRange, source,
      "It is a recording of a Pendrel logger. 'wristlog decode', 'plot', 'report' and 'raw dump' take it; "
      "this command is for the Varden family");
}

std::int64_t pendrelBytes(const std::string& ini) {
  return std::int64_t{recordOf(IniFile(ini)).Get_BlocksToDownload()} * PendrelRecord::BlockBytes;
}

bool isBeginningOfSame(const SavedRecording& part, const SavedRecording& whole) {
  constexpr auto Header = static_cast<std::size_t>(PendrelRecord::HeaderBytes);
  if (part.Raw.size() <= Header || whole.Raw.size() < part.Raw.size()) return false;
  const auto one = toldBy(IniFile(part.Ini)), other = toldBy(IniFile(whole.Ini));
  return identityOf(one) == identityOf(other) &&
         std::equal(part.Raw.begin() + Header, part.Raw.end(), whole.Raw.begin() + Header);
}

std::shared_ptr<Class_Pendrel> openPendrel(const SavedRecording& recording) {
  openLibrary();
  auto logger = std::make_shared<Class_Pendrel>();
  PendrelRecord& record = Inside::of(*logger).record;
  record = recordOf(IniFile(recording.Ini));
  if (record.TimeZoneAbbrev == PendrelRecord::UnknownZone) takeZoneOfOffset(record);
  requireTold(record);
  record.RawData = recording.Raw;
  // Nothing is recorded, and nothing was read: the decoder takes one sample all the same.
  if (record.BytesUsed == 0)
    record.RawData.resize(std::max<std::size_t>(record.RawData.size(), PendrelRecord::BlockBytes));
  return logger;
}

bool decode(Class_Pendrel& logger) {
  Pendrel& inside = Inside::of(logger);
  PendrelRecord& record = inside.record;
  const std::int32_t told = record.BytesUsed;
  const auto there = static_cast<std::int64_t>(record.RawData.size()) - PendrelRecord::HeaderBytes;
  if (there >= told) {
    inside.subDecodeDataArrays();
    return true;
  }
  if (there < 1) refuse("No sample is there: the memory image ends in its header");
  record.BytesUsed = static_cast<std::int32_t>(there);
  inside.subDecodeDataArrays();
  record.BytesUsed = told;
  if (record.MarkerArray.back() == Tristate::True) return false;
  const auto samples = static_cast<std::size_t>(record.Samples--);
  leaveOutLast(record.ActivityArray, samples);
  leaveOutLast(record.MarkerArray, samples);
  if (record.Get_DeviceType() == KR_PENDREL_CRC_STEPS) leaveOutLast(record.StepsArray, samples);
  return false;
}

std::string modelWords(const Class_Pendrel& logger) { return Inside::of(logger).record.Get_DeviceText(); }

Class_Subject subjectOf(const Class_Pendrel& logger) {
  return hy_wristlog::subjectOf(Inside::of(logger).record);
}

std::string setupText(const SavedRecording& recording) {
  return utf8FromAnsiText(toldBy(IniFile(recording.Ini)).SetupText);
}

}  // namespace hy_wristlog::engineering
