#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "hy_wristlog/failure_numbers.h"
#include "workflows/pendrel_desk.h"
#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

/// Every how manyth position of a long series is tried: all of them, or, under sanitizers, some.
#ifdef __SANITIZE_ADDRESS__
constexpr std::int32_t Stride = 17;
#else
constexpr std::int32_t Stride = 1;
#endif

/// A short recording in its dock, ended, so that its bytes do not change any more.
std::unique_ptr<Workbench> shortRecording(enmLoggerPointer model, std::chrono::minutes worn = 5min) {
  auto desk = recorded(model, worn);
  desk->stored().set(block::StopTime, desk->bench.World->now());
  desk->wait(31s);
  desk->bench.line().resetTraffic();
  return desk;
}

/// A workflow, and what it leaves to its host and in the logger when it succeeds.
template <class Desk>
struct Workflow {
  std::string Name;
  /// One of so many faults is tried. No multiple of 2 or 3, so that each kind has its turn.
  std::int32_t Step;
  bool Checked;  ///< what the logger sends has a checksum, or is a message that is known
  std::int32_t (*Run)(Desk&);
  std::string (*Result)(Desk&);
};

using simulator::Direction;
using simulator::LineFaults;
using simulator::SimulatedLine;

struct Trouble {
  const char* Name;
  bool Falsifies;  ///< as many bytes come or more, and not all as they were sent
  void (*Strike)(LineFaults&, Direction, std::int32_t byte);
};

template <Fault LineFaults::*ToLogger, Fault LineFaults::*ToPc>
void strike(LineFaults& faults, Direction direction, std::int32_t byte) {
  faults.*(direction == Direction::ToPc ? ToPc : ToLogger) = once(byte);
}
constexpr auto flip = strike<&LineFaults::AlterToLogger, &LineFaults::AlterToPc>,
               delay = strike<&LineFaults::DelayToLogger, &LineFaults::DelayToPc>;

const Trouble Troubles[] = {
    {"cut", false,
     [](LineFaults& faults, Direction direction, std::int32_t byte) {
       (direction == Direction::ToPc ? faults.CutAfterToPc : faults.CutAfterToLogger) = byte;
     }},
    {"flip", true,
     [](LineFaults& faults, Direction direction, std::int32_t byte) {
       faults.AlterMask = static_cast<std::uint8_t>(1U << byte % 8);
       flip(faults, direction, byte);
     }},
    {"drop", true, strike<&LineFaults::LoseToLogger, &LineFaults::LoseToPc>},
    {"double", true, strike<&LineFaults::DoubleToLogger, &LineFaults::DoubleToPc>},
    {"delay of 300 ms", false, delay},
    {"delay of 1.5 s", false, [](LineFaults& faults, Direction direction, std::int32_t byte) {
       faults.DelayFor = 1500ms;
       delay(faults, direction, byte);
     }}};

const std::set<std::int32_t> Named{
#define HY_FAILURE_NUMBER(name, number) number,
#define HY_RETURN_CODE(name, number) number,
#include "hy_wristlog/failure_numbers.inc"
};

/// One fault at a byte: the workflow ends in bounded time with its whole result or with a named failure, and
/// then the next one, on a mended line, with the whole result.
template <class Desk>
void sweep(const std::function<std::unique_ptr<Desk>()>& begin, const Workflow<Desk>& workflow) {
  const auto good = begin();
  const double began = good->bench.World->elapsed();
  ASSERT_EQ(workflow.Run(*good), 0) << workflow.Name;
  const double patience = 6 * (good->bench.World->elapsed() - began) + 60;
  const std::string whole = workflow.Result(*good);
  const auto traffic = good->bench.line().traffic();
  constexpr auto Kinds = static_cast<std::int32_t>(std::size(Troubles));
  const auto toPc = static_cast<std::int32_t>(traffic.BytesToPc),
             all = static_cast<std::int32_t>(traffic.total());
  const char* given = std::getenv("WRISTLOG_SWEEP_STEP");
  const std::int32_t step = (given ? std::atoi(given) : workflow.Step) * Stride;
  std::int32_t failed = 0;
  for (std::int32_t tried = 0; tried < all * Kinds; tried += step) {
    const Trouble& trouble = Troubles[tried % Kinds];
    const auto direction = tried / Kinds < toPc ? Direction::ToPc : Direction::ToLogger;
    const std::int32_t byte = tried / Kinds - (direction == Direction::ToPc ? 0 : toPc);
    SCOPED_TRACE(workflow.Name + ", " + trouble.Name + " at byte " + std::to_string(byte) +
                 (direction == Direction::ToPc ? " to the PC" : " to the logger"));
    const auto desk = begin();
    SimulatedLine& line = desk->bench.line();
    trouble.Strike(line.Faults, direction, byte);
    const double start = desk->bench.World->elapsed();
    const std::int32_t code = workflow.Run(*desk);
    EXPECT_EQ(Named.count(code), 1U) << code;
    EXPECT_NE(code, ReturnCode::DecodeProblem) << "a verdict on what the logger does not hold";
    EXPECT_LT(desk->bench.World->elapsed() - start, patience);
    EXPECT_TRUE(desk->portClosed());
    if (code == 0) {
      const bool unseen = !workflow.Checked && trouble.Falsifies && direction == Direction::ToPc;
      EXPECT_TRUE(unseen || workflow.Result(*desk) == whole);
      continue;
    }
    ++failed;
    line.Faults = {};
    line.reconnect();
    desk->bench.World->advance(60s);
    EXPECT_EQ(workflow.Run(*desk), 0) << "after " << code;
    EXPECT_TRUE(workflow.Result(*desk) == whole) << "after " << code;
  }
  EXPECT_GT(failed, 0) << workflow.Name;
}

