// A site's ErrorActions.XML, and the logs of what failed under it.
#include <algorithm>
#include <string>

#include "errors/Procedure.h"
#include "errors/error_xml.h"
#include "start_up/error_files.h"
#include "start_up/start_up.h"
#include "support/quiet_world.h"
#include "support/script.h"

namespace hy_wristlog::fuzz {
namespace {

constexpr std::string_view Lines[] = {"<?xml version=\"1.0\"?>",
                                      "<ErrorActions>",
                                      "  <Action>",
                                      "    <ErrorNumber>#</ErrorNumber>",
                                      "    <ErrorNumber>3001</ErrorNumber>",
                                      "    <ErrorNumber>Generic</ErrorNumber>",
                                      "    <ErrorModule>Generic</ErrorModule>",
                                      "    <ErrorModule>Class_Fuzz</ErrorModule>",
                                      "    <ErrorProcedure>Generic</ErrorProcedure>",
                                      "    <ErrorProcedure>fncFuzz</ErrorProcedure>",
                                      "    <ErrorAction>errResume</ErrorAction>",
                                      "    <ErrorAction>errResumeNext</ErrorAction>",
                                      "    <ErrorAction>errExit</ErrorAction>",
                                      "    <ErrorAction>#</ErrorAction>",
                                      "    <ShowMessageBox>True</ShowMessageBox>",
                                      "    <LogError>True</LogError>",
                                      "    <ProcErrorCountLimit>#</ProcErrorCountLimit>",
                                      "    <CustomMessageText>a vbcrlf b</CustomMessageText>",
                                      "  </Action>",
                                      "</ErrorActions>",
                                      " <Error>",
                                      " </Error>"};

std::vector<std::string> linesOfText(std::string_view text) {
  std::vector<std::string> lines(1);
  for (const char c : text) c == '\n' ? static_cast<void>(lines.emplace_back()) : lines.back().push_back(c);
  return lines;
}

/// A failure in a procedure of a command ends it within bounds, whatever a site answers to it.
void fail(const QuietWorld& world, std::int32_t number, const std::string& words) {
  std::int64_t tries = 0;
  globals().emptyErrorStack();
  const std::int32_t ended = failureOf([&] {
    Procedure command{"Class_Fuzz", "fncCommand", ProcedureKind::Command};
    command.run([&] {
      Procedure procedure{"Class_Fuzz", "fncFuzz"};
      procedure.passesOn(FailureNumber::NoFinalCharacter);
      procedure.run([&] {
        procedure.statement([&] {
          ++tries;
          world->clock().idle();
          throw Failure(number, "Class_Fuzz.fncFuzz", words);
        });
      });
    });
  });
  require(ended == 0, "a command raised a failure");
  require(tries <= 40000, "a failing statement is repeated for ever");
  reached("repeated statements", tries);
}

/// What was logged is read back as it was, as far as both files have the same elements.
void checkLog() {
  const auto& stack = globals().ErrorStack;
  const auto lines = errorLogLines(stack, "5.0.0");
  for (const std::string& line : lines)
    require(line.find_first_of("\r\n") == line.npos, "a value takes more than a line");
  const auto actions = parseErrorActions(lines);
  std::size_t next = 0;
  for (std::size_t i = 1; i < stack.size(); ++i) {
    if (!stack[i]) continue;
    require(next < actions.size(), "a logged failure is missing");
    const Class_ErrorAction& action = actions[next++];
    require(action.hasNumber(stack[i]->ErrorNumber) && action.ErrorModule == stack[i]->ErrorModule &&
                action.ErrorProcedure == stack[i]->ErrorProcedure,
            "a logged failure reads as another one");
  }
  require(next == actions.size(), "more failures than were logged");
  reached("logged failures", static_cast<std::int64_t>(next));
}

}  // namespace

const std::span<const std::string_view> Grammar = Lines;

void run(std::string_view text) {
  const QuietWorld world;
  openLibrary();
  reached("actions", static_cast<std::int64_t>(parseErrorActions(linesOfText(text)).size()));
  world->files().write("/quiet/folders/library/ErrorActions.XML", text);
  failureOf([&] { fncLoadGlobalErrors(); });
  for (const Class_ErrorAction& action : globals().ErrorActions) actionName(action.ErrorAction);
  const std::string words(text.substr(0, 200));
  for (const std::int32_t number : {FailureNumber::NoCharacters, FailureNumber::NoFinalCharacter,
                                    FailureNumber::PathFileAccess, FailureNumber::PortStateFailure}) {
    fail(world, number, words);
    checkLog();
  }
}

}  // namespace hy_wristlog::fuzz
