#include <algorithm>
#include <limits>

#include "base/dates.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "pendrel/Pendrel.h"

namespace hy_wristlog {

float Pendrel::fncBatteryLife(std::optional<double> date, std::optional<enmDeviceType> deviceType) const {
  switch (deviceType.value_or(record.Get_DeviceType())) {
    case KR_PENDREL:
    case KR_PENDREL_CRC:
    case KR_PENDREL_CRC_STEPS: {
      const double days = date.value_or(record.BatteryDate) + PendrelRecord::BatteryDays - datePart(now());
      return static_cast<float>(std::clamp(days, 0.0, double{std::numeric_limits<float>::max()}));
    }
    default:
      return 0;
  }
}

void Pendrel::subShowFormComm() {
  Procedure procedure{Module, "subShowFormComm"};
  procedure.run([&] {
    if (!link().Get_Visible()) link().show();
  });
}

void Pendrel::subHideFormComm() {
  Procedure procedure{Module, "subHideFormComm"};
  procedure.run([&] { link().hide(); });
}

}  // namespace hy_wristlog
