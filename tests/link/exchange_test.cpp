#include "errors/GlobalState.h"
#include "link/link_fixture.h"

namespace hy_wristlog {
namespace {

using Arrivals = std::vector<std::pair<std::int64_t, std::string>>;

void stream(Form_Comm& link, std::int32_t count, bool openEnded) {
  link.fncGetBinaryStream(count, 6, 0, 0, 0, 100, 0, openEnded, 100);
}

TEST(Exchange, SendsWithAndWithoutEcho) {
  struct Times {
    std::int32_t Char, Timeout, Command;
    std::int64_t Echo = 0;
  };
  // The far end answers each character with the text, in which "c" is that character.
  const std::tuple<const char*, std::int32_t, std::int32_t, std::int16_t, Times, const char*, const char*>
      cases[] = {{"", 3, 1, 1, {0, 0, 0}, "", "[\r] 0"},
                 {"ab", 3, 0, 1, {50, 50, 100}, "", "[ab] 100"},
                 {"ab", 1, 1, 1, {10, 0, 0}, "", "[ab\r] 20"},
                 {"ab", 2, 1, 1, {0, 100, 0}, "c", "[ab\r] 0"},
                 {"ab", 0, 1, 0, {0, 100, 0}, "c", "[ab\r] 0"},
                 {"ab", 2, 1, 1, {0, 100, 0, 60}, "c", "[ab\r] 120"},
                 {"ab", 2, 1, 2, {0, 100, 0}, "cc", "[ab\r] 2"},
                 {"ab", 2, 1, 1, {0, 100, 0}, "", "[a] 3001 No Characters Received 101"},
                 {"ab", 2, 1, 1, {0, 100, 0, 102}, "c", "[a] 3001 No Characters Received 101"},
                 {"ab", 2, 1, 1, {0, 100, 0}, "a", "[ab] 3003 Wrong Characters Received 0"},
                 {"ab", 2, 1, 2, {0, 100, 0}, "c", "[a] 3003 No Characters or Wrong Characters Received 101"},
                 {"ab", 2, 1, 2, {0, 100, 0}, "cx", "[a] 3003 Wrong Characters Received 1"}};
  for (const auto& [chars, mode, addReturn, echoed, times, far, expected] : cases) {
    OpenLink o;
    o.world->Incoming = "stale";
    o.world->OnWrite = [&, answer = std::string(far), delay = times.Echo](std::string_view written) {
      std::string echo = answer;
      std::ranges::replace(echo, 'c', written.front());
      if (written != "\r") o.world->deliver(echo, delay);
    };
    const Failure failure = caught([&] {
      o.link->subSendChars(chars, mode, addReturn, echoed, times.Char, times.Timeout, times.Command);
    });
    const std::string why = std::to_string(failure.Number) + ' ' + failure.Description + ' ';
    EXPECT_EQ('[' + o.world->Written + "] " + (failure.Number != 0 ? why : "") + std::to_string(o.world->Now),
              expected);
    EXPECT_EQ(failure.Source.find("Form_Comm.subSendChars") == std::string::npos, failure.Number == 0);
  }
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
    EXPECT_EQ(numberOf([&] { o.link->subSendChars("abc", 2, 1, 1, 0, 10, 0); }),
              answer == errResume ? 3001 : 0);
    EXPECT_EQ(o.world->Written, answer == errResume ? "a" : "abc\r");
  }
}

TEST(Exchange, ReadsLinesUntilSilence) {
  const std::string full(4096, 'x');
  Arrivals trickle;
  for (std::int64_t at = 0; at < 10000; at += 190) trickle.emplace_back(at, "x");
  // The times of fixed rounds, and where waits end with their input.
  const std::tuple<Arrivals, std::string, const char*, double, double> cases[] = {
      {{{0, "ab\rcd"}}, "ab", "", 15, 0},
      {{{0, "\nab\r"}}, "\nab", "", 20, 0},
      {{{0, "\r"}}, "", "", 5, 0},
      {{{100, "a"}, {290, "b"}, {480, "c"}, {670, "\r"}}, "abc", "", 675, 670},
      {{}, "", "3001 No characters received", 205, 205},
      {{{210, "a\r"}}, "", "3001 No characters received", 205, 205},
      {{{10, "ab"}}, "", "3002 No carriage return or final character received", 220, 215},
      {{{0, full + '\r'}}, full, "", 645, 0},
      {{{0, full + "x\r"}}, "", "3002 No carriage return or final character received", 640, 0},
      {trickle, "", "3002 No carriage return or final character received", 2200, 2200},
  };
  for (const bool wakes : {false, true})
    for (const auto& [arrivals, expected, why, time, wakingTime] : cases) {
      OpenLink o;
      o.world->setWaits({wakes, nullptr});
      for (const auto& [moment, bytes] : arrivals) o.world->deliver(bytes, moment);
      std::string line;
      const Failure failure = caught([&] { line = o.link->fncGetCharLine('\r', 200); });
      EXPECT_EQ(line, expected);
      const std::string number = std::to_string(failure.Number);
      EXPECT_EQ(failure.Number == 0 ? "" : number + ' ' + failure.Description, why);
      EXPECT_EQ(failure.Source.starts_with(number + ":Form_Comm.fncGetCharLine@"), failure.Number != 0);
      EXPECT_NEAR(static_cast<double>(o.world->Now), wakes ? wakingTime : time, 5) << why;
      if (expected != "ab") continue;
      EXPECT_EQ(o.link->fncGetCharLine('d', 200), "c") << "left where it was";
    }
}

/// Whatever waits when a call begins to look, more waits when it looks again.
TEST(Exchange, ADeviceThatNeverStopsIsBrokenOff) {
  const std::tuple<std::function<void(Form_Comm&)>, std::int32_t, std::int64_t> calls[] = {
      {[](auto& link) { link.subSendChars("a", 2, 1, 1, 0, 1000, 0); }, 3003, 10},
      {[](auto& link) { link.subSendChars("", 3, 1, 1, 0, 0, 0); }, 0, 0},
      {[](auto& link) { link.subResetDevice(0, 0, 0, 0); }, 0, 10},
      {[](auto& link) { link.fncGetCharLine('\r', 3000); }, 3002, 700},
      {[](auto& link) { stream(link, 17000, false); }, 0, 1000},
      {[](auto& link) { stream(link, 1, true); }, 0, 1000},
      {[](auto& link) { link.fncReceiveXmodemPackets(13, 8, 3, 3, 3000); }, 3011, 20000},
      {[](auto& link) { link.subSendXmodemPackets({{Class_Packet{}}}, 13, 8, 3, 3, 3000, true, 1); }, 3008,
       4000}};
  for (const bool watched : {false, true})
    for (const auto& [call, number, most] : calls) {
      OpenLink o{true, watched};
      o.world->Before = [&, more = false](const std::string& name) mutable {
        if (name == "read" && (more = !more)) o.world->Incoming.append(300, 'x');
      };
      EXPECT_EQ(numberOf([&, make = call] { make(*o.link); }), number);
      EXPECT_LE(o.world->Now, most) << number;
    }
}

/// A byte now and then, always before the silence would have ended the wait.
TEST(Exchange, ATrickleDoesNotHoldAStream) {
  for (const bool openEnded : {false, true}) {
    OpenLink o;
    for (std::int64_t at = 0; at < 1000000; at += 90) o.world->deliver("x", at);
    EXPECT_EQ(numberOf([&] { stream(*o.link, 4098, openEnded); }), openEnded ? 0 : 3005);
    EXPECT_LT(o.world->Now, 200000);
  }
}

TEST(Exchange, StreamsBinaryBytes) {
  const std::string x60(60, 'x'), x100(100, 'x'), x9000(9000, 'x');
  const struct {
    std::int32_t Wanted, PageDelay, CmdDelay;
    bool OpenEnded;
    Arrivals Bytes;
    bool Overrun;
    std::size_t Received;
    std::int32_t Count, Number;
    std::int64_t Time;
  } cases[] = {{100, 300, 20, false, {{50, x60}, {340, x60}}, false, 100, 100, 0, 361},
               {100, 300, 20, false, {{50, x60}}, false, 0, 100, 3005, 352},
               {100, 300, 20, false, {{50, x100}}, true, 0, 100, 3006, 51},
               {100, 300, 20, false, {{50, x60}}, true, 0, 100, 3006, 352},
               {100, 0, 20, false, {{50, x100}}, false, 0, 100, 3005, 1},
               {100, -1, -1, false, {{3999, x100}}, false, 100, 100, 0, 4499},
               {0, 300, 0, false, {}, false, 0, 0, 0, 0},
               {-1, 300, 0, false, {}, false, 0, -1, 9, 0},
               {100, 300, 20, true, {{250, x60}, {260, x60}}, false, 120, 120, 0, 301},
               {100, 300, 20, true, {}, false, 0, 0, 0, 321},
               {100, 300, 20, true, {{250, x60}}, true, 0, 100, 3006, 271},
               {17000, 300, 0, false, {{10, x9000}, {20, x9000}}, false, 17000, 17000, 0, 20}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Time);
    OpenLink o;
    o.world->Incoming = "stale";
    o.link->cmdClear();
    for (const auto& [time, bytes] : c.Bytes) o.world->deliver(bytes, time);
    if (c.Overrun) o.world->after(49, [&] { o.link->cmdDataOverrun(); });
    std::int32_t count = c.Wanted;
    std::vector<std::uint8_t> bytes;
    EXPECT_EQ(numberOf([&] {
                bytes =
                    o.link->fncGetBinaryStream(count, 6, 0, 0, 0, c.PageDelay, c.CmdDelay, c.OpenEnded, 20);
              }),
              c.Number);
    EXPECT_EQ(bytes, std::vector<std::uint8_t>(c.Received, 'x'));
    EXPECT_EQ(count, c.Count);
    EXPECT_NEAR(static_cast<double>(o.world->Now), static_cast<double>(c.Time), 1.5);
    EXPECT_EQ(o.world->journal(), "4800 n8 2; 57600 n8 2");
    o.world->deliver("ab\r");
    EXPECT_EQ(o.link->fncGetCharLine('\r', 50), "ab") << "one character a read again";
    EXPECT_EQ(numberOf([&] { o.link->fncGetBinaryStream(count, 17, 0, 0, 0, 100, 0, false, 0); }), 3004);
  }
}

