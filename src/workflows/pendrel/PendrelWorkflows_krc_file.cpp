#include <string>
#include <vector>

#include "base/code_page.h"
#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "errors/GlobalState.h"
#include "pendrel/Pendrel.h"
#include "tools/Class_Tools.h"
#include "tools/paths.h"
#include "workflows/pendrel/pendrel_run.h"

namespace hy_wristlog {
namespace {

constexpr std::int32_t SecondsPerUnit = 15, DaysPerYear = 365;
constexpr std::size_t SerialLength = 7;

std::string ageText(double birthDate) {
  if (birthDate == UnknownDate) return "0";
  return std::to_string(roundToInt32(datePart(now()) - birthDate) / DaysPerYear);
}

std::string sizeText(double size) { return formatNumber(size, "####0.0"); }

std::vector<std::string> headLines(const Pendrel& logger) {
  const PendrelRecord& record = logger.record;
  const bool noHeight = record.SubjectHeight < 0;
  const bool known = record.SubjectGender == "M" || record.SubjectGender == "F";
  return {record.SubjectInfo.empty() ? "ERROR" : utf8FromAnsiText(record.SubjectInfo),
          formatDate(record.StartDate, "DD-mmm-yyyy"), formatDate(record.StartTime, "hh:mm"),
          std::to_string(record.EpochLength / SecondsPerUnit), ageText(record.SubjectDOB),
          utf8FromAnsiText(ansiTextFromUtf8(record.SerialNumber).substr(0, SerialLength)),
          known ? record.SubjectGender : "M", sizeText(noHeight ? 0 : record.SubjectHeight),
          // The weight is left out with the height.
          sizeText(noHeight ? 0 : record.SubjectWeight), formatNumber(record.Resets, "000"),
          formatNumber(logger.Get_BattLifeRemaining(), "0000")};
}

void addSamples(std::vector<std::string>& lines, const PendrelRecord& record) {
  const bool hasSteps =
      record.Get_DeviceType() == KR_PENDREL_CRC_STEPS && record.AcquisitionMode == PD_Mode_ActivityAndSteps;
  const NumberFormat counts("####0"), steps("#####0.0");
  for (std::int32_t i = 0; i < record.Samples; ++i) {
    std::string line = counts(fault::at(record.ActivityArray, i));
    if (hasSteps) {
      const std::int32_t counted = fault::at(record.StepsArray, i);
      line += " , " + steps(counted == EmptySteps ? 0 : counted);
    }
    if (fault::at(record.MarkerArray, i) == Tristate::True) line += " M";
    lines.push_back(std::move(line));
  }
}

/// The folder of a path that ends in a file's name, with or without an extension.
std::string folderOf(const std::string& path) {
  const auto name = path.find_last_of("\\/");
  return name == std::string::npos ? "./" : path.substr(0, name + 1);
}

}  // namespace

std::int32_t PendrelWorkflows::fncWriteKRCfile(const std::string& Path) {
  return codeOf("fncWriteKRCfile", [&] {
    if (!Tools().fncCheckPathforReadWrite(folderOf(Path))) return ReturnCode::NotWritable;
    const Pendrel& logger = state_.pendrel();
    std::vector<std::string> lines = headLines(logger);
    addSamples(lines, logger.record);
    return Tools().fncSaveFile(Path, lines) ? ReturnCode::Success : ReturnCode::NotWritable;
  });
}

}  // namespace hy_wristlog
