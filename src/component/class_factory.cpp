#include "component/class_factory.h"

#include <array>
#include <atomic>

#include "component/apartment.h"
#include "component/object.h"
#include "component/permanent.h"
#include "component/registration.h"
#include "hy_wristlog/failure.h"

namespace hy_wristlog::component {
namespace {

struct Factory : Permanent<HyClassFactory> {
  const ClassTable* Table = nullptr;
};

std::atomic<std::int64_t> locks = 0;

HyResult create(HyClassFactory* self, HyUnknown* outer, const HyGuid* interfaceId, void** object) noexcept {
  if (object != nullptr) *object = nullptr;
  if (self == nullptr) return HY_E_POINTER;
  return createInstance(*static_cast<Factory*>(self)->Table, outer, interfaceId, object);
}

HyResult lockServer(HyClassFactory* self, std::int32_t lock) noexcept {
  if (self == nullptr) return HY_E_POINTER;
  if (lock != 0) {
    ++locks;
    return HY_S_OK;
  }
  std::int64_t held = locks.load();
  while (held > 0 && !locks.compare_exchange_weak(held, held - 1)) {
  }
  return held > 0 ? HY_S_OK : HY_E_UNEXPECTED;
}

constexpr HyClassFactoryVtable FactoryVtable{Factory::query<HY_IID_CLASS_FACTORY>, Factory::addReference,
                                             Factory::release, create, lockServer};

std::array<Factory, std::size(Classes)>& factories() {
  static auto* const made = [] {
    static std::array<Factory, std::size(Classes)> all;
    for (std::size_t i = 0; i < all.size(); ++i) {
      all[i].lpVtbl = &FactoryVtable;
      all[i].Table = Classes[i];
    }
    return &all;
  }();
  return *made;
}

}  // namespace

HyResult createInstance(const ClassTable& table, HyUnknown* outer, const HyGuid* interfaceId,
                        void** object) noexcept {
  if (object == nullptr) return HY_E_POINTER;
  *object = nullptr;
  if (interfaceId == nullptr) return HY_E_POINTER;
  if (outer != nullptr) return HY_CLASS_E_NOAGGREGATION;
  return withoutThrowing([&] {
    try {
      HyDispatch* made = wrap(table, table.Make());
      const HyResult result = made->lpVtbl->QueryInterface(made, interfaceId, object);
      made->lpVtbl->Release(made);
      return result;
    } catch (const Failure&) {
      return HY_E_FAIL;
    }
  });
}

}  // namespace hy_wristlog::component

using namespace hy_wristlog::component;

HyResult DllGetClassObject(const HyGuid* classId, const HyGuid* interfaceId, void** object) {
  if (object == nullptr) return HY_E_POINTER;
  *object = nullptr;
  if (classId == nullptr || interfaceId == nullptr) return HY_E_POINTER;
  for (Factory& factory : factories())
    if (*classId == factory.Table->ClassId)
      return factory.lpVtbl->QueryInterface(&factory, interfaceId, object);
  return HY_CLASS_E_CLASSNOTAVAILABLE;
}

HyResult DllCanUnloadNow(void) {
  if (Apartment* here = Apartment::hereIfAny()) here->collect();
  return inUse().load() == 0 && locks.load() == 0 ? HY_S_OK : HY_S_FALSE;
}

HyResult DllRegisterServer(void) {
  return withoutThrowing([] { return registerClasses() ? HY_S_OK : HY_SELFREG_E_CLASS; });
}

HyResult DllUnregisterServer(void) {
  return withoutThrowing([] { return unregisterClasses() ? HY_S_OK : HY_SELFREG_E_CLASS; });
}