TEST(Exchange, StreamsRepeatPortStateFailuresTenTimes) {
  for (const int failures : {10, 11}) {
    OpenLink o;
    o.failIn("discard", failures);
    std::int32_t count = 1;
    o.world->deliver("y", 50);
    EXPECT_EQ(numberOf([&] { o.link->fncGetBinaryStream(count, 6, 0, 0, 0, 100, 0, false, 0); }),
              failures == 10 ? 0 : 8015);
    EXPECT_EQ(std::ranges::count(o.world->Journal, "open 3", [](const auto& e) { return e.second; }), 10);
    EXPECT_EQ(o.world->Journal.back().second, failures == 10 ? "57600 n8 2" : "dtr on")
        << "a port that was given up is not touched any more";
  }
  OpenLink o;
  o.world->Before = [](const std::string&) { throw Failure(8015, "MSComm", "gone"); };
  EXPECT_EQ(numberOf([&] { o.link->fncGetCharLine('>', 200); }), 8015) << "not taken for silence";
  EXPECT_EQ(o.world->Now, 0);
}

TEST(Console, ShowsWhatPassesWhileInUse) {
  OpenLink o{true, true};
  o.world->Incoming = "old";
  o.world->OnWrite = [&](std::string_view written) { o.world->deliver(written); };
  o.link->subSendChars("a\xE9", 2, 1, 1, 0, 100, 0);
  EXPECT_EQ(o.link->fncGetCharLine('\r', 100), "");
  EXPECT_EQ(o.host->TheConsole.Text, "olda\u00E9\r\n\r\n");
  o.link->cmdCopyAll();
  o.link->cmdClear();
  o.link->cmdCopyAll();
  EXPECT_EQ(o.host->TheConsole.Text, "");
  EXPECT_EQ(o.host->Clipboard, "olda\u00E9\r\n\r\n") << "nothing is copied from an empty console";

  o.world->OnWrite = nullptr;
  o.world->deliver(std::string("\x01\xFF", 2), 20);
  std::int32_t count = 2;
  o.link->fncGetBinaryStream(count, 0, 0, 0, 0, 100, 0, false, 0);
  EXPECT_EQ(o.link->consoleText(), "1\r\n255\r\n");
  EXPECT_EQ(o.host->TheConsole.ReceiveCount, 2);

  o.link->hide();
  for (const bool tell : {true, false}) {
    o.link->RaiseEventOnChar = tell;
    o.world->Incoming = tell ? "\r" : "x";
    o.link->subSendChars("", 3, 0, 0, 0, 0, 0);
    EXPECT_EQ(o.told.Characters, "\r\n") << "told although hidden, while wanted";
  }
  EXPECT_EQ(o.link->consoleText(), "1\r\n255\r\n");
}

}  // namespace
}  // namespace hy_wristlog
