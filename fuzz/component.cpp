// The component: members of its classes invoked with arguments of any kind, in a simulated world without
// docks.
#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <iterator>
#include <string>

#include "base/code_page.h"
#include "hy_wristlog/component.h"
#include "simulator/simulated_world.h"
#include "support/fuzz.h"
#include "support/in_world.h"
#include "support/quiet_machine.h"
#include "support/script.h"

namespace hy_wristlog::fuzz {
namespace {

constexpr std::string_view Lines[] = {
    "make #",
    "invoke # # 1",
    "invoke # # 2",
    "invoke # # 3 i4:#",
    "put # # i4:#",
    "put # # r8:1e#",
    "put # # text:abc",
    "put # # ref:#",
    "put # # date:#",
    "invoke # 1 1 i4:3 i4:# i4:60 object:# text:EST bool:# i4:0 i4:0 i4:0 i4:1 i4:1 ref:1 ref:2",
    "invoke # 8 1 i4:# ref:1 ref:2 ref:3 ref:4 ref:5",
    "invoke # # 1 missing i4:# named:#",
    "set # array:# ",
    "set # i2:#",
    "name # AcquisitionMode",
    "info # #",
    "documentation # #",
    "query # # #",
    "points #",
    "take # #",
    "release #"};

constexpr std::size_t MostObjects = 8, Variables = 8, MostCalls = 200;
const HyGuid Classes[] = {HY_CLSID_MAIN, HY_CLSID_VARDEN_LOGGER, HY_CLSID_PENDREL, HY_CLSID_SUBJECT};
const HyGuid Interfaces[] = {HY_IID_UNKNOWN,
                             HY_IID_DISPATCH,
                             HY_IID_MAIN,
                             HY_IID_VARDEN_LOGGER,
                             HY_IID_PENDREL,
                             HY_IID_SUBJECT,
                             HY_IID_CONNECTION_POINT_CONTAINER,
                             HY_IID_PROVIDE_CLASS_INFO,
                             HY_IID_TYPE_INFO,
                             HY_GUID_NULL,
                             HY_IID_SERIES_READER};

constexpr HyResult KnownResults[] = {HY_S_OK,
                                     HY_S_FALSE,
                                     HY_E_NOTIMPL,
                                     HY_E_NOINTERFACE,
                                     HY_E_POINTER,
                                     HY_E_INVALIDARG,
                                     HY_DISP_E_UNKNOWNINTERFACE,
                                     HY_DISP_E_MEMBERNOTFOUND,
                                     HY_DISP_E_PARAMNOTFOUND,
                                     HY_DISP_E_TYPEMISMATCH,
                                     HY_DISP_E_UNKNOWNNAME,
                                     HY_DISP_E_NONAMEDARGS,
                                     HY_DISP_E_BADVARTYPE,
                                     HY_DISP_E_EXCEPTION,
                                     HY_DISP_E_OVERFLOW,
                                     HY_DISP_E_BADINDEX,
                                     HY_DISP_E_BADPARAMCOUNT,
                                     HY_DISP_E_PARAMNOTOPTIONAL,
                                     HY_TYPE_E_ELEMENTNOTFOUND};

HyResult known(HyResult result) {
  if (std::find(std::begin(KnownResults), std::end(KnownResults), result) == std::end(KnownResults))
    finding("an unknown result, " + std::to_string(result));
  return result;
}

HyString newString(std::string_view utf8) {
  const std::u16string units = utf16FromUtf8(utf8).value_or(std::u16string(utf8.begin(), utf8.end()));
  return hyStringAllocate(reinterpret_cast<const std::uint16_t*>(units.data()),
                          static_cast<std::uint32_t>(units.size()));
}

/// A host that does what a script says. It keeps what it was given, and gives all of it back at the end.
class Script {
 public:
  ~Script() {
    for (HyVariant& variable : variables_) hyVariantClear(&variable);
    for (HyDispatch* object : objects_)
      if (object != nullptr) object->lpVtbl->Release(object);
  }

