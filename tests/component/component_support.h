#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "hy_wristlog/component.h"
#include "platform/platform.h"
#include "simulator/simulated_world.h"

/// A host of the component, as one would write it over the C header.
namespace hy_wristlog::host {

/// The tests' thread works in a simulated world from first to last, so that no key, log or setting of the
/// machine's user is touched.
class SimulatedSurroundings : public testing::Environment {
 public:
  void SetUp() override { platform::use(std::make_shared<simulator::SimulatedWorld>()); }
  void TearDown() override { platform::use(nullptr); }
};
[[maybe_unused]] inline testing::Environment* const surroundings =
    testing::AddGlobalTestEnvironment(new SimulatedSurroundings);

inline std::u16string wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }
inline HyString newString(const std::u16string& text) {
  return hyStringAllocate(reinterpret_cast<const uint16_t*>(text.data()), static_cast<uint32_t>(text.size()));
}
inline std::u16string wideOf(HyString string) { return {string, string + hyStringLength(string)}; }
inline std::string narrow(HyString string) { return {string, string + hyStringLength(string)}; }
inline std::string taken(HyString string) {
  const std::unique_ptr<uint16_t, decltype(&hyStringFree)> own(string, hyStringFree);
  return narrow(string);
}

/// Frees what it holds.
struct Value : HyVariant {
  Value() : HyVariant{} {}
  Value(Value&& other) noexcept : HyVariant(std::exchange(static_cast<HyVariant&>(other), HyVariant{})) {}
  Value& operator=(Value&& other) noexcept {
    std::swap(static_cast<HyVariant&>(*this), static_cast<HyVariant&>(other));
    return *this;
  }
  ~Value() { hyVariantClear(this); }
  std::string text() const { return vt == HY_VT_BSTR ? narrow(bstrVal) : "not a text"; }
  const HyVariant& at(std::size_t index) const {
    return static_cast<const HyVariant*>(parray->pvData)[index];
  }
};

inline Value ofType(int type, int64_t bits = 0) {
  Value value;
  value.vt = static_cast<uint16_t>(type);
  value.llVal = bits;
  return value;
}
inline Value number(int32_t whole) { return ofType(HY_VT_I4, whole); }
inline Value boolean(bool truth) { return ofType(HY_VT_BOOL, truth ? 0xFFFF : 0); }
inline Value missing() { return ofType(HY_VT_ERROR, static_cast<uint32_t>(HY_DISP_E_PARAMNOTFOUND)); }
inline Value real(double amount, int type = HY_VT_R8) {
  Value value = ofType(type);
  value.dblVal = amount;
  return value;
}
inline Value single(float amount) {
  Value value = ofType(HY_VT_R4);
  value.fltVal = amount;
  return value;
}
inline Value text(const std::u16string& units) {
  Value value = ofType(HY_VT_BSTR);
  value.bstrVal = newString(units);
  return value;
}
inline Value text(const char* ascii) { return text(wide(ascii)); }
/// Refers to a variable; owns nothing.
template <class T>
Value byRef(int type, T* variable) {
  Value value = ofType(HY_VT_BYREF | type);
  value.byref = variable;
  return value;
}
inline Value byRef(HyVariant* variable) { return byRef(HY_VT_VARIANT, variable); }

/// A reference to an interface, given back at the end.
template <class Interface>
class Ref {
 public:
  Ref() = default;
  explicit Ref(Interface* held) : held_(held) {}
  Ref(Ref&& other) noexcept : held_(std::exchange(other.held_, nullptr)) {}
  Ref& operator=(Ref&& other) noexcept {
    std::swap(held_, other.held_);
    return *this;
  }
  ~Ref() {
    if (held_ != nullptr) held_->lpVtbl->Release(held_);
  }
  Interface* get() const { return held_; }
  auto operator->() const { return held_->lpVtbl; }
  Interface** receive() { return &held_; }
  Interface* leave() { return std::exchange(held_, nullptr); }

 private:
  Interface* held_ = nullptr;
};

template <class To, class From>
Ref<To> query(From* from, const HyGuid& id) {
  void* found = nullptr;
  from->lpVtbl->QueryInterface(from, &id, &found);
  return Ref<To>(static_cast<To*>(found));
}

inline Ref<HyDispatch> make(const HyGuid& classId) {
  void* factory = nullptr;
  void* object = nullptr;
  if (DllGetClassObject(&classId, &HY_IID_CLASS_FACTORY, &factory) != HY_S_OK) return {};
  const Ref<HyClassFactory> held(static_cast<HyClassFactory*>(factory));
  held->CreateInstance(held.get(), nullptr, &HY_IID_DISPATCH, &object);
  return Ref<HyDispatch>(static_cast<HyDispatch*>(object));
}

inline int32_t idOf(HyDispatch* object, const std::string& name) {
  std::u16string units = wide(name);
  auto* names = reinterpret_cast<uint16_t*>(units.data());
  int32_t id = HY_DISPID_UNKNOWN;
  object->lpVtbl->GetIDsOfNames(object, &HY_GUID_NULL, &names, 1, 0, &id);
  return id;
}

