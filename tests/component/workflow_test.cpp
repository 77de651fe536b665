#include "base/dates.h"
#include "component_support.h"
#include "hy_wristlog/failure_numbers.h"
#include "simulator/bench.h"

namespace hy_wristlog::host {
namespace {

using namespace std::chrono_literals;

constexpr int32_t Vivid = 0, ActivityAndSpecialLight = 5;

/// A host with a Kestrin Vivid in its dock.
struct Desk {
  explicit Desk(const simulator::BenchOptions& options = simulator::vividBenchOptions())
      : bench(simulator::makeBench(options)), scope(bench.World), main(make(HY_CLSID_MAIN)) {}

  simulator::Bench bench;
  platform::WorldScope scope;
  Ref<HyDispatch> main;

  void record(simulator::nanoseconds worn = 20min) const {
    bench.Logger->setUp(ordinarySetup(*bench.World, simulator::Mode::Activity, 30));
    bench.Logger->wear(worn, {});
  }
  Outcome retrieve(Value& data, Value& subject, Value& verdict) const {
    return callMethod(main.get(), "Retrieve", number(Vivid), byRef(&data), byRef(&subject), byRef(&verdict));
  }
};

Value newSubject() {
  const auto subject = make(HY_CLSID_SUBJECT);
  put(subject.get(), "Identity", text("Jane"));
  put(subject.get(), "GUID", text("0123456789ABCDEF0123456789ABCDEF"));
  put(subject.get(), "Gender", text("f"));
  put(subject.get(), "DOB", real(dateSerial(1984, 5, 6), HY_VT_DATE));
  put(subject.get(), "Weight", single(70.1F));
  put(subject.get(), "Height", single(168.5F));
  return objectValue(subject.get());
}

TEST(Workflows, ConfigureAskAndRetrieveThroughDispatch) {
  const Desk desk;
  const Value subject = newSubject();
  float battery = -7;
  Value serial;
  const Outcome configured =
      callMethod(desk.main.get(), "Configure", number(Vivid), number(ActivityAndSpecialLight), text("30"),
                 subject, text("EST"), boolean(true), missing(), missing(), missing(), number(1), number(2),
                 byRef(HY_VT_R4, &battery), byRef(&serial));
  ASSERT_EQ(configured.Result, HY_S_OK) << configured.Argument;
  ASSERT_EQ(configured.Answer.vt, HY_VT_I4);
  ASSERT_EQ(configured.Answer.lVal, 0);
  EXPECT_GT(battery, 300);
  EXPECT_FALSE(serial.text().empty());
  desk.bench.Logger->wear(30min, {});

  HyString simple = newString(u"what was here before");
  Value words = text("this too"), data = number(3), who;
  const Outcome asked = callMethod(desk.main.get(), "GetStatus", number(Vivid), byRef(HY_VT_BSTR, &simple),
                                   byRef(&words), byRef(&data), byRef(&who));
  ASSERT_EQ(asked.Answer.lVal, 0);
  EXPECT_EQ(taken(simple), "Collecting Data");
  EXPECT_EQ(words.text(), "Collecting Data");
  ASSERT_EQ(who.vt, HY_VT_DISPATCH);
  EXPECT_EQ(get(who.pdispVal, "Identity").text(), "Jane");
  ASSERT_EQ(data.vt, HY_VT_DISPATCH);
  HyDispatch* const former = data.pdispVal;
  EXPECT_EQ(get(former, "SerialNumber").text(), serial.text());
  EXPECT_EQ(get(former, "ActivityArray").vt, HY_VT_EMPTY);

  Value own = newSubject(), verdict;
  HyDispatch* const own_object = own.pdispVal;
  put(own_object, "Identity", text("overwritten"));
  int16_t low = HY_TRUE;
  const Outcome retrieved =
      callMethod(desk.main.get(), "Retrieve", number(Vivid), byRef(&data),
                 byRef(HY_VT_DISPATCH, &own.pdispVal), byRef(&verdict), byRef(HY_VT_BOOL, &low));
  ASSERT_EQ(retrieved.Answer.lVal, 0);
  EXPECT_EQ(verdict.vt, HY_VT_I4);
  EXPECT_EQ(verdict.lVal, 0);
  EXPECT_EQ(low, HY_FALSE);
  EXPECT_EQ(own.pdispVal, own_object);
  EXPECT_EQ(get(own_object, "Identity").text(), "Jane");
  EXPECT_NE(data.pdispVal, former);
  HyDispatch* const logger = data.pdispVal;
  const auto samples = static_cast<uint32_t>(get(logger, "Samples").lVal);
  EXPECT_GT(samples, 50U);
  const std::tuple<const char*, int, int> arrays[] = {{"ActivityArray", HY_VT_I4, HY_VT_I4},
                                                      {"LightArray", HY_VT_R4, HY_VT_R4},
                                                      {"WristStatusArray", HY_VT_BOOL, HY_VT_BOOL},
                                                      {"MarkerArray", HY_VT_BOOL, HY_VT_EMPTY}};
  for (const auto& [name, type, other] : arrays) {
    const Value array = get(logger, name);
    ASSERT_EQ(array.vt, HY_VT_ARRAY | HY_VT_VARIANT) << name;
    ASSERT_EQ(array.parray->rgsabound[0].cElements, samples);
    EXPECT_EQ(array.parray->rgsabound[0].lLbound, 0);
    for (uint32_t i = 0; i < samples; ++i) EXPECT_TRUE(array.at(i).vt == type || array.at(i).vt == other);
  }
  const Value red = get(logger, "RedLightArray");
  ASSERT_EQ(red.vt, HY_VT_ARRAY | HY_VT_VARIANT);
  EXPECT_EQ(red.parray->rgsabound[0].lLbound, -1);
  EXPECT_EQ(red.parray->rgsabound[0].cElements, 1U);

  const Value block = get(logger, "ConfigBlock"), raw = get(logger, "RawData");
  EXPECT_EQ(raw.parray->rgsabound[0].cElements, static_cast<uint32_t>(get(logger, "BytesInLogger").lVal));
  EXPECT_EQ(raw.at(0).vt, HY_VT_UI1);
  EXPECT_EQ(get(logger, "EventTimes").at(0).vt, HY_VT_DATE);
  EXPECT_EQ(get(logger, "EventTexts").at(0).vt, HY_VT_BSTR);
  const auto saved = make(HY_CLSID_VARDEN_LOGGER);
  int16_t lowAgain = HY_TRUE;
  const Outcome decoded =
      callMethod(saved.get(), "DecodeRecording", block, raw, missing(), byRef(HY_VT_BOOL, &lowAgain));
  EXPECT_EQ(decoded.Answer.lVal, 0);
  EXPECT_EQ(lowAgain, HY_FALSE);
  EXPECT_EQ(get(saved.get(), "Samples").lVal, static_cast<int32_t>(samples));
  EXPECT_EQ(callMethod(saved.get(), "DecodeRecording", block, number(1)).Argument, 0U);
}

TEST(Workflows, ArgumentsMayBeNamed) {
  const Desk desk;
  // Epoch, mode, subject and model by name, in an order of their own.
  Value subject = newSubject();
  HyVariant given[] = {number(77), number(1), subject, number(1)};
  int32_t names[] = {2, 1, 3, 0};
  const auto call = [&](HyDispParams params) {
    return invoke(desk.main.get(), idOf(desk.main.get(), "Configure"), HY_DISPATCH_METHOD, params);
  };
  EXPECT_EQ(call({given, names, 4, 4}).Answer.lVal, ReturnCode::WrongEpoch);
  // The model by its place, after the named ones.
  EXPECT_EQ(call({given, names, 4, 3}).Answer.lVal, ReturnCode::WrongEpoch);

  std::u16string words[] = {u"configure", u"EPOCHLENGTH", u"nothing"};
  uint16_t* pointers[3];
  for (int i = 0; i < 3; ++i) pointers[i] = reinterpret_cast<uint16_t*>(words[i].data());
  int32_t ids[3];
  EXPECT_EQ(desk.main->GetIDsOfNames(desk.main.get(), nullptr, pointers, 3, 0, ids), HY_DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids[1], 2);
  EXPECT_EQ(ids[2], HY_DISPID_UNKNOWN);

  int32_t unknown[] = {2, 1, 3, 13}, twice[] = {2, 2, 3, 0}, taken[] = {0, 1, 3};
  HyVariant absent[] = {number(30), number(1), missing(), number(Vivid)};
  // clang-format off
  const std::tuple<HyDispParams, HyResult, uint32_t> bad[] = {
      {{given, unknown, 4, 4}, HY_DISP_E_PARAMNOTFOUND, 3}, {{given, twice, 4, 4}, HY_E_INVALIDARG, 1},
      {{given, taken, 4, 3}, HY_E_INVALIDARG, 0}, {{given, names, 3, 3}, HY_DISP_E_PARAMNOTOPTIONAL, 99},
      {{absent, names, 4, 4}, HY_DISP_E_PARAMNOTOPTIONAL, 2}, {{given, names, 4, 5}, HY_E_INVALIDARG, 99},
      {{given, nullptr, 4, 4}, HY_E_POINTER, 99}, {{nullptr, nullptr, 4, 0}, HY_E_POINTER, 99},
      {{given, nullptr, 14, 0}, HY_DISP_E_BADPARAMCOUNT, 99}};
  // clang-format on
  for (const auto& [params, result, argument] : bad) {
    const Outcome outcome = call(params);
    EXPECT_EQ(outcome.Result, result) << argument;
    EXPECT_EQ(outcome.Argument, argument);
  }
}

TEST(Workflows, BadArgumentsAreRefusedAndBlamed) {
  const Desk desk;
  desk.record();
  HyDispatch* main = desk.main.get();
  const auto pendrel = make(HY_CLSID_PENDREL);
  Sink foreign(HY_IID_DISPATCH);
  Value data, subject = newSubject(), verdict, variable;
  Value nested = byRef(&variable), other = objectValue(pendrel.get()), stranger = objectValue(&foreign);
  int32_t whole = 0;
  const Value to = byRef(&data), who = byRef(&subject), result = byRef(&verdict);
  const auto retrieve = [&](const Value& logger, const Value& wearer, const Value& decoded) {
    return callMethod(main, "Retrieve", number(77), logger, wearer, decoded);
  };
  const auto configure = [&](const Value& epoch, const Value& wearer) {
    return callMethod(main, "Configure", number(0), number(1), epoch, wearer);
  };
  // Arguments count from the last one.
  const HyResult mismatch = HY_DISP_E_TYPEMISMATCH;
  // clang-format off
  const std::tuple<Outcome, HyResult, uint32_t> cases[] = {
      {retrieve(to, who, result), HY_S_OK, 99}, {retrieve(number(1), who, result), mismatch, 2},
      {retrieve(byRef(HY_VT_I4, &whole), who, result), mismatch, 2},
      {retrieve(byRef(&nested), who, result), HY_DISP_E_BADVARTYPE, 2},
      {retrieve(byRef(static_cast<HyVariant*>(nullptr)), who, result), HY_E_POINTER, 2},
      {retrieve(to, byRef(&other), result), mismatch, 1}, {retrieve(to, byRef(&stranger), result), mismatch, 1},
      {retrieve(byRef(&other), who, number(0)), HY_S_OK, 99},
      {configure(number(30), ofType(HY_VT_DISPATCH)), mismatch, 0},
      {configure(real(1e10), subject), HY_DISP_E_OVERFLOW, 1},
      {callMethod(main, "LoggerSecondsToDate"), HY_DISP_E_BADPARAMCOUNT, 99}};
  // clang-format on
  for (const auto& [found, expected, argument] : cases) {
    EXPECT_EQ(found.Result, expected) << argument;
    EXPECT_EQ(found.Argument, argument);
  }
  EXPECT_EQ(std::get<Outcome>(cases[0]).Answer.lVal, ReturnCode::WrongLogger);
  EXPECT_NE(other.pdispVal, pendrel.get()) << "takes the logger, whatever it held";
  EXPECT_EQ(
      callMethod(main, "Retrieve", number(0), byRef(&data), byRef(&variable), byRef(&verdict)).Answer.lVal,
      FailureNumber::ObjectNotSet);
  stranger = {};
  EXPECT_EQ(foreign.References, 1U);

  HyVariant value = number(3), answer = number(5);
  HyDispParams none{}, unnamed{&value, nullptr, 1, 0};
  const auto version = idOf(main, "Version"), retries = idOf(main, "MaxCommunicationRetries");
  const std::tuple<int32_t, const HyGuid*, int, HyDispParams*, HyResult> calls[] = {
      {version, &HY_GUID_NULL, 2, &none, HY_S_OK},
      {version, &HY_IID_DISPATCH, 2, &none, HY_DISP_E_UNKNOWNINTERFACE},
      {version, nullptr, 0, &none, HY_E_INVALIDARG},
      {version, nullptr, 0x20, &none, HY_E_INVALIDARG},
      {version, nullptr, HY_DISPATCH_PROPERTYPUTREF, &none, HY_DISP_E_MEMBERNOTFOUND},
      {version, nullptr, 2, &unnamed, HY_DISP_E_BADPARAMCOUNT},
      {retries, nullptr, HY_DISPATCH_PROPERTYGET | HY_DISPATCH_PROPERTYPUT, &none, HY_S_OK},  // reads
      {retries, nullptr, HY_DISPATCH_PROPERTYPUT, &unnamed, HY_DISP_E_PARAMNOTFOUND}};
  for (const auto& [member, reserved, kinds, given, expected] : calls) {
    EXPECT_EQ(desk.main->Invoke(main, member, reserved, 0, static_cast<uint16_t>(kinds), given, &answer,
                                nullptr, nullptr),
              expected)
        << member << ' ' << kinds;
    EXPECT_EQ(answer.vt == HY_VT_EMPTY, expected != HY_S_OK);
    hyVariantClear(&answer);
  }
}

TEST(Workflows, FailuresOfAnObjectAreToldInFull) {
  const auto logger = make(HY_CLSID_VARDEN_LOGGER);
  const Outcome failed =
      invoke(logger.get(), idOf(logger.get(), "BatteryPercent"), HY_DISPATCH_PROPERTYGET, {});
  EXPECT_EQ(failed.Result, HY_DISP_E_EXCEPTION);
  EXPECT_EQ(failed.Code, HY_FAILURE_BASE + FailureNumber::WrongDeviceType);
  EXPECT_NE(failed.Source.find("BatteryPercent"), std::string::npos) << failed.Source;
  EXPECT_FALSE(failed.Description.empty());
  EXPECT_EQ(failed.Answer.vt, HY_VT_EMPTY);
}

/// A host lives while a workflow waits, and may end it there.
TEST(Events, AHostIsServedAndMayAbort) {
  const Desk desk;
  desk.record(24h);
  HyDispatch* main = desk.main.get();
  Sink host(HY_DIID_HOST_EVENTS), sink(HY_DIID_VARDEN_LOGGER_EVENTS);
  const uint32_t cookie = connect(main, HY_DIID_HOST_EVENTS, host);
  ASSERT_NE(cookie, 0U);
  connect(main, HY_DIID_VARDEN_LOGGER_EVENTS, sink);
  Value data, subject = newSubject(), verdict;
  Outcome nested;
  int32_t expected = 0;
  host.Does = [&](int32_t event, HyDispParams& params) {
    if (event == HY_EVENT_DOWNLOAD_PROGRESS) {
      EXPECT_EQ(params.cArgs, 2U);
      expected = params.rgvarg[0].lVal;
      EXPECT_GT(params.rgvarg[1].lVal, 0);
      return HY_S_OK;
    }
    EXPECT_EQ(params.cArgs, 0U);
    if (host.Told[event] != 200) return HY_S_OK;
    Value status[4];
    nested = callMethod(main, "GetStatus", number(0), byRef(&status[0]), byRef(&status[1]), byRef(&status[2]),
                        byRef(&status[3]));
    return callMethod(main, "AbortComms").Result;
  };
  EXPECT_EQ(desk.retrieve(data, subject, verdict).Answer.lVal, ReturnCode::Aborted);
  EXPECT_EQ(nested.Result, HY_DISP_E_EXCEPTION);
  EXPECT_EQ(nested.Code, HY_FAILURE_BASE + FailureNumber::InvalidCall);
  EXPECT_EQ(desk.retrieve(data, subject, verdict).Answer.lVal, 0);
  EXPECT_GT(host.Told[HY_EVENT_SERVE_EVENTS], 300);
  EXPECT_EQ(expected, static_cast<int32_t>(desk.bench.Logger->recordedBytes().size()));
  const int before = host.Told[HY_EVENT_SERVE_EVENTS];
  EXPECT_EQ(disconnect(main, HY_DIID_HOST_EVENTS, cookie), HY_S_OK);
  EXPECT_EQ(disconnect(main, HY_DIID_HOST_EVENTS, cookie), HY_CONNECT_E_NOCONNECTION);
  EXPECT_EQ(desk.retrieve(data, subject, verdict).Answer.lVal, 0);
  EXPECT_EQ(host.Told[HY_EVENT_SERVE_EVENTS], before);
  EXPECT_EQ(host.References, 1U);
}

TEST(Events, AnObjectThatIsReleasedTooOftenOutlivesItsWorkflow) {
  Desk desk;
  desk.record();
  Sink host(HY_DIID_HOST_EVENTS);
  connect(desk.main.get(), HY_DIID_HOST_EVENTS, host);
  HyDispatch* const main = desk.main.leave();
  host.Does = [&](int32_t event, HyDispParams&) {
    if (event == HY_EVENT_SERVE_EVENTS && host.Told[event] == 20) {
      for (int times = 0; times < 6; ++times) main->lpVtbl->Release(main);
      EXPECT_EQ(invoke(main, 1, HY_DISPATCH_PROPERTYGET, {}).Result, HY_RPC_E_DISCONNECTED);
    }
    return HY_S_OK;
  };
  Value data, subject = newSubject(), verdict;
  EXPECT_EQ(callMethod(main, "AbortComms").Result, HY_S_OK);
  const int32_t retrieve = idOf(main, "Retrieve");
  HyVariant reversed[] = {byRef(&verdict), byRef(&subject), byRef(&data), number(Vivid)};
  EXPECT_EQ(invoke(main, retrieve, HY_DISPATCH_METHOD, {reversed, nullptr, 4, 0}).Answer.lVal, 0);
  EXPECT_EQ(host.References, 1U) << "the object has ended with its workflow";
  EXPECT_EQ(main->lpVtbl->AddRef(main), 0U);
}

/// What a sink does inside its first event must not keep the others from theirs, nor break the workflow.
TEST(Events, SinksMayDoAnythingInsideAnEvent) {
  const HyGuid& events = HY_DIID_VARDEN_LOGGER_EVENTS;
  enum { Fails, LeavesItself, LeavesAnother, ReleasesObject, Throws, Connects, ChangesText };
  for (int deed = Fails; deed <= ChangesText; ++deed) {
    SCOPED_TRACE(deed);
    Desk desk;
    HyDispatch* const main = desk.main.get();
    Sink first(events), second(HY_IID_DISPATCH), late(events);
    const uint32_t cookie = connect(main, events, first), other = connect(main, events, second);
    std::vector<std::string> seen;
    first.Does = [&](int32_t event, HyDispParams& params) {
      if (event != HY_EVENT_COMM_PROGRESS || first.Told[event] != 1) return HY_S_OK;
      if (deed == LeavesItself) disconnect(main, events, cookie);
      if (deed == LeavesAnother) disconnect(main, events, other);
      if (deed == ReleasesObject) main->lpVtbl->Release(desk.main.leave());
      if (deed == Throws) throw 5;
      if (deed == Connects) connect(main, events, late);
      if (deed == ChangesText) {
        hyStringFree(std::exchange(*params.rgvarg[0].pbstrVal, newString(u"changed")));
        params.rgvarg[0].vt = HY_VT_EMPTY;
      }
      return deed == Fails ? HY_E_FAIL : HY_S_OK;
    };
    second.Does = [&](int32_t, HyDispParams&) {
      seen.push_back(second.LastText);
      return HY_S_OK;
    };
    const Outcome outcome =
        callMethod(main, "Configure", number(Vivid), number(1), number(30), newSubject(), text("EST"),
                   boolean(true), missing(), missing(), missing(), number(1), number(2));
    EXPECT_EQ(outcome.Answer.lVal, 0) << outcome.Result;
    EXPECT_EQ(outcome.Answer.vt, HY_VT_I4);
    EXPECT_EQ(first.Told[HY_EVENT_COMM_PROGRESS] == 1, deed == LeavesItself);
    EXPECT_EQ(seen.size() > 2, deed != LeavesAnother);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "changed"), deed == ChangesText ? 1 : 0);
    EXPECT_EQ(late.Told[HY_EVENT_COMM_PROGRESS] > 1, deed == Connects);
    desk.main = {};
    EXPECT_EQ(first.References + second.References + late.References, 3U);
  }
}

