#include "varden/decode/sample_decoder.h"

#include <cstring>
#include <random>

#include "varden_support.h"

namespace hy_wristlog {
namespace {

TEST(ActivityScale, StepsGrowAndAreCapped) {
  const std::tuple<std::uint8_t, std::uint8_t, std::int32_t> cases[] = {
      {128, 0, 0},       {128, 32, 32},  {128, 33, 34}, {128, 34, 36},   {128, 200, 8732}, {128, 243, 32767},
      {128, 252, 32767}, {128, 253, -1}, {1, 1, 128},   {1, 252, 32767}, {255, 3, 2},      {1, 253, -1}};
  for (const auto& [calibration, code, counts] : cases)
    EXPECT_EQ(ActivityScale(calibration)[code], counts) << +calibration << " " << +code;
  EXPECT_LT(ActivityScale(128)[242], 32767);
}

/// Behind one epoch of a gap.
TEST(SampleDecoder, DecodesEachRecord) {
  constexpr auto Q = KR_QUILLANDER, T = KR_TOLKA;
  // clang-format off
  const struct {
    const char* Name;
    enmDeviceType Device;
    int Mode;
    const char *Bytes, *Outcome, *Firmware = NewEvents;
    std::uint8_t Calibration = 128;
  } cases[] = {
      {"colours", Q, 2, "57 7 9 11", "0: R -1 0.2774536 G -1 74.17281 B -1 19828.92"},
      {"colours, new scale", Q, 2, "57 7 9 11", "0: R -1 0.004335213 G -1 1.15895 B -1 309.8269", NewScale},
      {"highest colours", Q, 2, "63 255 255 255", "0: R -1 3914288 G -1 3914288 B -1 3914288"},
      {"both", Q, 3, "1 0x2 32 64", "0: A -1 1 R -1 0.0009313226 G -1 0.001862645 B -1 0.00372529"},
      {"activity stays without colours", Q, 3, "1 200 0x3", "13: A -1 1 R -1x2 G -1x2 B -1x2"},
      {"lux", Q, 4, "0 0", "0: L -1 0.0078125"}, {"lux, high byte first", Q, 4, "1 64", "0: L -1 8"},
      {"silent overflow", Q, 4, "32 0", "0: L -1x2"}, {"calibrated", Q, 1, "1", "0: A -1 128", NewEvents, 1},
      {"lux out of range", Q, 4, "33 0", "13: L -1x2"}, {"activity and lux", Q, 5, "2 0 224", "0: A -1 2 L -1 1"},
      {"activity stays when light overflows", Q, 5, "2 32 0", "11: A -1 2 L -1x2"},
      {"frequency", Q, 7, "1 2", "0: R -1 258"},
      {"currents", Q, 8, "57 7 9 11", "0: R -1 2.167607e-09 G -1 5.794751e-07 B -1 0.0001549134"},
      {"new scale", Q, 8, "57 7 9 11", "0: R -1 1.354754e-10 G -1 3.621719e-08 B -1 9.68209e-06", NewScale},
      {"Tolka has no new scale", T, 2, "0 0", "0: L -1 0.0078125", NewScale},
      {"Tolka overflow", T, 2, "32 0", "11: L -1x2"}, {"greatest lux", T, 2, "16 223", "0: L -1 3.329908e+38"},
      {"first lux beyond", T, 2, "16 224", "11: L -1x2"}, {"Tolka both", T, 3, "5 0 224", "0: A -1 5 L -1 1"},
      {"Tolka both, light out of range", T, 3, "5 34 0", "13: A -1 5 L -1x2"},
      {"Tolka test light", T, 8, "0 224", "0: L -1 1"}, {"raw activity", T, 9, "250", "0: A -1 250", NewEvents, 0},
      {"cut after the activity", T, 3, "5", "0: A -1x2 L -1x2"},
      {"cut colours", Q, 3, "5 0x3", "0: A -1x2 R -1x2 G -1x2 B -1x2"},
      {"two records", Q, 2, "0x8", "0: R -1 0.0009313226x2 G -1 0.0009313226x2 B -1 0.0009313226x2"}};
  // clang-format on
  for (const auto& row : cases) {
    VardenRecord record = loggerRecord(row.Device, row.Mode, row.Firmware);
    record.ActivityCalibration = row.Calibration;
    Decoding decode{.Diagnostic = row.Mode > 6};
    decode(record, ("start@0 stop@60 start@120 " + std::string(row.Bytes)).c_str());
    EXPECT_EQ(std::to_string(decode.Result) + ":" + seriesOf(record), row.Outcome) << row.Name;
    EXPECT_EQ(record.WristStatusArray.empty(), row.Device == KR_TOLKA);
  }
}

/// A status without a bit before each sample keeps samples from being decoded in runs, and changes nothing.
TEST(SampleDecoder, DecodesARunAsItDecodesItsSamples) {
  std::mt19937 random(1);
  for (const LoggingMode& mode : LoggingModes) {
    if (mode.Odd == Oddity::Undecodable) continue;
    for (const unsigned lightBytes : {16U, 33U, 34U}) {
      Stream run("start@0"), samples("start@0");
      for (int sample = 0; sample < 5000; ++sample) {
        samples.status(0);
        for (int byte = 0; byte < mode.recordLength(); ++byte) {
          const bool first = byte < mode.activityBytes(), high = byte == mode.activityBytes();
          const int value = static_cast<int>(random() % (first ? 253U : high ? lightBytes : 256U));
          run.many(1, value), samples.many(1, value);
        }
      }
      VardenRecord one = loggerRecord(mode.Device, mode.Mode), other = one;
      Decoding decodeOne{.Diagnostic = true}, decodeOther{.Diagnostic = true};
      decodeOne(one, run), decodeOther(other, samples);
      EXPECT_EQ(decodeOne.Result, decodeOther.Result) << mode.Device << " " << mode.Mode;
      EXPECT_EQ(one.Samples, other.Samples);
      EXPECT_TRUE(one.ActivityArray == other.ActivityArray && one.LightArray == other.LightArray &&
                  one.RedLightArray == other.RedLightArray && one.GreenLightArray == other.GreenLightArray &&
                  one.BlueLightArray == other.BlueLightArray && one.MarkerArray == other.MarkerArray &&
                  one.WristStatusArray == other.WristStatusArray)
          << mode.Device << " " << mode.Mode;
    }
  }
}

TEST(SampleDecoder, DockBlanksSamples) {
  const struct {
    const char *Name, *Firmware, *Bytes, *Values;
    bool Diagnostic = false;
    int Mode = 1;
  } cases[] = {
      {"in and out", NewEvents, "start@0 3x2 event96@0 3x2 event32@0 3x2", "3x2 -1x3 3"},
      {"found in and out", NewEvents, "start@0 3x2 event64@0 3x2 event128@0 3x2", "3x2 -1x2 3x2"},
      {"start leaves the dock", NewEvents, "event65@0 3 event33@60 3", "-1 3"},
      {"start ends the skip", NewEvents, "start@0 3 event32@60 start@60 3", "3x2"},
      {"old, no skip", OldEvents, "start@0 3x2 event32@0 3x2 event64@0 3x2", "3x2 -1x2 3x2"},
      {"old, both change nothing", OldEvents, "start@0 3x2 event32@0 3x2 event96@0 3", "3x2 -1x3"},
      {"old, nor a start", OldEvents, "event33@0 3 event97@60 3 start@120 3 event65@180 3", "-1x3 3"},
      {"diagnostic", NewEvents, "start@0 3x2 event96@0 3x2 event32@0 3x2", "3x6", true},
      {"light out of range is not looked at", NewEvents, "event65@0 99 0 99 0", "-1x2", false, 2}};
  for (const auto& row : cases) {
    VardenRecord record = loggerRecord(KR_TOLKA, row.Mode, row.Firmware);
    Decoding decode{.Diagnostic = row.Diagnostic};
    decode(record, row.Bytes);
    EXPECT_EQ(decode.Result, Decode_OK) << row.Name;
    EXPECT_EQ(seriesText(record.ActivityArray) + seriesText(record.LightArray), row.Values) << row.Name;
  }
}

TEST(SampleDecoder, WristStaysOffForTheEpochOfComingBack) {
  const std::tuple<const char*, std::string, const char*, const char*> cases[] = {
      {NewEvents, "1 status12 1x2 status4 1x2", "0 1x3 0", "Changed and Currently On-Wrist"},
      {NewEvents, "status12 1", "1", "\"Off-Wrist Status Changed and Currently Off-Wrist"},
      {NewEvents, "status8 1 status0 1x2", "1 0x2", "Currently On-Wrist"},
      {NewEvents, "status12 1 status1 1x2", "1 0x2", "Change and Currently On-Wrist"},
      {NewEvents, "status8 1", "1", "No Off-Wrist Status Change and Currently Off-Wrist"},
      {OldEvents, "status20 1x2 status4 1x2", "1x3 0", "Off-wrist Detected"},
      {OldEvents, "status20 1 status8 1x2", "1 0x2", "On-wrist Detected"},
      {OldEvents, "status16 1x2", "0x2", "Acquisition Start"},  // the off bit alone does nothing
      {OldEvents, "status12 1 status24 1x2", "1x3", "On-wrist Detected"},
      {OldEvents, "status20 1 status1 1x2", "1x3", "Marker Button 1"}};
  for (const auto& [firmware, bytes, wrist, lastText] : cases) {
    VardenRecord record = loggerRecord(KR_QUILLANDER, 1, firmware);
    Decoding()(record, ("start@0 " + bytes).c_str());
    EXPECT_EQ(seriesText(record.WristStatusArray), wrist) << bytes;
    EXPECT_NE(record.EventArray.text(record.EventArray.size() - 1).find(lastText), std::string::npos);
  }
}

TEST(LoggingModes, NeedCalibrations) {
  const std::string light = "11503 Invalid Light Calibration", both = "11503 Invalid Calibration",
                    activity = "11503 Invalid Activity Calibration",
                    never = "11503 Incompatible Logging Mode";
  // Device, modes, what must not be 0.
  constexpr auto Q = KR_QUILLANDER, T = KR_TOLKA;
  // clang-format off
  const std::tuple<enmDeviceType, std::string, const char*, std::string> cases[] = {
      {Q, "1", "A", activity}, {Q, "24", "RGB", light}, {Q, "35", "ARGB", both}, {Q, "06789", "-ARGBL", never},
      {T, "1", "A", activity}, {T, "2", "L", light}, {T, "3", "AL", both}, {T, "0456789", "-ARGBL", never},
      {KR_PENDREL, "1", "-ARGBL", "11502 Incompatible Device Type"}};
  // clang-format on
  for (const auto& [device, modes, needs, failure] : cases)
    for (const char mode : modes)
      for (const char missing : std::string("-ARGBL")) {
        VardenRecord record = loggerRecord(device, mode - '0');
        if (missing == 'A') record.ActivityCalibration = 0;
        if (missing == 'R') record.RedLightCalibration = 0;
        if (missing == 'G') record.GreenLightCalibration = 0;
        if (missing == 'B') record.BlueLightCalibration = 0;
        if (missing == 'L') record.LightScaleCalibration = 0;
        EXPECT_EQ(raisedBy([&] { Decoding()(record, "start@0"); }),
                  std::strchr(needs, missing) != nullptr ? failure : "")
            << device << " " << mode << " " << missing;
      }
}

}  // namespace
}  // namespace hy_wristlog
