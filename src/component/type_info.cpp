#include "component/type_info.h"

#include <cstdlib>
#include <string>
#include <type_traits>
#include <utility>

#include "component/class_factory.h"
#include "component/function_description.h"
#include "component/names.h"
#include "component/permanent.h"
#include "component/strings.h"

namespace hy_wristlog::component {
namespace {

constexpr Parameter CommEventErrorParameters[] = {{"ErrorNum", Way::In, {HY_VT_I4}},
                                                  {"ErrorDescription", Way::InOut, {HY_VT_BSTR}}};
constexpr Parameter CommProgressParameters[] = {{"ProgressText", Way::InOut, {HY_VT_BSTR}}};

/// In the order of the events' numbers.
constexpr Member Events[] = {
    {"CommEventError", {{HY_DISPATCH_METHOD, {HY_VT_VOID}}}, CommEventErrorParameters, 2},
    {"CommProgress", {{HY_DISPATCH_METHOD, {HY_VT_VOID}}}, CommProgressParameters, 1},
    {"AbortAcknowledged", {{HY_DISPATCH_METHOD, {HY_VT_VOID}}}},
};

struct Info : Permanent<HyTypeInfo> {
  const char* Prefix = "";  ///< stands before Name
  const char* Name = nullptr;
  HyGuid Id{};
  std::span<const Member> Members;    ///< of an interface or event set, otherwise empty
  const ClassTable* Class = nullptr;  ///< null unless it describes a class
  /// References: of a class to its interface and event set, of these to the plain dispatch interface.
  std::uint32_t Parts[2]{}, PartCount = 0;
};

/// All type descriptions. The reference of one is its place, from 1. They are never destroyed, because hosts
/// may hold one until the process ends.
struct Catalogue {
  Catalogue();
  Info All[3 * std::size(Classes)];
  std::uint32_t Count = 0;

