#include "simulator/dockable.h"

#include "simulator/dock.h"
#include "simulator/line.h"

namespace hy_wristlog::simulator {

void Dockable::say(std::span<const std::uint8_t> bytes, nanoseconds delay) {
  if (awake_ && line_ != nullptr) line_->send(bytes, delay);
}

void Dockable::away(bool redock, const std::function<void()>& action) {
  SimulatedDock* const home = dock_;
  if (home != nullptr) home->pullOut();
  action();
  if (home != nullptr && redock && home->logger() == nullptr) home->insert(*this);
}

void Dockable::seat(SimulatedDock& dock, SimulatedLine& line) {
  dock_ = &dock;
  line_ = &line;
  line.listen([this](std::uint8_t byte) {
    if (awake_) hear(byte);
  });
  dockChanged(true);
}

void Dockable::unseat() {
  doze();
  line_->listen(nullptr);
  line_ = nullptr;
  dock_ = nullptr;
  dockChanged(false);
}

void Dockable::wake() {
  awake_ = true;
  attentionChanged();
}

void Dockable::doze() {
  awake_ = false;
  attentionChanged();
  line_->dropUnsent();
}

}  // namespace hy_wristlog::simulator
