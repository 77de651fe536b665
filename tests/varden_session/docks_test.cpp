#include "errors/Procedure.h"
#include "varden_session/session.h"

namespace hy_wristlog::session {
namespace {

using simulator::BenchOptions;
using simulator::DockKind;
using namespace std::chrono_literals;

BenchOptions benchWith(DockKind kind, bool loggerInDock = true) {
  BenchOptions options =
      kind == DockKind::Quillander ? simulator::vividBenchOptions() : simulator::kestrin2BenchOptions();
  options.Dock.Kind = kind;
  options.Dock.NameShowsPort = true;
  options.LoggerInDock = loggerInDock;
  return options;
}

bool isConnected(VardenLogger& logger, DockKind kind, bool keepOpen = true, bool longWait = false) {
  return kind == DockKind::Quillander ? logger.fncQuillanderLoggerConnected(keepOpen)
                                      : logger.fncTolkaLoggerConnected(keepOpen, longWait);
}

TEST(Docks, DeviceNames) {
  // clang-format off
  const std::pair<const char*, bool> cases[] = {
      {"USB\\VID_5245&PID_4000", true}, {"USB\\VID_5245&PID_4001", true}, {"usb 4002 of 5245", true},
      {"USB\\VID_5245&PID_4003", false}, {"USB\\VID_1234&PID_4000", false}};
  // clang-format on
  for (const auto& [name, expected] : cases)
    EXPECT_EQ(VardenLogger::fncIsVardenFromDeviceName(name), expected) << name;
}

TEST(Docks, ThePortOfADockThatHasGoneIsClosedAndOpenedAnew) {
  for (const DockKind kind : {DockKind::Quillander, DockKind::TolkaSecond})
    for (const bool closed : {true, false}) {
      Session session{benchWith(kind)};
      EXPECT_TRUE(isConnected(session.logger, kind));
      session.bench.Dock->unplug();
      if (closed) {
        ignoringFailures([&] { session.logger.subCloseDevicePort(); });
        EXPECT_FALSE(session.logger.link().Get_PortReady());
      }
      session.bench.Dock->plug();
      if (closed || kind == DockKind::TolkaSecond) {
        EXPECT_TRUE(isConnected(session.logger, kind));
      }
    }
}

TEST(Docks, ALoggerAnswersInEachForm) {
  for (const DockKind kind : {DockKind::Quillander, DockKind::TolkaFirst, DockKind::TolkaSecond}) {
    Session session{benchWith(kind)};
    VardenLogger& logger = session.logger;
    EXPECT_TRUE(isConnected(logger, kind));
    EXPECT_TRUE(logger.link().Get_PortReady());
    EXPECT_EQ(logger.record.DeviceType, kind == DockKind::Quillander ? KR_QUILLANDER : KR_TOLKA);

    // The open port is used again: opening it anew would fail.
    session.bench.Dock->Faults.Open = {8002, simulator::always()};
    const double again = session.elapsedDuring([&] { EXPECT_TRUE(isConnected(logger, kind)); });
    EXPECT_LT(again, 0.1);

    const double closing =
        session.elapsedDuring([&] { EXPECT_TRUE(isConnected(logger, kind, false)); }) - again;
    EXPECT_FALSE(logger.link().Get_PortReady());
    const double wanted = kind == DockKind::TolkaFirst ? 1.03 : kind == DockKind::TolkaSecond ? 0.03 : 0;
    EXPECT_NEAR(closing, wanted, 0.02);
  }
}

TEST(Docks, OnlyOneDockWithAPortIsOpened) {
  constexpr auto Vivid = DockKind::Quillander, First = DockKind::TolkaFirst, Second = DockKind::TolkaSecond;
  using Plugged = std::vector<std::pair<DockKind, std::optional<bool>>>;
  // clang-format off
  const std::tuple<Plugged, DockKind, std::int16_t, std::int16_t> cases[] = {
      {{}, Vivid, 0, 0}, {{}, First, 0, 0}, {{{First, {}}}, First, 1, 0}, {{{First, true}}, First, 1, 33},
      {{{First, true}, {Second, {}}}, First, 2, 34}, {{{Second, {}}, {Second, {}}}, First, 2, 0},
      {{{Vivid, {}}, {Vivid, {}}}, Vivid, 2, 0}, {{{Vivid, {}}, {Second, {}}}, Vivid, 1, 33}};
  // clang-format on
  for (const auto& [docks, asked, counted, port] : cases) {
    const hy_wristlog::InWorld<simulator::SimulatedWorld> world;
    VardenLogger logger;
    simulator::DockOptions dock;
    for (dock.ComPort = 33; const auto& [kind, named] : docks) {
      dock.Kind = kind;
      dock.NameShowsPort = named;
      world->addDock(dock);
      ++dock.ComPort;
    }
    std::int16_t count = -1;
    EXPECT_EQ(asked == Vivid ? logger.fncQuillanderDockCOMport(count) : logger.fncTolkaDockCOMport(count),
              port);
    EXPECT_EQ(count, counted);
    if (counted == 1 && port != 0) continue;
    EXPECT_FALSE(isConnected(logger, asked));
    EXPECT_EQ(world->elapsed(), 0);
    EXPECT_FALSE(logger.link().Get_PortReady());
  }
}

TEST(Docks, AnEmptyTolkaDockIsFoundOutByDsr) {
  for (const bool longWait : {false, true}) {
    Session session{benchWith(DockKind::TolkaSecond, false)};
    const double waited = session.elapsedDuring(
        [&] { EXPECT_FALSE(isConnected(session.logger, DockKind::TolkaSecond, true, longWait)); });
    EXPECT_NEAR(waited, longWait ? 5.0 : 1.0, 0.05);
    EXPECT_FALSE(session.logger.link().Get_PortReady());
    session.bench.World->after(2s, [&] { session.bench.Dock->insert(*session.bench.Logger); });
    const double until = session.elapsedDuring(
        [&] { EXPECT_EQ(isConnected(session.logger, DockKind::TolkaSecond, true, longWait), longWait); });
    EXPECT_NEAR(until, longWait ? 2.2 : 1.0, 0.1);
  }
}

TEST(Docks, ALoggerTakenOutOfAnOpenDock) {
  for (const DockKind kind : {DockKind::Quillander, DockKind::TolkaSecond}) {
    Session session{benchWith(kind)};
    EXPECT_TRUE(isConnected(session.logger, kind));
    session.bench.Dock->pullOut();
    bool connected = true;
    EXPECT_EQ(outcome([&] { connected = isConnected(session.logger, kind); }), "");
    EXPECT_FALSE(connected);
  }
  Session empty{benchWith(DockKind::Quillander, false)};
  EXPECT_NEAR(empty.elapsedDuring([&] { EXPECT_FALSE(isConnected(empty.logger, DockKind::Quillander)); }),
              3.5, 0.1);
}

TEST(Docks, FailuresOfOpening) {
  const std::string tolka =
      "11508 Class_VardenLogger.fncTolkaLoggerConnected: Kestrin 2 Communications Docking Station";
  const std::string tolkaUnable = tolka + ": Unable to open COM port";
  const std::string vividUnable =
      "11508 Class_VardenLogger.fncQuillanderLoggerConnected: Kestrin Vivid Communications Docking Station: "
      "Unable to open COM port";
  const std::string closed = "8010 Form_Comm.subOpenPort: The port cannot be opened";
  std::vector<std::tuple<std::int32_t, std::int32_t, std::int32_t, std::string, std::string>> cases = {
      {8005, 1, 1, tolkaUnable, vividUnable},
      {8002, 2, 2, tolkaUnable, vividUnable},
      {8012, 2, 2, tolkaUnable, vividUnable},
      {8015, 5, 3, tolka + " locked up, error 8015", ""},
      {8010, -1, -1, closed, closed}};
  for (const std::int32_t number : {8001, 8003, 8006, 8011, 8013, 8014, 8016, 8018, 8019, 8020, 8021})
    cases.push_back({number, 3, 3, tolkaUnable, ""});
  for (const auto& [number, tolkaResult, vividResult, tolkaOutcome, vividOutcome] : cases)
    for (const DockKind kind : {DockKind::TolkaSecond, DockKind::Quillander}) {
      SCOPED_TRACE(number);
      const bool vivid = kind == DockKind::Quillander;
      Session session{benchWith(kind)};
      VardenLogger& logger = session.logger;
      session.bench.Dock->Faults.Open = {number, simulator::always()};
      EXPECT_EQ(outcome([&] { EXPECT_FALSE(isConnected(logger, kind)); }),
                vivid ? vividOutcome : tolkaOutcome);
      std::int32_t result = -1;
      outcome([&] {
        result = vivid ? logger.fncOpenQuillanderPort(33, false) : logger.fncOpenTolkaPort(33, false, false);
      });
      EXPECT_EQ(result, vivid ? vividResult : tolkaResult);
    }
}

TEST(Docks, WhatTheLinesDo) {
  ScriptedSession session{{{"", {"", ">"}}}};
  VardenLogger& logger = session.logger;
  EXPECT_EQ(outcome([&] { logger.fncOpenTolkaPort(0, false, false); }),
            "11509 Class_VardenLogger.fncOpenTolkaPort: Invalid COM Port Settings");
  EXPECT_EQ(outcome([&] { logger.fncOpenQuillanderPort(-1, false); }),
            "11509 Class_VardenLogger.fncOpenQuillanderPort: Invalid COM Port Settings");
  session.world->Lines.Dsr = true;
  EXPECT_NEAR(session.elapsedDuring([&] { EXPECT_EQ(logger.fncOpenQuillanderPort(7, false), 0); }), 0.305,
              0.05);
  EXPECT_TRUE(session.world->journal().ends_with("rts off; rts on; rts off; dtr on"));
  EXPECT_EQ(session.world->Written, "\r\r");

  // DSR that does not fall is waited for a second; without a signal there is nothing to wait for.
  EXPECT_NEAR(session.elapsedDuring([&] { EXPECT_EQ(logger.fncOpenTolkaPort(7, true, false), 0); }), 2.005,
              0.02);
  session.world->journal();
  EXPECT_NEAR(session.elapsedDuring([&] { logger.subCloseTolkaPort(); }), 1.0, 0.02);
  EXPECT_EQ(session.world->journal(), "dtr off; close");
  logger.fncOpenTolkaPort(7, false, false);
  session.world->Lines.Dsr = false;
  EXPECT_EQ(session.elapsedDuring([&] { logger.subCloseTolkaPort(); }), 0);

  for (const enmDeviceType type : {Device_Unknown, KR_QUILLANDER, KR_TOLKA}) {
    logger.link().subOpenPort(7, 13, 8, 3, 3, 0, false, true);
    logger.record.DeviceType = type;
    logger.subCloseDevicePort();
    EXPECT_FALSE(logger.link().Get_PortReady());
  }
}

}  // namespace
}  // namespace hy_wristlog::session