std::string textOf(const auto& values) {
  std::string text;
  for (const auto& value : values) text += std::to_string(value) + ' ';
  return text;
}

// Every byte of the shortest workflow of each family has its fault, and a sample of the others', most sparse
// in the data of a Pendrel. WRISTLOG_SWEEP_STEP=1 tries every fault at every byte, which takes more than an
// hour.
TEST(Interruption, AFaultAtAnyByteGivesAllOrANamedFailure) {
  for (const enmLoggerPointer model : Models) {
    const bool vivid = model == LggrPntr_KRVivid;
    const std::string name = vivid ? "Kestrin Vivid, " : "Kestrin 2, ";
    const auto begin = [model] { return shortRecording(model); };
    sweep<Workbench>(begin, {name + "status", vivid ? 5 : 61, true,
                             [](Workbench& desk) {
                               // What goes wrong is told in a text, and a Kestrin 2 sought in the other dock.
                               const std::int32_t code = desk.status();
                               const bool failed = desk.simple == "Error: Problem Reading Configuration" ||
                                                   desk.simple == "Logger Not Found" ||
                                                   desk.simple == "Dock Not Connected";
                               return code == 0 && failed ? FailureNumber::DamagedConfig : code;
                             },
                             [](Workbench& desk) { return desk.simple + desk.text; }});
    sweep<Workbench>(begin, {name + "configure", vivid ? 61 : 121, true,
                             [](Workbench& desk) {
                               ConfigureArguments with;
                               with.Start = 1772582400;  // 2026-03-04
                               with.End = with.Start + 86400;
                               return desk.configure(with);
                             },
                             [](Workbench& desk) {
                               const auto late = desk.bench.World->now() - desk.logger().clock().seconds();
                               return textOf(desk.stored().image()) + (std::abs(late) < 15 ? "" : "late") +
                                      (desk.logger().inStorage() ? "asleep" : "") + desk.serialNumber;
                             }});
    sweep<Workbench>(
        begin, {name + "retrieve", vivid ? 41 : 121, true, [](Workbench& desk) { return desk.retrieve(); },
                [](Workbench& desk) { return textOf(desk.data->Get_ActivityArray()); }});
  }
}

TEST(Interruption, APendrelKeepsTheSamePromise) {
  using pendrel_desk::Desk, pendrel_desk::PendrelModel;
  for (const PendrelModel model : pendrel_desk::Models) {
    const bool steps = model == PendrelModel::Steps, checked = model != PendrelModel::Plain;
    const std::string name = "Pendrel " + std::to_string(static_cast<int>(model)) + ", ";
    // A reset has ended the recording, whose bytes do not change any more.
    const auto begin = [model] {
      auto desk = std::make_unique<Desk>(model);
      desk->record(20min);
      desk->logger().powerReset();
      desk->bench.line().resetTraffic();
      return desk;
    };
    sweep<Desk>(begin, {name + "set-up", steps ? 5 : 31, checked,
                        [](Desk& desk) { return desk.workflows.ReadPendrelSetup(false); },
                        [](Desk& desk) { return desk.workflows.Details().SetupText; }});
    sweep<Desk>(begin, {name + "configure", 97, checked,
                        [](Desk& desk) {
                          desk.start = 1772452800;  // 2026-03-02 12:00
                          return desk.configure();
                        },
                        [](Desk& desk) {
                          const auto& texts = desk.logger().parts().Texts;
                          return texts.Subject + texts.StartDate + texts.StartTime + desk.serialNumber +
                                 (desk.logger().waiting() ? "" : " does not wait");
                        }});
    sweep<Desk>(begin,
                {name + "retrieve", steps ? 1201 : 2003, checked, [](Desk& desk) { return desk.retrieve(); },
                 [](Desk& desk) { return textOf(desk.read().ActivityArray); }});
  }
}

struct Undisturbed {
  std::vector<std::uint8_t> Memory;
  ActivitySeries Activity;
  std::int32_t Rounds = 0;

  explicit Undisturbed(enmLoggerPointer model) {
    const auto desk = shortRecording(model);
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
      const auto good = shortRecording(model, 90min);
      simulator::Fault& unpaused = good->bench.World->Faults.Pause.When = {Never, 1};
      ASSERT_EQ(run(*good), 0);
      const std::int32_t calls = Never - unpaused.Skip;
      for (const auto pause : {400ms, 1200ms, 5000ms})
        for (auto at = static_cast<std::int32_t>(pause.count() % 97); at < calls; at += 97 * Stride) {
          SCOPED_TRACE(std::to_string(pause.count()) + " ms at call " + std::to_string(at) + " of the clock");
          const auto desk = shortRecording(model, 90min);
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
      const auto desk = shortRecording(model);
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

TEST(Interruption, AWorkflowInsideAWorkflowIsRefused) {
  const Undisturbed good(LggrPntr_KRVivid);
  const auto desk = shortRecording(LggrPntr_KRVivid);
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
