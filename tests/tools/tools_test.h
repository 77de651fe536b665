#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/faults.h"
#include "simulator/simulated_world.h"
#include "support/failures.h"
#include "support/in_world.h"
#include "support/without_start_up.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using Bytes = std::vector<std::uint8_t>;
inline Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

struct WatchedHost final : Host {
  void serveEvents() override { ++Served; }
  MessageBoxButton showMessageBox(std::string_view, std::string_view text, std::int32_t) override {
    Boxes.emplace_back(text);
    return MessageBoxButton::Ok;
  }
  int Served = 0;
  std::vector<std::string> Boxes;
};

struct ToolsTest : testing::Test {
  ToolsTest() { world_->setHost(host_); }
  std::shared_ptr<WatchedHost> host_ = std::make_shared<WatchedHost>();
  InWorld<simulator::SimulatedWorld> world_;
};

}  // namespace hy_wristlog
