#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "errors/Class_Error.h"
#include "errors/failing_world.h"

namespace hy_wristlog {
namespace {

using failing::action;
using Stack = std::vector<std::optional<Class_ErrorRecord>>;

struct Dispatcher : testing::Test {
  /// Failure 42 of a procedure M.p that has not failed before in this call.
  std::int32_t fail(bool command = false, const Class_ErrorAction& own = {}, const std::string& name = "p") {
    Class_Error error{Failure{42, "", "broken"}};
    error.CurrentErrorAction = own;
    error.CurrentError.CommandProc = command;
    return error.fncErrorHandle("M", name);
  }
  static void begin(std::vector<Class_ErrorAction> actions) {
    globals().ErrorActions = std::move(actions);
    globals().emptyErrorStack();
  }
  static Class_ErrorRecord other(std::int32_t answer, int age = 0) {
    Class_ErrorRecord record;
    record.ErrorAction = answer;
    record.ErrorTime = addTime(now(), -age / SecondsPerDay);
    return record;
  }

  failing::World world;
  Stack& stack = globals().ErrorStack;
};

TEST_F(Dispatcher, TheMostSpecialActionDecides) {
  // clang-format off
  const Class_ErrorAction a = action(42, "M", "p", 5001), b = action("Generic", "M", "p", 5002),
                          c = action(42, "Generic", "Generic", 5003),
                          d = action("Generic", "Generic", "Generic", 5006);
  const std::vector near{action(42, "m", "p", 1), action(42, "M", "Generic", 1),
                         action("generic", "M", "p", 1), action("42", "M", "p", 1), action(43, "M", "p", 1)};
  const std::tuple<std::vector<Class_ErrorAction>, Class_ErrorAction, std::int32_t> cases[] = {
      {{d, c, b, a}, {}, 5001}, {{d, c, b}, {}, 5002}, {{d, c}, {}, 5003}, {{d}, {}, 5006}, {near, {}, 5004},
      {{a, action(42, "M", "p", 17)}, c, 5001}, {{action(42, "M", "p", 17)}, a, 17},
      {{d, c, b}, a, 5001}, {{d, c}, b, 5002}, {{d}, c, 5003}};
  // clang-format on
  for (const auto& [actions, own, answer] : cases) {
    begin(actions);
    EXPECT_EQ(fail(false, own), answer);
  }
}

TEST_F(Dispatcher, AFailureWithoutActionIsShownAndLoggedByCommands) {
  for (const bool command : {false, true}) {
    stack.clear();
    EXPECT_EQ(fail(command), command ? errExit : errRaise);
    const Class_ErrorRecord& record = *stack.at(1);
    EXPECT_EQ(record.ErrorOriginalSource, "42:M.p@3/2/2026 9:00:00 AM");
    EXPECT_EQ(record.ErrLogonID + ", " + record.DisplayedMessage, "tester, broken");
    EXPECT_TRUE(record.MsgboxWasDisplayed);
    EXPECT_EQ(record.LogWasWritten, command);
  }
  EXPECT_EQ(world.Saved, std::vector<std::size_t>{2}) << "the log holds the failure that made it";
}

TEST_F(Dispatcher, TooManyFailuresEndTheCommand) {
  // The limit of an action holds from a call's second failure on.
  for (const auto& [limit, last] : {std::pair{-1, 3}, {0, 2}, {1, 2}, {2, 3}, {5, 6}, {-9, 2}}) {
    begin({action(42, "M", "p", errResumeNext, limit)});
    Class_Error error{Failure{42, "", "broken"}};
    for (int i = 1; i <= last; ++i)
      EXPECT_EQ(error.fncErrorHandle("M", "p"), i < last ? errResumeNext : errRaiseAll) << limit << ", " << i;
  }
  // The first failure of a call does not know its action yet, so that former calls count with the usual
  // limit, or with that of the procedure's own action.
  for (const auto& [limit, last] : {std::pair{-1, 4}, {5, 7}, {1, 3}}) {
    begin({action("Generic", "Generic", "Generic", errExit, 10)});
    const Class_ErrorAction own = action(0, "", "", 0, limit);
    for (int i = 0; i < 20; ++i) fail(false, own, "q" + std::to_string(i));
    for (int i = 1; i <= last; ++i)
      EXPECT_EQ(fail(false, own), i < last ? errExit : errRaiseAll) << limit << ", " << i;
  }
}

TEST_F(Dispatcher, TheEchoOfAFailedCommandIsLeftQuietly) {
  globals().ErrorActions = {action(42, "M", "p", errRaise, 2, true, true)};
  const std::tuple<int, bool, bool> cases[] = {
      {0, false, true}, {9, false, true}, {10, false, false}, {-5, false, false}, {3, true, false}};
  for (const auto& [age, inCommand, quiet] : cases) {
    world.Saved.clear();
    stack.assign(inCommand ? 2 : 1, other(errExit, age));
    EXPECT_EQ(fail(), quiet ? errExit : errRaise) << age;
    EXPECT_EQ(world.Saved.empty(), quiet);
    EXPECT_EQ(stack.size(), inCommand ? 3U : 2U);
    EXPECT_EQ(stack.back()->MsgboxWasDisplayed, !quiet);
    EXPECT_EQ(stack.front()->DisplayedMessage, "broken");
  }
}

TEST_F(Dispatcher, AStormSpreadsUpToTheCommand) {
  const std::optional calm = other(errExit), wild = other(errRaiseAll);
  globals().ErrorActions = {action(42, "M", "p", errResumeNext)};
  const std::pair<Stack, bool> cases[] = {
      {{calm, wild, calm}, true}, {{wild, calm}, false}, {Stack(101, calm), false}, {Stack(102, calm), true}};
  for (const auto& [before, storm] : cases)
    for (const bool command : {false, true}) {
      world.Saved.clear();
      stack = before;
      EXPECT_EQ(fail(command), !storm ? errResumeNext : command ? errExit : errRaiseAll);
      EXPECT_EQ(stack.size(), before.size() + 1);
      EXPECT_EQ(world.Saved.size(), storm && command ? 1U : 0U);
      EXPECT_TRUE(!storm || !command ||
                  stack.back()->DisplayedMessage ==
                      "Application process stopped due to muliple errors\r\n"
                      "Please view the error log to determine cause of errors");
    }
}

TEST_F(Dispatcher, MessagesAreShownOnce) {
  const std::tuple<const char*, const char*, const char*, bool> cases[] = {
      {"", "broken", "broken", true},
      {"", "a VbCrLf b", "a \r\n b", false},
      {"onevbcrlfVBCRLFtwo vbcrl", "broken", "one\r\n\r\ntwo vbcrl", true},
      {"", "", "", true},
  };
  for (const auto& [custom, description, message, show] : cases) {
    begin({action("Generic", "Generic", "Generic", errClose, 5, show, false, custom)});
    for (const bool first : {true, false}) {
      Class_Error error{Failure{42, "", description}};
      EXPECT_EQ(error.fncErrorHandle("M", "p"), errClose);
      EXPECT_TRUE(error.CurrentError.DisplayedMessage.starts_with("HY_Wristlog has encountered a condition"));
      EXPECT_EQ(stack.back()->DisplayedMessage, message);
      EXPECT_EQ(stack.back()->MsgboxWasDisplayed, first && show && *message != 0) << message;
    }
  }
}

TEST_F(Dispatcher, AFailureOfItsOwnShowsABoxAndAnswers0) {
  const std::pair<std::function<void()>, const char*> cases[] = {
      {[] { throw Failure(70, "", "locked"); }, "70 locked"},
      {[] { throw std::length_error(""); }, "7 Out of memory"},
      {[] { throw platform::SystemError{2}; }, "2 No such file or directory"},
      {[] { throw std::runtime_error("odd"); }, "51 odd"},
  };
  for (const auto& [save, text] : cases) {
    begin({});
    globals().saveErrorRecords = save;
    EXPECT_EQ(fail(true), 0);
    EXPECT_EQ(std::exchange(world.Reader->Shown, {}),
              std::string("[fncErrorHandle] Error Handling Problem, Err Number: ") + text + "\n");
  }
}

}  // namespace
}  // namespace hy_wristlog
