#include <gtest/gtest.h>

#include <optional>

#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

/// Every how manyth position of a long series is tried: all of them, or, under sanitizers, some.
#ifdef __SANITIZE_ADDRESS__
constexpr std::int32_t Stride = 17;
#else
constexpr std::int32_t Stride = 1;
#endif

struct Undisturbed {
  std::vector<std::uint8_t> Memory;
  ActivitySeries Activity;
  std::int32_t Rounds = 0;

  explicit Undisturbed(enmLoggerPointer model) {
    const auto desk = ended(model);
    Memory = desk->logger().recordedBytes();
    EXPECT_EQ(desk->retrieve(), 0);
    Activity = desk->data->Get_ActivityArray();
    Rounds = desk->host->Rounds;
    EXPECT_GT(Activity.size(), 5U);
  }
};

/// What a retrieval that was broken off must leave, and that the next one brings everything.
void expectNothingLost(Workbench& desk, const Undisturbed& good) {
  EXPECT_TRUE(desk.portClosed());
  ASSERT_EQ(desk.logger().recordedBytes(), good.Memory);
  desk.wait(60s);
  ASSERT_EQ(desk.retrieve(), 0);
  ASSERT_EQ(desk.data->Get_ActivityArray(), good.Activity);
}

/// Whether the logger heard another command than in an undisturbed session: it forgets what is typed too
/// slowly.
bool misheard(const Workbench& desk, const Workbench& undisturbed) {
  const auto& heard = desk.logger().commands();
  const auto& whole = undisturbed.logger().commands();
  for (std::size_t i = 0; i < heard.size(); ++i)
    if (i >= whole.size() || (heard[i] != whole[i] && !heard[i].starts_with("clock time 1"))) return true;
  return false;
}

TEST(Interruption, APauseOfTheProcessIsNoSilence) {
  constexpr std::int32_t Never = 1 << 30;
  constexpr auto BetweenBytes = 1s;  // of a packet: then the logger refuses it
  std::int32_t tried = 0, ofTheLogger = 0;
  std::int32_t (*const workflows[])(Workbench&) = {[](Workbench& desk) { return desk.status(); },
                                                   [](Workbench& desk) { return desk.retrieve(); },
                                                   [](Workbench& desk) { return desk.configure(); }};
  for (const enmLoggerPointer model : Models)
    for (const auto run : workflows) {
      const auto good = ended(model, 90min);
      simulator::Fault& unpaused = good->bench.World->Faults.Pause.When = {Never, 1};
      ASSERT_EQ(run(*good), 0);
      const std::int32_t calls = Never - unpaused.Skip;
      for (const auto pause : {400ms, 1200ms, 5000ms})
        for (auto at = static_cast<std::int32_t>(pause.count() % 97); at < calls; at += 97 * Stride) {
          SCOPED_TRACE(std::to_string(pause.count()) + " ms at call " + std::to_string(at) + " of the clock");
          const auto desk = ended(model, 90min);
          desk->bench.World->Faults.Pause = {pause, once(at)};
          const std::int32_t code = run(*desk);
          const bool same =
              code != 0 || !good->data ||
              (desk->data && desk->data->Get_ActivityArray() == good->data->Get_ActivityArray());
          EXPECT_TRUE(same);
          const bool impatient = pause > BetweenBytes && desk->logger().commands().back() == "config";
          ++tried;
          if (misheard(*desk, *good) || impatient) {
            ++ofTheLogger;
            continue;
          }
          EXPECT_EQ(code, 0);
          EXPECT_EQ(desk->simple, good->simple);
        }
    }
  EXPECT_LT(ofTheLogger, tried / 6);
}

TEST(Interruption, AnAbortAtAnyRound) {
  const std::int32_t step = 23 * Stride;
  for (const enmLoggerPointer model : Models) {
    const Undisturbed good(model);
    Workbench trial(model);
    EXPECT_EQ(trial.configure(), 0);
    for (std::int32_t round = 1; round <= std::max(good.Rounds, trial.host->Rounds); round += step) {
      SCOPED_TRACE("round " + std::to_string(round));
      const auto desk = ended(model);
      desk->host->AbortIn = round;
      EXPECT_TRUE(desk->retrieve() == 10013 || round + 60 > good.Rounds);
      desk->host->AbortIn = -1;
      ASSERT_NO_FATAL_FAILURE(expectNothingLost(*desk, good));

      Workbench configured(model);
      configured.host->AbortIn = round;
      const auto changes = [&] {
        return std::ranges::count_if(configured.logger().commands(), [](const std::string& line) {
          return !line.empty() && !line.starts_with("show");
        });
      };
      std::ptrdiff_t before = 0;
      configured.host->EachRound = [&] {
        if (configured.host->Rounds == round) before = changes();
      };
      // An abort has no code of its own here. The command that is on its way is the last that changes
      // anything, and a transfer that was broken off is not begun anew.
      EXPECT_EQ(configured.configure(), 0);
      configured.host->EachRound = nullptr;
      EXPECT_TRUE(changes() <= before + 1 || round + 60 > trial.host->Rounds) << before << " " << changes();
      EXPECT_EQ(configured.heard("show clock mode"), 0U);
      configured.host->AbortIn = -1;
      EXPECT_TRUE(configured.serialNumber.empty() || round + 60 > trial.host->Rounds);
      EXPECT_TRUE(configured.portClosed());
      configured.wait(20s);
      ASSERT_EQ(configured.configure(), 0);
    }
  }
}

