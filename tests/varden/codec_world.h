#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hy_wristlog/failure.h"
#include "platform/platform.h"

namespace hy_wristlog {

/// A world with a standing clock and three zones, where nothing else can be reached.
class CodecWorld : public platform::Platform {
 public:
  struct StandingClock : platform::Clock {
    CivilTime Now{2024, 6, 15, 12, 0, 0, 0};
    CivilTime utc() override { return Now; }
    CivilTime local() override { return Now; }
    double timer() override { return 0; }
    void sleep(std::chrono::milliseconds) override {}
    void idle() override {}
  };
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
  struct Nowhere : platform::Environment {
    std::string specialFolder(std::int32_t) override { return {}; }
    std::string libraryFolder() override { return {}; }
    std::string localeInfo(platform::LocaleItem) override { return {}; }
    std::optional<std::string> variable(std::string_view) override { return {}; }
    std::string userName() override { return "tester"; }
    std::string domainName() override { return {}; }
    std::string computerName() override { return {}; }
    std::string errorText(std::int32_t) override { return {}; }
  };

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

  StandingClock& clock() override { return clock_; }
  Zones& zones() override { return zones_; }
  platform::Environment& environment() override { return environment_; }
  platform::SerialPorts& serialPorts() override { throw std::logic_error("no ports"); }
  platform::DeviceTree& deviceTree() override { throw std::logic_error("no devices"); }
  platform::SettingsStore& settings() override { throw std::logic_error("no settings"); }
  platform::Files& files() override { throw std::logic_error("no files"); }
  platform::CryptographicProvider& cryptography() override { throw std::logic_error("no provider"); }

 private:
  StandingClock clock_;
  Zones zones_;
  Nowhere environment_;
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
