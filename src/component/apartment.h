#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "component/handle.h"

namespace hy_wristlog::component {

/// The components of one thread, which alone may call them.
class Apartment {
 public:
  /// The apartment of the calling thread, made on first use. Refuses on a thread that is already ending.
  static Apartment& here();
  /// The apartment of the calling thread; null when it has none.
  static Apartment* hereIfAny();
  static std::shared_ptr<Apartment> shareHere();

  void add(Handle& handle);
  /// Ends a component without references, on its own thread; when calls are running inside it, the last of
  /// them does.
  void end(Handle& handle) noexcept;
  std::uint32_t releaseFromElsewhere(Handle& handle) noexcept;
  /// Ends the components whose last reference another thread has given back.
  void collect() noexcept {
    if (hasReleased_.load(std::memory_order_acquire)) endReleased();
  }
  /// Ends all components, because the thread ends. Handles that are still held stay, without content.
  void close() noexcept;

  /// The component of an object, with a reference for the caller; null when there is none.
  Handle* findObject(const void* instance);
  void keepObject(const void* instance, Handle& handle) { objects_[instance] = &handle; }
  void forgetObject(const void* instance) { objects_.erase(instance); }

 private:
  void endReleased() noexcept;
  Handle* takeReleased() noexcept;
  void forget(Handle& handle) noexcept;

  std::vector<Handle*> handles_;
  std::unordered_map<const void*, Handle*> objects_;

  std::mutex mutex_;  ///< guards the members below
  Handle* released_ = nullptr;
  std::atomic<bool> hasReleased_ = false;
  bool closed_ = false;
};

}  // namespace hy_wristlog::component
