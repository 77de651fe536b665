#include "varden/record.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "base/dates.h"
#include "codec_world.h"
#include "varden/VardenLogger.h"
#include "varden/firmware.h"

namespace hy_wristlog {
namespace {

using RecordTest = InCodecWorld;

TEST_F(RecordTest, FirmwareAndWhatItCanDo) {
  struct {
    const char* Text;
    bool Valid, MemoryFull, Sleep, NewEvents, NewLight;
  } const cases[] = {
      {"00.01.0022", false, false, false, false, false},
      {"00.01.0023", true, false, false, false, false},
      {"00.01.0028", true, false, false, false, false},
      {"00.01.0029", true, false, false, true, false},
      {"00.01.0030", true, false, false, false, false},
      {"00.01.9999", true, false, false, false, false},
      {"00.00.0029", false, false, false, false, false},
      {"00.02.0000", true, false, true, true, false},
      {"00.02.0001", true, false, true, true, false},
      {"00.02.0002", true, true, true, true, false},
      {"00.03.0002", false, false, false, false, false},
      {"01.00.0000", true, true, true, true, false},
      {"01.01.0000", true, true, true, true, true},
      {"01.02.0000", false, false, false, false, false},
      {"02.00.0000", false, false, false, false, false},
      {"01.01.000", false, false, false, false, false},
      {"01x01y0000tail", true, true, true, true, true},
      {"01.01.00a0", false, false, false, false, false},
      {"+1.01.0000", false, false, false, false, false},
      {" 1.01.0000", false, false, false, false, false},
      {"01\xC3\xAB"
       "01.0000",
       true, true, true, true, true},
      {"", false, false, false, false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Text);
    VardenRecord record;
    record.FirmwareVersion = c.Text;
    record.DeviceType = KR_QUILLANDER;
    EXPECT_EQ(isValidFirmware(record), c.Valid);
    EXPECT_EQ(hasMemoryFullFlag(record), c.MemoryFull);
    EXPECT_EQ(hasLoadedVoltage(record), c.MemoryFull);
    EXPECT_EQ(hasSleepMode(record), c.Sleep);
    EXPECT_EQ(hasNewEventFormat(record), c.NewEvents);
    EXPECT_EQ(hasNewLightScaleFactors(record), c.NewLight);
    record.DeviceType = KR_TOLKA;
    EXPECT_FALSE(hasNewLightScaleFactors(record));
  }
}

TEST_F(RecordTest, VersionAnswers) {
  struct {
    enmDeviceType Device;
    const char *Answer, *Firmware, *Lcd;
  } const cases[] = {
      {KR_QUILLANDER, "01.01.000", "", ""},
      {KR_QUILLANDER, "01.01.0002", "01.01.0002", ""},
      {KR_QUILLANDER, "01.01.0002 1.23", "01.01.0002", ""},
      {KR_QUILLANDER, "01.01.0002 1.234xx", "01.01.0002", "1.234"},
      {KR_TOLKA, "01.01.0002 1.234", "01.01.0002 1.234", ""},
      {Device_Unknown, "01.01.0002 1.234", "old", "old"},
  };
  for (const auto& c : cases) {
    VardenRecord record;
    record.DeviceType = c.Device;
    record.FirmwareVersion = record.LCDfirmwareVersion = "old";
    parseVersionInfo(record, c.Answer);
    EXPECT_EQ(record.FirmwareVersion, c.Firmware) << c.Answer;
    EXPECT_EQ(record.LCDfirmwareVersion, c.Lcd) << c.Answer;
  }
}

template <class T>
void fill(T& value) {
  if constexpr (std::is_same_v<T, VardenConfigBlock>)
    value.Unused1 = {1};
  else if constexpr (std::is_same_v<T, TimeZoneRef>)
    value = std::make_shared<Class_TimeZoneInfo>();
  else if constexpr (std::is_same_v<T, std::optional<ByteArray>>)
    value = ByteArray{1};
  else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>)
    value = static_cast<T>(1);
  else
    value.resize(1);
}

template <class T>
bool isFilled(const T& value) {
  if constexpr (std::is_same_v<T, VardenConfigBlock>)
    return !value.Unused1.empty();
  else if constexpr (std::is_same_v<T, TimeZoneRef> || std::is_same_v<T, std::optional<ByteArray>>)
    return static_cast<bool>(value);
  else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>)
    return value != T{};
  else
    return !value.empty();
}

