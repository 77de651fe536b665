#include "base/dates.h"
#include "pendrel/Pendrel.h"
#include "varden/varden_support.h"

namespace hy_wristlog {
namespace {

using PendrelRecordTest = InSimulatedWorld;

TEST_F(PendrelRecordTest, ModelsAndHowLongTheyRecord) {
  const double epochsOf7 = static_cast<double>(86400.0F / 7);  // in a day, in single precision
  // clang-format off
  const std::tuple<const char*, int, const char*, int, int, double> cases[] = {
      {"C001234", 0x8F, "13 Pendrel 0 65408 180", 0, 60, 65408.0 / 1440},
      {"C901234", 0x90, "14 Pendrel 1 65408 180", 1, 7, 65408.0 / epochsOf7},
      {"C", 0, "13 Pendrel 0 65408 180", 1, 0, 0},
      {"B901234", 0xFF, "27 Pendrel Steps 1 65408 180", 2, 15, 32704.0 / 5760},
      {"B", 0x90, "27 Pendrel Steps 1 65408 180", 0, 15, 0}, {"", 0x90, "0  0 0 0", 1, 60, 0}};
  // clang-format on
  for (const auto& [serial, firmware, facts, mode, epoch, days] : cases) {
    PendrelRecord r;
    r.SerialNumber = serial;
    r.FirmwareVersion = static_cast<std::uint8_t>(firmware);
    r.AcquisitionMode = static_cast<enmPDLoggingMode>(mode);
    r.EpochLength = static_cast<std::int16_t>(epoch);
    EXPECT_EQ(std::to_string(r.Get_DeviceType()) + " " + r.Get_DeviceText() + " " +
                  std::to_string(r.Get_CTcompliant()) + " " + std::to_string(r.Get_MaxBytesUsed()) + " " +
                  std::to_string(r.Get_MaxBatteryLife()),
              facts);
    EXPECT_EQ(r.Get_MaxRecordingTime(), days) << serial << mode;
  }
}

TEST_F(PendrelRecordTest, BlocksToDownload) {
  PendrelRecord record;
  for (const auto& [bytes, blocks] : {std::pair{-1, 0}, {0, 0}, {1, 1}, {3968, 1}, {3969, 2}, {65408, 16}}) {
    record.BytesUsed = bytes;
    EXPECT_EQ(record.Get_BlocksToDownload(), blocks) << bytes;
  }
  record.BytesUsed = 2147483647;
  EXPECT_EQ(numberOf([&] { record.Get_BlocksToDownload(); }), 6);
}

TEST_F(PendrelRecordTest, BatteryLife) {
  Pendrel logger;
  const double today = datePart(dateFromCivil(platform::current().clock().local()));
  logger.record.BatteryDate = today - 10;
  EXPECT_EQ(logger.Get_BattLifeRemaining(), 0);
  logger.record.SerialNumber = "C";
  EXPECT_EQ(logger.Get_BattLifeRemaining(), 170);
  EXPECT_EQ(logger.fncBatteryLife(today - 200), 0);
  EXPECT_EQ(logger.fncBatteryLife({}, KR_TOLKA), 0);
}

TEST_F(PendrelRecordTest, MemoryImage) {
  Pendrel logger;
  const ByteArray bytes = Stream("1 2 3").Bytes;
  for (const int size : {0, 5001}) {
    logger.record.MemorySizeKB = static_cast<std::int16_t>(size);
    EXPECT_EQ(raisedBy([&] { logger.subInitRawData(); }, true),
              "10101 Class_Pendrel.subInitRawData: Invalid memory size");
  }
  for (const std::int16_t size : {std::int16_t{5000}, std::int16_t{1}}) {
    logger.record.MemorySizeKB = size;
    logger.subInitRawData();
    EXPECT_EQ(logger.record.RawData.size(), size * 1024U);
  }
  for (const auto& [lower, upper] : {std::pair{-1, 1}, {0, 3}, {1022, 1024}, {INT32_MIN, INT32_MAX}})
    EXPECT_EQ(
        raisedBy([&, l = lower, u = upper] { logger.subSetRawDataBlock(l, u, bytes); }, true),
        "10103 Class_Pendrel.subSetRawDataBlock: Invalid input: upper or lower address is out of bounds");
  for (const auto& [lower, upper] : {std::pair{1022, 1023}, {0, 2}, {900, 100}})
    logger.subSetRawDataBlock(lower, upper, bytes);
  EXPECT_EQ(seriesText(logger.record.RawData), "1 2 3 0x1019 1 2") << "900 to 100 is nothing";

  const std::tuple<std::int32_t, std::int32_t, std::size_t> cuts[] = {
      {-1, 5, 0}, {3, 5, 3}, {5000, 5, 1024}, {0, 5, 133}, {0, -200, 0}, {0, 2147483647, 1024}};
  for (const auto& [count, used, size] : cuts) {
    logger.record.BytesUsed = used;
    EXPECT_EQ(logger.Get_RawData(count).size(), size) << count;
  }
}

}  // namespace
}  // namespace hy_wristlog
