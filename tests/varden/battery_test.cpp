#include "varden/battery.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "codec_world.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {
namespace {

using BatteryTest = InCodecWorld;

TEST_F(BatteryTest, SecondsReachFromLimitToLimit) {
  struct {
    double Date;
    std::int32_t Seconds;
  } const cases[] = {
      {25569, 0},
      {25570, 86400},
      {713.8651851851852, std::numeric_limits<std::int32_t>::min()},
      {50424.13480324074, std::numeric_limits<std::int32_t>::max()},
      {25569 + 1 / 256.0, 338},
      {25569 + 3 / 256.0, 1012},
  };
  for (const auto& c : cases) EXPECT_EQ(dateToLoggerSeconds(c.Date), c.Seconds) << c.Date;
  for (const std::int32_t seconds : {0, 1, -1, 1718452800, std::numeric_limits<std::int32_t>::max(),
                                     std::numeric_limits<std::int32_t>::min()})
    EXPECT_EQ(dateToLoggerSeconds(loggerSecondsToDate(seconds)), seconds);

  std::string text, source;
  EXPECT_EQ(failureOf([] { dateToLoggerSeconds(713.865185); }, &text, &source), 11503);
  EXPECT_EQ(text, "Date is before 12/13/1901 8:45:52 PM");
  EXPECT_NE(source.find("Class_VardenLogger.fncDateToLoggerSeconds"), std::string::npos);
  EXPECT_EQ(failureOf([] { dateToLoggerSeconds(50424.2); }), 6);
  EXPECT_EQ(failureOf([] { dateToLoggerSeconds(std::nan("")); }), 6);
}

TEST_F(BatteryTest, VividPercentFollowsTheDropUnderLoad) {
  struct {
    float Voltage, Loaded;
    double Percent;
  } const cases[] = {
      {-1, -1, 100},        {3.0f, 3.2f, 100},    {3.0f, 2.97f, 100},   {3.0f, 2.94f, 66.475},
      {3.0f, 2.91f, 27.83}, {3.0f, 2.9f, 20.236}, {3.0f, 2.83f, 2.156}, {3.0f, 2.829f, 2.011},
      {3.0f, 2.8f, 0},      {3e38f, -3e38f, 0},
  };
  for (const auto& c : cases)
    EXPECT_NEAR(vividBatteryPercent(c.Voltage, c.Loaded), c.Percent, 0.01) << c.Voltage - c.Loaded;
  EXPECT_EQ(vividBatteryPercent(std::nanf(""), 0), 0);

  // The last voltage whose drop still is the limit itself, and the next one.
  float voltage = 0.2861f / 1.6667f;
  while (voltage * 1.6667f <= 0.2861f) voltage = std::nextafter(voltage, 1.0f);
  EXPECT_EQ(vividBatteryPercent(voltage, 0), 0);
  EXPECT_NEAR(vividBatteryPercent(std::nextafter(voltage, 0.0f), 0), 1.915, 0.01);
}

TEST_F(BatteryTest, LifeAndWordsByDevice) {
  struct {
    enmDeviceType Device;
    float Voltage, Loaded;
    double Days;
    int Percent;  ///< -1: fails
    const char* Text;
  } const cases[] = {
      {KR_QUILLANDER, -1, -1, 365, 100, "Approx. 365 days (100%) battery life remaining"},
      {KR_QUILLANDER, 3.0f, 2.94f, 242.63, 66, "Approx. 242 days (66%) battery life remaining"},
      {KR_QUILLANDER, 3.0f, 2.0f, 0, 0, "Approx. 0 days (0%) battery life remaining"},
      {KR_TOLKA, 2.9f, 0, 30, -1, "Battery Fully Charged"},
      {KR_TOLKA, std::nextafter(2.9f, 0.0f), 0, 0, -1, "Battery NOT Fully Charged"},
      {KR_TOLKA, -1, -1, 0, -1, "Unknown Battery Status"},
      {Device_Unknown, 3, 3, -1, -1, "Unknown Battery Status"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Text);
    VardenLogger logger;
    logger.record.DeviceType = c.Device;
    logger.record.BatteryVoltage = c.Voltage;
    logger.record.LoadedBattVoltage = c.Loaded;
    EXPECT_EQ(logger.fncFriendlyBatteryStatus(), c.Text);
    std::string text, source;
    if (c.Days < 0) {
      EXPECT_EQ(failureOf([&] { logger.Get_BattLifeRemaining(); }, &text, &source), 11502);
      EXPECT_EQ(text, "Invalid Logger Type");
      EXPECT_NE(source.find("Class_VardenLogger.fncGetBatteryLife"), std::string::npos);
    } else {
      EXPECT_NEAR(logger.Get_BattLifeRemaining(), c.Days, 0.01);
      EXPECT_NEAR(logger.record.BattLifeDays, c.Days, 0.01);
    }
    if (c.Percent < 0) {
      EXPECT_EQ(failureOf([&] { logger.Get_BatteryPercent(); }, &text, &source), 11502);
      EXPECT_NE(source.find("Class_VardenLogger.fncGetBatteryPercent"), std::string::npos);
    } else {
      EXPECT_EQ(logger.Get_BatteryPercent(), c.Percent);
      EXPECT_NEAR(logger.record.BattPercentValue, c.Percent, 0.5);
    }
  }
}

TEST_F(BatteryTest, RecordingTime) {
  VardenRecord record;
  record.MemorySize = 64;
  record.BytesUsed = 32768;
  record.EpochLength = 60;
  const auto days = [&](enmDeviceType device, int mode) {
    record.DeviceType = device;
    record.AcquisitionMode = static_cast<enmVardenLoggingMode>(mode);
    return maxRecordingDays(record, false);
  };
  const int vivid[] = {0, 1, 4, 5, 2, 3, 0, 2, 4, 0}, tolka[] = {0, 1, 2, 3, 0, 0, 0, 0, 2, 0};
  for (int mode = 0; mode < 10; ++mode) {
    EXPECT_DOUBLE_EQ(days(KR_QUILLANDER, mode), vivid[mode] ? 65536.0 / 1440 / vivid[mode] : 0) << mode;
    EXPECT_DOUBLE_EQ(days(KR_TOLKA, mode), tolka[mode] ? 65536.0 / 1440 / tolka[mode] : 0) << mode;
    EXPECT_EQ(days(KR_PENDREL, mode), 0);
  }
  days(KR_TOLKA, 1);
  EXPECT_DOUBLE_EQ(maxRecordingDays(record, true), 32768.0 / 1440);
  record.EpochLength = 7;
  EXPECT_DOUBLE_EQ(maxRecordingDays(record, false), 65536.0 / 12343);
  for (const std::int16_t epoch : {std::int16_t{0}, std::int16_t{-1}, std::int16_t{-32768}}) {
    record.EpochLength = epoch;
    EXPECT_EQ(maxRecordingDays(record, false), 0);
  }
}

}  // namespace
}  // namespace hy_wristlog
