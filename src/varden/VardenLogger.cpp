#include <algorithm>
#include <limits>
#include <utility>

#include "errors/Procedure.h"
#include "timezones/Class_TimeZoneTools.h"
#include "tools/Class_Tools.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {
namespace {

constexpr char Module[] = "Class_VardenLogger";

template <class Series, class Part>
Series eachEvent(const EventLog& events, Part part) {
  Series series;
  series.reserve(events.size());
  for (std::size_t i = 0; i < events.size(); ++i) series.push_back((events.*part)(i));
  return series;
}

}  // namespace

std::unique_ptr<VardenLogger> VardenLogger::fncCopyClass() const {
  Procedure procedure{Module, "fncCopyClass"};
  return procedure.run([&] {
    auto copy = std::make_unique<VardenLogger>();
    copy->record = record.copy();
    return copy;
  });
}

void VardenLogger::subErase() { record.erase(); }

double VardenLogger::Get_CurrentGMTtime() const {
  if (record.LastLoggerTime == UnknownDate) return UnknownDate;
  Procedure procedure{Module, "Get_CurrentGMTtime"};
  return procedure.run([&] {
    return record.LastLoggerTime + (Class_TimeZoneTools::fncGetGMTTime() - record.LastTimeLoggerRead);
  });
}

ByteArray VardenLogger::Get_RawData(std::int32_t count) const {
  if (count == 0) {
    count = record.BytesUsed;
    if (count == 0) return record.RawData.value_or(ByteArray{});
  }
  if (count < 0 || !record.RawData) return {};
  const auto kept = std::min(static_cast<std::size_t>(count), record.RawData->size());
  return {record.RawData->begin(), record.RawData->begin() + static_cast<std::ptrdiff_t>(kept)};
}

std::string VardenLogger::Get_DeviceText() const { return deviceText(record.DeviceType); }

std::int32_t VardenLogger::Get_MaxBatteryLife() const {
  if (record.DeviceType == KR_QUILLANDER) return 365;
  if (record.DeviceType == KR_TOLKA) return 30;
  return 0;
}

bool VardenLogger::Get_CTcompliant() const {
  return record.DeviceType == KR_QUILLANDER || record.DeviceType == KR_TOLKA;
}

std::int32_t VardenLogger::Get_MaxBytesAvailable() const { return record.MemorySize * 1024; }

DateSeries VardenLogger::Get_EventTimes() const {
  return eachEvent<DateSeries>(record.EventArray, &EventLog::time);
}

TextSeries VardenLogger::Get_EventTexts() const {
  return eachEvent<TextSeries>(record.EventArray, &EventLog::words);
}

TextSeries VardenLogger::Get_EventRecords() const {
  return eachEvent<TextSeries>(record.EventArray, &EventLog::recordHex);
}

ByteSeries VardenLogger::Get_ConfigBlock() const {
  const std::string& hex = recordOfRead().RawConfigHex;
  if (hex.empty()) return {};
  const auto bytes = Class_Tools::fncConvertHexStringToByteArray(hex);
  return {bytes.begin(), bytes.end()};
}

bool VardenLogger::Get_RawDataIsPart() const {
  return !lastRead_.Raw.empty() && std::cmp_less(lastRead_.Raw.size(), Get_BytesInLogger());
}

std::int32_t VardenLogger::Get_BytesInLogger() const {
  constexpr std::uint32_t Most = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(Most, recordOfRead().ConfigBlock.NextMemoryAddress));
}

void VardenLogger::subShowFormComm() {
  Procedure procedure{Module, "subShowFormComm"};
  procedure.run([&] { link().Get_Visible() ? link().hide() : link().show(); });
}

void VardenLogger::subHideFormComm() {
  Procedure procedure{Module, "subHideFormComm"};
  procedure.run([&] { link().hide(); });
}

void VardenLogger::AbortAcknowledged() {
  commsAborted_ = true;
  LoggerLink::AbortAcknowledged();
}

void VardenLogger::XmodemPacketReceived(std::uint8_t, std::int32_t BytesSoFar) {
  tellDownload(BytesSoFar, std::max(record.BytesUsed, 0));
}

}  // namespace hy_wristlog