  void obey(const Line& line) {
    if (line.is("make")) return make(static_cast<std::size_t>(line.number(1, 0, 3)));
    if (line.is("set")) {
      HyVariant& variable = variables_[index(line, 1, Variables)];
      hyVariantClear(&variable);
      std::deque<HyVariant> values;
      variable = value(line.word(2), values);
      // A variable must own what it holds.
      if (variable.vt & HY_VT_BYREF) variable = HyVariant{};
      return;
    }
    HyDispatch* object = objects_[index(line, 1, MostObjects)];
    if (object == nullptr) return;
    if (line.is("invoke")) invoke(object, line, static_cast<std::uint16_t>(line.number(3)), 4);
    if (line.is("put")) put(object, line);
    if (line.is("name")) name(object, line);
    if (line.is("info")) info(object, line);
    if (line.is("documentation")) documentation(object, line);
    if (line.is("query")) query(object, line);
    if (line.is("points")) points(object);
    if (line.is("take")) take(line);
    if (line.is("release")) {
      object->lpVtbl->Release(object);
      objects_[index(line, 1, MostObjects)] = nullptr;
    }
  }

 private:
  static std::size_t index(const Line& line, std::size_t word, std::size_t bound) {
    return static_cast<std::size_t>(line.number(word, 0)) % bound;
  }

  void make(std::size_t which) {
    const auto free = std::find(objects_.begin(), objects_.end(), nullptr);
    if (free == objects_.end()) return;
    void *factory = nullptr, *object = nullptr;
    require(DllGetClassObject(&Classes[which], &HY_IID_CLASS_FACTORY, &factory) == HY_S_OK,
            "no class factory");
    auto* maker = static_cast<HyClassFactory*>(factory);
    require(maker->lpVtbl->CreateInstance(maker, nullptr, &HY_IID_DISPATCH, &object) == HY_S_OK, "no object");
    maker->lpVtbl->Release(maker);
    *free = static_cast<HyDispatch*>(object);
  }

  /// "i4:5", "text:abc", "ref:2" for a variable, "object:1"; `owned` keeps what a reference points to.
  HyVariant value(std::string_view word, std::deque<HyVariant>& owned) {
    const std::size_t colon = std::min(word.find(':'), word.size());
    const std::string_view kind = word.substr(0, colon);
    const std::string argument = "value " + std::string(word.substr(std::min(colon + 1, word.size())));
    const Line rest(argument);
    const std::int64_t number = rest.number(1);
    HyVariant variant{};
    const auto of = [&](int type) {
      variant.vt = static_cast<std::uint16_t>(type);
      variant.llVal = number;
    };
    static constexpr std::pair<std::string_view, int> Whole[] = {
        {"i1", HY_VT_I1},     {"i2", HY_VT_I2},           {"i4", HY_VT_I4},     {"i8", HY_VT_I8},
        {"ui1", HY_VT_UI1},   {"ui2", HY_VT_UI2},         {"ui4", HY_VT_UI4},   {"ui8", HY_VT_UI8},
        {"cy", HY_VT_CY},     {"error", HY_VT_ERROR},     {"null", HY_VT_NULL}, {"int", HY_VT_INT},
        {"uint", HY_VT_UINT}, {"decimal", HY_VT_DECIMAL}, {"void", HY_VT_VOID}};
    for (const auto& [name, type] : Whole)
      if (kind == name) of(type);
    if (kind == "bool") of(HY_VT_BOOL);
    if (kind == "missing") of(HY_VT_ERROR), variant.scode = HY_DISP_E_PARAMNOTFOUND;
    if (kind == "r4") of(HY_VT_R4), variant.llVal = 0, variant.fltVal = static_cast<float>(rest.real(1));
    if (kind == "r8") of(HY_VT_R8), variant.dblVal = rest.real(1);
    if (kind == "date") of(HY_VT_DATE), variant.dblVal = rest.real(1);
    if (kind == "text") of(HY_VT_BSTR), variant.bstrVal = newString(rest.text());
    // Kinds that no value has; what they hold is of no meaning.
    if (kind == "kind" && !isKnownKind(number)) of(static_cast<int>(number & HY_VT_TYPEMASK));
    if (kind == "object" || kind == "unknown") {
      HyDispatch* object = objects_[static_cast<std::uint64_t>(number) % MostObjects];
      of(kind == "object" ? HY_VT_DISPATCH : HY_VT_UNKNOWN);
      variant.pdispVal = object;
      if (object != nullptr) object->lpVtbl->AddRef(object);
    }
    if (kind == "array")
      of(HY_VT_ARRAY | HY_VT_VARIANT),
          variant.parray = array(static_cast<std::uint32_t>(rest.number(1, 0, 300)));
    if (kind == "ref") {
      of(HY_VT_BYREF | HY_VT_VARIANT);
      variant.pvarVal = &variables_[static_cast<std::uint64_t>(number) % Variables];
    }
    if (kind == "nowhere")
      of(HY_VT_BYREF | static_cast<int>(number & HY_VT_TYPEMASK)), variant.byref = nullptr;
    // "to-i2:5": a reference to a variable of that type.
    if (kind.starts_with("to-")) {
      HyVariant& target = owned.emplace_back(value(word.substr(3), owned));
      if (!(target.vt & HY_VT_BYREF) && target.vt != HY_VT_DECIMAL) {
        variant.vt = static_cast<std::uint16_t>(target.vt | HY_VT_BYREF);
        variant.byref = &target.llVal;
      }
    }
    return variant;
  }
  static bool isKnownKind(std::int64_t number) {
    switch (number & HY_VT_TYPEMASK) {
      case HY_VT_BSTR:
      case HY_VT_DISPATCH:
      case HY_VT_UNKNOWN:
      case HY_VT_SAFEARRAY:
        return true;
      default:
        return false;
    }
  }
  static HyArray* array(std::uint32_t count) {
    auto* array = static_cast<HyArray*>(std::calloc(1, sizeof(HyArray)));
    array->cDims = 1;
    array->fFeatures = HY_FADF_VARIANT;
    array->cbElements = sizeof(HyVariant);
    array->rgsabound[0] = {count, 0};
    array->pvData = std::calloc(count + 1, sizeof(HyVariant));
    for (std::uint32_t i = 0; i < count; ++i) {
      auto* const element = static_cast<HyVariant*>(array->pvData) + i;
      element->vt = HY_VT_I4;
      element->lVal = static_cast<std::int32_t>(i);
    }
    return array;
  }

