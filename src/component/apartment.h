#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "component/handle.h"

namespace hy_wristlog::component {

/// The components of one thread.
class Apartment {
 public:
  /// The calling thread's; made on first use. Refuses on a thread that is already ending.
  static Apartment& here();
  /// The same, null when there is none.
  static Apartment* hereIfAny();
  static std::shared_ptr<Apartment> shareHere();

  void add(Handle& handle);
  /// On the own thread: the last reference has gone. Calls that are inside the component end first.
  void end(Handle& handle) noexcept;
  std::uint32_t releaseFromElsewhere(Handle& handle) noexcept;
  /// Ends what other threads have released.
  void collect() noexcept {
    if (hasReleased_.load(std::memory_order_acquire)) endReleased();
  }
  /// The thread ends: components that are still held lose what is behind their handles.
  void close() noexcept;

  /// The component that stands for an object, with a reference more; null when there is none.
  Handle* findObject(const void* instance);
  void keepObject(const void* instance, Handle& handle) { objects_[instance] = &handle; }
  void forgetObject(const void* instance) { objects_.erase(instance); }

 private:
  void endReleased() noexcept;
  Handle* takeReleased() noexcept;
  void forget(Handle& handle) noexcept;

  std::vector<Handle*> handles_;
  std::unordered_map<const void*, Handle*> objects_;

  std::mutex mutex_;  ///< for what stands below
  Handle* released_ = nullptr;
  std::atomic<bool> hasReleased_ = false;
  bool closed_ = false;
};

}  // namespace hy_wristlog::component
