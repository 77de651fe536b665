#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>

#include "apps/sandbox.h"

TEST(Session, ConfigureTellsWhatBecameOfIt) {
  const Sandbox box;
  const std::string simulated =
      "configure --json --model vivid --simulate vivid --mode 5 --epoch 60 --erase ";
  const std::pair<const char*, int> cases[] = {
      {"--gender F --identity 'Zoë Ünal' --initials ÅÄÖ --weight 72.2 --dob 1950-02-28 --zone est", 0},
      {"--identity ' blanks around ' --start '2026-03-06 10:00' --end 2026-03-20 --console", 0},
      {"--start 2026-03-20 --end 2026-03-06", 10023},
      {"--zone XYZ", 10019}};
  for (const auto& [options, code] : cases) {
    SCOPED_TRACE(options);
    const Outcome outcome = box.run(simulated + options);
    EXPECT_EQ(outcome.Status, code == 0 ? 0 : 1);
    const Json document = Json::parse(outcome.Out);
    EXPECT_EQ(keysOf(document),
              "return_code return_code_meaning battery_life_remaining device_serial_number recording ");
    EXPECT_EQ(document.at("return_code"), code);
    EXPECT_EQ(document.at("device_serial_number").is_null(), code != 0);
    EXPECT_EQ(outcome.Err.find("acq stop 0") != std::string::npos, outcome.Err != "");
  }
}

/// The waits of a silent logger are real here: a process of its own has no simulated time.
TEST(Session, ASilentLoggerAndARequestToStopEndInWords) {
  const Sandbox box;
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_TRUE(terminal >= 0 && ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
  const std::string device = ::ptsname(terminal);
  const int keptOpen = ::open(device.c_str(), O_RDWR | O_NOCTTY);
  box.write("Docks.INI", "[Dock 1]\nVendorID=5245\nProductID=4000\nCOMport=60\nDevice=" + device + "\n");

  const Outcome stopped = box.run("retrieve --json --model vivid --out stopped",
                                  "& program=$!; sleep 1; kill -TERM $program; wait $program");
  EXPECT_EQ(stopped.Status, 1);
  EXPECT_EQ(Json::parse(stopped.Out).at("return_code"), 10013);
  EXPECT_NE(stopped.Err.find("stopped/session.log"), std::string::npos) << stopped.Err;
  EXPECT_NE(box.content("stopped/session.log").find("10013"), std::string::npos);

  const auto before = std::chrono::steady_clock::now();
  for (const std::string command : {"status", "config show"}) {
    const Outcome outcome =
        box.run(command + " --model vivid", "& program=$!; sleep 1; kill -TERM $program; wait $program");
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Err.find("Stopped. Nothing was changed. (failure 10013)"), std::string::npos)
        << outcome.Err;
  }
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(25));

  const Outcome twice = box.run("retrieve --model vivid --out twice --redact --record kept",
                                "& program=$!; sleep 1; i=0; while [ $i -lt 5000 ]; do kill -TERM $program; "
                                "i=$((i+1)); done; wait $program");
  EXPECT_EQ(twice.Status, 128 + 15) << "the second request ends it at once";
  EXPECT_EQ(twice.Out, "");
  EXPECT_FALSE(box.has("kept")) << "it would be in the way of the next record";

  const Outcome silent = box.run("docks --probe");
  EXPECT_NE(silent.Out.find("COM60, free\n  Logger Not Found"), std::string::npos) << silent.Out;
  ::close(keptOpen);
  ::close(terminal);
}
