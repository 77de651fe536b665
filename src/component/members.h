#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "hy_wristlog/component.h"
#include "hy_wristlog/logger_events.h"

namespace hy_wristlog {
class Class_Main;
class Class_Pendrel;
class Class_Subject;
class Class_VardenLogger;
}  // namespace hy_wristlog

namespace hy_wristlog::component {

class Arguments;
struct ClassTable;

/// The type of a value for hosts. For an object, `Object` is its class.
struct ValueType {
  std::uint16_t Type = HY_VT_EMPTY;
  const ClassTable* Object = nullptr;
};

enum class Way : std::uint8_t { In, Out, InOut };

constexpr std::size_t MostParameters = 16;

struct Parameter {
  const char* Name;
  Way Direction;
  ValueType Type;
};

/// Reads, writes or calls a member of `instance`.
using Run = void (*)(void* instance, Arguments& arguments, HyVariant& result);
/// Reads a series of `instance` as plain numbers.
using Read = void (*)(void* instance, HyVariant& result);

struct Operation {
  std::uint16_t Kind = 0;  ///< HY_DISPATCH_METHOD, _PROPERTYGET or _PROPERTYPUT
  ValueType Type;          ///< what it gives, or takes
  Run Perform = nullptr;
  Read ReadSeries = nullptr;  ///< null for what is no series
};

/// A property with one or two operations, or a method with one.
struct Member {
  const char* Name;
  Operation Operations[2];
  std::span<const Parameter> Parameters = {};
  std::size_t Required = 0;
  bool Workflow = false;  ///< does not run inside another one of the same object

  /// The operation of one of these kinds. If `kinds` has several, reading a property goes before the others,
  /// since it changes nothing.
  const Operation* find(std::uint16_t kinds) const {
    if ((kinds & HY_DISPATCH_PROPERTYGET) && kinds != HY_DISPATCH_PROPERTYGET)
      if (const Operation* reads = find(HY_DISPATCH_PROPERTYGET)) return reads;
    for (const Operation& operation : Operations)
      if (operation.Kind & kinds) return &operation;
    return nullptr;
  }
};

/// The member with a number: its place, from 1. Null when there is none.
inline const Member* memberOf(std::span<const Member> members, std::int32_t number) {
  return number >= 1 && static_cast<std::size_t>(number) <= members.size()
             ? &members[static_cast<std::size_t>(number) - 1]
             : nullptr;
}

/// Makes `listener` hear the events of an object, or stops that.
using Listen = void (*)(void* instance, const std::shared_ptr<LoggerEvents>& listener);

/// A class as hosts see it.
struct ClassTable {
  const char* Name;
  const HyGuid& ClassId;
  const HyGuid& InterfaceId;
  std::span<const Member> Members;
  std::shared_ptr<void> (*Make)();
  /// The event sets that its objects have connection points for: first the events of a logger, then the
  /// events for the host.
  std::span<const HyGuid* const> Points;
  bool DeclaresEvents;  ///< the type information lists the first set as the class's own
  Listen Subscribe, Unsubscribe;
};

extern const ClassTable MainTable, VardenLoggerTable, PendrelTable, SubjectTable;
inline constexpr const ClassTable* Classes[] = {&MainTable, &VardenLoggerTable, &PendrelTable, &SubjectTable};

template <class Class>
constexpr bool HasTable = false;
template <class Class>
constexpr const ClassTable* TableOf = nullptr;

#define HY_TABLE(Class, Table)                  \
  template <>                                   \
  inline constexpr bool HasTable<Class> = true; \
  template <>                                   \
  inline constexpr const ClassTable* TableOf<Class> = &(Table);
HY_TABLE(Class_Main, MainTable)
HY_TABLE(Class_VardenLogger, VardenLoggerTable)
HY_TABLE(Class_Pendrel, PendrelTable)
HY_TABLE(Class_Subject, SubjectTable)
#undef HY_TABLE

}  // namespace hy_wristlog::component