/// A logger's own sinks hear what it does on its own.
TEST(Events, LoggersTellTheirSinks) {
  const Desk desk;
  const auto logger = make(HY_CLSID_VARDEN_LOGGER);
  Sink sink(HY_DIID_VARDEN_LOGGER_EVENTS), deaf(HY_IID_TYPE_INFO);
  connect(logger.get(), HY_DIID_VARDEN_LOGGER_EVENTS, sink);
  EXPECT_EQ(connect(logger.get(), HY_DIID_VARDEN_LOGGER_EVENTS, deaf), 0U);
  const Outcome failed = callMethod(logger.get(), "subVardenConfigCRCreset");
  EXPECT_EQ(failed.Result, HY_DISP_E_EXCEPTION) << "the port is closed";
  EXPECT_NE(failed.Code, 0);
  EXPECT_EQ(pointOf(logger.get(), HY_DIID_PENDREL_EVENTS).get(), nullptr);
  EXPECT_NE(pointOf(make(HY_CLSID_PENDREL).get(), HY_DIID_PENDREL_EVENTS).get(), nullptr);
  EXPECT_EQ(pointOf(make(HY_CLSID_SUBJECT).get(), HY_DIID_PENDREL_EVENTS).get(), nullptr);
}

}  // namespace
}  // namespace hy_wristlog::host
