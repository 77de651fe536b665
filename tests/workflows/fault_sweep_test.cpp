#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <set>

#include "hy_wristlog/failure_numbers.h"
#include "workflows/pendrel_desk.h"
#include "workflows/workbench.h"

namespace hy_wristlog::workbench {
namespace {

using pendrel_desk::PendrelModel;
using simulator::Direction;
using simulator::LineFaults;
using simulator::SimulatedLine;
using PendrelDesk = pendrel_desk::Desk;

#ifdef __SANITIZE_ADDRESS__
constexpr std::int32_t Sparser = 17;  ///< under sanitizers
#else
constexpr std::int32_t Sparser = 1;
#endif

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

const std::array Troubles{
    Trouble{"cut", false,
            [](LineFaults& faults, Direction direction, std::int32_t byte) {
              (direction == Direction::ToPc ? faults.CutAfterToPc : faults.CutAfterToLogger) = byte;
            }},
    Trouble{"flip", true,
            [](LineFaults& faults, Direction direction, std::int32_t byte) {
              faults.AlterMask = static_cast<std::uint8_t>(1U << byte % 8);
              flip(faults, direction, byte);
            }},
    Trouble{"drop", true, strike<&LineFaults::LoseToLogger, &LineFaults::LoseToPc>},
    Trouble{"double", true, strike<&LineFaults::DoubleToLogger, &LineFaults::DoubleToPc>},
    Trouble{"delay of 300 ms", false, delay},
    Trouble{"delay of 1.5 s", false, [](LineFaults& faults, Direction direction, std::int32_t byte) {
              faults.DelayFor = 1500ms;
              delay(faults, direction, byte);
            }}};

const std::set<std::int32_t> Named{
#define HY_FAILURE_NUMBER(name, number) number,
#define HY_RETURN_CODE(name, number) number,
#include "hy_wristlog/failure_numbers.inc"
};

std::string textOf(const auto& values) {
  std::string text;
  for (const auto& value : values) text += std::to_string(value) + ' ';
  return text;
}

/// A workflow, and what it leaves to its host and in the logger when it succeeds.
template <class Desk>
struct Workflow {
  /// One of so many faults is tried. No multiple of 2 or 3, so that each kind has its turn.
  std::int32_t Step;
  bool Checked;  ///< what the logger sends has a checksum, or is a message that is known
  std::function<std::unique_ptr<Desk>()> Begin;
  std::int32_t (*Run)(Desk&);
  std::string (*Result)(Desk&);
};

/// One fault at a byte: the workflow ends in bounded time with its whole result or with a named failure, and
/// then the next one, on a mended line, with the whole result. Whether waits end with the byte changes the
/// code only where a byte comes at the very end of a silence time.
template <class Desk>
void sweep(const Workflow<Desk>& workflow) {
  const auto begin = [&](bool wakesOnInput) {
    auto desk = workflow.Begin();
    desk->main->Let_WakeOnInput(wakesOnInput);
    return desk;
  };
  const auto good = begin(false);
  const double began = good->bench.World->elapsed();
  ASSERT_EQ(workflow.Run(*good), 0);
  const double patience = 6 * (good->bench.World->elapsed() - began) + 60;
  const std::string whole = workflow.Result(*good);
  const auto traffic = good->bench.line().traffic();
  constexpr auto Kinds = static_cast<std::int32_t>(Troubles.size());
  const auto toPc = static_cast<std::int32_t>(traffic.BytesToPc),
             all = static_cast<std::int32_t>(traffic.total());
  const char* given = std::getenv("WRISTLOG_SWEEP_STEP");
  const std::int32_t step = given ? std::max(std::atoi(given), 1) : workflow.Step * Sparser;
  std::int32_t tries = 0, failed = 0, different = 0;
  for (std::int32_t tried = 0; tried < all * Kinds; tried += step, ++tries) {
    const Trouble& trouble = Troubles[static_cast<std::size_t>(tried % Kinds)];
    const auto direction = tried / Kinds < toPc ? Direction::ToPc : Direction::ToLogger;
    const std::int32_t byte = tried / Kinds - (direction == Direction::ToPc ? 0 : toPc);
    SCOPED_TRACE(std::string(trouble.Name) + " at byte " + std::to_string(byte) +
                 (direction == Direction::ToPc ? " to the PC" : " to the logger"));
    std::int32_t codes[2];
    for (const bool wakesOnInput : {false, true}) {
      const auto desk = begin(wakesOnInput);
      SimulatedLine& line = desk->bench.line();
      trouble.Strike(line.Faults, direction, byte);
      const double start = desk->bench.World->elapsed();
      const std::int32_t code = codes[wakesOnInput ? 1 : 0] = workflow.Run(*desk);
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
    if (codes[0] != codes[1]) ++different;
  }
  EXPECT_GT(failed, 0);
  EXPECT_LE(different, 1 + tries / 1000);
  std::cout << testing::UnitTest::GetInstance()->current_test_info()->name() << ": " << all << " bytes, "
            << tries << " faults, " << failed << " named failures, " << different << " codes differ\n";
}

Workflow<Workbench> status(enmLoggerPointer model) {
  return {model == LggrPntr_KRVivid ? 5 : 61, true, [model] { return ended(model); },
          [](Workbench& desk) {
            // What goes wrong is told in a text, and a Kestrin 2 sought in the other dock.
            const std::int32_t code = desk.status();
            const bool failed = desk.simple == "Error: Problem Reading Configuration" ||
                                desk.simple == "Logger Not Found" || desk.simple == "Dock Not Connected";
            return code == 0 && failed ? FailureNumber::DamagedConfig : code;
          },
          [](Workbench& desk) { return desk.simple + desk.text; }};
}

Workflow<Workbench> configure(enmLoggerPointer model) {
  return {model == LggrPntr_KRVivid ? 61 : 121, true, [model] { return ended(model); },
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
          }};
}

Workflow<Workbench> retrieve(enmLoggerPointer model) {
  return {model == LggrPntr_KRVivid ? 41 : 121, true, [model] { return ended(model); },
          [](Workbench& desk) { return desk.retrieve(); },
          [](Workbench& desk) { return textOf(desk.data->Get_ActivityArray()); }};
}

/// A reset has ended the recording, whose bytes do not change any more.
std::function<std::unique_ptr<PendrelDesk>()> endedPendrel(PendrelModel model) {
  return [model] {
    auto desk = std::make_unique<PendrelDesk>(model);
    desk->record(20min);
    desk->logger().powerReset();
    desk->bench.line().resetTraffic();
    return desk;
  };
}

Workflow<PendrelDesk> pendrelSetup(PendrelModel model) {
  return {model == PendrelModel::Steps ? 5 : 31, model != PendrelModel::Plain, endedPendrel(model),
          [](PendrelDesk& desk) { return desk.workflows.ReadPendrelSetup(false); },
          [](PendrelDesk& desk) {
            // After the seven lines comes their checksum, which stands for the same sum with a digit in the
            // other case, or doubled at its end.
            constexpr std::int32_t Lines = 7;
            std::string text = desk.workflows.Details().SetupText;
            std::size_t end = 0;
            for (std::int32_t i = 0; i < Lines; ++i) end = text.find('\n', end) + 1;
            return text.substr(0, end) + std::to_string(desk.read().AcquisitionMode);
          }};
}

Workflow<PendrelDesk> pendrelConfigure(PendrelModel model) {
  return {97, model != PendrelModel::Plain, endedPendrel(model),
          [](PendrelDesk& desk) {
            desk.start = 1772452800;  // 2026-03-02 12:00
            return desk.configure();
          },
          [](PendrelDesk& desk) {
            const auto& texts = desk.logger().parts().Texts;
            return texts.Subject + texts.StartDate + texts.StartTime + desk.serialNumber +
                   (desk.logger().waiting() ? "" : " does not wait");
          }};
}

Workflow<PendrelDesk> pendrelRetrieve(PendrelModel model) {
  return {model == PendrelModel::Steps ? 1201 : 2003, model != PendrelModel::Plain, endedPendrel(model),
          [](PendrelDesk& desk) { return desk.retrieve(); },
          [](PendrelDesk& desk) { return textOf(desk.read().ActivityArray); }};
}

struct Swept {
  std::string Name;
  std::function<void()> Sweep;
  friend void PrintTo(const Swept& swept, std::ostream* out) { *out << swept.Name; }
};

std::vector<Swept> everyWorkflow() {
  std::vector<Swept> all;
  const auto add = [&](const std::string& name, const auto& workflow) {
    all.push_back({name, [=] { sweep(workflow); }});
  };
  for (const enmLoggerPointer model : Models) {
    const std::string name = model == LggrPntr_KRVivid ? "Vivid" : "Kestrin2";
    add(name + "Status", status(model));
    add(name + "Configure", configure(model));
    add(name + "Retrieve", retrieve(model));
  }
  for (const PendrelModel model : pendrel_desk::Models) {
    const std::string name = "Pendrel" + std::to_string(static_cast<int>(model));
    add(name + "Setup", pendrelSetup(model));
    add(name + "Configure", pendrelConfigure(model));
    add(name + "Retrieve", pendrelRetrieve(model));
  }
  return all;
}

// A sample of the faults, most sparse where data pass that are long and alike. `./dev sweep` tries every
// fault at every byte.
class FaultSweep : public testing::TestWithParam<Swept> {};
TEST_P(FaultSweep, AFaultAtAnyByteGivesAllOrANamedFailure) { GetParam().Sweep(); }
INSTANTIATE_TEST_SUITE_P(Every, FaultSweep, testing::ValuesIn(everyWorkflow()),
                         [](const auto& swept) { return swept.param.Name; });

}  // namespace
}  // namespace hy_wristlog::workbench
