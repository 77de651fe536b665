#pragma once

#include <memory>
#include <string>
#include <vector>

#include "errors/GlobalState.h"
#include "simulator/simulated_world.h"
#include "support/in_world.h"
#include "support/noting_host.h"

namespace hy_wristlog::failing {

/// A world that begins on 2 March 2026, 9:00 local time, and notes the stack's size at each save of the log.
struct World {
  World() {
    Simulated->setHost(Reader);
    globals().saveErrorRecords = [this] { Saved.push_back(globals().ErrorStack.size()); };
  }
  InWorld<simulator::SimulatedWorld> Simulated;
  std::shared_ptr<NotingHost> Reader = std::make_shared<NotingHost>();
  std::vector<std::size_t> Saved;
};

inline Class_ErrorAction action(const std::variant<std::int32_t, std::string>& number,
                                const std::string& module, const std::string& procedure, std::int32_t code,
                                int limit = -1, bool show = false, bool log = false,
                                const std::string& text = {}) {
  return {text, static_cast<std::int16_t>(limit), module, procedure, number, code, show, log};
}

}  // namespace hy_wristlog::failing
