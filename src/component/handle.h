#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include "component/refusal.h"
#include "hy_wristlog/component.h"

namespace hy_wristlog::component {

class Apartment;
struct Handle;

/// An interface of a component, as hosts point to it.
struct Facet : HyUnknown {
  Handle* Owner = nullptr;
};

/// The content of a component; its handle is what hosts hold.
class Body {
 public:
  Body() = default;
  Body(const Body&) = delete;
  Body& operator=(const Body&) = delete;
  virtual ~Body() = default;
  /// Which facet has this interface; -1 for none. Facet 0 is the component's identity.
  virtual int facetOf(const HyGuid& interfaceId) const = 0;
};

/// A component as hosts hold it: interfaces and a count of references. The memory of a handle is not freed
/// while other handles are in use, so that a call on a released component finds a count of 0 instead of freed
/// memory.
struct Handle {
  static constexpr std::size_t MostFacets = 4;

  std::atomic<std::uint32_t> References = 0;
  std::array<Facet, MostFacets> Facets;
  std::shared_ptr<Apartment> Home;  ///< of the thread that it belongs to
  std::unique_ptr<Body> Content;    ///< null after the component or its thread has ended
  std::size_t Position = 0;         ///< among the handles of its home
  Handle* Next = nullptr;           ///< in the list of released ones
  // Only used on the thread that the component belongs to:
  std::uint32_t Running = 0;  ///< calls that are inside the component now
  bool EndWaits = false;      ///< the last of these calls has to end the component

  HyUnknown* identity() { return Facets.data(); }
};

// These two may be called from any thread. They do nothing to a component that has been released.
std::uint32_t addReference(Handle& handle) noexcept;
/// Giving back the last reference ends the component, on its own thread.
std::uint32_t release(Handle& handle) noexcept;

/// A new component of the calling thread with one reference. `vtables` are in the order of its facets.
Handle& makeHandle(std::unique_ptr<Body> body, std::initializer_list<const void*> vtables);

/// HY_S_OK when the calling thread may call the component.
HyResult enter(const Handle& handle);

/// The number of components and of references to factories and type descriptions. The library must stay
/// loaded unless it is 0.
std::atomic<std::int64_t>& inUse();

template <class Interface>
Handle& handleOf(Interface* self) {
  return *static_cast<Facet*>(reinterpret_cast<HyUnknown*>(self))->Owner;
}

template <class Interface>
Interface* facetAs(Handle& handle, int facet) {
  return reinterpret_cast<Interface*>(
      static_cast<HyUnknown*>(&handle.Facets[static_cast<std::size_t>(facet)]));
}

/// Keeps a component alive during a call on its own thread, even if hosts give back more references than they
/// have.
class Hold {
 public:
  explicit Hold(Handle& handle) noexcept;
  Hold(const Hold&) = delete;
  Hold& operator=(const Hold&) = delete;
  ~Hold();
  /// False when the component was released before it could be held.
  explicit operator bool() const { return holds_; }

 private:
  Handle& handle_;
  const bool holds_;
};

/// Turns every exception into a result code.
template <class Action>
HyResult withoutThrowing(Action&& action) noexcept {
  try {
    return action();
  } catch (const Refusal& refusal) {
    return refusal.Result;
  } catch (const std::bad_alloc&) {
    return HY_E_OUTOFMEMORY;
  } catch (...) {
    return HY_E_UNEXPECTED;
  }
}

/// Runs one call of a host, if the component still lives and belongs to the calling thread.
template <class BodyType, class Interface, class Action>
HyResult call(Interface* self, Action&& action) noexcept {
  if (self == nullptr) return HY_E_POINTER;
  Handle& handle = handleOf(self);
  return withoutThrowing([&] {
    if (const HyResult refused = enter(handle); refused != HY_S_OK) return refused;
    const Hold hold(handle);
    if (!hold) return static_cast<HyResult>(HY_RPC_E_DISCONNECTED);
    return static_cast<HyResult>(action(static_cast<BodyType&>(*handle.Content)));
  });
}

// The first three members of every interface.
template <class Interface>
HyResult queryInterface(Interface* self, const HyGuid* interfaceId, void** object) noexcept {
  if (object == nullptr) return HY_E_POINTER;
  *object = nullptr;
  if (interfaceId == nullptr) return HY_E_POINTER;
  return call<Body>(self, [&](const Body& body) {
    const int facet = body.facetOf(*interfaceId);
    if (facet < 0) return HY_E_NOINTERFACE;
    Handle& handle = handleOf(self);
    addReference(handle);
    *object = facetAs<void>(handle, facet);
    return HY_S_OK;
  });
}

template <class Interface>
std::uint32_t addReferenceTo(Interface* self) noexcept {
  return self != nullptr ? addReference(handleOf(self)) : 0;
}

template <class Interface>
std::uint32_t releaseOf(Interface* self) noexcept {
  return self != nullptr ? release(handleOf(self)) : 0;
}

}  // namespace hy_wristlog::component
