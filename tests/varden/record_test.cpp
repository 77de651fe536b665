#include "varden/record.h"

#include <array>
#include <functional>

#include "base/dates.h"
#include "varden/VardenLogger.h"
#include "varden/firmware.h"
#include "varden_support.h"

namespace hy_wristlog {
namespace {

using RecordTest = InSimulatedWorld;

TEST_F(RecordTest, FirmwareAndWhatItCanDo) {
  // v: known; m: memory-full flag and loaded voltage; s: sleep; e: new events; l: new light scale.
  std::istringstream cases(
      "00.01.0022: 00.01.0023:v 00.01.0028:v 00.01.0029:ve 00.01.0030:v 00.01.9999:v 00.00.0029: : "
      "00.02.0000:vse 00.02.0001:vse 00.02.0002:vmse 00.03.0002: 01.00.0000:vmse 01.01.0000:vmsel "
      "01.02.0000: 02.00.0000: 01.01.000: 01x01y0000tail:vmsel 01.01.00a0: +1.01.0000: "
      "01\u00EB01.0000:vmsel");
  for (std::string row; cases >> row;) {
    const std::string text = row.substr(0, row.find(':')), can = row.substr(text.size() + 1);
    const VardenRecord record = loggerRecord(KR_QUILLANDER, 1, text.c_str());
    EXPECT_EQ(std::string(isValidFirmware(record) ? "v" : "") + (hasMemoryFullFlag(record) ? "m" : "") +
                  (hasSleepMode(record) ? "s" : "") + (hasNewEventFormat(record) ? "e" : "") +
                  (hasNewLightScaleFactors(record) ? "l" : ""),
              can)
        << text;
    EXPECT_EQ(hasLoadedVoltage(record), hasMemoryFullFlag(record));
    EXPECT_FALSE(hasNewLightScaleFactors(loggerRecord(KR_TOLKA, 1, text.c_str())));
  }
}

TEST_F(RecordTest, VersionAnswers) {
  // Answer; firmware|display firmware.
  // clang-format off
  const std::tuple<enmDeviceType, const char*, const char*> cases[] = {
      {KR_QUILLANDER, "01.01.000", "|"}, {KR_QUILLANDER, "01.01.0002 1.23", "01.01.0002|"},
      {KR_QUILLANDER, "01.01.0002 1.234xx", "01.01.0002|1.234"}, {KR_TOLKA, "01.01.0002 1.234", "01.01.0002 1.234|"},
      {Device_Unknown, "01.01.0002 1.234", "old|old"}};
  // clang-format on
  for (const auto& [device, answer, versions] : cases) {
    VardenRecord record = loggerRecord(device, 1, "old");
    record.LCDfirmwareVersion = "old";
    parseVersionInfo(record, answer);
    EXPECT_EQ(record.FirmwareVersion + "|" + record.LCDfirmwareVersion, versions) << answer;
  }
}

TEST_F(RecordTest, CopyLeavesTheRecordingBehind) {
  VardenRecord record;
  record.SerialNumber = "C1";
  record.Unused1 = record.RawData = ByteArray{1};
  record.ActivityArray = {1};
  const VardenRecord copy = record.copy();
  EXPECT_TRUE(copy.SerialNumber == "C1" && copy.Unused1 && !copy.RawData && seriesOf(copy).empty());
}

TEST_F(RecordTest, EraseLeavesOnlyTheWristArrayOfLoggersWithoutBlueLight) {
  for (const bool blue : {true, false}) {
    VardenRecord record = loggerRecord(KR_QUILLANDER, 1);
    record.SerialNumber = "C1";
    record.RawData = ByteArray{1};
    record.ActivityArray = {1};
    record.WristStatusArray = {Tristate::True};
    if (blue) record.BlueLightArray = {1};
    record.erase();
    EXPECT_TRUE(record.SerialNumber.empty() && !record.RawData && seriesOf(record).empty());
    EXPECT_EQ(record.LastLoggerTime + record.BatteryVoltage + record.LoadedBattVoltage, 0);
    EXPECT_EQ(record.WristStatusArray.empty(), blue);
  }
}

TEST_F(RecordTest, ClockIsCarriedOnFromItsLastReading) {
  VardenLogger logger;
  EXPECT_EQ(logger.Get_CurrentGMTtime(), -1);
  const double now = dateFromCivil(world->clock().utc());
  logger.record.LastLoggerTime = now - 100;
  logger.record.LastTimeLoggerRead = now - 2;
  EXPECT_EQ(logger.Get_CurrentGMTtime(), now - 98);
}

TEST_F(RecordTest, RawDataByCount) {
  VardenLogger logger;
  EXPECT_TRUE(logger.Get_RawData(0).empty());
  logger.record.RawData = ByteArray(5);
  for (const auto& [count, bytesUsed, size] : std::initializer_list<std::array<int, 3>>{
           {-1, 3, 0}, {0, 0, 5}, {0, 3, 3}, {2, 3, 2}, {9, 3, 5}, {0, 9, 5}, {0, -7, 0}}) {
    logger.record.BytesUsed = bytesUsed;
    EXPECT_EQ(static_cast<int>(logger.Get_RawData(count).size()), size) << count << " " << bytesUsed;
  }
}

struct AskedHost : Host {
  MessageBoxButton Answer = MessageBoxButton::No;
  std::string Asked, Clipboard, Progress;
  MessageBoxButton showMessageBox(std::string_view title, std::string_view text, std::int32_t type) override {
    Asked = std::string(title) + "|" + std::string(text) + "|" + std::to_string(type);
    return Answer;
  }
  void copyToClipboard(std::string_view text) override { Clipboard = text; }
  void downloadProgress(std::int32_t bytes, std::int32_t expected) override {
    Progress += std::to_string(bytes) + " of " + std::to_string(expected) + " ";
  }
};

TEST_F(RecordTest, EndOfALoggerAsksAboutItsWindow) {
  const auto host = std::make_shared<AskedHost>();
  world->setHost(host);
  for (const auto answer : {MessageBoxButton::No, MessageBoxButton::Yes}) {
    EXPECT_EQ(host->Clipboard, "");
    host->Answer = answer;
    VardenLogger logger;
    logger.subShowFormComm();
    logger.link().subShowCOM("traffic");
  }
  EXPECT_TRUE(host->Asked.starts_with("Copy diag to clipboard?|Do you want a copy of the text in the diag "));
  EXPECT_TRUE(host->Asked.ends_with("?|14"));
  EXPECT_NE(host->Clipboard.find("traffic"), std::string::npos);
}

TEST_F(RecordTest, LinkEventsReachEveryListener) {
  struct Listener : LoggerEvents {
    std::string Seen;
    std::function<void()> Then = [] {};
    void CommEventError(std::int32_t number, std::string& text) override {
      Seen += std::to_string(number) + text;
      text += "!";
    }
    void AbortAcknowledged() override {
      Seen += "abort";
      Then();
    }
  };
  const auto host = std::make_shared<AskedHost>();
  world->setHost(host);
  VardenLogger logger;
  const auto first = std::make_shared<Listener>(), second = std::make_shared<Listener>();
  logger.listeners = {first, second};
  first->Then = [&] { logger.listeners.clear(); };
  auto& events = (CommEvents&)logger;  // what the link holds
  std::string error = "overrun";
  events.CommEventError(3004, error);
  events.AbortAcknowledged();
  events.AbortAcknowledged();
  EXPECT_EQ(first->Seen + "|" + second->Seen + "|" + error, "3004overrunabort|3004overrun!abort|overrun!!");
  logger.record.BytesUsed = -1;
  events.XmodemPacketReceived(1, 1024);
  EXPECT_EQ(host->Progress, "1024 of 0 ");
}

}  // namespace
}  // namespace hy_wristlog