/// Names of the members that hold something.
std::string filledMembers(const VardenRecord& record) {
  std::string names;
#define HY_STORED(Name, Type, Access, Copy) \
  if (isFilled(record.Name)) names += #Name " ";
#define HY_COMPUTED(Name, Type)
#define HY_MEMBER(Name, Type, Copy) HY_STORED(Name, Type, , Copy)
#include "hy_wristlog/varden_properties.inc"
#include "varden/record_members.inc"
#undef HY_STORED
  return names;
}

VardenRecord filledRecord() {
  VardenRecord record;
#define HY_STORED(Name, Type, Access, Copy) fill(record.Name);
#include "hy_wristlog/varden_properties.inc"
#include "varden/record_members.inc"
#undef HY_STORED
#undef HY_COMPUTED
#undef HY_MEMBER
  return record;
}

TEST_F(RecordTest, CopyLeavesTheRecordingBehind) {
  std::string left = filledMembers(filledRecord());
  const std::string copied = filledMembers(filledRecord().copy());
  for (const char* name : {"Samples", "DecodeResult", "ActivityArray", "MarkerArray", "LightArray",
                           "WristStatusArray", "RedLightArray", "GreenLightArray", "BlueLightArray",
                           "ConfigCRC", "SubjectInfoVersion", "RawData", "EncodedConfigBytes", "ConfigBlock",
                           "EventArray", "Marker2Array", "BattLifeDays", "BattPercentValue"}) {
    const auto at = (" " + left).find(" " + std::string(name) + " ");
    ASSERT_NE(at, std::string::npos) << name;
    left.erase(at, std::string(name).size() + 1);
  }
  EXPECT_EQ(copied, left);
}

TEST_F(RecordTest, EraseLeavesOnlyTheWristArrayOfLoggersWithoutBlueLight) {
  VardenRecord record = filledRecord();
  record.erase();
  EXPECT_EQ(filledMembers(record), "");
  record = filledRecord();
  record.BlueLightArray.clear();
  record.erase();
  EXPECT_EQ(filledMembers(record), "WristStatusArray ");
  EXPECT_EQ(filledMembers(VardenRecord()), "BatteryVoltage LoadedBattVoltage LastLoggerTime ");
}

TEST_F(RecordTest, ClockIsCarriedOnFromItsLastReading) {
  VardenLogger logger;
  EXPECT_EQ(logger.Get_CurrentGMTtime(), -1);
  const double now = dateFromCivil(world->clock().utc());
  logger.record.LastLoggerTime = now - 100;
  logger.record.LastTimeLoggerRead = now - 2;
  EXPECT_EQ(logger.Get_CurrentGMTtime(), now - 98);
  logger.subErase();
  EXPECT_EQ(logger.Get_CurrentGMTtime(), now);
}

TEST_F(RecordTest, RawDataByCount) {
  struct {
    std::int32_t Count, BytesUsed;
    std::size_t Size;
  } const cases[] = {{-1, 3, 0}, {0, 0, 5}, {0, 3, 3}, {2, 3, 2}, {9, 3, 5}, {0, 9, 5}, {0, -7, 0}};
  VardenLogger logger;
  EXPECT_TRUE(logger.Get_RawData(0).empty());
  logger.record.RawData = ByteArray{1, 2, 3, 4, 5};
  for (const auto& c : cases) {
    logger.record.BytesUsed = c.BytesUsed;
    EXPECT_EQ(logger.Get_RawData(c.Count).size(), c.Size) << c.Count << " " << c.BytesUsed;
  }
}