  HyResult invoke(HyDispatch* object, std::int32_t member, std::uint16_t flags,
                  std::vector<HyVariant>& arguments, std::vector<std::int32_t>& named) {
    HyDispParams params{arguments.data(), named.data(), static_cast<std::uint32_t>(arguments.size()),
                        static_cast<std::uint32_t>(named.size())};
    HyVariant answer{};
    HyExcepInfo exception{};
    std::uint32_t argument = 0;
    const HyResult result = known(object->lpVtbl->Invoke(object, member, &HY_GUID_NULL, 0, flags, &params,
                                                         &answer, &exception, &argument));
    if (result == HY_DISP_E_EXCEPTION) {
      const std::int32_t number = exception.scode - HY_FAILURE_BASE;
      if (!isNamed(number) || number == FailureNumber::Internal)
        finding("failure " + std::to_string(number) + " of a member");
    }
    hyStringFree(exception.bstrSource);
    hyStringFree(exception.bstrDescription);
    hyStringFree(exception.bstrHelpFile);
    hyVariantClear(&variables_[0]);
    variables_[0] = answer;
    ++calls_;
    reached(result == HY_S_OK ? "calls that succeeded" : "calls that were refused", 1);
    return result;
  }
  void invoke(HyDispatch* object, const Line& line, std::uint16_t flags, std::size_t firstWord) {
    std::vector<HyVariant> arguments;
    std::vector<std::int32_t> named;
    std::deque<HyVariant> owned;
    for (std::size_t i = firstWord; i < line.words(); ++i) {
      if (line.word(i).starts_with("named:"))
        named.push_back(
            static_cast<std::int32_t>(Line("n " + std::string(line.word(i).substr(6))).number(1)));
      else
        arguments.push_back(value(line.word(i), owned));
    }
    named.resize(std::min(named.size(), arguments.size()));
    std::reverse(arguments.begin(), arguments.end());
    invoke(object, static_cast<std::int32_t>(line.number(2)), flags, arguments, named);
    for (HyVariant& argument : arguments) hyVariantClear(&argument);
    for (HyVariant& variable : owned) hyVariantClear(&variable);
  }

  /// What a property was given it gives back, and takes again.
  void put(HyDispatch* object, const Line& line) {
    const auto member = static_cast<std::int32_t>(line.number(2));
    std::deque<HyVariant> owned;
    std::vector<HyVariant> given{value(line.word(3), owned)}, none;
    std::vector<std::int32_t> newValue{HY_DISPID_PROPERTYPUT}, unnamed;
    const bool stored = invoke(object, member, HY_DISPATCH_PROPERTYPUT, given, newValue) == HY_S_OK;
    hyVariantClear(given.data());
    for (HyVariant& variable : owned) hyVariantClear(&variable);
    if (!stored || invoke(object, member, HY_DISPATCH_PROPERTYGET, none, unnamed) != HY_S_OK) return;
    given[0] = std::exchange(variables_[0], HyVariant{});
    require(invoke(object, member, HY_DISPATCH_PROPERTYPUT, given, newValue) == HY_S_OK,
            "a property refuses its own value");
    hyVariantClear(given.data());
  }