/// The time from an abort `after` so many seconds of a workflow to the workflow's end; none when it had
/// ended.
std::optional<double> timeToEnd(Workbench& desk, std::int32_t (*run)(Workbench&), double after) {
  const double begun = desk.bench.World->elapsed();
  const auto passed = [&] { return desk.bench.World->elapsed() - begun; };
  bool asked = false;
  desk.host->EachRound = [&] {
    if (asked || passed() < after) return;
    asked = true;
    desk.main->AbortComms();
  };
  run(desk);
  desk.host->EachRound = nullptr;
  return asked ? std::optional(passed() - after) : std::nullopt;
}

TEST(Interruption, AnAbortIsOverSoonWhereWaitsEndWithTheirInput) {
  constexpr double Longest = 1.5;
  std::int32_t (*const workflows[])(Workbench&) = {[](Workbench& desk) { return desk.status(); },
                                                   [](Workbench& desk) { return desk.retrieve(); },
                                                   [](Workbench& desk) { return desk.configure(); }};
  const Arrange nothing = [](Workbench&) {}, heals = [](Workbench&desk) { desk.logger().Faults = {}; },
                lost = [](Workbench&desk) {
                  auto& transfer = desk.logger().Faults.Transfer;
                  transfer.LosePacket = transfer.LoseAnswer = transfer.LoseInvitation = always();
                };
  const std::pair<Arrange, double> troubles[] = {{nothing, 0.053}, {Silent, 0.371}, {lost, 0.971}};
  for (const auto& [trouble, between] : troubles)
    for (const enmLoggerPointer model : Models)
      for (const auto run : workflows)
        for (double after = 0;; after += between * Stride) {
          SCOPED_TRACE(std::to_string(after) + " s after the beginning");
          const auto desk = ended(model);
          desk->main->Let_WakeOnInput(true);
          trouble(*desk);
          const auto took = timeToEnd(*desk, run, after);
          if (!took) break;
          ASSERT_LE(*took, Longest);
          EXPECT_TRUE(desk->portClosed());
          heals(*desk);
          EXPECT_EQ(desk->status(), 0);
          ASSERT_TRUE(desk->simple.starts_with("Ready") || desk->simple.starts_with("Waiting"))
              << desk->simple;
        }
}

TEST(Interruption, ADockThatIsPulledOutIsToldAtOnceWhereWaitsEndWithTheirInput) {
  constexpr double AtOnce = 0.1;
  constexpr std::uint64_t FirstData = 700, Between = 53 * Stride;
  const Undisturbed good(LggrPntr_KRVivid);
  for (const enmLoggerPointer model : Models)
    for (std::uint64_t at = FirstData; at < FirstData + good.Memory.size(); at += Between) {
      SCOPED_TRACE("after " + std::to_string(at) + " bytes");
      const auto desk = ended(model);
      desk->main->Let_WakeOnInput(true);
      desk->main->Let_MaxCommunicationRetries(3);
      desk->bench.Dock->unplugAfterBytes(at);
      double pulled = 0;
      desk->bench.line().Faults.Action = [&] {
        pulled = desk->bench.World->elapsed();
        desk->bench.Dock->unplug();
      };
      EXPECT_EQ(desk->retrieve(), 10003);
      ASSERT_GT(pulled, 0);
      EXPECT_LE(desk->bench.World->elapsed(), pulled + AtOnce);
    }
}

TEST(Interruption, AWorkflowInsideAWorkflowIsRefused) {
  const Undisturbed good(LggrPntr_KRVivid);
  const auto desk = ended(LggrPntr_KRVivid);
  std::shared_ptr<Class_VardenLogger> data;
  auto subject = std::make_shared<Class_Subject>();
  enmDecodeResult verdict = Decode_OK;
  std::string simple, words;
  desk->host->EachRound = [&] {
    EXPECT_EQ(desk->main->GetStatus(LggrPntr_KRVivid, simple, words, data, subject), 5);
    EXPECT_EQ(desk->main->Retrieve(LggrPntr_KRVivid, data, subject, verdict), 5);
    EXPECT_EQ(desk->main->Configure(LggrPntr_KRVivid, VardenMode_ActivityOnly, 30, *subject), 5);
  };
  EXPECT_EQ(desk->retrieve(), 0);
  EXPECT_GT(desk->host->Rounds, 10);
  EXPECT_EQ(data, nullptr);
  desk->host->EachRound = nullptr;
  expectNothingLost(*desk, good);
}

}  // namespace
}  // namespace hy_wristlog::workbench
