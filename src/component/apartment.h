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

  void add(Shell& shell);
  /// On the own thread: the last reference has gone. Calls that are inside the component end first.
  void end(Shell& shell) noexcept;
  std::uint32_t releaseFromElsewhere(Shell& shell) noexcept;
  /// Ends what other threads have released.
  void collect() noexcept {
    if (hasReleased_.load(std::memory_order_acquire)) endReleased();
  }
  /// The thread ends: components that are still held lose what is behind their shells.
  void close() noexcept;

  /// The component that stands for an object, with a reference more; null when there is none.
  Shell* findObject(const void* instance);
  void keepObject(const void* instance, Shell& shell) { objects_[instance] = &shell; }
  void forgetObject(const void* instance) { objects_.erase(instance); }

 private:
  void endReleased() noexcept;
  Shell* takeReleased() noexcept;
  void forget(Shell& shell) noexcept;

  std::vector<Shell*> shells_;
  std::unordered_map<const void*, Shell*> objects_;

  std::mutex mutex_;  ///< for what stands below
  Shell* released_ = nullptr;
  std::atomic<bool> hasReleased_ = false;
  bool closed_ = false;
};

}  // namespace hy_wristlog::component