  void name(HyDispatch* object, const Line& line) {
    const HyString text = newString(line.word(2));
    std::uint16_t* names[] = {text, text};
    std::int32_t ids[2] = {};
    known(object->lpVtbl->GetIDsOfNames(object, &HY_GUID_NULL, names, 1 + line.words() % 2, 0, ids));
    hyStringFree(text);
  }

  HyTypeInfo* infoOf(HyDispatch* object, std::uint32_t which = 0) {
    HyTypeInfo* info = nullptr;
    known(object->lpVtbl->GetTypeInfo(object, which, 0, &info));
    return info;
  }
  void info(HyDispatch* object, const Line& line) {
    HyTypeInfo* info = infoOf(object);
    HyFuncDesc* description = nullptr;
    if (known(info->lpVtbl->GetFuncDesc(info, static_cast<std::uint32_t>(line.number(2)), &description)) ==
        HY_S_OK) {
      HyString names[16] = {};
      std::uint32_t count = 0;
      known(info->lpVtbl->GetNames(info, description->memid, names, std::size(names), &count));
      for (const HyString text : names) hyStringFree(text);
      info->lpVtbl->ReleaseFuncDesc(info, description);
    }
    HyTypeInfo* other = nullptr;
    known(info->lpVtbl->GetRefTypeInfo(info, static_cast<std::uint32_t>(line.number(2)), &other));
    if (other != nullptr) other->lpVtbl->Release(other);
    info->lpVtbl->Release(info);
  }
  void documentation(HyDispatch* object, const Line& line) {
    HyTypeInfo* info = infoOf(object);
    HyString name = nullptr, text = nullptr, file = nullptr;
    std::uint32_t help = 0;
    known(info->lpVtbl->GetDocumentation(info, static_cast<std::int32_t>(line.number(2)), &name, &text, &help,
                                         &file));
    for (const HyString string : {name, text, file}) hyStringFree(string);
    info->lpVtbl->Release(info);
  }
  void query(HyDispatch* object, const Line& line) {
    void* found = nullptr;
    const HyGuid& asked = Interfaces[index(line, 2, std::size(Interfaces))];
    if (known(object->lpVtbl->QueryInterface(object, &asked, &found)) != HY_S_OK) return;
    if (&asked == std::end(Interfaces) - 1) {
      auto* reader = static_cast<HySeriesReader*>(found);
      HyVariant series{};
      known(reader->lpVtbl->ReadSeries(reader, static_cast<std::int32_t>(line.number(3)), &series));
      hyVariantClear(&series);
    }
    static_cast<HyUnknown*>(found)->lpVtbl->Release(static_cast<HyUnknown*>(found));
  }
  void points(HyDispatch* object) {
    void* found = nullptr;
    if (object->lpVtbl->QueryInterface(object, &HY_IID_CONNECTION_POINT_CONTAINER, &found) != HY_S_OK) return;
    auto* container = static_cast<HyConnectionPointContainer*>(found);
    HyEnumConnectionPoints* list = nullptr;
    if (container->lpVtbl->EnumConnectionPoints(container, &list) == HY_S_OK) list->lpVtbl->Release(list);
    container->lpVtbl->Release(container);
  }
  /// An object that a call has handed out becomes one of the host's.
  void take(const Line& line) {
    HyVariant& variable = variables_[index(line, 2, Variables)];
    const auto free = std::find(objects_.begin(), objects_.end(), nullptr);
    if (variable.vt != HY_VT_DISPATCH || variable.pdispVal == nullptr || free == objects_.end()) return;
    *free = std::exchange(variable, HyVariant{}).pdispVal;
  }

  std::array<HyDispatch*, MostObjects> objects_{};
  std::array<HyVariant, Variables> variables_{};
  std::size_t calls_ = 0;
};

}  // namespace

const std::span<const std::string_view> Grammar = Lines;

void run(std::string_view text) {
  simulator::WorldOptions options;
  options.Inner = std::make_shared<QuietMachine>();
  options.RootFolder = "/tmp/wristlog-fuzz";
  const InWorld<simulator::SimulatedWorld> world(options);
  {
    Script script;
    const auto lines = linesOf(text);
    for (std::size_t i = 0; i < std::min(lines.size(), MostCalls); ++i) script.obey(lines[i]);
  }
  require(DllCanUnloadNow() == HY_S_OK, "an object is left");
}

}  // namespace hy_wristlog::fuzz
