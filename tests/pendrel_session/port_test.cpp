#include <gtest/gtest.h>

#include "hy_wristlog/host.h"
#include "pendrel_session/session.h"

namespace hy_wristlog::pendrel_session {
namespace {

struct NotingHost final : Host {
  explicit NotingHost(std::string& notes) : Notes(notes) {}
  void showBusy(bool busy) override { Notes += busy ? "busy; " : "back; "; }
  void serveEvents() override { ++Served; }
  std::string& Notes;
  std::int32_t Served = 0;
};

TEST(Port, OpensOrTellsWhyNot) {
  const std::string refused = " Form_Comm.subOpenPort: refused",
                    invalid = "10106 Class_Pendrel.fncOpenCOMport: Invalid COM Port Settings";
  const std::tuple<int, std::vector<std::int32_t>, std::string> cases[] = {
      {0, {0}, ""},
      {1, {8005}, ""},
      {2, {8002, 8012}, ""},
      {3, {8001, 8003, 8006, 8011, 8013, 8016, 8017, 8018, 8021}, ""},
      {-1, {6, 8000, 8004, 8007, 8020}, refused},
      {-1, {8015}, " Class_Pendrel.fncOpenCOMport: refused"}};
  for (const auto& [expected, numbers, failure] : cases)
    for (const std::int32_t number : numbers) {
      scripted::InWorld world;
      world->Before = [&](const std::string& operation) {
        if (operation == "open" && number != 0) throw Failure(number, "", "refused");
      };
      Pendrel logger;
      std::int32_t status = -1;
      EXPECT_EQ(outcome([&] { status = logger.fncOpenCOMport(7, true); }),
                failure.empty() ? "" : std::to_string(number) + failure);
      EXPECT_EQ(status, expected) << number;
      EXPECT_EQ(world->Now, number == 0 ? 2000 : 0);
      EXPECT_EQ(outcome([&] { logger.fncOpenCOMport(0, true); }), invalid);
      if (number != 0) continue;
      EXPECT_EQ(world->journal(),
                "open 7; 9600 n8 0; rts off; dtr off; close; open 7; 600 n8 0; rts on; dtr on");
      logger.fncOpenCOMport(7, false);
      EXPECT_EQ(world->Now, 2000);
    }
}

TEST(Port, ClosesWithABusyPointer) {
  for (const auto& [busy, fails] : {std::pair{false, false}, {true, false}, {true, true}}) {
    ScriptedSession session;
    std::string notes;
    session.world->setHost(std::make_shared<NotingHost>(notes));
    session.world->Before = [&, fails = fails](const std::string& operation) {
      if (operation == "rts") notes += "closing; ";
      if (operation == "rts" && fails) throw Failure(8004, "", "stuck");
    };
    EXPECT_EQ(outcome([&] { session.logger.subCloseCOMport(busy); }),
              fails ? "8004 Form_Comm.subClosePort: stuck" : "");
    EXPECT_EQ(notes, busy ? "busy; closing; back; " : "closing; ");
    EXPECT_EQ(session.world->IsOpen, fails);
    session.world->Before = nullptr;
  }
}

TEST(Port, Prompt) {
  struct Case {
    std::string Answer, Hearing;
    std::string Sends;  ///< how each one ends: h well, 1 to 3 with failure 3001 to 3003, x with 8015
    bool Expected;
    double Seconds;
  };
  const Case cases[] = {{"noise>", "", "h", true, 0.04}, {"", "~", "h", false, 1},
                        {">", "", "31h", true, 1.01},    {">", "", "131", false, 1},
                        {">", "", "2h", false, 0},       {">", "", "1x", false, 0.5}};
  for (const Case& c : cases) {
    ScriptedSession session{{{"\r", c.Answer}}, c.Hearing};
    std::string notes;
    const auto host = std::make_shared<NotingHost>(notes);
    session.world->setHost(host);
    std::size_t tries = 0;
    session.world->Before = [&](const std::string& operation) {
      if (operation != "discard") return;
      const char send = c.Sends.at(tries++);
      if (send != 'h') throw Failure(send == 'x' ? 8015 : 3000 + (send - '0'), "", "send");
    };
    bool answered = false;
    const auto [result, elapsed] = session.timed([&] { answered = session.logger.fncGetPrompt(); });
    EXPECT_EQ(answered, c.Expected) << c.Answer << ' ' << c.Sends;
    EXPECT_EQ(result, c.Sends.ends_with('x') ? "8015 Form_Comm.subSendChars: send" : "");
    EXPECT_NEAR(elapsed, c.Seconds, 0.04) << c.Answer << ' ' << c.Sends;
    EXPECT_EQ(tries, c.Sends.starts_with('2') ? 1 : c.Sends.size());
    EXPECT_GE(host->Served, c.Sends == "131" ? 20 : 0) << "while it pauses";
  }
}

}  // namespace
}  // namespace hy_wristlog::pendrel_session
