#include "component/function_description.h"

#include <cstdlib>
#include <new>

namespace hy_wristlog::component {
namespace {

/// A description with room for its parameters and their types. A type has at most `MostSteps` pointers.
struct Block {
  static constexpr std::size_t MostSteps = 2;

  HyFuncDesc Description;
  HyElemDesc Parameters[MostParameters];
  HyTypeDesc Steps[(MostParameters + 1) * MostSteps];
};

class Writer {
 public:
  Writer(HyTypeDesc* room, std::uint32_t (*referenceOf)(const ClassTable&))
      : room_(room), referenceOf_(referenceOf) {}

  void write(HyTypeDesc& to, const ValueType& type, bool byReference) {
    HyTypeDesc* place = &to;
    if (byReference) place = step(*place);
    if (type.Object != nullptr) {
      place = step(*place);
      place->vt = HY_VT_USERDEFINED;
      place->hreftype = referenceOf_(*type.Object);
    } else {
      place->vt = type.Type;
    }
  }

 private:
  HyTypeDesc* step(HyTypeDesc& from) {
    from.vt = HY_VT_PTR;
    from.lptdesc = room_;
    return room_++;
  }

  HyTypeDesc* room_;
  std::uint32_t (*referenceOf_)(const ClassTable&);
};

std::uint16_t flagsOf(Way way, bool optional) {
  const int flags = way == Way::In    ? HY_PARAMFLAG_FIN
                    : way == Way::Out ? HY_PARAMFLAG_FOUT
                                      : HY_PARAMFLAG_FIN | HY_PARAMFLAG_FOUT;
  return static_cast<std::uint16_t>(optional ? flags | HY_PARAMFLAG_FOPT : flags);
}

HyFuncDesc* newDescription(const Member& member, std::int32_t number, const Operation& operation,
                           std::uint32_t (*referenceOf)(const ClassTable&)) {
  auto* block = static_cast<Block*>(std::calloc(1, sizeof(Block)));
  if (block == nullptr) throw std::bad_alloc();
  Writer writer(block->Steps, referenceOf);
  HyFuncDesc& description = block->Description;
  description.memid = number;
  description.funckind = HY_FUNC_DISPATCH;
  description.invkind = operation.Kind;
  description.callconv = HY_CC_CDECL;
  const bool puts = operation.Kind == HY_DISPATCH_PROPERTYPUT;
  const std::size_t count = puts ? 1 : member.Parameters.size();
  description.cParams = static_cast<std::int16_t>(count);
  if (count > 0) description.lprgelemdescParam = block->Parameters;
  if (puts) {
    writer.write(block->Parameters[0].tdesc, operation.Type, false);
    block->Parameters[0].paramdesc.wParamFlags = HY_PARAMFLAG_FIN;
    description.elemdescFunc.tdesc.vt = HY_VT_VOID;
    return &description;
  }
  description.cParamsOpt = static_cast<std::int16_t>(count - member.Required);
  for (std::size_t i = 0; i < count; ++i) {
    const Parameter& parameter = member.Parameters[i];
    writer.write(block->Parameters[i].tdesc, parameter.Type, parameter.Direction != Way::In);
    block->Parameters[i].paramdesc.wParamFlags = flagsOf(parameter.Direction, i >= member.Required);
  }
  writer.write(description.elemdescFunc.tdesc, operation.Type, false);
  return &description;
}

}  // namespace

std::size_t functionCount(std::span<const Member> members) {
  std::size_t count = 0;
  for (const Member& member : members)
    for (const Operation& operation : member.Operations) count += operation.Kind != 0 ? 1 : 0;
  return count;
}

HyFuncDesc* newFunctionDescription(std::span<const Member> members, std::size_t index,
                                   std::uint32_t (*referenceOf)(const ClassTable&)) {
  for (std::size_t m = 0; m < members.size(); ++m)
    for (const Operation& operation : members[m].Operations)
      if (operation.Kind != 0 && index-- == 0)
        return newDescription(members[m], static_cast<std::int32_t>(m) + 1, operation, referenceOf);
  return nullptr;
}

}  // namespace hy_wristlog::component
