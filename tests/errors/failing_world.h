#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "errors/GlobalState.h"
#include "simulator/simulated_world.h"

namespace hy_wristlog::failing {

struct BoxReader : Host {
  MessageBoxButton showMessageBox(std::string_view title, std::string_view text, std::int32_t) override {
    Boxes.push_back(std::string(title) + "|" + std::string(text));
    return MessageBoxButton::Ok;
  }
  std::vector<std::string> Boxes;
};

/// A world that begins on 2 March 2026, 9:00 local time, and notes the stack's size at each save of the log.
struct World {
  World() {
    Simulated->setHost(Reader);
    globals().saveErrorRecords = [this] { Saved.push_back(globals().ErrorStack.size()); };
  }
  ~World() { platform::use(Former); }

  std::shared_ptr<simulator::SimulatedWorld> Simulated = std::make_shared<simulator::SimulatedWorld>();
  std::shared_ptr<platform::Platform> Former = platform::use(Simulated);
  std::shared_ptr<BoxReader> Reader = std::make_shared<BoxReader>();
  std::vector<std::size_t> Saved;
};

inline Class_ErrorAction action(std::variant<std::int32_t, std::string> number, std::string module,
                                std::string procedure, std::int32_t code, std::int16_t limit = -1,
                                bool show = false, bool log = false, std::string text = {}) {
  return {
      std::move(text), limit, std::move(module), std::move(procedure), std::move(number), code, show, log};
}

}  // namespace hy_wristlog::failing
