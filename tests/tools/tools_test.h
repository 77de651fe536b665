#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/faults.h"
#include "simulator/simulated_world.h"
#include "support/failures.h"
#include "support/in_world.h"
#include "support/noting_host.h"
#include "support/without_start_up.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using Bytes = std::vector<std::uint8_t>;
inline Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

struct ToolsTest : testing::Test {
  ToolsTest() { world_->setHost(host_); }
  std::shared_ptr<NotingHost> host_ = std::make_shared<NotingHost>();
  InWorld<simulator::SimulatedWorld> world_;
};

}  // namespace hy_wristlog
