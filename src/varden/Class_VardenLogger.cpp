#include "hy_wristlog/Class_VardenLogger.h"

#include <utility>

#include "varden/VardenLogger.h"

namespace hy_wristlog {

Class_VardenLogger::Class_VardenLogger() : inside_(std::make_unique<VardenLogger>()) {}

Class_VardenLogger::~Class_VardenLogger() = default;

#define HY_GET(Name, Type) \
  Class_VardenLogger::View<Type> Class_VardenLogger::Get_##Name() const { return inside_->record.Name; }
#define HY_LET(Name, Type) \
  void Class_VardenLogger::Let_##Name(View<Type> value) { inside_->record.Name = value; }
#define HY_COMPUTED(Name, Type) \
  Type Class_VardenLogger::Get_##Name() { return inside_->Get_##Name(); }
#include "hy_wristlog/varden_properties.inc"

void Class_VardenLogger::subVardenConfigCRCreset() { inside_->subVardenConfigCRCreset(); }

enmDecodeResult Class_VardenLogger::DecodeRecording(const ByteSeries& ConfigBlock, const ByteSeries& RawData,
                                                    const std::string& FirmwareVersion,
                                                    bool* LowBatteryDetected, bool Diagnostic, Date SeenAt) {
  bool low = false;
  const enmDecodeResult result =
      inside_->decodeRecording(ConfigBlock, RawData, FirmwareVersion, low, Diagnostic, SeenAt);
  if (LowBatteryDetected != nullptr) *LowBatteryDetected = low;
  return result;
}

void Class_VardenLogger::subscribe(std::shared_ptr<LoggerEvents> events) {
  inside_->subscribe(std::move(events));
}

void Class_VardenLogger::unsubscribe(const std::shared_ptr<LoggerEvents>& events) {
  inside_->unsubscribe(events);
}

}  // namespace hy_wristlog
