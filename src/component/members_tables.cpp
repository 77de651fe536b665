#include <algorithm>
#include <string_view>

#include "component/binding.h"
#include "component/members.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_Subject.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "pendrel/Pendrel.h"
#include "workflows/main_state.h"

namespace hy_wristlog::component {
namespace {

/// A property. Hosts get every double as a date (HY_VT_DATE), so a table may declare one only as Date.
template <std::size_t Count>
consteval Member property(const char* name, std::string_view type, const Operation (&operations)[Count]) {
  if (type == "double") throw "the table declares a double that is not a Date";
  Member member{name, {}};
  std::copy_n(operations, Count, member.Operations);
  return member;
}

constexpr Member Subject[] = {
#define HY_STORED(Name, Type) \
  property(#Name, #Type, {reading<&Class_Subject::Get_##Name>(), writing<&Class_Subject::Let_##Name>()}),
#define HY_TIDIED(Name, Type) HY_STORED(Name, Type)
#define HY_COMPUTED(Name, Type) property(#Name, #Type, {reading<&Class_Subject::Get_##Name>()}),
#include "hy_wristlog/subject_properties.inc"
};

constexpr Member Pendrel[] = {
#define HY_GET(Name, Type) reading<&Class_Pendrel::Get_##Name>(),
#define HY_LET(Name, Type) writing<&Class_Pendrel::Let_##Name>(),
#define HY_STORED(Name, Type, Access) property(#Name, #Type, {HY_ACCESS(Access, Name, Type)}),
#define HY_COMPUTED(Name, Type) property(#Name, #Type, {HY_GET(Name, Type)}),
#include "hy_wristlog/pendrel_properties.inc"
};

constexpr bool fits(std::size_t required, std::size_t count) {
  return required <= count && count <= Arguments::Most;
}

/// The parameters of a method, named by its table.
#define HY_PARAMETERS(Class, Name, Required, ...)                                         \
  constexpr auto Name##Parameters = CallingOf<&Class::Name>::parameters({{__VA_ARGS__}}); \
  static_assert(fits(Required, Name##Parameters.size()));                                 \
  static_assert(CallingOf<&Class::Name>::waysFit(Name##Parameters), "HY_IN for inputs alone");

#define HY_IN(Name) {#Name, Way::In, {}},
#define HY_OUT(Name) {#Name, Way::Out, {}},
#define HY_METHOD(Name, Required, ...) HY_PARAMETERS(Class_VardenLogger, Name, Required, __VA_ARGS__)
#include "hy_wristlog/varden_properties.inc"

constexpr Member VardenLogger[] = {
#define HY_GET(Name, Type) reading<&Class_VardenLogger::Get_##Name>(),
#define HY_LET(Name, Type) writing<&Class_VardenLogger::Let_##Name>(),
#define HY_STORED(Name, Type, Access, Copy) property(#Name, #Type, {HY_ACCESS(Access, Name, Type)}),
#define HY_COMPUTED(Name, Type) property(#Name, #Type, {HY_GET(Name, Type)}),
#define HY_METHOD(Name, Required, ...) \
  {#Name, {calling<&Class_VardenLogger::Name>()}, Name##Parameters, Required, true},
#include "hy_wristlog/varden_properties.inc"
};

#define HY_IN(Name) {#Name, Way::In, {}},
#define HY_OUT(Name) {#Name, Way::Out, {}},
#define HY_IN_OUT(Name) {#Name, Way::InOut, {}},
#define HY_METHOD(Name, Required, ...) HY_PARAMETERS(Class_Main, Name, Required, __VA_ARGS__)
#include "hy_wristlog/main_members.inc"

constexpr Member Main[] = {
#define HY_GET(Name) reading<&Class_Main::Get_##Name>(),
#define HY_LET(Name) writing<&Class_Main::Let_##Name>(),
#define HY_PROPERTY(Name, Access) {#Name, {HY_ACCESS(Access, Name)}},
#define HY_METHOD(Name, Required, ...) \
  {#Name, {calling<&Class_Main::Name>()}, Name##Parameters, Required, false},
#define HY_WORKFLOW(Name, Required, ...) \
  {#Name, {calling<&Class_Main::Name>()}, Name##Parameters, Required, true},
#include "hy_wristlog/main_members.inc"
};

template <class Class>
std::shared_ptr<void> make() {
  return std::make_shared<Class>();
}

template <class Class>
void subscribe(void* instance, const std::shared_ptr<LoggerEvents>& listener) {
  static_cast<Class*>(instance)->subscribe(listener);
}
template <class Class>
void unsubscribe(void* instance, const std::shared_ptr<LoggerEvents>& listener) {
  static_cast<Class*>(instance)->unsubscribe(listener);
}

void follow(void* instance, const std::shared_ptr<LoggerEvents>& listener) {
  Inside::of(*static_cast<Class_Main*>(instance)).follow(listener);
}
void unfollow(void* instance, const std::shared_ptr<LoggerEvents>&) {
  Inside::of(*static_cast<Class_Main*>(instance)).follow(nullptr);
}

constexpr const HyGuid* MainPoints[] = {&HY_DIID_VARDEN_LOGGER_EVENTS, &HY_DIID_HOST_EVENTS};
constexpr const HyGuid* VardenLoggerPoints[] = {&HY_DIID_VARDEN_LOGGER_EVENTS};
constexpr const HyGuid* PendrelPoints[] = {&HY_DIID_PENDREL_EVENTS};

}  // namespace

constinit const ClassTable MainTable{"Class_Main", HY_CLSID_MAIN, HY_IID_MAIN, Main,    make<Class_Main>,
                                     MainPoints,   false,         follow,      unfollow};
constinit const ClassTable VardenLoggerTable{"Class_VardenLogger",
                                             HY_CLSID_VARDEN_LOGGER,
                                             HY_IID_VARDEN_LOGGER,
                                             VardenLogger,
                                             make<Class_VardenLogger>,
                                             VardenLoggerPoints,
                                             true,
                                             subscribe<Class_VardenLogger>,
                                             unsubscribe<Class_VardenLogger>};
constinit const ClassTable PendrelTable{
    "Class_Pendrel",           HY_CLSID_PENDREL, HY_IID_PENDREL, Pendrel,
    make<Class_Pendrel>,       PendrelPoints,    true,           subscribe<Class_Pendrel>,
    unsubscribe<Class_Pendrel>};
constinit const ClassTable SubjectTable{
    "Class_Subject", HY_CLSID_SUBJECT, HY_IID_SUBJECT, Subject, make<Class_Subject>, {},
    false,           nullptr,          nullptr};

}  // namespace hy_wristlog::component
