#pragma once

#include <memory>

#include "platform/platform.h"

namespace hy_wristlog {

/// The thread works in a world of its own while the object lives.
template <class World>
class InWorld {
 public:
  template <class... Options>
  explicit InWorld(const Options&... options) : world_(std::make_shared<World>(options...)) {}
  World* operator->() const { return world_.get(); }
  World& operator*() const { return *world_; }

 private:
  std::shared_ptr<World> world_;
  platform::WorldScope scope_{world_};
};

}  // namespace hy_wristlog
