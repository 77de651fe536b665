#include "component/handle.h"

#include "component/apartment.h"
#include "component/handle_pool.h"

namespace hy_wristlog::component {

std::uint32_t addReference(Handle& handle) noexcept {
  std::uint32_t references = handle.References.load();
  while (references != 0 && !handle.References.compare_exchange_weak(references, references + 1)) {
  }
  return references == 0 ? 0 : references + 1;
}

std::uint32_t release(Handle& handle) noexcept {
  std::uint32_t references = handle.References.load();
  if (references == 0) return 0;
  Apartment* here = Apartment::hereIfAny();
  if (handle.Home.get() != here) {
    const std::shared_ptr<Apartment> home = handle.Home;
    return home->releaseFromElsewhere(handle);
  }
  while (!handle.References.compare_exchange_weak(references, references - 1))
    if (references == 0) return 0;
  if (references == 1) here->end(handle);
  return references - 1;
}

Hold::Hold(Handle& handle) noexcept : handle_(handle), holds_(addReference(handle) != 0) {
  if (holds_) ++handle_.Running;
}

Hold::~Hold() {
  if (!holds_) return;
  if (--handle_.Running == 0 && handle_.EndWaits)
    handle_.Home->end(handle_);
  else
    release(handle_);
}

Handle& makeHandle(std::unique_ptr<Body> body, std::initializer_list<const void*> vtables) {
  std::shared_ptr<Apartment> home = Apartment::shareHere();
  Handle& handle = takeHandle();
  try {
    home->add(handle);
  } catch (...) {
    giveBackHandle(handle);
    throw;
  }
  std::size_t facet = 0;
  for (const void* vtable : vtables) {
    handle.Facets[facet].lpVtbl = static_cast<const HyUnknownVtable*>(vtable);
    handle.Facets[facet++].Owner = &handle;
  }
  handle.Home = std::move(home);
  handle.Content = std::move(body);
  handle.References.store(1);
  return handle;
}

HyResult enter(const Handle& handle) {
  Apartment* here = Apartment::hereIfAny();
  if (here != nullptr) here->collect();
  if (handle.References.load() == 0) return HY_RPC_E_DISCONNECTED;
  if (handle.Home.get() != here) return HY_RPC_E_WRONG_THREAD;
  return handle.Content ? HY_S_OK : HY_RPC_E_DISCONNECTED;
}

}  // namespace hy_wristlog::component
