#include "base/dates.h"
#include "errors/GlobalState.h"
#include "varden/VardenLogger.h"
#include "varden_support.h"

namespace hy_wristlog {
namespace {

struct DecodeProcedures : InSimulatedWorld {
  VardenLogger logger;
  bool lowBattery = true;
};

TEST_F(DecodeProcedures, JoinPackets) {
  std::vector<Class_Packet> packets(2);
  packets[0].BinData.assign(1024, 1);
  packets[1].BinData.assign(128, 2);
  logger.subSetRawDataFromPackets(packets);
  EXPECT_EQ(seriesText(*logger.record.RawData), seriesText(Stream().many(1024, 1).many(128, 2).Bytes));
  EXPECT_EQ(raisedBy([&] { logger.subSetRawDataFromPackets(std::nullopt); }, true),
            "11503 Class_VardenLogger.subSetRawDataFromPackets: Invalid packet array input");
  packets[1].BinData.assign(1025, 2);
  EXPECT_EQ(raisedBy([&] { logger.subSetRawDataFromPackets(packets); }), "9 Subscript out of range");
  EXPECT_EQ(logger.record.RawData->size(), 1152u);
}

TEST_F(DecodeProcedures, DecodeGivenBytesByTheWorldsFormatAndClock) {
  globals().ShortDateTimeFormat = "yyyy-mm-dd hh:nn";
  logger.record = loggerRecord(KR_QUILLANDER, 1);
  logger.record.RawData = ByteArray(5);
  logger.record.BytesUsed = 5;
  EXPECT_EQ(logger.fncDecodeDataArrays(lowBattery, Stream("start@0 7").Bytes, false), Decode_OK);
  EXPECT_FALSE(lowBattery);
  EXPECT_EQ(logger.record.RawData, Stream("start@0 7").Bytes);
  EXPECT_EQ(logger.record.BytesUsed, 8);
  EXPECT_EQ(seriesText(logger.record.ActivityArray), "7");
  EXPECT_EQ(logger.record.EventArray.text(0).substr(0, 19), "\"2020-01-01 00:00\",");

  const auto stop = static_cast<std::int32_t>(world->now() - StartSeconds) - 31 * Day;
  logger.record.StartTimeGMT = dateAt(stop - 60);
  const ByteArray old = Stream().event(1, stop - 60).many(1, 7).event(2, stop).Bytes;
  EXPECT_EQ(logger.fncDecodeDataArrays(lowBattery, old, false), Decode_TooLongSinceLastAcqStop);
}

TEST_F(DecodeProcedures, FailuresKeepTheEpochsBeforeThem) {
  logger.record = loggerRecord(KR_TOLKA, 1);
  logger.record.RawData = Stream("start@0 status2 7 8").Bytes;
  logger.record.BytesUsed = 1000;
  lowBattery = false;
  EXPECT_EQ(raisedBy([&] { logger.fncDecodeDataArrays(lowBattery, std::nullopt, false); }),
            "9 Subscript out of range");
  EXPECT_TRUE(lowBattery);
  EXPECT_EQ(seriesText(logger.record.ActivityArray), "7 8");
}

TEST_F(DecodeProcedures, UnknownFirmwareIsToldWhenDiagnosing) {
  const auto boxes = std::make_shared<Boxes>();
  world->setHost(boxes);
  logger.record = loggerRecord(KR_TOLKA, 1, "09.00.0000");
  EXPECT_EQ(logger.fncDecodeDataArrays(lowBattery, Stream("start@0").Bytes, true), Decode_InputError);
  EXPECT_EQ(boxes->Shown,
            "[Unknown FW version] Firmware version is unknown. Do a 'show version' before 'show data'\r\n"
            "(or, for 00.02.xxxx+ firmware, do a 'show config' before 'show data').\n");
}

}  // namespace
}  // namespace hy_wristlog
