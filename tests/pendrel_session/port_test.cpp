#include "pendrel_session/session.h"
#include "support/noting_host.h"

namespace hy_wristlog::pendrel_session {
namespace {

struct BusyHost final : Host {
  explicit BusyHost(std::string& notes) : Notes(notes) {}
  void showBusy(bool busy) override { Notes += busy ? "busy; " : "back; "; }
  std::string& Notes;
};

TEST(Port, OpensOrTellsWhyNot) {
  const std::string refused = " Form_Comm.subOpenPort: refused";
  // clang-format off
  const std::tuple<int, std::vector<std::int32_t>, std::string> cases[] = {
      {0, {0}, ""}, {1, {8005}, ""}, {2, {8002, 8012}, ""},
      {3, {8001, 8003, 8006, 8011, 8013, 8016, 8017, 8018, 8021}, ""}, {-1, {6, 8000, 8004, 8007, 8020}, refused},
      {-1, {8015}, " Class_Pendrel.fncOpenCOMport: refused"}};
  // clang-format on
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
      EXPECT_TRUE(number != 0 || world->journal() ==
                                     "open 7; 9600 n8 0; rts off; dtr off; close; open 7; "
                                     "600 n8 0; rts on; dtr on");
    }
  scripted::InWorld world;
  Pendrel logger;
  logger.fncOpenCOMport(7, false);
  EXPECT_EQ(world->Now, 0);
  EXPECT_EQ(outcome([&] { logger.fncOpenCOMport(0, true); }),
            "10106 Class_Pendrel.fncOpenCOMport: Invalid COM Port Settings");
}

TEST(Port, ClosesWithABusyPointer) {
  for (const bool fails : {false, true}) {
    ScriptedSession session;
    std::string notes;
    session.world->setHost(std::make_shared<BusyHost>(notes));
    session.world->Before = [&](const std::string& operation) {
      if (operation == "rts") notes += "closing; ";
      if (operation == "rts" && fails) throw Failure(8004, "", "stuck");
    };
    EXPECT_EQ(outcome([&] { session.logger.subCloseCOMport(true); }),
              fails ? "8004 Form_Comm.subClosePort: stuck" : "");
    EXPECT_EQ(notes, "busy; closing; back; ");
    EXPECT_EQ(session.world->IsOpen, fails);
    session.world->Before = nullptr;
  }
}

TEST(Port, Prompt) {
  // How each sending ends: h well, 1 to 3 with failure 3001 to 3003, x with 8015.
  const std::tuple<std::string, std::string, std::string, bool, double> cases[] = {
      {"noise>", "", "h", true, 0.04}, {"", "~", "h", false, 1},  {">", "", "31h", true, 1.01},
      {">", "", "131", false, 1},      {">", "", "2h", false, 0}, {">", "", "1x", false, 0.5}};
  for (const auto& [answer, hearing, sends, expected, seconds] : cases) {
    SCOPED_TRACE(answer + " " + sends);
    ScriptedSession session{{{"\r", answer}}, hearing};
    const auto host = std::make_shared<NotingHost>();
    session.world->setHost(host);
    std::size_t tries = 0;
    session.world->Before = [&, &sends = sends](const std::string& operation) {
      if (operation != "discard") return;
      const char send = sends.at(tries++);
      if (send != 'h') throw Failure(send == 'x' ? 8015 : 3000 + (send - '0'), "", "send");
    };
    bool answered = false;
    const auto [result, elapsed] = session.timed([&] { answered = session.logger.fncGetPrompt(); });
    EXPECT_EQ(answered, expected);
    EXPECT_EQ(result, sends.ends_with('x') ? "8015 Form_Comm.subSendChars: send" : "");
    EXPECT_NEAR(elapsed, seconds, 0.04);
    EXPECT_EQ(tries, sends.starts_with('2') ? 1 : sends.size());
    EXPECT_GE(host->Served, sends == "131" ? 20 : 0) << "while it pauses";
  }
}

}  // namespace
}  // namespace hy_wristlog::pendrel_session
