#include <memory>
#include <optional>

#include "base/faults.h"
#include "component/arguments.h"
#include "component/guid.h"
#include "component/names.h"
#include "component/object.h"
#include "component/strings.h"
#include "component/type_info.h"
#include "component/vtables.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "platform/work_under_way.h"

namespace hy_wristlog::component {
namespace {

constexpr std::int32_t MostFailureNumber = 0xFFFF;
constexpr std::uint16_t AllKinds =
    HY_DISPATCH_METHOD | HY_DISPATCH_PROPERTYGET | HY_DISPATCH_PROPERTYPUT | HY_DISPATCH_PROPERTYPUTREF;

HyResult getTypeInfoCount(HyDispatch* self, std::uint32_t* count) noexcept {
  if (count == nullptr) return HY_E_POINTER;
  *count = 0;
  return call<ObjectBody>(self, [&](ObjectBody&) {
    *count = 1;
    return HY_S_OK;
  });
}

HyResult getTypeInfo(HyDispatch* self, std::uint32_t index, std::uint32_t, HyTypeInfo** typeInfo) noexcept {
  if (typeInfo == nullptr) return HY_E_POINTER;
  *typeInfo = nullptr;
  return call<ObjectBody>(self, [&](const ObjectBody& object) {
    if (index != 0) return HY_DISP_E_BADINDEX;
    *typeInfo = interfaceInfo(object.Table);
    return HY_S_OK;
  });
}

HyResult getIdsOfNames(HyDispatch* self, const HyGuid* reserved, std::uint16_t** names, std::uint32_t count,
                       std::uint32_t, std::int32_t* ids) noexcept {
  return call<ObjectBody>(self, [&](const ObjectBody& object) {
    if (reserved != nullptr && !(*reserved == HY_GUID_NULL)) return HY_DISP_E_UNKNOWNINTERFACE;
    return findNames(object.Table.Members, names, count, ids);
  });
}

void describe(const Failure& failure, HyExcepInfo* exception) {
  if (exception == nullptr) return;
  const auto freeString = [](std::uint16_t* string) { hyStringFree(string); };
  std::unique_ptr<std::uint16_t, decltype(freeString)> source(newString(failure.Source), freeString);
  exception->scode = failure.Number >= 1 && failure.Number <= MostFailureNumber
                         ? HY_FAILURE_BASE + failure.Number
                         : failure.Number;
  exception->bstrDescription = newString(failure.Description);
  exception->bstrSource = source.release();
}

/// Marks an object as being inside a workflow, and during that time asks its host to serve events.
class Work final : platform::EventSource {
 public:
  explicit Work(ObjectBody& object) : object_(object) {
    if (object.Working) fault::raise(fault::InvalidCall);
    std::int32_t& underWay = world_->objects().get<platform::WorkUnderWay>().Count;
    world_->addEventSource(*this);
    object.Working = true;
    ++underWay;
  }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  ~Work() {
    object_.Working = false;
    --world_->objects().get<platform::WorkUnderWay>().Count;
    world_->removeEventSource(*this);
  }

 private:
  void serveEvents() override {
    if (object_.Points.size() > 1) object_.Points[1].Sinks->tell(HY_EVENT_SERVE_EVENTS, nullptr, 0);
  }

  ObjectBody& object_;
  std::shared_ptr<platform::Platform> world_ = platform::shareCurrent();
};

HyResult perform(ObjectBody& object, std::int32_t number, std::uint16_t kinds, const HyDispParams& params,
                 Arguments& arguments, HyVariant& result) {
  const Member* member = memberOf(object.Table.Members, number);
  if (member == nullptr) return HY_DISP_E_MEMBERNOTFOUND;
  if (kinds == 0 || (kinds & ~AllKinds) != 0) return HY_E_INVALIDARG;
  const Operation* operation = member->find(kinds);
  if (operation == nullptr) return HY_DISP_E_MEMBERNOTFOUND;
  if (operation->Kind == HY_DISPATCH_PROPERTYPUT)
    arguments.sortNewValue(params);
  else
    arguments.sort(params, *member);
  std::optional<Work> work;
  if (member->Workflow) work.emplace(object);
  operation->Perform(object.Instance.get(), arguments, result);
  return HY_S_OK;
}

HyResult invoke(HyDispatch* self, std::int32_t number, const HyGuid* reserved, std::uint32_t,
                std::uint16_t kinds, HyDispParams* params, HyVariant* result, HyExcepInfo* exception,
                std::uint32_t* argumentInError) noexcept {
  HyVariant value{};
  if (exception != nullptr) *exception = {};
  const HyResult outcome = call<ObjectBody>(self, [&](ObjectBody& object) {
    if (reserved != nullptr && !(*reserved == HY_GUID_NULL)) return HY_DISP_E_UNKNOWNINTERFACE;
    if (params == nullptr) return HY_E_POINTER;
    Arguments arguments;
    try {
      return perform(object, number, kinds, *params, arguments, value);
    } catch (const Refusal&) {
      if (argumentInError != nullptr && arguments.blamed() >= 0)
        *argumentInError = static_cast<std::uint32_t>(arguments.blamed());
      throw;
    } catch (const Failure& failure) {
      describe(failure, exception);
      return HY_DISP_E_EXCEPTION;
    }
  });
  if (outcome != HY_S_OK || result == nullptr) hyVariantClear(&value);
  if (result != nullptr) *result = value;
  return outcome;
}

HyResult getClassInfo(HyProvideClassInfo* self, HyTypeInfo** typeInfo) noexcept {
  if (typeInfo == nullptr) return HY_E_POINTER;
  *typeInfo = nullptr;
  return call<ObjectBody>(self, [&](const ObjectBody& object) {
    *typeInfo = classInfo(object.Table);
    return HY_S_OK;
  });
}

HyResult readSeries(HySeriesReader* self, std::int32_t number, HyVariant* series) noexcept {
  if (series == nullptr) return HY_E_POINTER;
  *series = {};
  return call<ObjectBody>(self, [&](const ObjectBody& object) {
    const Member* member = memberOf(object.Table.Members, number);
    const Operation* reading = member != nullptr ? member->find(HY_DISPATCH_PROPERTYGET) : nullptr;
    if (reading == nullptr || reading->ReadSeries == nullptr) return HY_DISP_E_MEMBERNOTFOUND;
    reading->ReadSeries(object.Instance.get(), *series);
    return HY_S_OK;
  });
}

}  // namespace

constinit const HyDispatchVtable DispatchVtable{queryInterface<HyDispatch>,
                                                addReferenceTo<HyDispatch>,
                                                releaseOf<HyDispatch>,
                                                getTypeInfoCount,
                                                getTypeInfo,
                                                getIdsOfNames,
                                                invoke};

constinit const HyProvideClassInfoVtable ClassInfoVtable{queryInterface<HyProvideClassInfo>,
                                                         addReferenceTo<HyProvideClassInfo>,
                                                         releaseOf<HyProvideClassInfo>, getClassInfo};

constinit const HySeriesReaderVtable SeriesReaderVtable{
    queryInterface<HySeriesReader>, addReferenceTo<HySeriesReader>, releaseOf<HySeriesReader>, readSeries};

}  // namespace hy_wristlog::component