TEST_F(RecordTest, DerivedValuesByDevice) {
  struct {
    enmDeviceType Device;
    const char* Text;
    int Life;
  } const cases[] = {{KR_QUILLANDER, "Kestrin Vivid", 365}, {KR_TOLKA, "Kestrin 2", 30}, {KR_PENDREL, "", 0}};
  for (const auto& c : cases) {
    VardenLogger logger;
    logger.record.DeviceType = c.Device;
    logger.record.MemorySize = 64;
    EXPECT_EQ(logger.Get_DeviceText(), c.Text);
    EXPECT_EQ(logger.Get_MaxBatteryLife(), c.Life);
    EXPECT_EQ(logger.Get_CTcompliant(), c.Life != 0);
    EXPECT_EQ(logger.Get_MaxBytesAvailable(), 65536);
  }
}

struct AskedHost : Host {
  MessageBoxButton Answer = MessageBoxButton::No;
  std::string Asked, Clipboard;
  bool Throws = false;
  std::int32_t Bytes = 0, Expected = 0;
  MessageBoxButton showMessageBox(std::string_view title, std::string_view text,
                                  std::int32_t buttons) override {
    if (Throws) throw std::runtime_error("no window");
    Asked = std::string(title) + "|" + std::string(text) + "|" + std::to_string(buttons);
    return Answer;
  }
  void copyToClipboard(std::string_view text) override { Clipboard = text; }
  void downloadProgress(std::int32_t bytes, std::int32_t expected) override {
    Bytes = bytes, Expected = expected;
  }
};

TEST_F(RecordTest, EndOfALoggerAsksAboutItsWindow) {
  const auto host = std::make_shared<AskedHost>();
  world->setHost(host);
  VardenLogger().subHideFormComm();
  EXPECT_EQ(host->Asked, "");
  for (const auto answer : {MessageBoxButton::No, MessageBoxButton::Cancel, MessageBoxButton::Yes}) {
    host->Answer = answer;
    VardenLogger logger;
    logger.subShowFormComm();
    EXPECT_TRUE(logger.link().Get_Visible());
    logger.link().subShowCOM("traffic");
    EXPECT_EQ(host->Clipboard, "");
  }
  EXPECT_EQ(host->Asked,
            "Copy diag to clipboard?|Do you want a copy of the text in the diag window copied to the "
            "clipboard?|14");
  EXPECT_NE(host->Clipboard.find("traffic"), std::string::npos);

  host->Throws = true;
  EXPECT_NO_THROW({
    VardenLogger logger;
    logger.subShowFormComm();
  });
}

TEST_F(RecordTest, LinkEventsReachEveryListener) {
  struct Listener : VardenLoggerEvents {
    std::string Seen;
    std::vector<std::shared_ptr<VardenLoggerEvents>>* LeaveFrom = nullptr;
    void CommEventError(std::int32_t number, std::string& text) override {
      Seen += std::to_string(number) + text;
      text += "!";
    }
    void CommProgress(std::string& text) override { Seen += text; }
    void AbortAcknowledged() override {
      Seen += "abort";
      if (LeaveFrom != nullptr) LeaveFrom->clear();
    }
  };
  const auto host = std::make_shared<AskedHost>();
  world->setHost(host);
  VardenLogger logger;
  const auto first = std::make_shared<Listener>(), second = std::make_shared<Listener>();
  logger.listeners = {first, second};
  first->LeaveFrom = &logger.listeners;
  auto& events = (CommEvents&)logger;  // what the link holds
  std::string error = "overrun", progress = "half";
  events.CommEventError(3004, error);
  events.CommProgress(progress);
  events.AbortAcknowledged();
  events.AbortAcknowledged();
  EXPECT_EQ(first->Seen, "3004overrunhalfabort");
  EXPECT_EQ(second->Seen, "3004overrun!halfabort");
  EXPECT_EQ(error, "overrun!!");

  logger.record.BytesUsed = -1;
  events.XmodemPacketReceived(1, 1024);
  EXPECT_EQ(host->Bytes, 1024);
  EXPECT_EQ(host->Expected, 0);
  logger.record.BytesUsed = 5000;
  events.XmodemPacketReceived(2, 2048);
  EXPECT_EQ(host->Expected, 5000);
}

}  // namespace
}  // namespace hy_wristlog
