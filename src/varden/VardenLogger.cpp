#include <algorithm>
#include <utility>

#include "errors/Procedure.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {
namespace {

constexpr char Module[] = "Class_VardenLogger";

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
