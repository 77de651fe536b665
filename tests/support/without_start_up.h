#pragma once

#include <gtest/gtest.h>

#include "errors/GlobalState.h"

namespace hy_wristlog {

/// The rooms below start-up are tested without its answers to failures, also where it is linked in.
struct WithoutStartUp : testing::Environment {
  void SetUp() override { setStartUp(nullptr); }
};
inline testing::Environment* const withoutStartUp = testing::AddGlobalTestEnvironment(new WithoutStartUp);

}  // namespace hy_wristlog
