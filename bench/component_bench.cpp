#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "hy_wristlog/component.h"

namespace hy_wristlog {
namespace {

HyDispatch* make(const HyGuid& classId) {
  void* factory = nullptr;
  void* object = nullptr;
  DllGetClassObject(&classId, &HY_IID_CLASS_FACTORY, &factory);
  auto* maker = static_cast<HyClassFactory*>(factory);
  maker->lpVtbl->CreateInstance(maker, nullptr, &HY_IID_DISPATCH, &object);
  maker->lpVtbl->Release(maker);
  return static_cast<HyDispatch*>(object);
}

std::int32_t idOf(HyDispatch* object, std::u16string name) {
  auto* units = reinterpret_cast<std::uint16_t*>(name.data());
  std::int32_t id = HY_DISPID_UNKNOWN;
  object->lpVtbl->GetIDsOfNames(object, &HY_GUID_NULL, &units, 1, 0, &id);
  return id;
}

/// What a host pays for one call.
void readProperty(benchmark::State& state, const char16_t* name) {
  HyDispatch* logger = make(HY_CLSID_PENDREL);
  const std::int32_t id = idOf(logger, name);
  HyDispParams params{};
  for (auto _ : state) {
    HyVariant result{};
    if (logger->lpVtbl->Invoke(logger, id, &HY_GUID_NULL, 0, HY_DISPATCH_PROPERTYGET, &params, &result,
                               nullptr, nullptr) != HY_S_OK)
      state.SkipWithError("the property was not read");
    hyVariantClear(&result);
  }
  logger->lpVtbl->Release(logger);
}
BENCHMARK_CAPTURE(readProperty, number, u"BytesUsed");
BENCHMARK_CAPTURE(readProperty, text, u"SerialNumber");

/// A logger with a million activity counts, and the number of that property.
HyDispatch* makeWithMillionElements(std::int32_t& id) {
  HyDispatch* logger = make(HY_CLSID_PENDREL);
  id = idOf(logger, u"ActivityArray");
  std::vector<std::int32_t> counts(1000000, 17);
  HyArray array{1, 0, sizeof(std::int32_t), 0, counts.data(), {{1000000, 0}}};
  HyVariant value{};
  value.vt = HY_VT_ARRAY | HY_VT_I4;
  value.parray = &array;
  std::int32_t put = HY_DISPID_PROPERTYPUT;
  HyDispParams given{&value, &put, 1, 1};
  logger->lpVtbl->Invoke(logger, id, &HY_GUID_NULL, 0, HY_DISPATCH_PROPERTYPUT, &given, nullptr, nullptr,
                         nullptr);
  return logger;
}

void readMillionElements(benchmark::State& state) {
  std::int32_t id = HY_DISPID_UNKNOWN;
  HyDispatch* logger = makeWithMillionElements(id);
  HyDispParams none{};
  for (auto _ : state) {
    HyVariant result{};
    logger->lpVtbl->Invoke(logger, id, &HY_GUID_NULL, 0, HY_DISPATCH_PROPERTYGET, &none, &result, nullptr,
                           nullptr);
    if (result.vt != (HY_VT_ARRAY | HY_VT_VARIANT)) state.SkipWithError("the array was not read");
    hyVariantClear(&result);
  }
  logger->lpVtbl->Release(logger);
}
BENCHMARK(readMillionElements)->Unit(benchmark::kMillisecond);

void readMillionPlainElements(benchmark::State& state) {
  std::int32_t id = HY_DISPID_UNKNOWN;
  HyDispatch* logger = makeWithMillionElements(id);
  void* found = nullptr;
  logger->lpVtbl->QueryInterface(logger, &HY_IID_SERIES_READER, &found);
  auto* reader = static_cast<HySeriesReader*>(found);
  for (auto _ : state) {
    HyVariant result{};
    reader->lpVtbl->ReadSeries(reader, id, &result);
    if (result.vt != (HY_VT_ARRAY | HY_VT_I4)) state.SkipWithError("the series was not read");
    hyVariantClear(&result);
  }
  reader->lpVtbl->Release(reader);
  logger->lpVtbl->Release(logger);
}
BENCHMARK(readMillionPlainElements)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace hy_wristlog
