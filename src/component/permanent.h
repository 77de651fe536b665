#pragma once

#include <atomic>
#include <cstdint>

#include "component/guid.h"
#include "component/handle.h"

namespace hy_wristlog::component {

/// An interface that lives as long as the library. It counts its references only to tell whether the library
/// is in use. Any thread may use it.
template <class Interface>
struct Permanent : Interface {
  std::atomic<std::uint32_t> References = 0;

  static Permanent& of(Interface* self) { return *static_cast<Permanent*>(self); }

  static std::uint32_t addReference(Interface* self) noexcept {
    if (self == nullptr) return 0;
    ++inUse();
    return ++of(self).References;
  }
  static std::uint32_t release(Interface* self) noexcept {
    if (self == nullptr) return 0;
    std::uint32_t references = of(self).References.load();
    while (references != 0 && !of(self).References.compare_exchange_weak(references, references - 1)) {
    }
    if (references == 0) return 0;
    --inUse();
    return references - 1;
  }

  template <const HyGuid& Own>
  static HyResult query(Interface* self, const HyGuid* interfaceId, void** object) noexcept {
    if (object == nullptr) return HY_E_POINTER;
    *object = nullptr;
    if (self == nullptr || interfaceId == nullptr) return HY_E_POINTER;
    if (!(*interfaceId == HY_IID_UNKNOWN || *interfaceId == Own)) return HY_E_NOINTERFACE;
    addReference(self);
    *object = self;
    return HY_S_OK;
  }
};

}  // namespace hy_wristlog::component
