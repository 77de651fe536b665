#pragma once

#include <memory>
#include <utility>

#include "platform/platform.h"

namespace hy_wristlog {

/// The thread works in a world of its own while the object lives.
template <class World>
class InWorld {
 public:
  template <class... Options>
  explicit InWorld(const Options&... options)
      : world_(std::make_shared<World>(options...)), former_(platform::use(world_)) {}
  InWorld(const InWorld&) = delete;
  InWorld& operator=(const InWorld&) = delete;
  ~InWorld() { platform::use(former_); }
  World* operator->() const { return world_.get(); }
  World& operator*() const { return *world_; }

 private:
  std::shared_ptr<World> world_;
  std::shared_ptr<platform::Platform> former_;
};

}  // namespace hy_wristlog
