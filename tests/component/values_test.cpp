#include <algorithm>
#include <cmath>
#include <limits>

#include "component_support.h"
#include "hy_wristlog/failure_numbers.h"
#include "simulator/bench.h"

namespace hy_wristlog::host {
namespace {

/// Each member as the type information tells it, whose names and order the hosts' own lists are held against.
TEST(Values, MembersDoWhatTheirKindSays) {
  const auto bench = simulator::makeVividBench();
  const platform::WorldScope scope(bench.World);
  for (const HyGuid& classId : {HY_CLSID_MAIN, HY_CLSID_VARDEN_LOGGER, HY_CLSID_PENDREL, HY_CLSID_SUBJECT}) {
    const auto object = make(classId);
    Ref<HyTypeInfo> info;
    ASSERT_EQ(object->GetTypeInfo(object.get(), 0, 0, info.receive()), HY_S_OK);
    std::map<int32_t, int> kinds;
    HyFuncDesc* one = nullptr;
    for (uint32_t f = 0; info->GetFuncDesc(info.get(), f, &one) == HY_S_OK; ++f) {
      kinds[one->memid] |= one->invkind;
      info->ReleaseFuncDesc(info.get(), one);
    }
    for (const auto& [id, kind] : kinds) {
      if (kind == HY_DISPATCH_METHOD) continue;
      const Outcome read = invoke(object.get(), id, HY_DISPATCH_PROPERTYGET | HY_DISPATCH_METHOD, {});
      const bool raises =
          read.Result == HY_DISP_E_EXCEPTION && read.Code == HY_FAILURE_BASE + FailureNumber::WrongDeviceType;
      EXPECT_TRUE(read.Result == HY_S_OK || raises) << id;
      EXPECT_EQ(invoke(object.get(), id, HY_DISPATCH_METHOD, {}).Result, HY_DISP_E_MEMBERNOTFOUND);
      EXPECT_EQ(put(object.get(), id, read.Answer).Result,
                (kind & HY_DISPATCH_PROPERTYPUT) != 0 ? HY_S_OK : HY_DISP_E_MEMBERNOTFOUND)
          << id;
    }
    const auto last = static_cast<int32_t>(kinds.size());
    EXPECT_EQ(kinds.begin()->first + kinds.rbegin()->first, 1 + last);
    for (const int32_t id : {0, -1, last + 1, INT32_MIN, INT32_MAX})
      EXPECT_EQ(invoke(object.get(), id, 3, {}).Result, HY_DISP_E_MEMBERNOTFOUND);
  }
}

/// What a property reads as after a write.
TEST(Values, AreConvertedToTheirPropertysType) {
  const HyResult mismatch = HY_DISP_E_TYPEMISMATCH, overflow = HY_DISP_E_OVERFLOW;
  struct Case {
    const char* Property;
    Value Given;
    HyResult Result;
    int Type = 0;
    double Reads = 0;
  };
  int16_t small = 321;
  Value inside = real(7.5), nested = byRef(HY_VT_I2, &small);
  double day = 40000.25;
  // clang-format off
  const Case cases[] = {
      {"EpochLength", number(32768), overflow}, {"EpochLength", real(2.5), HY_S_OK, HY_VT_I2, 2},
      {"EpochLength", real(NAN), overflow}, {"EpochLength", text(" 1,200 "), HY_S_OK, HY_VT_I2, 1200},
      {"EpochLength", text("twelve"), mismatch}, {"EpochLength", boolean(true), HY_S_OK, HY_VT_I2, -1},
      {"EpochLength", ofType(HY_VT_EMPTY), HY_S_OK, HY_VT_I2, 0}, {"EpochLength", ofType(HY_VT_NULL), mismatch},
      {"EpochLength", ofType(HY_VT_DISPATCH), mismatch}, {"EpochLength", missing(), HY_DISP_E_PARAMNOTOPTIONAL},
      {"EpochLength", ofType(HY_VT_DECIMAL), HY_DISP_E_BADVARTYPE}, {"EpochLength", ofType(HY_VT_UI8, -1), overflow},
      {"EpochLength", ofType(HY_VT_CY, 125000), HY_S_OK, HY_VT_I2, 12},
      {"EpochLength", byRef(HY_VT_I2, &small), HY_S_OK, HY_VT_I2, 321},
      {"EpochLength", byRef(&inside), HY_S_OK, HY_VT_I2, 8}, {"EpochLength", byRef(&nested), HY_S_OK, HY_VT_I2, 321},
      {"EpochLength", byRef(static_cast<HyVariant*>(nullptr)), HY_E_POINTER},
      {"EpochLength", byRef(HY_VT_EMPTY, &small), HY_DISP_E_BADVARTYPE}, {"FirmwareVersion", number(-1), overflow},
      {"FirmwareVersion", number(255), HY_S_OK, HY_VT_UI1, 255},
      {"BytesUsed", ofType(HY_VT_I8, int64_t{1} << 31), overflow},
      {"AcquisitionMode", ofType(HY_VT_I1, 2), HY_S_OK, HY_VT_I4, 2}, {"SubjectHeight", real(1e39), overflow},
      {"SubjectHeight", real(INFINITY), HY_S_OK, HY_VT_R4, INFINITY},
      {"StartDate", byRef(HY_VT_DATE, &day), HY_S_OK, HY_VT_DATE, 40000.25},
      {"AutoDSTadjust", number(5), HY_S_OK, HY_VT_BOOL, -1}, {"AutoDSTadjust", text("fAlse"), HY_S_OK, HY_VT_BOOL, 0},
      {"AutoDSTadjust", text("yes"), mismatch}};
  // clang-format on
  const auto object = make(HY_CLSID_PENDREL);
  for (const Case& c : cases) {
    SCOPED_TRACE("case " + std::to_string(&c - cases) + ", " + c.Property);
    const Outcome outcome = put(object.get(), c.Property, c.Given);
    EXPECT_EQ(outcome.Result, c.Result);
    EXPECT_EQ(outcome.Argument, c.Result == HY_S_OK ? 99U : 0U);
    if (c.Result != HY_S_OK) continue;
    const Value read = get(object.get(), c.Property);
    ASSERT_EQ(read.vt, c.Type);
    const double found = c.Type == HY_VT_R4     ? static_cast<double>(read.fltVal)
                         : c.Type == HY_VT_I4   ? read.lVal
                         : c.Type == HY_VT_UI1  ? read.bVal
                         : c.Type == HY_VT_DATE ? read.date
                                                : read.iVal;
    EXPECT_EQ(found, c.Reads);
  }
}

TEST(Values, TextPassesBothWays) {
  const auto object = make(HY_CLSID_SUBJECT);
  const std::pair<std::u16string, std::u16string> cases[] = {
      {u"", u""},
      {u"J\u00FCrgen \u20AC \U0001F600", u"J\u00FCrgen \u20AC \U0001F600"},
      {{u'a', 0, u'b'}, {u'a', 0, u'b'}},
      {{0xD800, u'x', 0xDC00}, {0xFFFD, u'x', 0xFFFD}},
      {{u'x', 0xDBFF}, {u'x', 0xFFFD}},
  };
  for (const auto& [given, kept] : cases) {
    ASSERT_EQ(put(object.get(), "Identity", text(given)).Result, HY_S_OK);
    const Value read = get(object.get(), "Identity");
    EXPECT_EQ(wideOf(read.bstrVal), kept);
    EXPECT_EQ(read.bstrVal[kept.size()], 0);
  }
  const std::pair<Value, const char*> converted[] = {
      {single(0.1F), "0.1"}, {boolean(true), "True"}, {ofType(HY_VT_BSTR), ""}};
  for (const auto& [given, kept] : converted) {
    ASSERT_EQ(put(object.get(), "Identity", given).Result, HY_S_OK);
    EXPECT_EQ(get(object.get(), "Identity").text(), kept);
  }
  put(object.get(), "Gender", text("female"));
  EXPECT_EQ(get(object.get(), "Gender").text(), "F");

  struct {
    uint32_t Bytes = 0xFFFFFFF0;
    uint16_t Units[2] = {u'x', 0};
  } absurd;
  Value refused = ofType(HY_VT_BYREF | HY_VT_BSTR);
  HyString string = absurd.Units;
  refused.pbstrVal = &string;
  EXPECT_EQ(put(object.get(), "Identity", refused).Result, HY_E_INVALIDARG);
}

template <class T>
HyArray arrayOver(std::vector<T>& elements, int32_t lowerBound = 0) {
  return {1, 0, sizeof(T), 0, elements.data(), {{static_cast<uint32_t>(elements.size()), lowerBound}}};
}
/// The property as plain numbers; HY_VT_ERROR for a member that is no series.
Value readSeries(HyDispatch* object, const char* property) {
  const auto reader = query<HySeriesReader>(object, HY_IID_SERIES_READER);
  Value series;
  const HyResult result = reader->ReadSeries(reader.get(), idOf(object, property), &series);
  if (result == HY_DISP_E_MEMBERNOTFOUND) series.vt = HY_VT_ERROR;
  return series;
}
/// None when the elements have another size.
template <class T>
std::vector<T> elementsOf(const Value& value) {
  const auto* first = static_cast<const T*>(value.parray->pvData);
  return value.parray->cbElements == sizeof(T)
             ? std::vector<T>(first, first + value.parray->rgsabound[0].cElements)
             : std::vector<T>{};
}
Value arrayValue(int elementType, HyArray** array) { return byRef(HY_VT_ARRAY | elementType, array); }

TEST(Values, ArraysPassBothWays) {
  const auto object = make(HY_CLSID_PENDREL);
  EXPECT_EQ(get(object.get(), "ActivityArray").vt, HY_VT_EMPTY);

  std::vector<HyVariant> variants(4);
  variants[0].vt = HY_VT_I4;
  variants[0].lVal = 70000;
  variants[2].vt = HY_VT_R8;
  variants[2].dblVal = -1;
  variants[3].vt = HY_VT_BOOL;
  variants[3].boolVal = HY_TRUE;
  HyArray array = arrayOver(variants, 10);
  HyArray* pointer = &array;
  for (const char* property : {"ActivityArray", "StepsArray", "MarkerArray"}) {
    SCOPED_TRACE(property);
    const bool markers = std::string(property) == "MarkerArray";
    ASSERT_EQ(put(object.get(), property, arrayValue(HY_VT_VARIANT, &pointer)).Result, HY_S_OK);
    const Value read = get(object.get(), property);
    ASSERT_EQ(read.vt, HY_VT_ARRAY | HY_VT_VARIANT);
    EXPECT_EQ(read.parray->fFeatures, HY_FADF_VARIANT);
    ASSERT_EQ(read.parray->rgsabound[0].cElements, 4U);
    EXPECT_EQ(read.parray->rgsabound[0].lLbound, 0);
    EXPECT_EQ(read.at(0).vt, markers ? HY_VT_BOOL : HY_VT_I4);
    EXPECT_EQ(markers ? read.at(0).boolVal : read.at(0).lVal, markers ? -1 : 70000);
    EXPECT_EQ(read.at(1).vt, HY_VT_EMPTY);
    EXPECT_EQ(markers ? read.at(2).boolVal : read.at(2).lVal, -1);

    const Value plain = readSeries(object.get(), property);
    ASSERT_EQ(plain.vt, HY_VT_ARRAY | (markers ? HY_VT_I1 : HY_VT_I4));
    EXPECT_EQ(plain.parray->rgsabound[0].lLbound, 0);
    const std::vector<int32_t> numbers{70000, INT32_MIN, -1, -1};
    const std::vector<int8_t> truths{1, -1, 1, 1};
    EXPECT_EQ(elementsOf<int32_t>(plain), markers ? std::vector<int32_t>{} : numbers);
    EXPECT_EQ(elementsOf<int8_t>(plain), markers ? truths : std::vector<int8_t>{});
  }
  EXPECT_EQ(readSeries(object.get(), "SerialNumber").vt, HY_VT_ERROR);
  std::vector<int16_t> plain{1, 0, -5};
  HyArray shorts = arrayOver(plain);
  pointer = &shorts;
  ASSERT_EQ(put(object.get(), "ActivityArray", arrayValue(HY_VT_I2, &pointer)).Result, HY_S_OK);
  EXPECT_EQ(get(object.get(), "ActivityArray").at(2).lVal, -5);

  const std::tuple<const char*, int, HyResult, void (*)(HyArray&)> bad[] = {
      {"two dimensions", HY_VT_I2, HY_DISP_E_TYPEMISMATCH, [](HyArray& a) { a.cDims = 2; }},
      {"another element size", HY_VT_I4, HY_DISP_E_TYPEMISMATCH, [](HyArray&) {}},
      {"no memory", HY_VT_I2, HY_E_POINTER, [](HyArray& a) { a.pvData = nullptr; }},
      {"absurd length", HY_VT_I2, HY_E_INVALIDARG, [](HyArray& a) { a.rgsabound[0].cElements = ~0U; }},
      {"no type", 77, HY_DISP_E_BADVARTYPE, [](HyArray&) {}},
  };
  for (const auto& [why, type, result, spoil] : bad) {
    HyArray spoilt = shorts;
    spoil(spoilt);
    pointer = &spoilt;
    EXPECT_EQ(put(object.get(), "ActivityArray", arrayValue(type, &pointer)).Result, result) << why;
  }
  EXPECT_EQ(put(object.get(), "ActivityArray", number(1)).Result, HY_DISP_E_TYPEMISMATCH);
  EXPECT_EQ(get(object.get(), "ActivityArray").parray->rgsabound[0].cElements, 3U);
  ASSERT_EQ(put(object.get(), "ActivityArray", ofType(HY_VT_ARRAY | HY_VT_I4)).Result, HY_S_OK);
  EXPECT_EQ(get(object.get(), "ActivityArray").vt, HY_VT_EMPTY);
}

/// A logger that counts no steps has one empty element below zero; one that does, and activity, have a plain
/// one.
TEST(Values, StepsOfALoggerWithoutStepsStandBelowZero) {
  const auto object = make(HY_CLSID_PENDREL);
  std::vector<HyVariant> one(1);
  HyArray array = arrayOver(one);
  HyArray* pointer = &array;
  for (const auto& [property, serial, bound] : {std::tuple{"StepsArray", "C123456", -1},
                                                {"StepsArray", "B123456", 0},
                                                {"ActivityArray", "C123456", 0}}) {
    put(object.get(), "SerialNumber", text(serial));
    ASSERT_EQ(put(object.get(), property, arrayValue(HY_VT_VARIANT, &pointer)).Result, HY_S_OK);
    const Value series = get(object.get(), property);
    ASSERT_EQ(series.vt, HY_VT_ARRAY | HY_VT_VARIANT);
    EXPECT_EQ(series.parray->rgsabound[0].lLbound, bound) << property << serial;
    EXPECT_EQ(series.parray->rgsabound[0].cElements, 1U);
    EXPECT_EQ(series.at(0).vt, HY_VT_EMPTY);
    EXPECT_EQ(readSeries(object.get(), property).vt, bound < 0 ? HY_VT_EMPTY : HY_VT_ARRAY | HY_VT_I4);
  }
}

}  // namespace
}  // namespace hy_wristlog::host
