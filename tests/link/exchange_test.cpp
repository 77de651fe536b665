#include "errors/GlobalState.h"
#include "link/link_fixture.h"

namespace hy_wristlog {
namespace {

/// What goes out as "[written]", the failure, and the time that passed.
std::string outcome(OpenLink& o, const Failure& failure, std::int64_t started) {
  std::string text = '[' + o.world->Written + ']';
  if (failure.Number != 0) text += ' ' + std::to_string(failure.Number) + ' ' + failure.Description;
  return text + ' ' + std::to_string(o.world->Now - started);
}

TEST(Exchange, SendsWithAndWithoutEcho) {
  using Echo = std::function<std::string(const std::string&)>;
  const Echo plain = [](const std::string& c) { return c; };
  const Echo twice = [](const std::string& c) { return c + c; };
  const Echo none = [](const std::string&) { return ""; };
  const Echo wrongSecond = [](const std::string& c) { return c == "b" ? "x" : c; };
  const Echo mixed = [](const std::string& c) { return c + "x"; };
  const struct {
    const char* Chars;
    std::int32_t Mode, Return;
    std::int16_t Echoed;
    std::int32_t CharDelay, Timeout, CmdDelay;
    Echo Far;
    std::int64_t EchoDelay;
    const char* Expected;
  } cases[] = {
      {"", 3, 1, 1, 0, 0, 0, none, 0, "[\r] 0"},
      {"ab", 3, 0, 1, 50, 50, 100, none, 0, "[ab] 100"},
      {"ab", 1, 1, 1, 10, 0, 0, none, 0, "[ab\r] 20"},
      {"ab", 2, 1, 1, 0, 100, 0, plain, 0, "[ab\r] 0"},
      {"ab", 0, 1, 0, 0, 100, 0, plain, 0, "[ab\r] 0"},
      {"ab", 2, 1, 1, 0, 100, 0, plain, 60, "[ab\r] 120"},
      {"ab", 2, 1, 2, 0, 100, 0, twice, 0, "[ab\r] 2"},
      {"ab", 2, 1, 1, 0, 100, 0, none, 0, "[a] 3001 No Characters Received 101"},
      {"ab", 2, 1, 1, 0, 100, 0, plain, 102, "[a] 3001 No Characters Received 101"},
      {"ab", 2, 1, 1, 0, 100, 0, wrongSecond, 0, "[ab] 3003 Wrong Characters Received 0"},
      {"ab", 2, 1, 2, 0, 100, 0, plain, 0, "[a] 3003 No Characters or Wrong Characters Received 101"},
      {"ab", 2, 1, 2, 0, 100, 0, mixed, 0, "[a] 3003 Wrong Characters Received 1"},
  };
  for (const auto& c : cases) {
    OpenLink o;
    o.world->Incoming = "stale";
    o.world->OnWrite = [&](std::string_view written) {
      if (written != "\r") o.world->deliver(c.Far(std::string(written)), c.EchoDelay);
    };
    const Failure failure = failureOf([&] {
      o.link->subSendChars(c.Chars, c.Mode, c.Return, c.Echoed, c.CharDelay, c.Timeout, c.CmdDelay);
    });
    EXPECT_EQ(outcome(o, failure, 0), c.Expected);
    if (failure.Number != 0) {
      EXPECT_NE(failure.Source.find("Form_Comm.subSendChars"), std::string::npos) << failure.Source;
    }
  }
}

TEST(Exchange, EchoIsCheckedCharacterByCharacter) {
  OpenLink o;
  std::string echoes = "ab";
  o.world->OnWrite = [&](std::string_view) { o.world->deliver(std::exchange(echoes, "")); };
  EXPECT_EQ(failureOf([&] { o.link->subSendChars("ab", 2, 0, 2, 0, 50, 0); }).Description,
            "Wrong Characters Received");
}

TEST(Exchange, ASitesActionRepeatsAStepOrGoesOnBehindIt) {
  for (const std::int32_t answer : {errResume, errResumeNext}) {
    OpenLink o;
    Class_ErrorAction action;
    action.ErrorNumber = 3001;
    action.ErrorModule = "Form_Comm";
    action.ErrorProcedure = "subSendChars";
    action.ErrorAction = answer;
    action.ProcErrorCountLimit = 5;
    globals().ErrorActions = {action};
    const Failure failure = failureOf([&] { o.link->subSendChars("abc", 2, 1, 1, 0, 10, 0); });
    EXPECT_EQ(failure.Number, answer == errResume ? 3001 : 0);
    EXPECT_EQ(o.world->Written, answer == errResume ? "a" : "abc\r");
  }
}

TEST(Exchange, ReadsLinesUntilSilence) {
  const struct {
    const char* Name;
    std::vector<std::pair<std::int64_t, std::string>> Arrivals;
    const char* Line;
    std::int32_t Number;
    const char* Text;
    std::int64_t Time;
  } cases[] = {
      {"at once", {{0, "ab\rcd"}}, "ab", 0, "", 15},
      {"line feeds stay", {{0, "\nab\r"}}, "\nab", 0, "", 20},
      {"an empty line", {{0, "\r"}}, "", 0, "", 5},
      {"trickling", {{100, "a"}, {290, "b"}, {480, "c"}, {670, "\r"}}, "abc", 0, "", 675},
      {"nothing", {}, "", 3001, "No characters received", 205},
      {"too late", {{210, "a\r"}}, "", 3001, "No characters received", 205},
      {"unfinished", {{10, "ab"}}, "", 3002, "No carriage return or final character received", 220},
  };
  for (const auto& c : cases) {
    OpenLink o;
    for (const auto& [time, bytes] : c.Arrivals) o.world->deliver(bytes, time);
    std::string line;
    const Failure failure = failureOf([&] { line = o.link->fncGetCharLine('\r', 200); });
    EXPECT_EQ(line, c.Line) << c.Name;
    EXPECT_EQ(failure.Number, c.Number) << c.Name;
    EXPECT_EQ(failure.Description, c.Text) << c.Name;
    EXPECT_NEAR(static_cast<double>(o.world->Now), static_cast<double>(c.Time), 5) << c.Name;
    if (c.Number != 0) {
      EXPECT_TRUE(failure.Source.starts_with(std::to_string(c.Number) + ":Form_Comm.fncGetCharLine@"));
    }
  }
}

TEST(Exchange, StreamsBinaryBytes) {
  const struct {
    const char* Name;
    std::int32_t Wanted;
    std::int32_t PageDelay, CmdDelay;
    bool OpenEnded;
    std::vector<std::pair<std::int64_t, std::size_t>> Arrivals;
    bool Overrun;
    std::size_t Received;
    std::int32_t Count;
    std::int32_t Number;
    std::int64_t Time;
  } cases[] = {
      {"cut to the count", 100, 300, 20, false, {{50, 60}, {340, 60}}, false, 100, 100, 0, 361},
      {"short", 100, 300, 20, false, {{50, 60}}, false, 0, 100, 3005, 352},
      {"lost", 100, 300, 20, false, {{50, 100}}, true, 0, 100, 3006, 51},
      {"lost and short", 100, 300, 20, false, {{50, 60}}, true, 0, 100, 3006, 352},
      {"real zero wait", 100, 0, 20, false, {{50, 100}}, false, 0, 100, 3005, 1},
      {"default waits", 100, -1, -1, false, {{3999, 100}}, false, 100, 100, 0, 4499},
      {"no bytes wanted", 0, 300, 0, false, {}, false, 0, 0, 0, 0},
      {"negative count", -1, 300, 0, false, {}, false, 0, -1, 9, 0},
      {"open-ended", 100, 300, 20, true, {{250, 60}, {260, 60}}, false, 120, 120, 0, 301},
      {"open-ended silence", 100, 300, 20, true, {}, false, 0, 0, 0, 321},
      {"open-ended, lost", 100, 300, 20, true, {{250, 60}}, true, 0, 100, 3006, 271},
      {"all that fits the buffer",
       17000,
       300,
       0,
       false,
       {{10, 9000}, {20, 9000}},
       false,
       17000,
       17000,
       0,
       20},
  };
  for (const auto& c : cases) {
    OpenLink o;
    o.world->Incoming = "stale";
    o.link->cmdClear();
    for (const auto& [time, count] : c.Arrivals) o.world->deliver(std::string(count, 'x'), time);
    if (c.Overrun) o.world->after(49, [&] { o.link->cmdDataOverrun(); });
    std::int32_t count = c.Wanted;
    std::vector<std::uint8_t> bytes;
    const Failure failure = failureOf([&] {
      bytes = o.link->fncGetBinaryStream(count, 6, 0, 0, 0, c.PageDelay, c.CmdDelay, c.OpenEnded, 20);
    });
    EXPECT_EQ(bytes, std::vector<std::uint8_t>(c.Received, 'x')) << c.Name;
    EXPECT_EQ(count, c.Count) << c.Name;
    EXPECT_EQ(failure.Number, c.Number) << c.Name;
    EXPECT_NEAR(static_cast<double>(o.world->Now), static_cast<double>(c.Time), 1.5) << c.Name;
    EXPECT_EQ(o.world->journal(), "4800 n8 2; 57600 n8 2") << c.Name;
    o.world->deliver("ab\r");
    EXPECT_EQ(o.link->fncGetCharLine('\r', 50), "ab") << c.Name << ": one character a read again";
  }
  OpenLink o;
  std::int32_t count = 10;
  const Failure failure =
      failureOf([&] { o.link->fncGetBinaryStream(count, 17, 0, 0, 0, 100, 0, false, 0); });
  EXPECT_EQ(failure.Number, 3004);
  EXPECT_TRUE(failure.Source.starts_with("3004:Form_Comm.fncGetBinaryStream@"));
}

TEST(Exchange, StreamsRepeatPortStateFailuresTenTimes) {
  for (const int failures : {10, 11}) {
    OpenLink o;
    o.world->Before = [left = failures](const std::string& operation) mutable {
      if (operation == "discard" && left-- > 0) throw Failure(8015, "MSComm", "broken");
    };
    std::int32_t count = 1;
    o.world->deliver("y", 50);
    std::size_t received = 0;
    const Failure failure =
        failureOf([&] { received = o.link->fncGetBinaryStream(count, 6, 0, 0, 0, 100, 0, false, 0).size(); });
    EXPECT_EQ(failure.Number, failures == 10 ? 0 : 8015);
    EXPECT_EQ(received, failures == 10 ? 1U : 0U);
    std::size_t reopened = 0;
    for (const auto& entry : o.world->Journal) reopened += entry.second == "open 3" ? 1 : 0;
    EXPECT_EQ(reopened, 10U);
    EXPECT_EQ(o.world->Journal.back().second, failures == 10 ? "57600 n8 2" : "dtr on")
        << "a port that was given up is not touched any more";
  }
}

TEST(Exchange, APortThatHasGoneIsAPortStateFailure) {
  OpenLink o;
  o.world->Before = [&](const std::string&) { throw Failure(8015, "MSComm", "gone"); };
  EXPECT_EQ(failureOf([&] { o.link->fncGetCharLine('>', 200); }).Number, 8015);
  EXPECT_EQ(o.world->Now, 0);
  std::int32_t count = 1;
  EXPECT_EQ(failureOf([&] { o.link->fncGetBinaryStream(count, 0, 0, 0, 0, 100, 0, false, 0); }).Number, 8015);
  o.world->serveEvents();
  EXPECT_EQ(o.told.Events, "");
}

TEST(Console, ShowsWhatPassesWhileInUse) {
  OpenLink o{true, true};
  EXPECT_TRUE(o.link->Get_Visible());
  o.world->Incoming = "old";
  o.world->OnWrite = [&](std::string_view written) { o.world->deliver(written); };
  o.link->subSendChars("a\xE9", 2, 1, 1, 0, 100, 0);
  EXPECT_EQ(o.link->fncGetCharLine('\r', 100), "");
  EXPECT_EQ(o.host->TheConsole.Text, "olda\u00E9\r\n\r\n");
  EXPECT_EQ(o.link->consoleText(), o.host->TheConsole.Text);
  o.link->cmdCopyAll();
  EXPECT_EQ(o.host->Clipboard, o.host->TheConsole.Text);
  o.link->cmdClear();
  o.link->cmdCopyAll();
  EXPECT_EQ(o.host->Clipboard, o.host->TheConsole.Text) << "nothing is copied from an empty console";

  o.world->OnWrite = nullptr;
  o.world->deliver(std::string("\x01\xFF", 2), 20);
  std::int32_t count = 2;
  o.link->fncGetBinaryStream(count, 0, 0, 0, 0, 100, 0, false, 0);
  EXPECT_EQ(o.link->consoleText(), "1\r\n255\r\n");
  EXPECT_EQ(o.host->TheConsole.ReceiveCount, 2);

  o.link->hide();
  o.world->Incoming = "\r";
  o.link->RaiseEventOnChar = true;
  o.link->subSendChars("", 3, 0, 0, 0, 0, 0);
  EXPECT_EQ(o.told.Characters, "\r\n") << "told although hidden";
  EXPECT_EQ(o.link->consoleText(), "1\r\n255\r\n");
  o.link->RaiseEventOnChar = false;
  o.world->Incoming = "x";
  o.link->subSendChars("", 3, 0, 0, 0, 0, 0);
  EXPECT_EQ(o.told.Characters, "\r\n");
}

}  // namespace
}  // namespace hy_wristlog
