#include "words/pendrel_words.h"

#include <cmath>
#include <cstdint>
#include <sstream>

#include "engineering/dates.h"
#include "hy_wristlog/failure_numbers.h"
#include "words/counted.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

constexpr double UnknownDate = -1;
constexpr std::int16_t NoOffset = -32768;
constexpr float FewDays = 14;

bool hasSubject(const hw::Class_Pendrel& logger) {
  return logger.Get_SubjectDOB() != UnknownDate && !logger.Get_SubjectGender().empty() &&
         !logger.Get_SubjectGUID().empty() && !logger.Get_SubjectIdentity().empty() &&
         logger.Get_SubjectHeight() >= 0 && logger.Get_SubjectWeight() >= 0;
}

bool hasStart(const hw::Class_Pendrel& logger) {
  return logger.Get_StartDate() != UnknownDate && logger.Get_StartTime() != UnknownDate;
}

bool hasEpoch(const hw::Class_Pendrel& logger) {
  const std::int16_t epoch = logger.Get_EpochLength();
  return epoch == 15 || epoch == 30 || epoch == 60;
}

std::string dayOf(double date) { return engineering::isoDate(date).substr(0, 10); }

std::string recordingWords(const hw::Class_Pendrel& logger) {
  std::ostringstream words;
  const hw::enmPDLoggingMode mode = logger.Get_AcquisitionMode();
  words << (mode == hw::PD_Mode_ActivityOnly       ? "Activity"
            : mode == hw::PD_Mode_ActivityAndSteps ? "Activity and steps"
                                                   : "An unknown mode");
  if (logger.Get_EpochLength() > 0)
    words << ", a value every " << counted(logger.Get_EpochLength(), "second");
  if (hasStart(logger)) {
    words << ", from " << engineering::isoDate(logger.Get_StartDate() + logger.Get_StartTime()).substr(0, 16);
    if (!logger.Get_TimeZoneAbbrev().empty()) words << ' ' << logger.Get_TimeZoneAbbrev();
  }
  return words.str();
}

std::string memoryWords(const hw::Class_Pendrel& logger, const hw::PendrelDetails& details) {
  std::ostringstream words;
  if (details.MemorySizeKB > 0)
    words << details.MemorySizeKB << " KB of memory";
  else
    words << "Memory of unknown size";
  if (logger.Get_BytesUsed() >= 0) words << ", " << counted(logger.Get_BytesUsed(), "byte") << " recorded";
  if (details.MaxRecordingTime > 0)
    words << "; all of it lasts " << counted(std::lround(details.MaxRecordingTime), "day");
  return words.str();
}

}  // namespace

bool hasBatteryDate(const hw::Class_Pendrel& logger) { return logger.Get_BatteryDate() != UnknownDate; }

std::vector<std::string> problemsOf(const hw::Class_Pendrel& logger, const hw::PendrelDetails& details) {
  std::vector<std::string> problems;
  const auto when = [&](bool wrong, const char* words) {
    if (wrong) problems.emplace_back(words);
  };
  // `code` is what a retrieval would end with.
  const auto whenRetrievingFails = [&](bool wrong, const std::string& words, std::int32_t code) {
    if (wrong) problems.push_back(words + " (" + std::to_string(code) + ").");
  };
  whenRetrievingFails(details.MemorySizeKB < 1, "The size of the memory is not known here: it cannot be read",
                      hw::FailureNumber::PendrelMemorySize);
  whenRetrievingFails(
      details.DeviceType == hw::KR_PENDREL_CRC_STEPS && logger.Get_AcquisitionMode() == hw::PD_Mode_Unknown,
      "The recording mode is unknown: it cannot be retrieved", hw::ReturnCode::WrongMode);
  whenRetrievingFails(logger.Get_BytesUsed() < 0, "How much was recorded is unknown: retrieve with --repair",
                      hw::ReturnCode::UnknownLength);
  whenRetrievingFails(!hasStart(logger), "The start is unknown: retrieve with --repair",
                      hw::ReturnCode::WrongStart);
  whenRetrievingFails(!hasEpoch(logger),
                      "The epoch length is not 15, 30 or 60 seconds: retrieve with --repair",
                      hw::ReturnCode::WrongEpoch);
  whenRetrievingFails(logger.Get_TimeZoneAbbrev().empty() || logger.Get_GMToffset() == NoOffset,
                      "The time zone is unknown: retrieve with --repair", hw::ReturnCode::UnknownZone);
  whenRetrievingFails(!hasSubject(logger), "The subject's details are incomplete: retrieve with --repair",
                      hw::ReturnCode::SubjectUnusable);
  when(logger.Get_Resets() > 0, "The logger has been reset.");
  when(!hasBatteryDate(logger), "The date of its battery is unknown: see battery-date.");
  when(hasBatteryDate(logger) && logger.Get_BattLifeRemaining() < FewDays,
       "The battery is old: replace it, then see battery-date.");
  return problems;
}

void tellStatus(const Speech& out, const hw::Class_Pendrel& logger, const hw::PendrelDetails& details) {
  out << details.DeviceText << ' ' << logger.Get_SerialNumber() << ", firmware "
      << std::to_string(logger.Get_FirmwareVersion()) << '\n'
      << recordingWords(logger) << '\n'
      << memoryWords(logger, details) << '\n';
  if (hasBatteryDate(logger))
    out << "Battery of " << dayOf(logger.Get_BatteryDate()) << ", about "
        << counted(std::lround(logger.Get_BattLifeRemaining()), "day") << " left\n";
  if (logger.Get_SubjectIdentity() > " ") out << "Worn by " << logger.Get_SubjectIdentity() << '\n';
  for (const std::string& problem : problemsOf(logger, details)) out << "! " << problem << '\n';
}

}  // namespace wristlog
