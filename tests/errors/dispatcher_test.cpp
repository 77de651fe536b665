#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "errors/Class_Error.h"
#include "errors/failing_world.h"

namespace hy_wristlog {
namespace {

using failing::action;

class Dispatcher : public testing::Test {
 protected:
  static std::int32_t handle(Class_Error& error, bool command = false, const char* procedure = "p") {
    error.CurrentError.CommandProc = command;
    return error.fncErrorHandle("M", procedure);
  }
  static auto& stack() { return globals().ErrorStack; }
  static auto& actions() { return globals().ErrorActions; }
  static Class_ErrorRecord otherRecord(std::int32_t answer = errExit, int age = 0) {
    Class_ErrorRecord record;
    record.ErrorAction = answer;
    record.ErrorTime = addTime(now(), -age / SecondsPerDay);
    return record;
  }

  failing::World world_;
  const Failure broken_{42, "", "broken"};
};

TEST_F(Dispatcher, TheMostSpecialActionDecides) {
  const Class_ErrorAction a = action(42, "M", "p", 5001), b = action("Generic", "M", "p", 5002),
                          c = action(42, "Generic", "Generic", 5003),
                          d = action("Generic", "Generic", "Generic", 5006), none;
  const struct {
    std::vector<Class_ErrorAction> Actions;
    Class_ErrorAction Own;
    std::int32_t Answer;
  } cases[] = {
      {{d, c, b, a}, none, 5001},
      {{d, c, b}, none, 5002},
      {{d, c}, none, 5003},
      {{d}, none, 5006},
      {{a, action(42, "M", "p", 5002)}, none, 5001},
      {{d, c, b}, a, 5001},
      {{a}, action(42, "M", "p", 5003), 5001},
      {{d, c}, b, 5002},
      {{d}, c, 5003},
      {{action(42, "m", "p", 5001), action(42, "M", "Generic", 5001), action("generic", "M", "p", 5001),
        action("42", "M", "p", 5001), action(43, "M", "p", 5001)},
       none,
       5004},
      {{action(42, "M", "p", 17)}, none, 17},
  };
  for (const auto& c : cases) {
    actions() = c.Actions;
    globals().emptyErrorStack();
    Class_Error error{broken_};
    error.CurrentErrorAction = c.Own;
    EXPECT_EQ(handle(error), c.Answer) << &c - cases;
  }
}

TEST_F(Dispatcher, AFailureWithoutActionIsShownAndLoggedByCommands) {
  for (const bool command : {false, true}) {
    stack().clear();
    Class_Error error{broken_};
    EXPECT_EQ(handle(error, command), command ? errExit : errRaise);
    const Class_ErrorRecord& record = *stack().at(1);
    EXPECT_EQ(record.ErrorOriginalSource, "42:M.p@3/2/2026 9:00:00 AM");
    EXPECT_EQ(record.ErrLogonID, "tester");
    EXPECT_EQ(record.DisplayedMessage, "broken");
    EXPECT_TRUE(record.MsgboxWasDisplayed);
    EXPECT_EQ(record.LogWasWritten, command);
  }
  EXPECT_EQ(world_.Saved, std::vector<std::size_t>{2}) << "the log holds the failure that made it";
}

TEST_F(Dispatcher, TooManyFailuresEndTheCommand) {
  // The limit of an action holds from a call's second failure on.
  for (const auto& [limit, last] : {std::pair{-1, 3}, {0, 2}, {1, 2}, {2, 3}, {5, 6}, {-9, 2}}) {
    actions() = {action(42, "M", "p", errResumeNext, static_cast<std::int16_t>(limit))};
    globals().emptyErrorStack();
    Class_Error error{broken_};
    for (int i = 1; i < last; ++i) EXPECT_EQ(handle(error), errResumeNext) << limit << ", " << i;
    EXPECT_EQ(handle(error), errRaiseAll) << limit;
  }
  // The first failure of a call does not know its action yet, so that former calls count with the usual
  // limit, or with that of the procedure's own action.
  actions() = {action("Generic", "Generic", "Generic", errExit, 10)};
  for (const auto& [own, last] : {std::pair{-1, 4}, {5, 7}, {1, 3}}) {
    globals().emptyErrorStack();
    const auto call = [&](const std::string& procedure) {
      Class_Error error{broken_};
      error.CurrentErrorAction.ProcErrorCountLimit = static_cast<std::int16_t>(own);
      return handle(error, false, procedure.c_str());
    };
    for (int i = 0; i < 20; ++i) call("q" + std::to_string(i));
    for (int i = 1; i < last; ++i) EXPECT_EQ(call("p"), errExit) << own << ", " << i;
    EXPECT_EQ(call("p"), errRaiseAll) << own;
  }
}

TEST_F(Dispatcher, TheEchoOfAFailedCommandIsLeftQuietly) {
  const struct {
    int Age;
    bool InCommand, Quiet;
  } cases[] = {{0, false, true},   {9, false, true}, {10, false, false},
               {-5, false, false}, {3, true, false}, {9999, false, false}};
  actions() = {action(42, "M", "p", errRaise, 2, true, true)};
  for (const auto& c : cases) {
    world_.Saved.clear();
    stack().assign(c.InCommand ? 2 : 1, otherRecord(errExit, c.Age));
    Class_Error error{broken_};
    EXPECT_EQ(handle(error), c.Quiet ? errExit : errRaise) << c.Age;
    EXPECT_EQ(world_.Saved.empty(), c.Quiet) << c.Age;
    EXPECT_EQ(stack().size(), c.InCommand ? 3U : 2U);
    EXPECT_EQ(stack().back()->MsgboxWasDisplayed, !c.Quiet);
    EXPECT_EQ(stack().front()->DisplayedMessage, "broken");
  }
}

TEST_F(Dispatcher, AStormSpreadsUpToTheCommand) {
  const std::optional<Class_ErrorRecord> calm = otherRecord(), wild = otherRecord(errRaiseAll);
  const std::pair<std::vector<std::optional<Class_ErrorRecord>>, bool> cases[] = {
      {{calm, wild, calm}, true},
      {{wild, calm}, false},
      {std::vector(101, calm), false},
      {std::vector(102, calm), true},
  };
  actions() = {action(42, "M", "p", errResumeNext)};
  for (const auto& [before, storm] : cases)
    for (const bool command : {false, true}) {
      world_.Saved.clear();
      stack() = before;
      Class_Error error{broken_};
      EXPECT_EQ(handle(error, command), !storm ? errResumeNext : command ? errExit : errRaiseAll);
      EXPECT_EQ(stack().size(), before.size() + 1);
      EXPECT_EQ(world_.Saved.size(), storm && command ? 1U : 0U);
      if (storm && command) {
        EXPECT_EQ(stack().back()->DisplayedMessage,
                  "Application process stopped due to muliple errors\r\n"
                  "Please view the error log to determine cause of errors");
      }
    }
}

TEST_F(Dispatcher, MessagesAreShownOnce) {
  const struct {
    const char *Custom, *Description;
    bool Show;
    const char* Message;
    bool First;
  } cases[] = {{"", "broken", true, "broken", true},
               {"", "a VbCrLf b", false, "a \r\n b", false},
               {"onevbcrlfVBCRLFtwo vbcrl", "broken", true, "one\r\n\r\ntwo vbcrl", true},
               {"", "", true, "", false}};
  for (const auto& c : cases) {
    actions() = {action("Generic", "Generic", "Generic", errClose, 5, c.Show, false, c.Custom)};
    globals().emptyErrorStack();
    for (const bool shown : {c.First, false}) {
      Class_Error error{Failure{42, "", c.Description}};
      EXPECT_EQ(handle(error, true), errClose);
      EXPECT_EQ(error.CurrentError.DisplayedMessage.substr(0, 48),
                "HY_Wristlog has encountered a condition that has");
      EXPECT_EQ(stack().back()->DisplayedMessage, c.Message);
      EXPECT_EQ(stack().back()->MsgboxWasDisplayed, shown) << c.Message;
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
    globals().emptyErrorStack();
    globals().saveErrorRecords = save;
    Class_Error error{broken_};
    EXPECT_EQ(handle(error, true), 0);
    EXPECT_EQ(world_.Reader->Boxes.back(),
              std::string("fncErrorHandle|Error Handling Problem, Err Number: ") + text);
  }
}

}  // namespace
}  // namespace hy_wristlog
