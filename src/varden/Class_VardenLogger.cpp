#include "hy_wristlog/Class_VardenLogger.h"

#include <utility>

#include "base/faults.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {

Class_VardenLogger::Class_VardenLogger() : Class_VardenLogger(std::make_unique<VardenLogger>()) {}

Class_VardenLogger::Class_VardenLogger(std::unique_ptr<VardenLogger> inside) : inside_(std::move(inside)) {
  if (!inside_) fault::raise(fault::ObjectNotSet);
}

Class_VardenLogger::~Class_VardenLogger() = default;

#define HY_GET(Name, Type) \
  Class_VardenLogger::View<Type> Class_VardenLogger::Get_##Name() const { return inside_->record.Name; }
#define HY_LET(Name, Type) \
  void Class_VardenLogger::Let_##Name(View<Type> value) { inside_->record.Name = value; }
#define HY_ACCESS_GetLet(Name, Type) HY_GET(Name, Type) HY_LET(Name, Type)
#define HY_ACCESS_LetGet(Name, Type) HY_LET(Name, Type) HY_GET(Name, Type)
#define HY_ACCESS_GetOnly(Name, Type) HY_GET(Name, Type)
#define HY_STORED(Name, Type, Access, Copy) HY_ACCESS_##Access(Name, Type)
#define HY_COMPUTED(Name, Type) \
  Type Class_VardenLogger::Get_##Name() { return inside_->Get_##Name(); }
#include "hy_wristlog/varden_properties.inc"
#undef HY_GET
#undef HY_LET
#undef HY_ACCESS_GetLet
#undef HY_ACCESS_LetGet
#undef HY_ACCESS_GetOnly
#undef HY_STORED
#undef HY_COMPUTED

void Class_VardenLogger::subVardenConfigCRCreset() { inside_->subVardenConfigCRCreset(); }

void Class_VardenLogger::subscribe(std::shared_ptr<LoggerEvents> events) {
  inside_->subscribe(std::move(events));
}

void Class_VardenLogger::unsubscribe(const std::shared_ptr<LoggerEvents>& events) {
  inside_->unsubscribe(events);
}

}  // namespace hy_wristlog