/// What came of a call.
struct Outcome {
  HyResult Result = HY_S_OK;
  uint32_t Argument = 99;
  HyResult Code = 0;
  std::string Source, Description;
  Value Answer;
};

inline Outcome invoke(HyDispatch* object, int32_t id, int kinds, HyDispParams params) {
  Outcome outcome;
  HyExcepInfo exception{};
  outcome.Result = object->lpVtbl->Invoke(object, id, &HY_GUID_NULL, 0, static_cast<uint16_t>(kinds), &params,
                                          &outcome.Answer, &exception, &outcome.Argument);
  outcome.Code = exception.scode;
  outcome.Source = taken(exception.bstrSource);
  outcome.Description = taken(exception.bstrDescription);
  return outcome;
}

template <class... Arguments>
Outcome callMethod(HyDispatch* object, const std::string& name, const Arguments&... given) {
  std::vector<HyVariant> reversed;
  (reversed.push_back(given), ...);
  std::reverse(reversed.begin(), reversed.end());
  return invoke(object, idOf(object, name), HY_DISPATCH_METHOD | HY_DISPATCH_PROPERTYGET,
                {reversed.data(), nullptr, static_cast<uint32_t>(reversed.size()), 0});
}
inline Value get(HyDispatch* object, const std::string& name) {
  Outcome outcome = invoke(object, idOf(object, name), HY_DISPATCH_PROPERTYGET, {nullptr, nullptr, 0, 0});
  EXPECT_EQ(outcome.Result, HY_S_OK) << name << outcome.Description;
  return std::move(outcome.Answer);
}
inline Outcome put(HyDispatch* object, int32_t id, const Value& value) {
  int32_t named = HY_DISPID_PROPERTYPUT;
  HyVariant given = value;
  return invoke(object, id, HY_DISPATCH_PROPERTYPUT, {&given, &named, 1, 1});
}
inline Outcome put(HyDispatch* object, const std::string& name, const Value& value) {
  return put(object, idOf(object, name), value);
}
inline Value objectValue(HyDispatch* object) {
  Value value = ofType(HY_VT_DISPATCH);
  value.pdispVal = object;
  object->lpVtbl->AddRef(object);
  return value;
}

/// An event sink of the host's own. Lives on the stack; counts who holds it.
class Sink : public HyDispatch {
 public:
  explicit Sink(const HyGuid& answersTo) : HyDispatch{&functions()}, AnswersTo(answersTo) {}
  HyUnknown* unknown() { return reinterpret_cast<HyUnknown*>(static_cast<HyDispatch*>(this)); }

  HyGuid AnswersTo;
  uint32_t References = 1;
  std::map<int32_t, int> Told;
  std::string LastText;
  std::function<HyResult(int32_t event, HyDispParams& params)> Does;

 private:
  static Sink& of(HyDispatch* self) { return *static_cast<Sink*>(self); }
  static const HyDispatchVtable& functions() {
    static const HyDispatchVtable table{
        [](HyDispatch* self, const HyGuid* id, void** out) {
          *out = nullptr;
          const auto is = [&](const HyGuid& other) { return memcmp(id, &other, sizeof other) == 0; };
          if (!is(HY_IID_UNKNOWN) && !is(of(self).AnswersTo)) return HY_E_NOINTERFACE;
          ++of(self).References;
          *out = self;
          return HY_S_OK;
        },
        [](HyDispatch* self) { return ++of(self).References; },
        [](HyDispatch* self) { return --of(self).References; },
        [](HyDispatch*, uint32_t*) { return HY_E_NOTIMPL; },
        [](HyDispatch*, uint32_t, uint32_t, HyTypeInfo**) { return HY_E_NOTIMPL; },
        [](HyDispatch*, const HyGuid*, uint16_t**, uint32_t, uint32_t, int32_t*) { return HY_E_NOTIMPL; },
        [](HyDispatch* self, int32_t event, const HyGuid*, uint32_t, uint16_t, HyDispParams* params,
           HyVariant*, HyExcepInfo*, uint32_t*) {
          Sink& sink = of(self);
          ++sink.Told[event];
          if (params->cArgs > 0 && params->rgvarg[0].vt == (HY_VT_BYREF | HY_VT_BSTR))
            sink.LastText = narrow(*params->rgvarg[0].pbstrVal);
          return sink.Does ? sink.Does(event, *params) : HY_S_OK;
        }};
    return table;
  }
};

inline Ref<HyConnectionPoint> pointOf(HyDispatch* object, const HyGuid& events) {
  const auto container = query<HyConnectionPointContainer>(object, HY_IID_CONNECTION_POINT_CONTAINER);
  Ref<HyConnectionPoint> point;
  if (container.get() != nullptr) container->FindConnectionPoint(container.get(), &events, point.receive());
  return point;
}
inline uint32_t connect(HyDispatch* object, const HyGuid& events, Sink& sink) {
  const auto point = pointOf(object, events);
  uint32_t cookie = 0;
  point->Advise(point.get(), sink.unknown(), &cookie);
  return cookie;
}
inline HyResult disconnect(HyDispatch* object, const HyGuid& events, uint32_t cookie) {
  const auto point = pointOf(object, events);
  return point->Unadvise(point.get(), cookie);
}

}  // namespace hy_wristlog::host
