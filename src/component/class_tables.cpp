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

constexpr Member Subject[] = {
#define HY_STORED(Name, Type) \
  {#Name, {reading<&Class_Subject::Get_##Name>(), writing<&Class_Subject::Let_##Name>()}},
#define HY_TIDIED(Name, Type) HY_STORED(Name, Type)
#define HY_COMPUTED(Name, Type) {#Name, {reading<&Class_Subject::Get_##Name>()}},
#include "hy_wristlog/subject_properties.inc"
#undef HY_STORED
#undef HY_TIDIED
#undef HY_COMPUTED
};

constexpr Member Pendrel[] = {
#define HY_GetLet(Name) \
  { reading<&Class_Pendrel::Get_##Name>(), writing<&Class_Pendrel::Let_##Name>() }
#define HY_GetOnly(Name) \
  { reading<&Class_Pendrel::Get_##Name>() }
#define HY_STORED(Name, Type, Access) {#Name, HY_##Access(Name)},
#define HY_COMPUTED(Name, Type) {#Name, HY_GetOnly(Name)},
#include "hy_wristlog/pendrel_properties.inc"
#undef HY_GetLet
#undef HY_GetOnly
#undef HY_STORED
#undef HY_COMPUTED
};

#define HY_CALL(Class, Name) \
  { calling<&Class::Name>() }

constexpr Member VardenLogger[] = {
#define HY_GET(Name) (reading<&Class_VardenLogger::Get_##Name>())
#define HY_LET(Name) (writing<&Class_VardenLogger::Let_##Name>())
#define HY_GetLet(Name) \
  { HY_GET(Name), HY_LET(Name) }
#define HY_LetGet(Name) \
  { HY_LET(Name), HY_GET(Name) }
#define HY_GetOnly(Name) \
  { HY_GET(Name) }
#define HY_STORED(Name, Type, Access, Copy) {#Name, HY_##Access(Name)},
#define HY_COMPUTED(Name, Type) {#Name, HY_GetOnly(Name)},
#include "hy_wristlog/varden_properties.inc"
#undef HY_GET
#undef HY_LET
#undef HY_GetLet
#undef HY_LetGet
#undef HY_GetOnly
#undef HY_STORED
#undef HY_COMPUTED
    {"subVardenConfigCRCreset", HY_CALL(Class_VardenLogger, subVardenConfigCRCreset), {}, 0, true},
};

constexpr bool fits(std::size_t required, std::size_t count) {
  return required <= count && count <= Arguments::Most;
}

#define HY_IN(Name) {#Name, Way::In, {}},
#define HY_OUT(Name) {#Name, Way::Out, {}},
#define HY_IN_OUT(Name) {#Name, Way::InOut, {}},
#define HY_PROPERTY(Name, Access)
#define HY_METHOD(Name, Required, ...)                                                         \
  constexpr auto Name##Parameters = CallingOf<&Class_Main::Name>::parameters({{__VA_ARGS__}}); \
  static_assert(fits(Required, Name##Parameters.size()));
#define HY_WORKFLOW(Name, Required, ...) HY_METHOD(Name, Required, __VA_ARGS__)
#include "hy_wristlog/main_members.inc"
#undef HY_IN
#undef HY_OUT
#undef HY_IN_OUT
#undef HY_PROPERTY
#undef HY_METHOD
#undef HY_WORKFLOW

constexpr Member Main[] = {
#define HY_GetLet(Name) \
  { reading<&Class_Main::Get_##Name>(), writing<&Class_Main::Let_##Name>() }
#define HY_GetOnly(Name) \
  { reading<&Class_Main::Get_##Name>() }
#define HY_PROPERTY(Name, Access) {#Name, HY_##Access(Name)},
#define HY_METHOD(Name, Required, ...) {#Name, HY_CALL(Class_Main, Name), Name##Parameters, Required, false},
#define HY_WORKFLOW(Name, Required, ...) {#Name, HY_CALL(Class_Main, Name), Name##Parameters, Required, true},
#include "hy_wristlog/main_members.inc"
#undef HY_GetLet
#undef HY_GetOnly
#undef HY_PROPERTY
#undef HY_METHOD
#undef HY_WORKFLOW
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
  static_cast<Class_Main*>(instance)->inside().follow(listener);
}
void unfollow(void* instance, const std::shared_ptr<LoggerEvents>&) {
  static_cast<Class_Main*>(instance)->inside().follow(nullptr);
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
