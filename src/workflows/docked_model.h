#pragma once

#include <cstdint>

#include "hy_wristlog/enumerations.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {

/// A docked model as the workflows see it.
struct DockedModel {
  enmDeviceType DeviceType;
  const char* Words;

  std::int16_t findDock(VardenLogger& logger, std::int16_t& numConnected) const;
  bool connect(VardenLogger& logger) const;
};

/// Null for what the workflows do not serve.
const DockedModel* dockedModel(enmLoggerPointer loggerType);

/// The calibrations that the factory writes are there, and the device type is the model's.
bool hasFactoryValues(const VardenRecord& record, const DockedModel& model);

}  // namespace hy_wristlog
