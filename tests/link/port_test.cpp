#include "link/line_settings.h"
#include "link/link_fixture.h"

namespace hy_wristlog {
namespace {

TEST(Port, OpensInOrder) {
  OpenLink o{false};
  o.world->Incoming = "stale";
  o.link->subOpenPort(3, 13, 8, 3, 3, 250, false, true);
  EXPECT_EQ(o.world->Now, 250);
  EXPECT_EQ(o.world->journal(),
            "open 3; 9600 n8 0; rts off; dtr off; close; open 3; 57600 n8 2; rts off; dtr on");
  EXPECT_EQ(o.world->Incoming, "");
  EXPECT_EQ(std::tie(o.link->CommPort, o.link->BaudRate, o.link->DataBits, o.link->Parity, o.link->StopBits),
            std::make_tuple(3, 13, 8, 3, 3));

  o.link->subOpenPort(0, 0, 0, 0, 0, 0, true, false);
  EXPECT_EQ(o.world->journal(),
            "dtr off; close; open 3; 57600 n8 2; rts off; dtr off; close; open 3; 57600 n8 2; "
            "rts on; dtr off")
      << "a second opening closes first, probes with the former settings and has remembered all of them";
  o.link->subClosePort();
  o.link->subClosePort();
  EXPECT_EQ(o.world->journal(), "rts off; close");
  EXPECT_FALSE(o.link->Get_PortReady());
  EXPECT_FALSE(o.link->DSRHolding());
  o.link->subOpenPort(0, 0, 0, 0, 0, 0, false, true);
  o.world->Journal.clear();
  o.link.reset();
  EXPECT_EQ(o.world->journal(), "dtr off; close");
}

TEST(Port, RefusesSettingsOutsideTheTables) {
  const struct {
    std::int16_t Port;
    std::int32_t Baud, Data, Parity, Stop;
    const char* Journal;
  } cases[] = {{0, 13, 8, 3, 3, ""},
               {3, 0, 8, 3, 3, ""},
               {3, 13, 8, 3, 0, ""},
               {3, 17, 8, 3, 3, "open 3; 9600 n8 0; rts off; dtr off; close"},
               {3, -1, 8, 3, 3, "open 3; 9600 n8 0; rts off; dtr off; close"},
               {3, 13, 3, 3, 3, "open 3; 9600 n8 0; rts off; dtr off; close"},
               {3, 13, 9, 3, 3, "open 3; 9600 n8 0; rts off; dtr off; close"},
               {3, 13, 8, 6, 3, "open 3; 9600 n8 0; rts off; dtr off; close"},
               {3, 13, 8, 3, 4, "open 3; 9600 n8 0; rts off; dtr off; close"}};
  for (const auto& c : cases) {
    OpenLink o{false};
    const Failure failure =
        failureOf([&] { o.link->subOpenPort(c.Port, c.Baud, c.Data, c.Parity, c.Stop, 0, false, false); });
    EXPECT_EQ(failure.Number, 3004);
    EXPECT_EQ(failure.Description, "Invalid COM Port Settings");
    EXPECT_TRUE(failure.Source.starts_with("3004:Form_Comm.subOpenPort@")) << failure.Source;
    EXPECT_EQ(o.world->journal(), c.Journal) << c.Baud << ' ' << c.Stop;
    EXPECT_FALSE(o.world->IsOpen);
    EXPECT_EQ(o.link->BaudRate, 0);
  }
}

TEST(Port, SettingsTextsGoThereAndBack) {
  EXPECT_EQ(lineSettingsText(13, 8, 3, 3), "57600,n,8,2");
  EXPECT_EQ(lineSettingsText(1, 5, 2, 2), "110,m,5,1.5");
  EXPECT_EQ(lineSettingsText(16, 4, 5, 1), "256000,s,4,1");
  for (std::int32_t baud = 1; baud <= 16; ++baud)
    for (std::int32_t parity = 1; parity <= 5; ++parity) {
      const auto settings = parseLineSettings(*lineSettingsText(baud, 7, parity, 1 + baud % 3));
      ASSERT_TRUE(settings);
      EXPECT_EQ(settings->DataBits, 7);
      EXPECT_EQ(static_cast<std::int32_t>(settings->Parity), parity - 1);
      EXPECT_EQ(static_cast<std::int32_t>(settings->StopBits), baud % 3);
    }
  for (const char* text : {"", "9600", "9600,n,8", "9600,n,8,2,", "9601,n,8,1", "9600,,8,1", "9600,x,8,1",
                           "9600,n,9,1", "9600,n,8,1.4", " 9600,n,8,1", "99999999999,n,8,1"})
    EXPECT_FALSE(parseLineSettings(text)) << text;
}

/// Raises `number` in `operation` for the next `count` times.
void failIn(OpenLink& o, const std::string& operation, int count, std::int32_t number) {
  o.world->Before = [operation, left = count, number](const std::string& name) mutable {
    if (name == operation && left-- > 0) throw Failure(number, "MSComm", "broken");
  };
}

TEST(Port, OpeningRepeatsPortStateFailuresTenTimes) {
  const struct {
    const char* Operation;
    int Failures;
    std::int32_t Raised;
  } cases[] = {{"open", 10, 0},         {"open", 11, 8015}, {"configure", 10, 0},
               {"configure", 11, 8015}, {"discard", 10, 0}, {"discard", 11, 8015}};
  for (const auto& c : cases) {
    OpenLink o{false};
    failIn(o, c.Operation, c.Failures, 8015);
    const Failure failure = failureOf([&] { o.link->subOpenPort(3, 13, 8, 3, 3, 0, false, true); });
    EXPECT_EQ(failure.Number, c.Raised) << c.Operation;
    EXPECT_EQ(failure.Source, c.Raised == 0 ? "" : "Form_Comm.subOpenPort");
    EXPECT_EQ(failure.Description, c.Raised == 0 ? "" : "broken");
  }
  for (const std::int32_t number : {8002, 8005, 8020}) {
    OpenLink o{false};
    failIn(o, "open", 1, number);
    const Failure failure = failureOf([&] { o.link->subOpenPort(3, 13, 8, 3, 3, 0, false, true); });
    EXPECT_EQ(failure.Number, number);
    EXPECT_TRUE(failure.Source.starts_with(std::to_string(number) + ":Form_Comm.subOpenPort@"));
  }
}

TEST(Port, AGonePortClosesQuietly) {
  OpenLink o;
  o.link->subEnableRTS();
  failIn(o, "rts", 1000, 8015);
  o.link->subClosePort();
  EXPECT_FALSE(o.world->IsOpen);
  EXPECT_EQ(failureOf([&] { o.link->subSendChars("a", 3, 0, 0, 0, 0, 0); }).Number, 8012);
}

TEST(Port, EventsAreToldWhileEventsAreServed) {
  const struct {
    std::function<void(scripted::World&)> Change;
    const char* Told;
    std::int32_t Last;
  } cases[] = {
      {[](auto& w) { w.Lines.Cts = true; }, "event 3 Change in the CTS Line", 3},
      {[](auto& w) { w.Lines.Dsr = true; }, "event 4 Change in the DSR Line", 4},
      {[](auto& w) { w.Lines.Cd = true; }, "event 5 Change in the CD Line", 5},
      {[](auto& w) { w.Lines.Ring = true; }, "event 6 Change in the Ring Indicator", 6},
      {[](auto& w) { w.Errors.Break = 1; }, "event 1001 Break", 1001},
      {[](auto& w) { w.Errors.Framing = 2; }, "event 1004 Framing Error", 1004},
      {[](auto& w) { w.Errors.Overrun = 1; }, "event 1006 Data Lost Error", 1006},
      {[](auto& w) { w.Errors.BufferOverflow = 1; }, "event 1008 Receive Buffer Overflow Error", 1008},
      {[](auto& w) { w.Incoming.assign(17001, 'x'); }, "event 1008 Receive Buffer Overflow Error", 1008},
      {[](auto& w) { w.Incoming.assign(17000, 'x'); }, "", 0},
      {[](auto& w) { w.Errors.Parity = 1; }, "event 1009 Parity Error", 1009},
      {[](auto& w) {
         w.Errors.Overrun = w.Errors.Parity = 1;
         w.Lines.Dsr = true;
       },
       "event 4 Change in the DSR Line event 1009 Parity Error event 1006 Data Lost Error", 1006},
  };
  for (const auto& c : cases) {
    OpenLink o{true, true};
    c.Change(*o.world);
    EXPECT_EQ(o.told.Events, "");
    o.world->serveEvents();
    o.world->serveEvents();
    EXPECT_EQ(o.told.Events, c.Told);
    EXPECT_EQ(o.link->Get_LastCOMerrorNum(), c.Last);
    if (c.Last == 4) {
      EXPECT_EQ(o.host->TheConsole.LastError, "4  Change in the DSR Line  12:34:56.000");
    }
    EXPECT_EQ(o.link->DSRHolding(), o.world->Lines.Dsr);
  }
}

TEST(Port, LinesToggleAndPulse) {
  OpenLink o;
  o.link->subEnableRTStoggle(125);
  for (int i = 0; i < 400; ++i) {
    o.world->serveEvents();
    o.world->clock().idle();
  }
  o.link->subDisableRTStoggle();
  o.world->serveEvents();
  std::vector<std::pair<std::int64_t, std::string>> expected = {
      {125, "rts on"}, {250, "rts off"}, {375, "rts on"}, {400, "rts off"}};
  EXPECT_EQ(o.world->Journal, expected);
  EXPECT_EQ(o.link->RTStoggleInterval, 125);

  o.world->Journal.clear();
  o.world->Incoming = "stale";
  o.link->subResetDevice(0, 0, 0, 0);
  o.link->subResetDevice(20, 30, 2, 500);
  expected = {{400, "rts on"},  {401, "rts off"}, {402, "rts on"},
              {422, "rts off"}, {452, "rts on"},  {472, "rts off"}};
  EXPECT_EQ(o.world->Journal, expected);
  EXPECT_EQ(o.world->Now, 1002);
  EXPECT_EQ(o.world->Incoming, "");
}

}  // namespace
}  // namespace hy_wristlog
