#include "component/apartment.h"

#include <utility>

#include "component/handle_pool.h"
#include "platform/platform.h"

namespace hy_wristlog::component {
namespace {

thread_local Apartment* present = nullptr;
thread_local bool threadEnds = false;

/// Ends with the thread, before the thread's world, which is made first for that.
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

void Apartment::add(Shell& shell) {
  shells_.push_back(&shell);
  shell.Position = shells_.size() - 1;
}

void Apartment::forget(Shell& shell) noexcept {
  shells_[shell.Position] = shells_.back();
  shells_[shell.Position]->Position = shell.Position;
  shells_.pop_back();
}

void Apartment::end(Shell& shell) noexcept {
  shell.EndWaits = shell.Running != 0;
  if (shell.EndWaits) return;
  if (hasReleased_.load(std::memory_order_acquire)) {
    // It may stand in the list, when it was found again after another thread had released it.
    const std::lock_guard lock(mutex_);
    Shell** link = &released_;
    while (*link != nullptr && *link != &shell) link = &(*link)->Next;
    if (*link == &shell) *link = shell.Next;
  }
  if (shell.Content) {
    forget(shell);
    std::exchange(shell.Content, nullptr).reset();
  }
  giveBackShell(shell);
}

std::uint32_t Apartment::releaseFromElsewhere(Shell& shell) noexcept {
  const std::lock_guard lock(mutex_);
  std::uint32_t references = shell.References.load();
  while (references != 0 && !shell.References.compare_exchange_weak(references, references - 1)) {
  }
  if (references != 1) return references == 0 ? 0 : references - 1;
  if (closed_) {
    giveBackShell(shell);
  } else {
    Shell* listed = released_;
    while (listed != nullptr && listed != &shell) listed = listed->Next;
    if (listed == nullptr) shell.Next = std::exchange(released_, &shell);
    hasReleased_.store(true, std::memory_order_release);
  }
  return 0;
}

Shell* Apartment::takeReleased() noexcept {
  const std::lock_guard lock(mutex_);
  while (released_ != nullptr) {
    Shell* shell = std::exchange(released_, released_->Next);
    if (shell->References.load() == 0) return shell;
  }
  hasReleased_.store(false);
  return nullptr;
}

void Apartment::endReleased() noexcept {
  while (Shell* shell = takeReleased()) end(*shell);
}

void Apartment::close() noexcept {
  for (;;) {
    endReleased();
    if (!shells_.empty()) {
      Shell& shell = *shells_.back();
      shells_.pop_back();
      std::exchange(shell.Content, nullptr).reset();
      continue;
    }
    const std::lock_guard lock(mutex_);
    if (released_ != nullptr) continue;
    closed_ = true;
    return;
  }
}

Shell* Apartment::findObject(const void* instance) {
  const auto found = objects_.find(instance);
  if (found == objects_.end()) return nullptr;
  const std::lock_guard lock(mutex_);
  ++found->second->References;
  found->second->EndWaits = false;
  return found->second;
}

}  // namespace hy_wristlog::component
