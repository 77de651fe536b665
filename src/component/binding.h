#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "component/arguments.h"
#include "component/arrays.h"
#include "component/bounds.h"
#include "component/members.h"
#include "component/object.h"
#include "component/outputs.h"
#include "component/strings.h"
#include "component/variants.h"

/// Makes operations out of pointers to members. The type of a value for hosts follows from its C++ type.
namespace hy_wristlog::component {

template <class T>
constexpr bool IsSeries = std::is_same_v<T, ActivitySeries> || std::is_same_v<T, LightSeries> ||
                          std::is_same_v<T, TristateSeries> || std::is_same_v<T, ByteSeries> ||
                          std::is_same_v<T, DateSeries> || std::is_same_v<T, TextSeries>;

template <class T>
constexpr bool IsShared = false;
template <class Class>
constexpr bool IsShared<std::shared_ptr<Class>> = true;

/// A double is a date; the tables of properties are checked for it.
template <class T>
constexpr ValueType typeOf() {
  if constexpr (std::is_void_v<T>)
    return {HY_VT_VOID};
  else if constexpr (IsSeries<T>)
    return {HY_VT_VARIANT};
  else if constexpr (IsShared<T>)
    return {HY_VT_DISPATCH, TableOf<typename T::element_type>};
  else if constexpr (std::is_same_v<T, std::string>)
    return {HY_VT_BSTR};
  else if constexpr (std::is_same_v<T, bool>)
    return {HY_VT_BOOL};
  else if constexpr (std::is_same_v<T, double>)
    return {HY_VT_DATE};
  else if constexpr (std::is_same_v<T, float>)
    return {HY_VT_R4};
  else if constexpr (std::is_same_v<T, std::uint8_t>)
    return {HY_VT_UI1};
  else if constexpr (std::is_same_v<T, std::int16_t>)
    return {HY_VT_I2};
  else {
    static_assert(std::is_same_v<T, std::int32_t> || (std::is_enum_v<T> && sizeof(T) == 4));
    return {HY_VT_I4};
  }
}

/// Writes a value into a variant that owns nothing.
template <class T>
void put(HyVariant& to, const T& value) {
  if constexpr (IsSeries<T>) {
    if (value.empty()) return;
    to.parray = newArray(value);
    to.vt = HY_VT_ARRAY | HY_VT_VARIANT;
    return;
  } else if constexpr (IsShared<T>)
    to.pdispVal = wrap(*typeOf<T>().Object, value);
  else if constexpr (std::is_same_v<T, std::string>)
    to.bstrVal = newString(value);
  else if constexpr (std::is_same_v<T, bool>)
    to.boolVal = value ? HY_TRUE : HY_FALSE;
  else if constexpr (std::is_same_v<T, double>)
    to.date = value;
  else if constexpr (std::is_same_v<T, float>)
    to.fltVal = value;
  else if constexpr (std::is_same_v<T, std::uint8_t>)
    to.bVal = value;
  else if constexpr (std::is_same_v<T, std::int16_t>)
    to.iVal = value;
  else
    to.lVal = static_cast<std::int32_t>(value);
  to.vt = typeOf<T>().Type;
}

template <class T>
T get(const HyVariant& variant) {
  const HyVariant value = valueOf(variant);
  if constexpr (IsSeries<T>) {
    T series;
    takeSeries(value, series);
    return series;
  } else if constexpr (IsShared<T>) {
    if (value.vt == HY_VT_EMPTY || value.vt == HY_VT_NULL) return nullptr;
    if (value.vt != HY_VT_DISPATCH && value.vt != HY_VT_UNKNOWN) throw Refusal{HY_DISP_E_TYPEMISMATCH};
    return std::static_pointer_cast<typename T::element_type>(unwrap(*typeOf<T>().Object, value.punkVal));
  } else if constexpr (std::is_same_v<T, std::string>) {
    return textOf(value);
  } else if constexpr (std::is_same_v<T, bool>) {
    return truthOf(value);
  } else if constexpr (std::is_same_v<T, double>) {
    return realNumberOf(value);
  } else if constexpr (std::is_same_v<T, float>) {
    return singleOf(value);
  } else if constexpr (std::is_enum_v<T>) {
    return static_cast<T>(get<std::int32_t>(variant));
  } else {
    return static_cast<T>(wholeNumberOf(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
  }
}

template <class Member>
struct Signature;
template <class C, class R, class... P>
struct Signature<R (C::*)(P...)> {
  using Class = C;
  using Result = std::remove_cvref_t<R>;
  using Given = std::tuple<P...>;
  static constexpr std::size_t Count = sizeof...(P);
};
template <class C, class R, class... P>
struct Signature<R (C::*)(P...) const> : Signature<R (C::*)(P...)> {};
/// A static member.
template <class R, class... P>
struct Signature<R (*)(P...)> {
  using Class = void;
  using Result = std::remove_cvref_t<R>;
  using Given = std::tuple<P...>;
  static constexpr std::size_t Count = sizeof...(P);
};

template <auto Get>
void read(void* instance, Arguments&, HyVariant& result) {
  using Class = typename Signature<decltype(Get)>::Class;
  using Value = typename Signature<decltype(Get)>::Result;
  auto& object = *static_cast<Class*>(instance);
  decltype(auto) value = (object.*Get)();
  if constexpr (IsSeries<Value>) {
    if (isBelowZero<Get>(object, value)) {
      result.parray = newArrayBelowZero();
      result.vt = HY_VT_ARRAY | HY_VT_VARIANT;
      return;
    }
  }
  put<Value>(result, value);
}

template <auto Get>
void readSeries(void* instance, HyVariant& result) {
  auto& object = *static_cast<typename Signature<decltype(Get)>::Class*>(instance);
  const auto& series = (object.*Get)();
  if (!series.empty() && !isBelowZero<Get>(object, series)) putPlain(result, series);
}

template <auto Let>
void write(void* instance, Arguments& arguments, HyVariant&) {
  using Class = typename Signature<decltype(Let)>::Class;
  using Value = std::remove_cvref_t<std::tuple_element_t<0, typename Signature<decltype(Let)>::Given>>;
  (static_cast<Class*>(instance)->*Let)(get<Value>(*arguments.at(0)));
}

/// Converts one argument of a method on its way in (`arrive`, `pass`) and out (`leave`). A parameter by value
/// or by constant reference is an input, one by reference or by pointer an output; a reference to one of the
/// classes is an input too.
template <class P>
struct Travel {
  using Value = std::remove_cvref_t<P>;
  static constexpr bool Out = false;
  Value Held{};
  void arrive(HyVariant* argument, Way) {
    if (argument != nullptr) Held = get<Value>(*argument);
  }
  const Value& pass() { return Held; }
  void leave(HyVariant*) {}
};

template <class T>
struct TravelOut {
  using Value = T;
  static constexpr bool Out = true;
  T Held{};
  void arrive(HyVariant* argument, Way way) {
    if (argument == nullptr) return;
    requireVariable(*argument, typeOf<T>().Type);
    try {
      Held = get<T>(*argument);
    } catch (const Refusal&) {
      // The former value of a variable that only receives does not matter.
      if (way == Way::InOut || !(argument->vt & HY_VT_BYREF)) throw;
    }
  }
  void leave(HyVariant* argument) {
    if (argument == nullptr || !(argument->vt & HY_VT_BYREF)) return;
    HyVariant value{};
    put(value, Held);
    assignVariable(*argument, value);
  }
};
template <class T>
struct Travel<T*> : TravelOut<T> {
  T* pass() { return &this->Held; }
};
template <class T>
requires(!std::is_const_v<T> && !HasTable<T>) struct Travel<T&> : TravelOut<T> {
  T& pass() { return this->Held; }
};
template <class T>
requires(HasTable<T>) struct Travel<T&> {
  using Value = std::shared_ptr<T>;
  static constexpr bool Out = false;
  Value Held;
  void arrive(HyVariant* argument, Way) {
    Held = get<Value>(*argument);
    if (!Held) throw Refusal{HY_DISP_E_TYPEMISMATCH};
  }
  T& pass() { return *Held; }
  void leave(HyVariant*) {}
};

template <auto Method, class Sequence>
struct Calling;
template <auto Method, std::size_t... I>
struct Calling<Method, std::index_sequence<I...>> {
  using Shape = Signature<decltype(Method)>;
  template <std::size_t N>
  using TravelOf = Travel<std::tuple_element_t<N, typename Shape::Given>>;

  static void run(void* instance, Arguments& arguments, HyVariant& result) {
    std::tuple<TravelOf<I>...> travels;
    (arrive<I>(std::get<I>(travels), arguments), ...);
    const auto call = [&]() -> decltype(auto) {
      if constexpr (std::is_void_v<typename Shape::Class>)
        return Method(std::get<I>(travels).pass()...);
      else
        return (static_cast<typename Shape::Class*>(instance)->*Method)(std::get<I>(travels).pass()...);
    };
    if constexpr (std::is_void_v<typename Shape::Result>)
      call();
    else
      put<typename Shape::Result>(result, call());
    (std::get<I>(travels).leave(arguments.at(I)), ...);
  }

  /// The parameters of a table, which has no types, with the types of the method.
  static constexpr std::array<Parameter, Shape::Count> parameters(
      const std::array<Parameter, Shape::Count>& named) {
    return {{{named[I].Name, named[I].Direction, typeOf<typename TravelOf<I>::Value>()}...}};
  }
  /// Whether the table calls exactly those parameters outputs that the method can write.
  static constexpr bool waysFit(const std::array<Parameter, Shape::Count>& named) {
    return (((named[I].Direction != Way::In) == TravelOf<I>::Out) && ...);
  }

 private:
  template <std::size_t N>
  static void arrive(TravelOf<N>& travel, Arguments& arguments) {
    arguments.blame(N);
    travel.arrive(arguments.at(N), arguments.wayOf(N));
  }
};

template <auto Method>
using CallingOf = Calling<Method, std::make_index_sequence<Signature<decltype(Method)>::Count>>;

template <auto Get>
constexpr Operation reading() {
  using Value = typename Signature<decltype(Get)>::Result;
  Operation operation{HY_DISPATCH_PROPERTYGET, typeOf<Value>(), &read<Get>};
  if constexpr (IsSeries<Value> && !std::is_same_v<Value, TextSeries>)
    operation.ReadSeries = &readSeries<Get>;
  return operation;
}
template <auto Let>
constexpr Operation writing() {
  using Value = std::tuple_element_t<0, typename Signature<decltype(Let)>::Given>;
  return {HY_DISPATCH_PROPERTYPUT, typeOf<std::remove_cvref_t<Value>>(), &write<Let>};
}
template <auto Method>
constexpr Operation calling() {
  return {HY_DISPATCH_METHOD, typeOf<typename Signature<decltype(Method)>::Result>(),
          &CallingOf<Method>::run};
}

}  // namespace hy_wristlog::component
