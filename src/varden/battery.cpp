#include "varden/battery.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/dates.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "errors/Procedure.h"
#include "varden/VardenLogger.h"
#include "varden/failures.h"
#include "varden/logging_modes.h"

namespace hy_wristlog {
namespace {

constexpr char Module[] = "Class_VardenLogger";

/// 0 for a mode that the model does not have, and for one whose samples are no epochs.
std::int32_t bytesPerEpoch(const VardenRecord& record) {
  const LoggingMode* mode = findLoggingMode(record.DeviceType, record.AcquisitionMode);
  return mode != nullptr && mode->samplesAreEpochs() ? mode->recordLength() : 0;
}

}  // namespace

float vividBatteryPercent(float voltage, float loadedVoltage) {
  const float x = (voltage - loadedVoltage) * 1.6667f;
  float percent = 0;
  if (x < 0.055f) {
    percent = 100;
  } else if (x <= 0.157f) {
    percent = 143.7516f - 772.7492f * x;
  } else if (x <= 0.2861f) {
    const float square = x * x;
    percent = 568.58f * square - 410.83f * x + 72.915f;
  }
  return std::clamp(percent, 0.0f, 100.0f);
}

double maxRecordingDays(const VardenRecord& record, bool fromPresentFill) {
  const std::int32_t perEpoch = bytesPerEpoch(record);
  if (record.EpochLength < 1 || perEpoch == 0) return 0;
  double bytes = record.MemorySize * 1024.0;
  if (fromPresentFill) bytes -= record.BytesUsed;
  const std::int32_t epochsPerDay = roundToInt32(SecondsPerDay / record.EpochLength);
  return bytes / epochsPerDay / perEpoch;
}

float VardenLogger::fncGetBatteryPercent(float voltage, float loadedVoltage) const {
  Procedure procedure{Module, "fncGetBatteryPercent"};
  return procedure.run([&] {
    if (record.DeviceType != KR_QUILLANDER)
      raiseFrom("fncGetBatteryPercent", FailureNumber::WrongDeviceType, "Invalid Logger Type");
    return vividBatteryPercent(voltage, loadedVoltage);
  });
}

float VardenLogger::fncGetBatteryLife(float voltage, float loadedVoltage, float& percent) const {
  Procedure procedure{Module, "fncGetBatteryLife"};
  return procedure.run([&] {
    if (record.DeviceType == KR_QUILLANDER) {
      percent = procedure.statement([&] { return fncGetBatteryPercent(voltage, loadedVoltage); });
      return percent * static_cast<float>(Get_MaxBatteryLife()) / 100.0f;
    }
    if (record.DeviceType != KR_TOLKA)
      raiseFrom("fncGetBatteryLife", FailureNumber::WrongDeviceType, "Invalid Logger Type");
    const bool charged = voltage >= ChargedTolkaVoltage;
    percent = charged ? 100.0f : 0.0f;
    return charged ? static_cast<float>(Get_MaxBatteryLife()) : 0.0f;
  });
}

float VardenLogger::Get_BattLifeRemaining() {
  Procedure procedure{Module, "Get_BattLifeRemaining"};
  return procedure.run([&] {
    float percent = 0;
    record.BattLifeDays = fncGetBatteryLife(record.BatteryVoltage, record.LoadedBattVoltage, percent);
    return record.BattLifeDays;
  });
}

std::int16_t VardenLogger::Get_BatteryPercent() {
  Procedure procedure{Module, "Get_BatteryPercent"};
  return procedure.run([&] {
    record.BattPercentValue = fncGetBatteryPercent(record.BatteryVoltage, record.LoadedBattVoltage);
    return roundToInt16(record.BattPercentValue);
  });
}

std::string VardenLogger::fncFriendlyBatteryStatus() {
  constexpr char Unknown[] = "Unknown Battery Status";
  Procedure procedure{Module, "fncFriendlyBatteryStatus"};
  return procedure.run([&]() -> std::string {
    if (record.DeviceType == KR_QUILLANDER) {
      const float days = procedure.statement([&] { return Get_BattLifeRemaining(); });
      if (days < 0) return Unknown;
      const std::int16_t percent = procedure.statement([&] { return Get_BatteryPercent(); });
      return "Approx. " + formatNumber(std::trunc(days), "##0") + " days (" + formatNumber(percent, "##0") +
             "%) battery life remaining";
    }
    if (record.DeviceType != KR_TOLKA || record.BatteryVoltage < 0) return Unknown;
    return record.BatteryVoltage >= ChargedTolkaVoltage ? "Battery Fully Charged"
                                                        : "Battery NOT Fully Charged";
  });
}

double VardenLogger::Get_MaxRecordingTimeAvailable(bool fromPresentFill) const {
  return maxRecordingDays(record, fromPresentFill);
}

}  // namespace hy_wristlog
