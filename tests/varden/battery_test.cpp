#include "varden/battery.h"
#include "varden/varden_seconds.h"

#include <algorithm>
#include <limits>

#include "varden/VardenLogger.h"
#include "varden_support.h"

namespace hy_wristlog {
namespace {

using BatteryTest = InSimulatedWorld;

TEST_F(BatteryTest, SecondsReachFromLimitToLimit) {
  constexpr std::int32_t First = std::numeric_limits<std::int32_t>::min(), Last = -(First + 1);
  // Halves go to even.
  EXPECT_EQ(dateToLoggerSeconds(25569 + 1 / 256.0), 338);
  EXPECT_EQ(dateToLoggerSeconds(25569 + 3 / 256.0), 1012);
  for (const std::int32_t seconds : {0, 1, -1, 1718452800, Last, First})
    EXPECT_EQ(dateToLoggerSeconds(dateFromUnixSeconds(seconds)), seconds);
  EXPECT_EQ(outcome([] { dateToLoggerSeconds(713.865185); }),
            "11503 Class_VardenLogger.fncDateToLoggerSeconds: Date is before 12/13/1901 8:45:52 PM");
  EXPECT_EQ(raisedBy([] { dateToLoggerSeconds(50424.2); }), "6 Overflow");
  EXPECT_EQ(raisedBy([] { dateToLoggerSeconds(std::nan("")); }), "6 Overflow");
}

TEST_F(BatteryTest, VividPercentFollowsTheDropUnderLoad) {
  const std::pair<float, double> cases[] = {{3.2f, 100},    {2.97f, 100},   {2.94f, 66.475},  {2.91f, 27.83},
                                            {2.9f, 20.236}, {2.83f, 2.156}, {2.8284f, 1.924}, {2.8283f, 0}};
  for (const auto& [loaded, percent] : cases)
    EXPECT_NEAR(vividBatteryPercent(3, loaded), percent, 0.01) << loaded;
  EXPECT_EQ(vividBatteryPercent(3e38f, -3e38f), 0);
  EXPECT_EQ(vividBatteryPercent(std::nanf(""), 0), 0);
}

TEST_F(BatteryTest, LifeAndWordsByDevice) {
  constexpr auto Vivid = KR_QUILLANDER;
  // Days and percent of -1: the question fails.
  const std::tuple<enmDeviceType, float, float, float, int, const char*> cases[] = {
      {Vivid, -1, -1, 365, 100, "Approx. 365 days (100%) battery life remaining"},
      {Vivid, 3.0f, 2.94f, 242.63f, 66, "Approx. 242 days (66%) battery life remaining"},
      {KR_TOLKA, 2.9f, 0, 30, -1, "Battery Fully Charged"},
      {KR_TOLKA, std::nextafter(2.9f, 0.0f), 0, 0, -1, "Battery NOT Fully Charged"},
      {KR_TOLKA, -1, -1, 0, -1, "Unknown Battery Status"},
      {Device_Unknown, 3, 3, -1, -1, "Unknown Battery Status"},
  };
  const std::string source = "11502 Class_VardenLogger.", wrong = ": Invalid Logger Type";
  for (const auto& [device, voltage, loaded, days, percent, text] : cases) {
    VardenLogger logger;
    VardenRecord& r = logger.record;
    r.DeviceType = device;
    r.BatteryVoltage = voltage;
    r.LoadedBattVoltage = loaded;
    EXPECT_EQ(logger.fncFriendlyBatteryStatus(), text);
    float life = -1, full = -1;
    EXPECT_EQ(outcome([&, &l = life] { l = logger.Get_BattLifeRemaining(); }),
              days < 0 ? source + "fncGetBatteryLife" + wrong : "");
    EXPECT_EQ(outcome([&, &f = full] { f = logger.Get_BatteryPercent(); }),
              percent < 0 ? source + "fncGetBatteryPercent" + wrong : "");
    EXPECT_NEAR(life, days, 0.01);
    EXPECT_EQ(full, percent);
    EXPECT_EQ(r.BattLifeDays, std::max(life, 0.0f));
    EXPECT_NEAR(r.BattPercentValue, std::max(full, 0.0f), 0.5);
  }
}

TEST_F(BatteryTest, RecordingTime) {
  const auto days = [](enmDeviceType device, int mode, int epoch = 60, bool left = false) {
    VardenRecord record = loggerRecord(device, mode);
    record.MemorySize = 64;
    record.BytesUsed = 32768;
    record.EpochLength = static_cast<std::int16_t>(epoch);
    return maxRecordingDays(record, left);
  };
  const std::pair<enmDeviceType, const char*> bytesPerEpoch[] = {
      {KR_QUILLANDER, "0145230240"}, {KR_TOLKA, "0123000020"}, {KR_PENDREL, "0000000000"}};
  for (const auto& [device, bytes] : bytesPerEpoch)
    for (int mode = 0; mode < 10; ++mode) {
      const int each = bytes[mode] - '0';
      EXPECT_DOUBLE_EQ(days(device, mode), each ? 65536.0 / 1440 / each : 0) << mode;
    }
  EXPECT_DOUBLE_EQ(days(KR_TOLKA, 1, 60, true), 32768.0 / 1440);
  EXPECT_DOUBLE_EQ(days(KR_TOLKA, 1, 7), 65536.0 / 12343);
  for (const int epoch : {0, -1, -32768}) EXPECT_EQ(days(KR_TOLKA, 1, epoch), 0);
}

}  // namespace
}  // namespace hy_wristlog
