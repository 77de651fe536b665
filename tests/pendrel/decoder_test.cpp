#include "pendrel/decoder.h"

#include "pendrel/Pendrel.h"
#include "varden/varden_support.h"

namespace hy_wristlog {
namespace {

using PendrelDecoder = InSimulatedWorld;

constexpr std::int32_t Whole = -1000;

/// A recording that ends with the image.
PendrelRecord recordOf(const char* bytes, const char* serialNumber = "C001234", int mode = 1,
                       std::int32_t bytesUsed = Whole) {
  PendrelRecord record;
  const ByteArray recorded = Stream(bytes).Bytes;
  record.RawData.assign(128, 77);
  record.RawData.insert(record.RawData.end(), recorded.begin(), recorded.end());
  record.SerialNumber = serialNumber;
  record.AcquisitionMode = static_cast<enmPDLoggingMode>(mode);
  record.EpochLength = 60;
  record.ActivityCalibration = 128;
  record.BytesUsed = bytesUsed == Whole ? static_cast<std::int32_t>(recorded.size()) : bytesUsed;
  record.Samples = record.MarkerCount = 99;
  return record;
}

std::string seriesOf(const PendrelRecord& r) {
  return "A " + seriesText(r.ActivityArray) + " M " + seriesText(r.MarkerArray) + " S " +
         seriesText(r.StepsArray) + "; " + std::to_string(r.Samples) + " " + std::to_string(r.MarkerCount);
}

TEST_F(PendrelDecoder, WalksTheSamples) {
  constexpr char Counting[] = "B001234";
  const struct {
    const char *Name, *Bytes, *Series;
    const char* SerialNumber = "C001234";
    int Mode = 1;
    std::int32_t BytesUsed = Whole;
  } cases[] = {
      {"activity", "0 1 2 3", "A 0 5 10 15 M ?x4 S ?; 4 0"},
      {"marker after its sample", "3 254 3", "A 15x2 M 1 ? S ?; 2 1"},
      {"two marks: the second is a sample", "3 254 254 3", "A 15 0 15 M 1 ?x2 S ?; 3 1"},
      {"a mark for a sample takes a marker", "254x4 255 254", "A 0x3 M 1x3 S ?; 3 3"},
      {"255 is no marker", "3 255 3", "A 15 0 15 M ?x3 S ?; 3 0"},
      {"marker after the end", "3 3 254", "A 15x2 M ?x2 S ?; 2 0", "C901234", 1, 2},
      {"nothing recorded", "3 3", "A 15 M ? S ?; 1 0", "C901234", 1, 0},
      {"length unknown", "3 254", "A 15 M ? S ?; 1 0", "C901234", 1, -1},
      {"steps model without steps", "3 254 3", "A 15x2 M 1 ? S ?x2; 2 1", Counting},
      {"steps", "3 7 3 253 254 3 254 3 255 254 0 0", "A 15x4 0 M ? 1 ? 1 ? S 7 253 0x3; 5 2", Counting, 2},
      {"steps after the end", "3 7 3 8 254", "A 15x2 M ?x2 S 7 ?; 2 0", Counting, 2, 3},
      {"marker after the end of steps", "3 7 254", "A 15 M ? S 7; 1 0", Counting, 2, 2}};
  for (const auto& [name, bytes, series, serial, mode, used] : cases) {
    Pendrel logger;
    logger.record = recordOf(bytes, serial, mode, used);
    logger.subDecodeDataArrays();
    EXPECT_EQ(seriesOf(logger.record), series) << name;
  }
}

TEST_F(PendrelDecoder, FailuresKeepTheSamplesBeforeThem) {
  Pendrel logger;
  const auto failing = [&](const PendrelRecord& record) {
    logger.record = record;
    return raisedBy([&] { logger.subDecodeDataArrays(); });
  };
  EXPECT_EQ(failing(recordOf("3 254 3", "C", 1, 2147483519)), "9 Subscript out of range");
  EXPECT_EQ(seriesOf(logger.record), "A 15x2 M 1 ? S ; 99 1");
  EXPECT_EQ(failing(recordOf("3 7 3", "B", 2, 5)), "9 Subscript out of range");
  EXPECT_EQ(seriesOf(logger.record), "A 15x2 M ?x2 S 7 ?; 99 0");
  EXPECT_EQ(failing(recordOf("3", "C", 1, -128)), "9 Subscript out of range");
  EXPECT_EQ(failing(recordOf("3", "C", 1, 2147483520)), "6 Overflow");

  PendrelRecord uncalibrated = recordOf("0 254 255 3");
  uncalibrated.ActivityCalibration = 0;
  EXPECT_EQ(failing(uncalibrated), "11 Division by zero");
  EXPECT_EQ(seriesOf(logger.record), "A 0x2 M 1 ? S ; 99 1");
  uncalibrated.BytesUsed = 3;
  EXPECT_EQ(failing(uncalibrated), "");
}

TEST_F(PendrelDecoder, TypesAndTheirModes) {
  const char *mode = "10114 Invalid Acquisition Mode", *type = "10102 Incompatible Device Type";
  for (const auto& [serial, acquisition, failure] :
       {std::tuple{"C001234", 2, mode}, {"C901234", 0, mode}, {"B001234", 3, mode}, {"X001234", 9, type}}) {
    Pendrel logger;
    logger.record = recordOf("3", serial, acquisition);
    EXPECT_EQ(raisedBy([&] { logger.subDecodeDataArrays(); }), failure) << serial << acquisition;
  }
}

TEST_F(PendrelDecoder, ExpansionFollowsTheEpoch) {
  // Entries 1, 13, 14, 100 and 253.
  const std::pair<std::int16_t, std::array<int, 5>> cases[] = {{-30, {-1, -13, -14, -140, -1804}},
                                                               {15, {2, 26, 28, 367, 4860}},
                                                               {60, {5, 65, 71, 1076, 14327}},
                                                               {900, {61, 863, 937, 14371, 32767}}};
  for (const auto& [epoch, entries] : cases) {
    const auto table = expansionTable(epoch);
    EXPECT_EQ((std::array<int, 5>{table[1], table[13], table[14], table[100], table[253]}), entries) << epoch;
    EXPECT_EQ(table[0] + table[254] + table[255], 0);
  }
  EXPECT_EQ(numberOf([] { expansionTable(-32768); }), 6);
}

TEST_F(PendrelDecoder, ActivityIsScaledAndRounded) {
  const std::tuple<int, const char*, const char*> cases[] = {
      {128, "1 253", "5 14327"}, {255, "1 2 3", "3 5 8"}, {1, "1 253", "640 32767"},
      {64, "1 3", "10 30"},      {100, "1", "6"},         {20, "1", "32"}};
  for (const auto& [calibration, bytes, activity] : cases) {
    PendrelRecord record = recordOf(bytes);
    record.ActivityCalibration = static_cast<std::uint8_t>(calibration);
    decodeSamples(record);
    EXPECT_EQ(seriesText(record.ActivityArray), activity) << calibration;
  }
}

}  // namespace
}  // namespace hy_wristlog
