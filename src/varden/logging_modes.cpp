#include "varden/logging_modes.h"

#include "hy_wristlog/failure.h"
#include "varden/failures.h"
#include "varden/record.h"

namespace hy_wristlog {

using namespace FailureNumber;

const LoggingMode& requireLoggingMode(const VardenRecord& record, const char* procedure) {
  const auto isOfDevice = [&](const LoggingMode& row) { return row.Device == record.DeviceType; };
  if (std::none_of(LoggingModes.begin(), LoggingModes.end(), isOfDevice))
    raiseFrom(procedure, WrongDeviceType, "Incompatible Device Type");
  if (const LoggingMode* mode = findLoggingMode(record.DeviceType, record.AcquisitionMode)) return *mode;
  raiseFrom(procedure, OutOfRange, IncompatibleMode);
}

bool hasLightCalibration(const VardenRecord& record) {
  if (record.DeviceType != KR_QUILLANDER) return record.LightScaleCalibration > 0;
  return record.RedLightCalibration > 0 && record.GreenLightCalibration > 0 &&
         record.BlueLightCalibration > 0;
}

const char* refusalToDecode(const LoggingMode& mode, const VardenRecord& record, bool diagnostic) {
  if (mode.Use == ModeUse::Internal) return diagnostic ? nullptr : IncompatibleMode;
  const bool hasActivity = mode.Activity != ActivityPart::None, hasLight = mode.Light != LightPart::None;
  if ((!hasActivity || record.ActivityCalibration > 0) && (!hasLight || hasLightCalibration(record)))
    return nullptr;
  if (hasActivity && hasLight) return "Invalid Calibration";
  return hasActivity ? "Invalid Activity Calibration" : "Invalid Light Calibration";
}

}  // namespace hy_wristlog
