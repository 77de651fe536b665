#include "pendrel/record.h"

#include "base/dates.h"
#include "base/faults.h"

namespace hy_wristlog {
namespace {

constexpr std::uint8_t FirstFirmwareWithChecksums = 0x90;
constexpr std::int32_t MostBytes = 65536 - PendrelRecord::HeaderBytes;
constexpr auto SecondsOfDay = static_cast<float>(SecondsPerDay);

}  // namespace

enmDeviceType PendrelRecord::Get_DeviceType() const {
  const char family = SerialNumber.empty() ? '\0' : SerialNumber.front();
  if (family == 'C') return FirmwareVersion < FirstFirmwareWithChecksums ? KR_PENDREL : KR_PENDREL_CRC;
  return family == 'B' ? KR_PENDREL_CRC_STEPS : Device_Unknown;
}

std::string PendrelRecord::Get_DeviceText() const {
  switch (Get_DeviceType()) {
    case KR_PENDREL:
    case KR_PENDREL_CRC:
      return "Pendrel";
    case KR_PENDREL_CRC_STEPS:
      return "Pendrel Steps";
    default:
      return {};
  }
}

bool PendrelRecord::Get_CTcompliant() const {
  return Get_DeviceType() == KR_PENDREL_CRC || Get_DeviceType() == KR_PENDREL_CRC_STEPS;
}

std::int32_t PendrelRecord::Get_MaxBytesUsed() const {
  return Get_DeviceType() == Device_Unknown ? 0 : MostBytes;
}

std::int16_t PendrelRecord::Get_MaxBatteryLife() const {
  return Get_DeviceType() == Device_Unknown ? std::int16_t{0} : BatteryDays;
}

double PendrelRecord::Get_MaxRecordingTime() const {
  if (EpochLength == 0 || Get_DeviceType() == Device_Unknown) return 0;
  const double days = static_cast<double>(MostBytes) / (SecondsOfDay / static_cast<float>(EpochLength));
  if (Get_DeviceType() != KR_PENDREL_CRC_STEPS || AcquisitionMode == PD_Mode_ActivityOnly) return days;
  return AcquisitionMode == PD_Mode_ActivityAndSteps ? days / 2 : 0;
}

std::int16_t PendrelRecord::Get_BlocksToDownload() const {
  if (BytesUsed < 1) return 0;
  const std::int64_t bytes = std::int64_t{BytesUsed} + HeaderBytes;
  return fault::narrow<std::int16_t>((bytes + BlockBytes - 1) / BlockBytes);
}

}  // namespace hy_wristlog
