#include "component/apartment.h"

#include <utility>

#include "component/handle_pool.h"
#include "platform/platform.h"

namespace hy_wristlog::component {
namespace {

thread_local Apartment* present = nullptr;
thread_local bool threadEnds = false;

/// Closes the apartment when the thread ends. The constructor makes the thread's world first, so that this
/// object is destroyed before the world that the components still need.
struct Owner {
  Owner() {
    auto world = platform::use(nullptr);
    platform::current();
    platform::use(std::move(world));
    Own = std::make_shared<Apartment>();
    present = Own.get();
  }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  ~Owner() {
    Own->close();
    threadEnds = true;
    present = nullptr;
  }
  std::shared_ptr<Apartment> Own;
};

Owner& owner() {
  if (threadEnds) throw Refusal{HY_E_UNEXPECTED};
  thread_local Owner own;
  return own;
}

}  // namespace

Apartment* Apartment::hereIfAny() { return present; }
Apartment& Apartment::here() { return present != nullptr ? *present : *owner().Own; }
std::shared_ptr<Apartment> Apartment::shareHere() { return owner().Own; }

void Apartment::add(Handle& handle) {
  handles_.push_back(&handle);
  handle.Position = handles_.size() - 1;
}

void Apartment::forget(Handle& handle) noexcept {
  handles_[handle.Position] = handles_.back();
  handles_[handle.Position]->Position = handle.Position;
  handles_.pop_back();
}

void Apartment::end(Handle& handle) noexcept {
  handle.EndWaits = handle.Running != 0;
  if (handle.EndWaits) return;
  if (hasReleased_.load(std::memory_order_acquire)) {
    // The handle is still in the list if findObject took a new reference after another thread had released
    // the last one.
    const std::lock_guard lock(mutex_);
    Handle** link = &released_;
    while (*link != nullptr && *link != &handle) link = &(*link)->Next;
    if (*link == &handle) *link = handle.Next;
  }
  if (handle.Content) {
    forget(handle);
    std::exchange(handle.Content, nullptr).reset();
  }
  giveBackHandle(handle);
}

std::uint32_t Apartment::releaseFromElsewhere(Handle& handle) noexcept {
  const std::lock_guard lock(mutex_);
  std::uint32_t references = handle.References.load();
  while (references != 0 && !handle.References.compare_exchange_weak(references, references - 1)) {
  }
  if (references != 1) return references == 0 ? 0 : references - 1;
  if (closed_) {
    giveBackHandle(handle);
  } else {
    Handle* listed = released_;
    while (listed != nullptr && listed != &handle) listed = listed->Next;
    if (listed == nullptr) handle.Next = std::exchange(released_, &handle);
    hasReleased_.store(true, std::memory_order_release);
  }
  return 0;
}

Handle* Apartment::takeReleased() noexcept {
  const std::lock_guard lock(mutex_);
  while (released_ != nullptr) {
    Handle* handle = std::exchange(released_, released_->Next);
    if (handle->References.load() == 0) return handle;
  }
  hasReleased_.store(false);
  return nullptr;
}

void Apartment::endReleased() noexcept {
  while (Handle* handle = takeReleased()) end(*handle);
}

void Apartment::close() noexcept {
  for (;;) {
    endReleased();
    if (!handles_.empty()) {
      Handle& handle = *handles_.back();
      handles_.pop_back();
      std::exchange(handle.Content, nullptr).reset();
      continue;
    }
    const std::lock_guard lock(mutex_);
    if (released_ != nullptr) continue;
    closed_ = true;
    return;
  }
}

Handle* Apartment::findObject(const void* instance) {
  const auto found = objects_.find(instance);
  if (found == objects_.end()) return nullptr;
  const std::lock_guard lock(mutex_);
  ++found->second->References;
  found->second->EndWaits = false;
  return found->second;
}

}  // namespace hy_wristlog::component
