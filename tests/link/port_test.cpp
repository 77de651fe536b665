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
  const std::string probed = "open 3; 9600 n8 0; rts off; dtr off; close";
  const std::tuple<std::int16_t, std::array<std::int32_t, 4>, std::string> cases[] = {
      {0, {13, 8, 3, 3}, ""},     {3, {0, 8, 3, 3}, ""},      {3, {13, 8, 3, 0}, ""},
      {3, {17, 8, 3, 3}, probed}, {3, {-1, 8, 3, 3}, probed}, {3, {13, 3, 3, 3}, probed},
      {3, {13, 9, 3, 3}, probed}, {3, {13, 8, 6, 3}, probed}, {3, {13, 8, 3, 4}, probed}};
  for (const auto& [port, table, journal] : cases) {
    OpenLink o{false};
    const Failure failure =
        caught([&] { o.link->subOpenPort(port, table[0], table[1], table[2], table[3], 0, false, false); });
    EXPECT_EQ(failure.Description, "Invalid COM Port Settings");
    EXPECT_TRUE(failure.Source.starts_with("3004:Form_Comm.subOpenPort@")) << failure.Source;
    EXPECT_EQ(o.world->journal(), journal) << table[0] << ' ' << table[3];
    EXPECT_EQ(o.link->BaudRate, 0);
  }
}

TEST(Port, SettingsTextsGoThereAndBack) {
  EXPECT_EQ(lineSettingsText(13, 8, 3, 3), "57600,n,8,2");
  EXPECT_EQ(lineSettingsText(1, 5, 2, 2), "110,m,5,1.5");
  EXPECT_EQ(lineSettingsText(16, 4, 5, 1), "256000,s,4,1");
  const auto settings = parseLineSettings("19200,o,7,1.5");
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->Baud, 19200);
  EXPECT_EQ(settings->DataBits, 7);
  EXPECT_EQ(settings->Parity, platform::LineParity::Odd);
  EXPECT_EQ(settings->StopBits, platform::LineStopBits::OneAndHalf);
  for (const char* text : {"", "9600,n,8", "9600,n,8,2,", "9601,n,8,1", "9600,x,8,1", "99999999999,n,8,1"})
    EXPECT_FALSE(parseLineSettings(text)) << text;
}

TEST(Port, OpeningRepeatsPortStateFailuresTenTimes) {
  const std::tuple<const char*, int, std::int32_t, std::int32_t> cases[] = {
      {"open", 10, 8015, 0},         {"open", 11, 8015, 8015}, {"configure", 10, 8015, 0},
      {"configure", 11, 8015, 8015}, {"discard", 10, 8015, 0}, {"discard", 11, 8015, 8015},
      {"open", 1, 8002, 8002},       {"open", 1, 8005, 8005},  {"open", 1, 8020, 8020}};
  for (const auto& [operation, failures, number, raised] : cases) {
    OpenLink o{false};
    o.failIn(operation, failures, number);
    const Failure failure = caught([&] { o.link->subOpenPort(3, 13, 8, 3, 3, 0, false, true); });
    EXPECT_EQ(failure.Number, raised) << operation;
    const std::string once = std::to_string(number) + ":Form_Comm.subOpenPort@";
    EXPECT_TRUE(raised == 0 || number == 8015 ? failure.Source == (raised == 0 ? "" : "Form_Comm.subOpenPort")
                                              : failure.Source.starts_with(once));
  }
  OpenLink o;
  o.link->subEnableRTS();
  o.failIn("rts", 1000);
  o.link->subClosePort();
  EXPECT_FALSE(o.world->IsOpen) << "a gone port closes quietly";
  EXPECT_EQ(numberOf([&] { o.link->subSendChars("a", 3, 0, 0, 0, 0, 0); }), 8012);
}

TEST(Port, EventsAreToldWhileEventsAreServed) {
  const std::pair<void (*)(scripted::World&), std::string> cases[] = {
      {[](auto& w) { w.Lines.Cts = true; }, "3 Change in the CTS Line"},
      {[](auto& w) { w.Lines.Dsr = true; }, "4 Change in the DSR Line"},
      {[](auto& w) { w.Lines.Ring = true; }, "6 Change in the Ring Indicator"},
      {[](auto& w) { w.Errors.Break = 1; }, "1001 Break"},
      {[](auto& w) { w.Errors.Framing = 2; }, "1004 Framing Error"},
      {[](auto& w) { w.Errors.BufferOverflow = 1; }, "1008 Receive Buffer Overflow Error"},
      {[](auto& w) { w.Incoming.assign(17001, 'x'); }, "1008 Receive Buffer Overflow Error"},
      {[](auto& w) { w.Incoming.assign(17000, 'x'); }, ""},
      {[](auto& w) { w.Errors.Overrun = w.Errors.Parity = w.Lines.Dsr = true; },
       "4 Change in the DSR Line event 1009 Parity Error event 1006 Data Lost Error"},
  };
  for (const auto& [change, told] : cases) {
    OpenLink o{true, true};
    change(*o.world);
    EXPECT_EQ(o.told.Events, "");
    o.world->serveEvents();
    o.world->serveEvents();
    EXPECT_EQ(o.told.Events, told.empty() ? "" : "event " + told);
    const std::string last = o.told.Events.substr(o.told.Events.rfind("event") + 1);
    EXPECT_EQ(o.link->Get_LastCOMerrorNum(), told.empty() ? 0 : std::stoi(last.substr(5)));
    EXPECT_EQ(o.link->DSRHolding(), o.world->Lines.Dsr);
    if (told == "4 Change in the DSR Line") {
      EXPECT_EQ(o.host->TheConsole.LastError, "4  Change in the DSR Line  12:34:56.000");
    }
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
