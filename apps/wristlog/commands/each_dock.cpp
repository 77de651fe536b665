#include "commands/each_dock.h"

#include <optional>
#include <system_error>
#include <thread>

#include "errors/Procedure.h"
#include "platform/machine.h"
#include "recording/signals_held.h"

namespace wristlog {

namespace platform = hy_wristlog::platform;

void forEachDock(const std::vector<hy_wristlog::Dock>& docks, const std::function<void(std::size_t)>& work,
                 const WorldOfDock& world) {
  if (!world && !platform::isMachine()) {
    for (std::size_t place = 0; place < docks.size(); ++place) work(place);
    return;
  }
  std::vector<std::jthread> threads;
  threads.reserve(docks.size());
  const auto inItsWorld = [&](std::size_t place) {
    const hy_wristlog::CommandUnderWay underWay;
    std::optional<platform::WorldScope> scope;
    if (world) scope.emplace(world(docks[place]));
    work(place);
  };
  for (std::size_t place = 0; place < docks.size(); ++place) {
    // Signals go to the calling thread.
    std::optional<SignalsHeld> held(std::in_place);
    try {
      threads.emplace_back(inItsWorld, place);
    } catch (const std::system_error&) {
      // Without another thread the dock has its turn all the same.
      held.reset();
      inItsWorld(place);
    }
  }
}

}  // namespace wristlog
