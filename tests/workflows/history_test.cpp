#include <gtest/gtest.h>

#include <tuple>

#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

constexpr std::int32_t Step = 53;

/// What a host learns of a workflow.
using Outcome = std::tuple<std::int32_t, std::string, std::string, ActivitySeries, enmDecodeResult>;
using Workflow = std::int32_t (*)(Workbench&);

const std::pair<const char*, Arrange> Earlier[] = {
    {"nothing", [](Workbench&) {}},
    {"a failed one",
     [](Workbench& desk) {
       badConfig()(desk);
       desk.status();
       badConfig({})(desk);
       EXPECT_EQ(desk.simple, "Error: Problem Reading Configuration");
     }},
    {"one that failed in itself",
     [](Workbench& desk) {
       desk.subject = nullptr;
       EXPECT_EQ(desk.retrieve(), 91);
       EXPECT_TRUE(desk.portClosed());
       desk.subject = std::make_shared<Class_Subject>();
     }},
    {"an aborted one",
     [](Workbench& desk) {
       desk.host->AbortIn = desk.host->Rounds + 70;
       EXPECT_EQ(desk.retrieve(), 10013);
     }},
    {"a refused one", [](Workbench& desk) { EXPECT_EQ(desk.configure({.Mode = 99}), 10005); }},
    {"a good one", [](Workbench& desk) { EXPECT_EQ(desk.status(), 0); }}};

/// The workflow with one lost byte, `gap` after an earlier one. The recording has ended, so that its bytes do
/// not change meanwhile.
Outcome disturbed(Workflow workflow, std::int32_t lostByte, const Arrange& earlier,
                  simulator::nanoseconds gap) {
  const auto desk = ended(LggrPntr_KRVivid);
  earlier(*desk);
  desk->wait(gap);
  desk->data = nullptr;
  desk->simple = desk->text = "";
  desk->result = Decode_InputError;
  desk->bench.line().Faults.LoseToPc = once(lostByte);
  const std::int32_t code = workflow(*desk);
  return {code, desk->simple, desk->text, desk->data ? desk->data->Get_ActivityArray() : ActivitySeries{},
          desk->result};
}

TEST(History, WhatRanBeforeChangesNoAnswer) {
  constexpr std::int32_t BytesOfAStatus = 800;
  const std::tuple<const char*, Workflow, std::int32_t> workflows[] = {
      {"GetStatus", [](Workbench& desk) { return desk.status(); }, BytesOfAStatus},
      {"Retrieve", [](Workbench& desk) { return desk.retrieve(); }, 3 * BytesOfAStatus},
      {"Configure", [](Workbench& desk) { return desk.configure(); }, 3 * BytesOfAStatus}};
  for (const auto& [name, workflow, bytes] : workflows) {
    int failures = 0;
    for (std::int32_t lost = 0; lost < bytes; lost += Step) {
      const Outcome alone = disturbed(workflow, lost, Earlier[0].second, 20s);
      failures += std::get<0>(alone) != 0 || std::get<1>(alone).starts_with("Error");
      for (const auto& [before, earlier] : Earlier)
        for (const auto gap : {1s, 20s})
          EXPECT_EQ(disturbed(workflow, lost, earlier, gap), alone)
              << name << " with byte " << lost << " lost, " << gap.count() << " s after " << before;
    }
    EXPECT_GT(failures, 0) << name << ": the faults are felt";
  }
}

/// A host that asks again and again must not be told in the end that the logger may be configured.
TEST(History, ADamagedConfigurationIsToldEachTime) {
  const auto desk = recorded(LggrPntr_KRVivid, 5min);
  badConfig()(*desk);
  for (int i = 0; i < 5; ++i, desk->wait(2s)) {
    EXPECT_EQ(desk->status(), 0);
    EXPECT_EQ(desk->simple, "Error: Problem Reading Configuration");
  }
}

}  // namespace
}  // namespace hy_wristlog::workbench
