#include "errors/GlobalState.h"

#include <atomic>

#include "platform/platform.h"

namespace hy_wristlog {
namespace {

std::atomic<void (*)()>& startUpProcedure() {
  static std::atomic<void (*)()> procedure{nullptr};
  return procedure;
}

}  // namespace

GlobalState& globals() {
  platform::WorldObjects& objects = platform::current().objects();
  if (auto* state = objects.find<GlobalState>()) return *state;
  auto& state = objects.get<GlobalState>();
  if (auto* startUp = startUpProcedure().load()) startUp();
  return state;
}

void setStartUp(void (*startUp)()) { startUpProcedure() = startUp; }

double now() {
  CivilTime time = platform::current().clock().local();
  time.Millisecond = 0;
  return dateFromCivil(time);
}

}  // namespace hy_wristlog
