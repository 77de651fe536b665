#include <gtest/gtest.h>

#include "hy_wristlog/failure.h"
#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

std::int32_t failureOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Failure& failure) {
    return failure.Number;
  }
  return 0;
}

TEST(Quillander, WakesItsLoggerByAPulse) {
  const struct {
    const char* Name;
    int High, Rest;
    std::string Answer;
  } cases[] = {{"no pulse", 0, 500, ""},
               {"too short", 10, 500, ""},
               {"just waking", 100, 30, ""},
               {"awake", 100, 45, "\r>"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    const Bench bench = makeVividBench();
    Wire wire;
    wire.Port.reset();
    wire.Port = wire.Lab.World->serialPorts().open(33);
    wire.Port->configure(LoggerLine);
    if (c.High > 0) wire.Port->setRts(true);
    wire.wait(c.High);
    wire.Port->setRts(false);
    wire.wait(c.Rest);
    EXPECT_EQ(wire.exchange("\r"), c.Answer);
  }
}

TEST(Quillander, ForgetsItsLoggerOnClose) {
  Wire wire;
  EXPECT_EQ(wire.exchange("\r"), "\r>");
  wire.Port.reset();
  wire.Port = wire.Lab.World->serialPorts().open(33);
  wire.Port->configure(LoggerLine);
  EXPECT_EQ(wire.exchange("\r"), "");
  wire.connect();
  EXPECT_EQ(wire.exchange("\r"), "\r>");
  wire.Lab.Dock->pullOut();
  EXPECT_EQ(wire.exchange("\r"), "");
  wire.Lab.Dock->insert(*wire.Lab.Logger);
  EXPECT_EQ(wire.exchange("\r"), "") << "seated anew it sleeps";
}

TEST(Tolka, DsrFollowsDtrWhenALoggerIsSeated) {
  Wire wire{kestrin2BenchOptions()};
  const auto dsr = [&] { return wire.Port->modemLines().Dsr; };
  EXPECT_TRUE(dsr());
  EXPECT_EQ(wire.exchange("\r"), "\r>");
  wire.Port->setDtr(false);
  wire.wait(29);
  EXPECT_TRUE(dsr());
  wire.wait(2);
  EXPECT_FALSE(dsr());
  EXPECT_EQ(wire.exchange("\r"), "");
  wire.Port->setDtr(true);
  wire.wait(119);
  EXPECT_FALSE(dsr());
  wire.wait(2);
  EXPECT_TRUE(dsr());
  EXPECT_EQ(wire.exchange("show config\r"), "show config\r");
  wire.Port->setDtr(false);
  wire.Port->setDtr(true);
  EXPECT_FALSE(dsr()) << "even a moment's drop lets the logger go";
  wire.wait(200);
  EXPECT_EQ(wire.exchange("\r"), "\r>") << "and ends its transfer";
  wire.Lab.Dock->pullOut();
  EXPECT_FALSE(dsr());
  wire.Lab.Dock->insert(*wire.Lab.Logger);
  wire.wait(200);
  EXPECT_TRUE(dsr());
}

TEST(Dock, AModelInTheWrongDockMakesNoContact) {
  BenchOptions options = kestrin2BenchOptions();
  options.Logger = {};
  Wire wire{options};
  EXPECT_FALSE(wire.Port->modemLines().Dsr);
  EXPECT_EQ(wire.exchange("\r"), "");
}

TEST(Dock, AGoneDockHangsUpForGood) {
  Wire wire;
  wire.Lab.World->after(50ms, [&] { wire.Lab.Dock->unplug(); });
  wire.wait(49);
  EXPECT_NO_THROW(wire.take());
  wire.wait(2);
  platform::SerialPort& port = *wire.Port;
  for (const std::function<void()>& use : std::initializer_list<std::function<void()>>{
           [&] { wire.take(); }, [&] { wire.send("x"); }, [&] { port.outstanding(); },
           [&] { port.discardInput(); }, [&] { port.setDtr(true); }, [&] { port.setRts(true); },
           [&] { port.modemLines(); }, [&] { port.takeErrors(); }, [&] { port.configure(LoggerLine); }})
    EXPECT_EQ(failureOf(use), 8015);
  EXPECT_EQ(failureOf([&] { wire.Lab.World->serialPorts().open(33); }), 8002);
  wire.Lab.Dock->plug();
  EXPECT_EQ(failureOf([&] { wire.take(); }), 8015) << "the old handle stays dead";
  wire.connect();
  EXPECT_EQ(wire.exchange("\r"), "\r>");
  wire.Lab.World.reset();
  EXPECT_EQ(failureOf([&] { wire.take(); }), 8015) << "a handle may outlive its world";
}

TEST(Dock, PortFailures) {
  Wire wire;
  const auto open = [&] { wire.Lab.World->serialPorts().open(33); };
  EXPECT_EQ(failureOf(open), 8005) << "held by this very handle";
  wire.Port.reset();
  EXPECT_EQ(failureOf([&] { wire.Lab.World->serialPorts().open(34); }), 8002);
  wire.Lab.Dock->Faults.Open = {8018, {1, 2}};
  for (const std::int32_t expected : {0, 8018, 8018, 0}) EXPECT_EQ(failureOf(open), expected);
  wire.Lab.Dock->Faults.LockedUp = true;
  EXPECT_EQ(failureOf([&] { wire.connect(); }), 8015);
  wire.Lab.Dock->unplug();
  wire.Lab.Dock->plug();
  EXPECT_EQ(failureOf([&] { wire.connect(); }), 0);
}

TEST(DeviceTree, ShowsTheDocksOfAClass) {
  SimulatedWorld world;
  world.addDock({DockKind::Quillander, 33, {}});
  world.addDock({DockKind::TolkaFirst, 34, {}});
  SimulatedDock& second = world.addDock({DockKind::TolkaSecond, 35, {}});
  world.addDock({DockKind::TolkaFirst, 36, true});
  const auto list = [&](const char* guid) {
    std::string all;
    const auto devices = world.deviceTree().devicesOfClass(guid);
    for (std::size_t i = 0; devices->hasInterface(i); ++i) {
      devices->readInfo(i);
      all += devices->hardwareId(i) + "=" + devices->friendlyName(i) + ";";
    }
    return all;
  };
  const char* comPorts = "{4D36E978-E325-11CE-BFC1-08002BE10318}";
  const char* usb = "{a5dcbf10-6530-11d2-901f-00c04fb951ed}";
  const std::string vivid = "USB\\VID_5245&PID_4000&REV_0600=Kestrin Vivid Dock (COM33);";
  EXPECT_EQ(list(comPorts), vivid + "USB\\VID_5245&PID_4002&REV_0600=Kestrin 2 Dock (COM35);");
  EXPECT_EQ(list(usb),
            "USB\\VID_5245&PID_4001&REV_0600=Kestrin 2 Dock;USB\\VID_5245&PID_4001&REV_0600=Kestrin 2 Dock "
            "(COM36);");
  second.unplug();
  EXPECT_EQ(list(comPorts), vivid);
  EXPECT_EQ(list("{00000000-0000-0000-0000-000000000000}"), "");
  world.Faults.HardwareId = {13, once()};
  EXPECT_THROW(list(comPorts), platform::SystemError);
  EXPECT_EQ(list(comPorts), vivid);
}

TEST(Dock, LosesItsLoggerOrItselfAtAByte) {
  Wire wire;
  wire.Lab.Dock->pullOutAfterBytes(5);
  EXPECT_EQ(wire.exchange("show ver\r"), "sh") << "what the logger was about to say is lost with it";
  EXPECT_EQ(wire.Lab.Dock->logger(), nullptr);
  wire.Lab.Dock->insert(*wire.Lab.Logger);
  wire.connect();
  wire.Lab.Dock->unplugAfterBytes(3);
  EXPECT_EQ(failureOf([&] { wire.exchange("show ver\r"); }), 8015);
}

TEST(Cut, ABrokenRetrievalLeavesTheDataInTheLogger) {
  for (std::uint64_t cut = 0; cut < 1900; cut += 37) {
    Wire wire;
    for (std::size_t i = 0; i < 2000; ++i) wire.Lab.Logger->memory().write(i, static_cast<std::uint8_t>(i));
    wire.Lab.Logger->block().set(block::NextAddress, 2000);
    const auto before = wire.Lab.Logger->recordedBytes();
    wire.Lab.line().Faults.CutAfterTotal = wire.Lab.line().traffic().total() + cut;
    wire.Lab.line().Faults.CutEndsOnReopen = true;
    wire.download("show data");
    ASSERT_TRUE(wire.Lab.Logger->recordedBytes() == before) << cut;
    ASSERT_TRUE(wire.Lab.line().cut()) << cut;
    wire.connect();
    const std::string again = wire.download("show data");
    ASSERT_TRUE(again.substr(0, 2000) == std::string(before.begin(), before.end())) << cut;
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
