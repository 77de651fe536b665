#include <gtest/gtest.h>

#include "codec_world.h"
#include "errors/GlobalState.h"
#include "recording.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {
namespace {

class DecodeProcedures : public InCodecWorld {
 protected:
  struct Boxes : Host {
    std::vector<std::string> Titles;
    MessageBoxButton showMessageBox(std::string_view title, std::string_view, std::int32_t) override {
      Titles.emplace_back(title);
      return MessageBoxButton::Ok;
    }
  };

  DecodeProcedures() {
    world->setHost(boxes);
    globals().ShortDateTimeFormat = "yyyy-mm-dd hh:nn";
  }

  std::shared_ptr<Boxes> boxes = std::make_shared<Boxes>();
  VardenLogger logger;
  bool lowBattery = true;
};

TEST_F(DecodeProcedures, JoinPackets) {
  std::vector<Class_Packet> packets(2);
  packets[0].BinData.assign(1024, 1);
  packets[1].BinData.assign(128, 2);
  logger.subSetRawDataFromPackets(packets);
  ASSERT_EQ(logger.record.RawData->size(), 1152U);
  EXPECT_EQ(logger.record.RawData->at(1023), 1);
  EXPECT_EQ(logger.record.RawData->at(1024), 2);
  EXPECT_EQ(logger.record.BytesUsed, 0);

  EXPECT_EQ(raisedBy([&] { logger.subSetRawDataFromPackets(std::nullopt); }),
            "11503 Invalid packet array input");
  packets[1].BinData.assign(1025, 2);
  EXPECT_EQ(raisedBy([&] { logger.subSetRawDataFromPackets(packets); }), "9 Subscript out of range");
  EXPECT_EQ(logger.record.RawData->size(), 1152U);
}

TEST_F(DecodeProcedures, DecodeGivenBytesInTheirPlaceAndTheLoggersFormat) {
  logger.record = loggerRecord(KR_TOLKA, 1);
  logger.record.RawData = ByteArray(5);
  logger.record.BytesUsed = 5;
  const Stream stream = Stream().event(1, 0).raw({7});
  EXPECT_EQ(logger.fncDecodeDataArrays(lowBattery, stream.Bytes, false), Decode_OK);
  EXPECT_FALSE(lowBattery);
  EXPECT_EQ(logger.record.RawData, stream.Bytes);
  EXPECT_EQ(logger.record.BytesUsed, 8);
  EXPECT_EQ(logger.record.ActivityArray, (ActivitySeries{7}));
  EXPECT_EQ(logger.record.EventArray.at(0).substr(0, 19), "\"2020-01-01 00:00\",");
}

TEST_F(DecodeProcedures, StopsAreComparedWithTheWorldsClock) {
  logger.record = loggerRecord(KR_QUILLANDER, 1);
  const double now = dateFromCivil(world->clock().utc());
  const auto stop = static_cast<std::int32_t>((now - 25569) * 86400) - StartSeconds - 31 * Day;
  logger.record.StartTimeGMT = dateAt(stop - 60);
  const Stream stream = Stream().event(1, stop - 60).raw({7}).event(2, stop);
  EXPECT_EQ(logger.fncDecodeDataArrays(lowBattery, stream.Bytes, false), Decode_TooLongSinceLastAcqStop);
}

TEST_F(DecodeProcedures, FailuresKeepTheEpochsBeforeThem) {
  logger.record = loggerRecord(KR_TOLKA, 1);
  logger.record.RawData = Stream().event(1, 0).status(2).raw({7, 8}).Bytes;
  logger.record.BytesUsed = 1000;
  lowBattery = false;
  EXPECT_EQ(raisedBy([&] { logger.fncDecodeDataArrays(lowBattery, std::nullopt, false); }),
            "9 Subscript out of range");
  EXPECT_TRUE(lowBattery);
  EXPECT_EQ(logger.record.ActivityArray, (ActivitySeries{7, 8}));

  logger.record.FirmwareVersion = "09.00.0000";
  EXPECT_EQ(raisedBy([&] { logger.fncDecodeDataArrays(lowBattery, std::nullopt, false); }),
            "11503 Invalid Firmware Version");
  boxes->Titles.clear();
  EXPECT_EQ(logger.fncDecodeDataArrays(lowBattery, std::nullopt, true), Decode_InputError);
  EXPECT_EQ(boxes->Titles, (std::vector<std::string>{"Unknown FW version"}));
}

}  // namespace
}  // namespace hy_wristlog
