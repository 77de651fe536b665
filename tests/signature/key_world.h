#pragma once

#include <string>

#include "platform/linux/linux_platform.h"
#include "simulator/simulated_world.h"
#include "support/in_world.h"
#include "support/surroundings.h"
#include "support/without_start_up.h"

namespace hy_wristlog {

/// A simulated world that makes its key pairs as the machine does, at once.
struct KeyWorld : simulator::SimulatedWorld {
  std::string keys() { return rootFolder() + "/AppData/HY_Wristlog/Keys"; }
  platform::CryptographicProvider& cryptography() override { return Machine->cryptography(); }
  std::shared_ptr<platform::Platform> Machine = platform::makeLinuxPlatform();
};

}  // namespace hy_wristlog
