#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hy_wristlog/failure.h"
#include "simulator/simulated_world.h"

namespace hy_wristlog {

/// A simulated world with three zones.
class CodecWorld : public simulator::SimulatedWorld {
 public:
  CodecWorld() {
    const auto add = [&](const char* key, std::int32_t bias, const char* display) {
      platform::ZoneRule rule;
      rule.Bias = bias;
      zones_.Records[key] = {rule, display, key, key, ""};
    };
    add("Eastern Standard Time", 300, "(GMT-05:00) Eastern");
    add("India Standard Time", -330, "(GMT+05:30) Chennai");
    add("Greenwich Standard Time", 0, "(GMT) Greenwich");
    auto& eastern = *zones_.Records["Eastern Standard Time"].Rule;
    eastern.DaylightBias = -60;
    eastern.DaylightDate = {0, 3, 0, 2, 2, 0, 0, 0};
    eastern.StandardDate = {0, 11, 0, 1, 2, 0, 0, 0};
  }

  platform::ZoneRecords& zones() override { return zones_; }

 private:
  struct Zones : platform::ZoneRecords {
    std::map<std::string, platform::ZoneRecord, std::less<>> Records;
    std::vector<std::string> keys() override {
      std::vector<std::string> result;
      for (const auto& [key, record] : Records) result.push_back(key);
      return result;
    }
    platform::ZoneRecord read(std::string_view key) override { return Records.find(key)->second; }
    std::string localStandardName() override { return {}; }
  };
  Zones zones_;
};

class InCodecWorld : public testing::Test {
 protected:
  std::shared_ptr<CodecWorld> world = std::make_shared<CodecWorld>();
  InCodecWorld() { former_ = platform::use(world); }
  ~InCodecWorld() override { platform::use(former_); }

 private:
  std::shared_ptr<platform::Platform> former_;
};

/// The number of the failure that `step` raises, 0 when none.
template <class Step>
std::int32_t failureOf(Step&& step, std::string* description = nullptr, std::string* source = nullptr) {
  try {
    step();
    return 0;
  } catch (const Failure& failure) {
    if (description != nullptr) *description = failure.Description;
    if (source != nullptr) *source = failure.Source;
    return failure.Number;
  }
}

}  // namespace hy_wristlog
