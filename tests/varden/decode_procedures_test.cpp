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
  EXPECT_EQ(seriesText(*logger.record.RawData), "1x1024 2x128");
  EXPECT_EQ(outcome([&] { logger.subSetRawDataFromPackets(std::nullopt); }),
            "11503 Class_VardenLogger.subSetRawDataFromPackets: Invalid packet array input");
  packets[1].BinData.assign(1025, 2);
  EXPECT_EQ(raisedBy([&] { logger.subSetRawDataFromPackets(packets); }), "9 Subscript out of range");
}

TEST_F(DecodeProcedures, DecodeGivenBytesByTheWorldsFormatAndClock) {
  globals().ShortDateTimeFormat = "yyyy-mm-dd hh:nn";
  logger.record = loggerRecord(KR_QUILLANDER, 1);
  const auto stop = static_cast<std::int32_t>(world->now() - StartSeconds) - 31 * Day;
  logger.record.StartTimeGMT = dateAt(stop - 60);
  const ByteArray bytes = Stream().event(1, stop - 60).many(1, 7).event(2, stop).Bytes;
  EXPECT_EQ(logger.fncDecodeDataArrays(lowBattery, bytes, false), Decode_TooLongSinceLastAcqStop);
  EXPECT_FALSE(lowBattery);
  EXPECT_EQ(logger.record.RawData, bytes);
  EXPECT_EQ(logger.record.EventArray.text(0).substr(1, 16),
            formatDate(dateAt(stop - 60), "yyyy-mm-dd hh:nn"));

  // What came before a failure stays.
  logger.record.BytesUsed = 1000;
  logger.record.RawData = Stream().event(1, stop - 60).status(2).many(1, 7).Bytes;
  EXPECT_EQ(raisedBy([&] { logger.fncDecodeDataArrays(lowBattery, std::nullopt, false); }),
            "9 Subscript out of range");
  EXPECT_TRUE(lowBattery);
  EXPECT_EQ(seriesText(logger.record.ActivityArray), "7");
}

TEST_F(DecodeProcedures, UnknownFirmwareIsToldWhenDiagnosing) {
  const auto boxes = std::make_shared<NotingHost>();
  world->setHost(boxes);
  logger.record = loggerRecord(KR_TOLKA, 1, "09.00.0000");
  EXPECT_EQ(logger.fncDecodeDataArrays(lowBattery, Stream("start@0").Bytes, true), Decode_InputError);
  EXPECT_TRUE(boxes->Shown.starts_with("[Unknown FW version] Firmware version is unknown.")) << boxes->Shown;
}

}  // namespace
}  // namespace hy_wristlog
