#include <gtest/gtest.h>

#include <future>

#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/docks.h"
#include "hy_wristlog/failure.h"
#include "link/Form_Comm.h"
#include "simulator/bench.h"

namespace hy_wristlog {
namespace {

using simulator::DockKind;
using Names = std::vector<std::string>;

/// Two Vivids, a Kestrin 2 and a Pendreader at one table. The first Vivid has recorded nothing, the second
/// one day.
struct Table {
  Table() {
    simulator::BenchOptions second;
    second.Logger.SerialNumber = "SECOND";
    bench.World
        ->addDock({.Kind = DockKind::Quillander, .ComPort = 34, .Place = "usb-1-1.4", .SerialNumber = "A7"})
        .insert(bench.World->addLogger(second.Logger));
    bench.World->addDock({.Kind = DockKind::TolkaFirst, .ComPort = 35, .SerialNumber = "a7"});
    bench.World->addDock({.Kind = DockKind::Pendreader, .ComPort = 2});
  }
  simulator::SimulatedDock& dock(std::size_t place) { return *bench.World->docks()[place]; }

  simulator::Bench bench = simulator::makeVividBench();
  platform::WorldScope scope{bench.World};
};

/// What GetStatus says, and of which logger.
std::string status(Class_Main& main, enmLoggerPointer model = LggrPntr_KRVivid) {
  std::string simple, full;
  std::shared_ptr<Class_VardenLogger> logger;
  std::shared_ptr<Class_Subject> subject;
  main.GetStatus(model, simple, full, logger, subject);
  return simple + (logger ? ", " + logger->Get_SerialNumber() : "");
}

std::int32_t refusal(const std::string& name, enmLoggerPointer model = LggrPntr_None,
                     const std::string& words = "") {
  try {
    useDock(name, model);
  } catch (const Failure& failure) {
    EXPECT_NE(failure.Description.find(words), std::string::npos) << failure.Description;
    return failure.Number;
  }
  return 0;
}

TEST(Docks, AreKnownByTheirNamesAndRefusedByOthers) {
  Table table;
  const std::vector<Dock> all = docks();
  ASSERT_EQ(all.size(), 4U);
  EXPECT_EQ(all[1].Name, "usb-1-1.4");
  EXPECT_EQ(all[1].OtherNames, (Names{"A7", "COM34"}));
  EXPECT_EQ(all[2].Model, LggrPntr_KRII);
  EXPECT_EQ(all[2].Port, 0);
  EXPECT_EQ(all[3].Name, "Dock 4");
  EXPECT_EQ(all[3].Model, LggrPntr_Pendreader);
  for (const char* name : {"usb-1-1.4", "USB-1-1.4", "com34"}) {
    useDock(name);
    EXPECT_EQ(dockInUse(), "usb-1-1.4") << name;
    EXPECT_EQ(docks().size(), 4U);
  }
  EXPECT_EQ(refusal("A7", LggrPntr_None, "usb-1-1.4 (Kestrin Vivid, COM34), usb-1-3 (Kestrin 2)"),
            ReturnCode::TooManyDocks);
  EXPECT_EQ(refusal("usb-1-9", LggrPntr_None, "The docks are: usb-1-1 ("), ReturnCode::NotFound);
  EXPECT_EQ(refusal("/dev/ttyS7", LggrPntr_None, "model"), ReturnCode::NotFound);
  EXPECT_EQ(refusal("COM33", LggrPntr_KRII, "of a Kestrin Vivid"), ReturnCode::WrongLogger);
  EXPECT_EQ(dockInUse(), "usb-1-1.4") << "a refused name changes nothing";
  useDock("rfc2217://far:4001", LggrPntr_Pendreader);
  EXPECT_EQ(dockInUse(), "rfc2217://far:4001");
  useAllDocks();
  EXPECT_EQ(dockInUse(), "");
}

TEST(Docks, TheWorkflowsMeetTheChosenOneAlone) {
  Table table;
  Class_Main main;
  EXPECT_EQ(status(main), "Error: Too Many Docks");
  useDock("usb-1-1.4");
  EXPECT_EQ(status(main), "Ready to Configure, SECOND");
  EXPECT_EQ(status(main, LggrPntr_KRII), "Dock Not Connected, ");
  EXPECT_THROW(platform::current().serialPorts().open(33), Failure) << "another dock's port";
  table.dock(1).unplug();
  EXPECT_EQ(status(main), "Dock Not Connected, ");
  table.dock(1).plug();
  useDock("usb-1-1");
  EXPECT_NE(status(main).find("Ready to Configure, "), std::string::npos);
  useAllDocks();
  EXPECT_EQ(status(main), "Error: Too Many Docks");
}

TEST(Docks, WhatAThreadHasMadeOutlivesItsChoice) {
  struct Changing : Host {
    void serveEvents() override {
      Refused += refusal("usb-1-1.4") == FailureNumber::InvalidCall ? 1 : 0;
      EXPECT_THROW(useAllDocks(), Failure);
    }
    int Refused = 0;
  };
  Table table;
  const auto host = std::make_shared<Changing>();
  setHost(host);
  Class_Main main;
  useDock("usb-1-1");
  Form_Comm open;
  open.subOpenPort(33, 13, 8, 3, 3, 0, false, true);
  useDock("usb-1-1.4");
  EXPECT_TRUE(open.Get_PortReady());
  open.subClosePort();
  EXPECT_EQ(status(main), "Ready to Configure, SECOND");
  EXPECT_GT(host->Refused, 0) << "inside a workflow";
  EXPECT_EQ(std::async(std::launch::async, [] { return dockInUse(); }).get(), "") << "of another thread";
}

TEST(Docks, AThreadMayEndWithItsChoice) {
  const simulator::Bench bench = simulator::makeVividBench();
  std::async(std::launch::async, [world = bench.World] {
    platform::use(world);
    const Class_Main main;
    useDock("COM33");
  }).get();
  std::async(std::launch::async, [] {
    const Class_Main main;
    useDock("/dev/null", LggrPntr_KRII);
    EXPECT_THROW(platform::current().serialPorts().open(64), Failure) << "no terminal";
  }).get();
}

}  // namespace
}  // namespace hy_wristlog
