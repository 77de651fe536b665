#include "component_support.h"

namespace hy_wristlog::host {
namespace {

HyTypeAttr attributesOf(HyTypeInfo* info) {
  HyTypeAttr* attributes = nullptr;
  EXPECT_EQ(info->lpVtbl->GetTypeAttr(info, &attributes), HY_S_OK);
  const HyTypeAttr copy = *attributes;
  info->lpVtbl->ReleaseTypeAttr(info, attributes);
  return copy;
}

std::string nameOf(HyTypeInfo* info, int32_t member = HY_DISPID_UNKNOWN) {
  HyString name = nullptr;
  EXPECT_EQ(info->lpVtbl->GetDocumentation(info, member, &name, nullptr, nullptr, nullptr), HY_S_OK);
  return taken(name);
}

std::string typeText(HyTypeInfo* info, const HyTypeDesc& type) {
  if (type.vt == HY_VT_PTR) return typeText(info, *type.lptdesc) + "*";
  if (type.vt != HY_VT_USERDEFINED) return std::to_string(type.vt);
  Ref<HyTypeInfo> other;
  EXPECT_EQ(info->lpVtbl->GetRefTypeInfo(info, type.hreftype, other.receive()), HY_S_OK);
  return nameOf(other.get());
}

/// "name(type name flags, ...) type" of each function.
std::vector<std::string> functionsOf(HyTypeInfo* info) {
  std::vector<std::string> all;
  for (uint32_t i = 0; i < attributesOf(info).cFuncs; ++i) {
    HyFuncDesc* function = nullptr;
    EXPECT_EQ(info->lpVtbl->GetFuncDesc(info, i, &function), HY_S_OK);
    HyString names[20];
    uint32_t count = 0;
    EXPECT_EQ(info->lpVtbl->GetNames(info, function->memid, names, 20, &count), HY_S_OK);
    std::string text = std::to_string(function->invkind) + " " + taken(names[0]) + "(";
    EXPECT_TRUE(count == static_cast<uint32_t>(function->cParams) + 1 || function->invkind == 4);
    for (int16_t p = 0; p < function->cParams; ++p) {
      const HyElemDesc& parameter = function->lprgelemdescParam[p];
      text += typeText(info, parameter.tdesc) + " " + std::to_string(parameter.paramdesc.wParamFlags) + " " +
              (p + 1U < count ? taken(names[p + 1]) : "") + ", ";
      EXPECT_EQ((parameter.paramdesc.wParamFlags & HY_PARAMFLAG_FOPT) != 0,
                p >= function->cParams - function->cParamsOpt);
    }
    all.push_back(text + ") " + typeText(info, function->elemdescFunc.tdesc));
    info->lpVtbl->ReleaseFuncDesc(info, function);
  }
  HyFuncDesc* beyond = nullptr;
  EXPECT_EQ(info->lpVtbl->GetFuncDesc(info, static_cast<uint32_t>(all.size()), &beyond),
            HY_TYPE_E_ELEMENTNOTFOUND);
  return all;
}

TEST(TypeInfo, TellsTheMembersOfMain) {
  const auto main = make(HY_CLSID_MAIN);
  Ref<HyTypeInfo> info;
  ASSERT_EQ(main->GetTypeInfo(main.get(), 0, 0, info.receive()), HY_S_OK);
  const std::vector<std::string> expected = {
      "2 MaxCommunicationRetries() 2",
      "4 MaxCommunicationRetries(2 1 , ) 24",
      "2 Version() 8",
      "2 LegacyClearMemoryOnConfigure() 11",
      "4 LegacyClearMemoryOnConfigure(11 1 , ) 24",
      "2 LegacyCOMport() 2",
      "1 Configure(3 1 LoggerType, 3 1 AcquisitionMode, 3 1 EpochLength, _Class_Subject* 1 Subject, "
      "8 17 TimeZoneAbbrev, 11 17 AutoDSTadjust, 3 17 LoggerLocalSetTime, 3 17 DataCollectionLocalStartTime, "
      "3 17 DataCollectionLocalEndTime, 3 17 DateFormat, 3 17 TimeFormat, 4* 18 BatteryLifeRemaining, "
      "8* 18 DeviceSerialNumber, ) 3",
      "1 LoggerSecondsToDate(3 1 LoggerSeconds1970, ) 7",
      "1 DateToLoggerSeconds(7 1 TheDate, ) 3",
      "1 GetStatus(3 1 LoggerType, 8* 2 SimpleStatus, 8* 2 LongStatus, _Class_VardenLogger** 2 KestrinData, "
      "_Class_Subject** 2 Subject, 4* 18 BatteryLifeRemaining, ) 3",
      "1 Retrieve(3 1 LoggerType, _Class_VardenLogger** 2 KestrinData, _Class_Subject** 3 Subject, "
      "3* 2 DecodeResult, 11* 18 LowBatteryDetected, 8* 18 XMLfilePath, 11 17 IgnoreWarnings, "
      "11 17 ReconfigureAfterRetrieve, 11 17 AppendData, ) 3",
      "1 AbortComms() 24",
      "2 WakeOnInput() 11",
      "4 WakeOnInput(11 1 , ) 24",
      "1 CodeName(3 1 Code, ) 8",
      "1 CodeMeaning(3 1 Code, 3 17 LoggerType, ) 8",
      "1 ResultName(3 1 Result, ) 8",
      "1 ResultMeaning(3 1 Result, ) 8",
      "2 DockNames() 12",
      "1 NamesOfDock(8 1 Name, ) 12",
      "1 ModelOfDock(8 1 Name, ) 3",
      "1 PortOfDock(8 1 Name, ) 3",
      "1 UseDock(8 1 Name, ) 24",
      "1 UseDevice(8 1 Device, 3 1 LoggerType, ) 24",
      "2 DockInUse() 8"};
  EXPECT_EQ(functionsOf(info.get()), expected);

  // It calls, finds names, and makes objects like the object itself.
  std::u16string name = u"version";
  auto* names = reinterpret_cast<uint16_t*>(name.data());
  int32_t id = 0;
  EXPECT_EQ(info->GetIDsOfNames(info.get(), &names, 1, &id), HY_S_OK);
  HyDispParams params{};
  Value version;
  EXPECT_EQ(
      info->Invoke(info.get(), main.get(), id, HY_DISPATCH_PROPERTYGET, &params, &version, nullptr, nullptr),
      HY_S_OK);
  EXPECT_EQ(version.text(), get(main.get(), "Version").text());
  HyString few[2];
  uint32_t count = 9;
  EXPECT_EQ(info->GetNames(info.get(), 99, few, 2, &count), HY_TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(main->GetTypeInfo(main.get(), 1, 0, info.receive()), HY_DISP_E_BADINDEX);
}

/// Hosts keep the numbers of members, so those of today stay; new members follow them.
TEST(TypeInfo, MembersKeepTheirNumbers) {
  const std::tuple<HyGuid, int32_t, uint32_t> cases[] = {{HY_CLSID_MAIN, 10, 0x665553EA},
                                                         {HY_CLSID_VARDEN_LOGGER, 69, 0xC47970B9},
                                                         {HY_CLSID_PENDREL, 26, 0xB06FE552},
                                                         {HY_CLSID_SUBJECT, 8, 0xA635D8DE}};
  for (const auto& [classId, count, expected] : cases) {
    const auto object = make(classId);
    Ref<HyTypeInfo> info;
    ASSERT_EQ(object->GetTypeInfo(object.get(), 0, 0, info.receive()), HY_S_OK);
    std::string names;
    for (int32_t number = 1; number <= count; ++number) names += nameOf(info.get(), number) + ' ';
    uint32_t sum = 0;
    for (const char letter : names) sum = sum * 31 + static_cast<uint8_t>(letter);
    EXPECT_EQ(sum, expected) << names << "\nThe tables of members (*.inc) only grow at their ends.";
  }
}

/// What a class or an interface consists of, with its flags; null past the last part.
Ref<HyTypeInfo> partOf(HyTypeInfo* info, uint32_t part, int32_t flags) {
  Ref<HyTypeInfo> found;
  uint32_t reference = 0;
  int32_t told = -1;
  if (info->lpVtbl->GetRefTypeOfImplType(info, part, &reference) != HY_S_OK) return found;
  EXPECT_EQ(info->lpVtbl->GetImplTypeFlags(info, part, &told), HY_S_OK);
  EXPECT_EQ(told, flags);
  EXPECT_EQ(info->lpVtbl->GetRefTypeInfo(info, reference, found.receive()), HY_S_OK);
  return found;
}

TEST(TypeInfo, LeadsFromAClassToItsInterfaceAndEvents) {
  const std::tuple<HyGuid, HyGuid, const HyGuid*, const char*> cases[] = {
      {HY_CLSID_MAIN, HY_IID_MAIN, nullptr, "Class_Main"},
      {HY_CLSID_VARDEN_LOGGER, HY_IID_VARDEN_LOGGER, &HY_DIID_VARDEN_LOGGER_EVENTS, "Class_VardenLogger"},
      {HY_CLSID_PENDREL, HY_IID_PENDREL, &HY_DIID_PENDREL_EVENTS, "Class_Pendrel"},
      {HY_CLSID_SUBJECT, HY_IID_SUBJECT, nullptr, "Class_Subject"}};
  const auto is = [](HyTypeInfo* info, const HyGuid& id) {
    const HyGuid own = attributesOf(info).guid;
    return memcmp(&own, &id, sizeof id) == 0;
  };
  for (const auto& [classId, interfaceId, eventsId, name] : cases) {
    SCOPED_TRACE(name);
    const auto object = make(classId);
    const auto provider = query<HyProvideClassInfo>(object.get(), HY_IID_PROVIDE_CLASS_INFO);
    Ref<HyTypeInfo> info;
    provider->GetClassInfo(provider.get(), info.receive());
    EXPECT_EQ(nameOf(info.get()), name);
    EXPECT_TRUE(is(info.get(), classId));
    EXPECT_EQ(attributesOf(info.get()).typekind, HY_TKIND_COCLASS);
    const uint32_t parts = eventsId != nullptr ? 2 : 1;
    ASSERT_EQ(attributesOf(info.get()).cImplTypes, parts);
    EXPECT_EQ(partOf(info.get(), parts, 0).get(), nullptr);
    for (uint32_t part = 0; part < parts; ++part) {
      const auto described = partOf(info.get(), part, part == 0 ? 1 : 3);
      EXPECT_TRUE(is(described.get(), part == 0 ? interfaceId : *eventsId));
      const std::vector<std::string> events = {"1 CommEventError(3 1 ErrorNum, 8* 3 ErrorDescription, ) 24",
                                               "1 CommProgress(8* 3 ProgressText, ) 24",
                                               "1 AbortAcknowledged() 24"};
      EXPECT_EQ(functionsOf(described.get()) == events, part == 1);
      const auto base = partOf(described.get(), 0, 0);
      EXPECT_TRUE(is(base.get(), HY_IID_DISPATCH));
      EXPECT_EQ(partOf(base.get(), 0, 0).get(), nullptr);
    }
    void* made = nullptr;
    EXPECT_EQ(info->CreateInstance(info.get(), nullptr, &interfaceId, &made), HY_S_OK);
    auto* another = static_cast<HyDispatch*>(made);
    EXPECT_EQ(another->lpVtbl->Release(another), 0U);
  }
}

}  // namespace
}  // namespace hy_wristlog::host
