#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <optional>
#include <string>

#include "errors/Procedure.h"
#include "errors/failing_world.h"
#include "support/failures.h"

namespace {
std::size_t allocations = 0;
}

[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace hy_wristlog {
namespace {

using failing::action;

/// Calls a procedure of three statements, of which the second fails `failures` times, and notes a letter for
/// each thing that runs and the value that the second statement gives.
int call(Procedure& procedure, int failures, std::string& course) {
  procedure.cleanUp([&course] {
    course += 'z';
    throw Failure(99, "", "forgotten");
  });
  return procedure.run([&] {
    procedure.statement([&] { course += 'a'; });
    const int value = procedure.statement([&] {
      course += 'b';
      if (failures-- > 0) throw Failure(42, "", "broken");
      return 7;
    });
    course += std::to_string(value);
    procedure.statement([&] { course += 'c'; });
    return 1;
  });
}

struct ProcedureTest : testing::Test {
  failing::World world;
};

TEST_F(ProcedureTest, TheAnswerDrivesTheProcedure) {
  using enum ProcedureKind;
  using enum TrapAnswer;
  const char* const stamped = "42 42:M.p@3/2/2026 9:00:00 AM broken";
  // clang-format off
  const struct {
    std::int32_t Action;
    ProcedureKind Kind;
    int Failures;
    const char *Course, *Raised;
    std::optional<TrapAnswer> Trap{};
    bool PassesOn = false, Everywhere = false;
  } cases[] = {
      {errResume, Ordinary, 2, "abbb7cz", ""}, {errResumeNext, Ordinary, 1, "ab0cz", ""},
      {errExit, Ordinary, 1, "abz", ""}, {errRaise, Ordinary, 1, "abz", stamped},
      {errRaiseAll, Ordinary, 1, "abz", stamped}, {errClose, Ordinary, 1, "abz", ""},
      {errRaise, Command, 1, "abz", ""}, {errRaise, Command, 0, "ab7cz", ""},
      // A statement that fails on and on is given up.
      {errResume, Ordinary, 1000, "abbbbbbz", stamped}, {errResume, Command, 1000, "abbbbbbz", ""},
      // The procedure's own trap comes first.
      {errRaise, Ordinary, 1, "abz", stamped, Dispatch}, {errRaise, Ordinary, 2, "abbb7cz", "", Repeat},
      {errRaise, Ordinary, 1, "ab0cz", "", GoOn}, {errRaise, Ordinary, 1, "abz", "", Leave},
      {errExit, Ordinary, 1, "abz", "42 trap broken", Raise},
      // Normal failures are passed on unless the site has an action for them right here.
      {errResumeNext, Ordinary, 1, "abz", stamped, {}, true, true},
      {errResumeNext, Ordinary, 1, "ab0cz", "", {}, true},
  };
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    globals().emptyErrorStack();
    const auto at = [&](const char* name) { return c.Everywhere ? "Generic" : name; };
    globals().ErrorActions = {action(42, at("M"), at("p"), c.Action, 5)};
    std::string course;
    int result = -1;
    Procedure procedure{"M", "p", c.Kind};
    if (c.PassesOn) procedure.passesOn(3001, 42);
    if (c.Trap)
      procedure.trap([&c](Failure& failure) {
        if (c.Trap == Raise) failure.Source = "trap";
        return *c.Trap;
      });
    const Failure failure = caught([&] { result = call(procedure, c.Failures, course); });
    const bool raises = failure.Number != 0;
    EXPECT_EQ(course, c.Course);
    EXPECT_EQ(raises ? std::to_string(failure.Number) + " " + failure.Source + " " + failure.Description : "",
              c.Raised);
    EXPECT_EQ(result, raises ? -1 : course.ends_with("cz") ? 1 : 0);
    const bool dispatched = c.Failures > 0 && c.Trap.value_or(Dispatch) == Dispatch;
    EXPECT_EQ(globals().ErrorStack.size() > 1, dispatched && c.Kind == Ordinary);
    EXPECT_EQ(globals().ErrorStack[0].has_value(), dispatched);
  }
}

TEST_F(ProcedureTest, AStormBelowEndsEveryProcedureUpToTheCommand) {
  for (const bool storm : {true, false}) {
    globals().emptyErrorStack();
    world.Saved.clear();
    const std::int32_t above = storm ? errResumeNext : errRaise;
    globals().ErrorActions = {action(42, "Generic", "Generic", storm ? errRaiseAll : errRaise),
                              action("Generic", "M", "middle", above),
                              action("Generic", "M", "command", above, 2, false, true)};
    std::string course;
    Procedure command{"M", "command", ProcedureKind::Command}, middle{"M", "middle"}, procedure{"M", "p"};
    const auto lower = [&] { middle.statement([&] { call(procedure, 1, course); }), course += 'm'; };
    command.run([&] { command.statement([&] { middle.run(lower); }), course += 'c'; });
    EXPECT_EQ(course, "abz");
    const Class_ErrorRecord& last = *globals().ErrorStack.at(0);
    EXPECT_EQ(last.ErrorProcedure, "command");
    EXPECT_EQ(last.ErrorOriginalSource, "42:M.p@3/2/2026 9:00:00 AM") << "where it was first seen";
    EXPECT_EQ(last.DisplayedMessage.starts_with("Application process stopped"), storm);
    EXPECT_EQ(world.Saved, storm ? (std::vector<std::size_t>{3, 4}) : (std::vector<std::size_t>{4}));
  }
}

TEST_F(ProcedureTest, AnEchoIsSilentButCountsInACommand) {
  for (const auto kind : {ProcedureKind::Command, ProcedureKind::Ordinary}) {
    Class_ErrorRecord former;
    former.ErrorTime = now();
    globals().ErrorStack.assign(1, former);
    std::string course;
    Procedure outer{"M", "outer", kind}, procedure{"M", "p"};
    outer.trap([&course](Failure& failure) {
      course += std::to_string(failure.Number);
      return TrapAnswer::Dispatch;
    });
    outer.run([&] { outer.statement([&] { call(procedure, 1, course); }), course += 'c'; });
    EXPECT_EQ(course, kind == ProcedureKind::Command ? "abz42" : "abzc");
    EXPECT_EQ(world.Saved.size(), 0U);
    EXPECT_FALSE(globals().ErrorStack.back()->MsgboxWasDisplayed);
  }
}

TEST_F(ProcedureTest, TheWayWithoutFailuresAllocatesNothing) {
  int calls = 0, cleanUps = 0;
  globals().emptyErrorStack();
  const std::size_t before = allocations;
  for (const auto kind : {ProcedureKind::Ordinary, ProcedureKind::Command}) {
    Procedure procedure{"A module with a name that fits no small string", "A procedure", kind};
    procedure.passesOn(3001, 3002, 3003);
    procedure.trap([&calls](Failure&) { return calls > 0 ? TrapAnswer::Leave : TrapAnswer::GoOn; });
    procedure.cleanUp([&calls, &cleanUps] { cleanUps = calls; });
    procedure.run([&] { procedure.statement([&] { ++calls; }); });
  }
  EXPECT_EQ(allocations, before);
  EXPECT_EQ(cleanUps, 2);
}

}  // namespace
}  // namespace hy_wristlog