  Info* find(std::uint32_t reference) {
    return reference >= 1 && reference <= Count ? &All[reference - 1] : nullptr;
  }
  Info& add(const char* prefix, const ClassTable& table, const HyGuid& id) {
    Info& info = All[Count++];
    info.Prefix = prefix;
    info.Name = table.Name;
    info.Id = id;
    return info;
  }
};
static_assert(std::is_trivially_destructible_v<Catalogue>);

Catalogue& catalogue() {
  static Catalogue made;
  return made;
}

HyTypeInfo* given(Info& info) {
  Info::addReference(&info);
  return &info;
}

/// The interface of class i has the reference 2 i + 1, the class itself the one after it.
std::uint32_t interfaceReference(const ClassTable& table) {
  for (std::uint32_t i = 0; i < std::size(Classes); ++i)
    if (Classes[i] == &table) return 2 * i + 1;
  return 0;
}

template <class Action>
HyResult withInfo(HyTypeInfo* self, Action&& action) noexcept {
  if (self == nullptr) return HY_E_POINTER;
  return withoutThrowing([&] { return static_cast<HyResult>(action(*static_cast<Info*>(self))); });
}

HyResult getTypeAttr(HyTypeInfo* self, HyTypeAttr** attributes) noexcept {
  if (attributes == nullptr) return HY_E_POINTER;
  *attributes = nullptr;
  return withInfo(self, [&](const Info& info) {
    auto* made = static_cast<HyTypeAttr*>(std::calloc(1, sizeof(HyTypeAttr)));
    if (made == nullptr) return HY_E_OUTOFMEMORY;
    const bool isClass = info.Class != nullptr;
    made->guid = info.Id;
    made->memidConstructor = made->memidDestructor = HY_DISPID_UNKNOWN;
    made->typekind = isClass ? HY_TKIND_COCLASS : HY_TKIND_DISPATCH;
    made->wTypeFlags = isClass ? HY_TYPEFLAG_FCANCREATE : HY_TYPEFLAG_FDISPATCHABLE;
    made->cbSizeInstance = isClass ? 0 : sizeof(void*);
    made->cbSizeVft = isClass ? 0 : sizeof(HyDispatchVtable);
    made->cbAlignment = alignof(void*);
    made->wMajorVerNum = WRISTLOG_VERSION_MAJOR;
    made->wMinorVerNum = WRISTLOG_VERSION_MINOR;
    made->cFuncs = static_cast<std::uint16_t>(functionCount(info.Members));
    made->cImplTypes = static_cast<std::uint16_t>(info.PartCount);
    *attributes = made;
    return HY_S_OK;
  });
}

HyResult getTypeComp(HyTypeInfo*, void** comp) noexcept {
  if (comp != nullptr) *comp = nullptr;
  return HY_E_NOTIMPL;
}

HyResult getFuncDesc(HyTypeInfo* self, std::uint32_t index, HyFuncDesc** description) noexcept {
  if (description == nullptr) return HY_E_POINTER;
  *description = nullptr;
  return withInfo(self, [&](const Info& info) {
    *description = newFunctionDescription(info.Members, index, &interfaceReference);
    return *description != nullptr ? HY_S_OK : HY_TYPE_E_ELEMENTNOTFOUND;
  });
}

HyResult getVarDesc(HyTypeInfo*, std::uint32_t, void** description) noexcept {
  if (description == nullptr) return HY_E_POINTER;
  *description = nullptr;
  return HY_TYPE_E_ELEMENTNOTFOUND;
}

HyResult getNames(HyTypeInfo* self, std::int32_t number, HyString* names, std::uint32_t room,
                  std::uint32_t* count) noexcept {
  if (names == nullptr || count == nullptr) return HY_E_POINTER;
  *count = 0;
  return withInfo(self, [&](const Info& info) {
    const Member* member = memberOf(info.Members, number);
    if (member == nullptr) return HY_TYPE_E_ELEMENTNOTFOUND;
    try {
      for (; *count < room && *count <= member->Parameters.size(); ++*count)
        names[*count] = newString(*count == 0 ? member->Name : member->Parameters[*count - 1].Name);
    } catch (...) {
      while (*count > 0) hyStringFree(std::exchange(names[--*count], nullptr));
      throw;
    }
    return HY_S_OK;
  });
}

HyResult getRefTypeOfImplType(HyTypeInfo* self, std::uint32_t index, std::uint32_t* reference) noexcept {
  if (reference == nullptr) return HY_E_POINTER;
  *reference = 0;
  return withInfo(self, [&](const Info& info) {
    if (index >= info.PartCount) return HY_TYPE_E_ELEMENTNOTFOUND;
    *reference = info.Parts[index];
    return HY_S_OK;
  });
}

HyResult getImplTypeFlags(HyTypeInfo* self, std::uint32_t index, std::int32_t* flags) noexcept {
  if (flags == nullptr) return HY_E_POINTER;
  *flags = 0;
  return withInfo(self, [&](const Info& info) {
    if (index >= info.PartCount) return HY_TYPE_E_ELEMENTNOTFOUND;
    *flags = info.Class == nullptr ? 0
             : index == 0          ? HY_IMPLTYPEFLAG_FDEFAULT
                                   : HY_IMPLTYPEFLAG_FDEFAULT | HY_IMPLTYPEFLAG_FSOURCE;
    return HY_S_OK;
  });
}

HyResult getIdsOfNames(HyTypeInfo* self, std::uint16_t** names, std::uint32_t count,
                       std::int32_t* ids) noexcept {
  return withInfo(self, [&](const Info& info) { return findNames(info.Members, names, count, ids); });
}

HyResult invoke(HyTypeInfo* self, void* instance, std::int32_t number, std::uint16_t kinds,
                HyDispParams* params, HyVariant* result, HyExcepInfo* exception,
                std::uint32_t* argumentInError) noexcept {
  if (instance == nullptr) return HY_E_POINTER;
  return withInfo(self, [&](const Info& info) {
    if (memberOf(info.Members, number) == nullptr) return HY_DISP_E_MEMBERNOTFOUND;
    auto* object = static_cast<HyDispatch*>(instance);
    return object->lpVtbl->Invoke(object, number, &HY_GUID_NULL, 0, kinds, params, result, exception,
                                  argumentInError);
  });
}

HyResult getDocumentation(HyTypeInfo* self, std::int32_t number, HyString* name, HyString* text,
                          std::uint32_t* helpContext, HyString* helpFile) noexcept {
  if (name != nullptr) *name = nullptr;
  if (text != nullptr) *text = nullptr;
  if (helpContext != nullptr) *helpContext = 0;
  if (helpFile != nullptr) *helpFile = nullptr;
  return withInfo(self, [&](const Info& info) {
    const Member* member = memberOf(info.Members, number);
    if (member == nullptr && number != HY_DISPID_UNKNOWN) return HY_TYPE_E_ELEMENTNOTFOUND;
    if (name != nullptr)
      *name = newString(member != nullptr ? member->Name : std::string(info.Prefix) + info.Name);
    return HY_S_OK;
  });
}

HyResult getDllEntry(HyTypeInfo*, std::int32_t, std::int32_t, HyString* dll, HyString* name,
                     std::uint16_t* ordinal) noexcept {
  if (dll != nullptr) *dll = nullptr;
  if (name != nullptr) *name = nullptr;
  if (ordinal != nullptr) *ordinal = 0;
  return HY_E_NOTIMPL;
}

HyResult getRefTypeInfo(HyTypeInfo* self, std::uint32_t reference, HyTypeInfo** typeInfo) noexcept {
  if (typeInfo == nullptr) return HY_E_POINTER;
  *typeInfo = nullptr;
  return withInfo(self, [&](const Info&) {
    Info* info = catalogue().find(reference);
    if (info == nullptr) return HY_TYPE_E_ELEMENTNOTFOUND;
    *typeInfo = given(*info);
    return HY_S_OK;
  });
}

HyResult addressOfMember(HyTypeInfo*, std::int32_t, std::int32_t, void** address) noexcept {
  if (address != nullptr) *address = nullptr;
  return HY_E_NOTIMPL;
}

HyResult create(HyTypeInfo* self, HyUnknown* outer, const HyGuid* interfaceId, void** object) noexcept {
  if (object == nullptr) return HY_E_POINTER;
  *object = nullptr;
  return withInfo(self, [&](const Info& info) {
    return info.Class != nullptr ? createInstance(*info.Class, outer, interfaceId, object) : HY_E_NOTIMPL;
  });
}

HyResult getMops(HyTypeInfo*, std::int32_t, HyString* mops) noexcept {
  if (mops != nullptr) *mops = nullptr;
  return HY_E_NOTIMPL;
}

HyResult getContainingTypeLib(HyTypeInfo*, void** library, std::uint32_t* index) noexcept {
  if (library != nullptr) *library = nullptr;
  if (index != nullptr) *index = 0;
  return HY_E_NOTIMPL;
}

void releaseTypeAttr(HyTypeInfo*, HyTypeAttr* attributes) noexcept { std::free(attributes); }
void releaseFuncDesc(HyTypeInfo*, HyFuncDesc* description) noexcept { std::free(description); }
void releaseVarDesc(HyTypeInfo*, void*) noexcept {}

constexpr HyTypeInfoVtable TypeInfoVtable{Info::query<HY_IID_TYPE_INFO>,
                                          Info::addReference,
                                          Info::release,
                                          getTypeAttr,
                                          getTypeComp,
                                          getFuncDesc,
                                          getVarDesc,
                                          getNames,
                                          getRefTypeOfImplType,
                                          getImplTypeFlags,
                                          getIdsOfNames,
                                          invoke,
                                          getDocumentation,
                                          getDllEntry,
                                          getRefTypeInfo,
                                          addressOfMember,
                                          create,
                                          getMops,
                                          getContainingTypeLib,
                                          releaseTypeAttr,
                                          releaseFuncDesc,
                                          releaseVarDesc};

Catalogue::Catalogue() {
  for (const ClassTable* table : Classes) {
    add("_", *table, table->InterfaceId).Members = table->Members;
    Info& info = add("", *table, table->ClassId);
    info.Class = table;
    info.Parts[info.PartCount++] = Count - 1;
  }
  for (std::size_t i = 0; i < std::size(Classes); ++i) {
    if (!Classes[i]->DeclaresEvents) continue;
    add("__", *Classes[i], *Classes[i]->Points[0]).Members = Events;
    Info& info = All[2 * i + 1];
    info.Parts[info.PartCount++] = Count;
  }
  Info& plain = All[Count++];
  plain.Name = "HyDispatch";
  plain.Id = HY_IID_DISPATCH;
  for (Info& info : All)
    if (!info.Members.empty()) info.Parts[info.PartCount++] = Count;
  for (Info& info : All) info.lpVtbl = &TypeInfoVtable;
}

}  // namespace

HyTypeInfo* interfaceInfo(const ClassTable& table) {
  return given(*catalogue().find(interfaceReference(table)));
}

HyTypeInfo* classInfo(const ClassTable& table) {
  return given(*catalogue().find(interfaceReference(table) + 1));
}

}  // namespace hy_wristlog::component
