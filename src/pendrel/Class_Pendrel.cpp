#include "hy_wristlog/Class_Pendrel.h"

#include <utility>

#include "pendrel/Pendrel.h"

namespace hy_wristlog {

Class_Pendrel::Class_Pendrel() : inside_(std::make_unique<Pendrel>()) {}

Class_Pendrel::~Class_Pendrel() = default;

#define HY_GET(Name, Type) \
  Class_Pendrel::View<Type> Class_Pendrel::Get_##Name() const { return inside_->record.Name; }
#define HY_LET(Name, Type) \
  void Class_Pendrel::Let_##Name(View<Type> value) { inside_->record.Name = value; }
#define HY_COMPUTED(Name, Type) \
  Type Class_Pendrel::Get_##Name() const { return inside_->Get_##Name(); }
#include "hy_wristlog/pendrel_properties.inc"

void Class_Pendrel::subscribe(std::shared_ptr<LoggerEvents> events) { inside_->subscribe(std::move(events)); }

void Class_Pendrel::unsubscribe(const std::shared_ptr<LoggerEvents>& events) { inside_->unsubscribe(events); }

}  // namespace hy_wristlog
