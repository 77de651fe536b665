#include "workflows/docked_model.h"

#include "varden/logging_modes.h"

namespace hy_wristlog {
namespace {

constexpr DockedModel KestrinVivid{KR_QUILLANDER, deviceText(KR_QUILLANDER)};
constexpr DockedModel Kestrin2{KR_TOLKA, deviceText(KR_TOLKA)};

}  // namespace

std::int16_t DockedModel::findDock(VardenLogger& logger, std::int16_t& numConnected) const {
  return DeviceType == KR_QUILLANDER ? logger.fncQuillanderDockCOMport(numConnected)
                                     : logger.fncTolkaDockCOMport(numConnected);
}

bool DockedModel::connect(VardenLogger& logger) const {
  return DeviceType == KR_QUILLANDER ? logger.fncQuillanderLoggerConnected(true)
                                     : logger.fncTolkaLoggerConnected(true, false);
}

const DockedModel* dockedModel(enmLoggerPointer loggerType) {
  if (loggerType == LggrPntr_KRVivid) return &KestrinVivid;
  if (loggerType == LggrPntr_KRII) return &Kestrin2;
  return nullptr;
}

bool hasFactoryValues(const VardenRecord& record, const DockedModel& model) {
  return record.DeviceType == model.DeviceType && record.ActivityCalibration > 0 &&
         hasLightCalibration(record);
}

}  // namespace hy_wristlog
