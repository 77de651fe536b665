#include "varden/battery.h"

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
  const std::pair<double, std::int32_t> cases[] = {{713.8651851851852, First},
                                                   {50424.13480324074, Last},
                                                   {25569 + 1 / 256.0, 338},
                                                   {25569 + 3 / 256.0, 1012}};
  for (const auto& [date, seconds] : cases) EXPECT_EQ(dateToLoggerSeconds(date), seconds);
  for (const std::int32_t seconds : {0, 1, -1, 1718452800, Last, First})
    EXPECT_EQ(dateToLoggerSeconds(loggerSecondsToDate(seconds)), seconds);
  EXPECT_EQ(raisedBy([] { dateToLoggerSeconds(713.865185); }, true),
            "11503 Class_VardenLogger.fncDateToLoggerSeconds: Date is before 12/13/1901 8:45:52 PM");
  EXPECT_EQ(raisedBy([] { dateToLoggerSeconds(50424.2); }), "6 Overflow");
  EXPECT_EQ(raisedBy([] { dateToLoggerSeconds(std::nan("")); }), "6 Overflow");
}

TEST_F(BatteryTest, VividPercentFollowsTheDropUnderLoad) {
  const struct {
    float Voltage, Loaded;
    double Percent;
  } cases[] = {{-1, -1, 100},        {3.0f, 3.2f, 100},    {3.0f, 2.97f, 100},   {3.0f, 2.94f, 66.475},
               {3.0f, 2.91f, 27.83}, {3.0f, 2.9f, 20.236}, {3.0f, 2.83f, 2.156}, {3.0f, 2.829f, 2.011},
               {3.0f, 2.8f, 0},      {3e38f, -3e38f, 0}};
  for (const auto& row : cases)
    EXPECT_NEAR(vividBatteryPercent(row.Voltage, row.Loaded), row.Percent, 0.01) << row.Loaded;
  EXPECT_EQ(vividBatteryPercent(std::nanf(""), 0), 0);

  // The last voltage whose drop still is the limit itself, and the next one.
  float voltage = 0.2861f / 1.6667f;
  while (voltage * 1.6667f <= 0.2861f) voltage = std::nextafter(voltage, 1.0f);
  EXPECT_EQ(vividBatteryPercent(voltage, 0), 0);
  EXPECT_NEAR(vividBatteryPercent(std::nextafter(voltage, 0.0f), 0), 1.915, 0.01);
}

TEST_F(BatteryTest, LifeAndWordsByDevice) {
  constexpr auto Vivid = KR_QUILLANDER;
  const struct {
    enmDeviceType Device;
    float Voltage, Loaded, Days;
    int Percent;  ///< -1: fails
    const char* Text;
  } cases[] = {
      {Vivid, -1, -1, 365, 100, "Approx. 365 days (100%) battery life remaining"},
      {Vivid, 3.0f, 2.94f, 242.63f, 66, "Approx. 242 days (66%) battery life remaining"},
      {Vivid, 3.0f, 2.0f, 0, 0, "Approx. 0 days (0%) battery life remaining"},
      {KR_TOLKA, 2.9f, 0, 30, -1, "Battery Fully Charged"},
      {KR_TOLKA, std::nextafter(2.9f, 0.0f), 0, 0, -1, "Battery NOT Fully Charged"},
      {KR_TOLKA, -1, -1, 0, -1, "Unknown Battery Status"},
      {Device_Unknown, 3, 3, -1, -1, "Unknown Battery Status"},
  };
  const std::string source = "11502 Class_VardenLogger.", wrong = ": Invalid Logger Type";
  for (const auto& row : cases) {
    VardenLogger logger;
    VardenRecord& r = logger.record;
    r.DeviceType = row.Device;
    r.BatteryVoltage = row.Voltage;
    r.LoadedBattVoltage = row.Loaded;
    EXPECT_EQ(logger.fncFriendlyBatteryStatus(), row.Text);
    float days = -1;
    int percent = -1;
    EXPECT_EQ(raisedBy([&] { days = logger.Get_BattLifeRemaining(); }, true),
              row.Days < 0 ? source + "fncGetBatteryLife" + wrong : "");
    EXPECT_EQ(raisedBy([&] { percent = logger.Get_BatteryPercent(); }, true),
              row.Percent < 0 ? source + "fncGetBatteryPercent" + wrong : "");
    EXPECT_NEAR(days, row.Days, 0.01);
    EXPECT_EQ(percent, row.Percent);
    EXPECT_EQ(r.BattLifeDays, std::max(days, 0.0f));
    EXPECT_NEAR(r.BattPercentValue, std::max(percent, 0), 0.5);
  }
}

TEST_F(BatteryTest, RecordingTime) {
  VardenRecord record;
  record.MemorySize = 64;
  record.BytesUsed = 32768;
  record.EpochLength = 60;
  const std::pair<enmDeviceType, const char*> bytesPerEpoch[] = {
      {KR_QUILLANDER, "0145230240"}, {KR_TOLKA, "0123000020"}, {KR_PENDREL, "0000000000"}};
  for (const auto& [device, bytes] : bytesPerEpoch)
    for (int mode = 0; mode < 10; ++mode) {
      record.DeviceType = device;
      record.AcquisitionMode = static_cast<enmVardenLoggingMode>(mode);
      const int each = bytes[mode] - '0';
      EXPECT_DOUBLE_EQ(maxRecordingDays(record, false), each ? 65536.0 / 1440 / each : 0) << mode;
    }
  record.DeviceType = KR_TOLKA;
  record.AcquisitionMode = VardenMode_ActivityOnly;
  EXPECT_DOUBLE_EQ(maxRecordingDays(record, true), 32768.0 / 1440);
  record.EpochLength = 7;
  EXPECT_DOUBLE_EQ(maxRecordingDays(record, false), 65536.0 / 12343);
  for (const int epoch : {0, -1, -32768}) {
    record.EpochLength = static_cast<std::int16_t>(epoch);
    EXPECT_EQ(maxRecordingDays(record, false), 0);
  }
}

}  // namespace
}  // namespace hy_wristlog
