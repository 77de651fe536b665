#include "workflows/docked_model.h"

namespace hy_wristlog {
namespace {

constexpr DockedModel KestrinVivid{KR_QUILLANDER, "Kestrin Vivid", VardenMode_ActivityAndSpecialLight};
constexpr DockedModel Kestrin2{KR_TOLKA, "Kestrin 2", VardenMode_ActivityAndStandardLight};

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
  const bool light = model.DeviceType == KR_QUILLANDER
                         ? record.RedLightCalibration != 0 && record.GreenLightCalibration != 0 &&
                               record.BlueLightCalibration != 0
                         : record.LightScaleCalibration != 0;
  return light && record.ActivityCalibration > 0 && record.DeviceType == model.DeviceType;
}

}  // namespace hy_wristlog
