#include "varden/sample_decoder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "recording.h"

namespace hy_wristlog {
namespace {

TEST(ActivityScale, StepsGrowAndAreCapped) {
  const ActivityScale plain(128);
  const std::vector<std::pair<int, int>> steps = {{0, 0},    {1, 1},      {32, 32},     {33, 34},
                                                  {34, 36},  {200, 8732}, {243, 32767}, {252, 32767},
                                                  {253, -1}, {255, -1}};
  for (const auto& [code, counts] : steps) EXPECT_EQ(plain[static_cast<std::uint8_t>(code)], counts) << code;
  EXPECT_NE(plain[242], 32767);

  EXPECT_EQ(ActivityScale(1)[1], 128);
  EXPECT_EQ(ActivityScale(1)[252], 32767);
  EXPECT_EQ(ActivityScale(3)[1], 43) << "42.67";
  EXPECT_EQ(ActivityScale(255)[1], 1) << "0.502";
  EXPECT_EQ(ActivityScale(255)[3], 2) << "1.506";
}

/// One epoch's values, as far as the mode has them.
struct Values {
  std::vector<double> Activity{}, Light{}, Red{}, Green{}, Blue{};
};

struct SampleCase {
  const char* Name;
  enmDeviceType Device;
  int Mode;
  std::initializer_list<int> Bytes;
  Values Expected;
  enmDecodeResult Result = Decode_OK;
  const char* Firmware = NewEvents;
  std::uint8_t Calibration = 128;
};

double colour(int x, int power) {
  return static_cast<float>(1000000 * std::exp2(x / 32.0) / std::exp2(power));
}
double current(int x, int power) { return static_cast<float>(std::exp2(x / 32.0) / std::exp2(power)); }

template <class Array>
std::vector<double> numbers(const Array& array) {
  return {array.begin(), array.end()};
}

TEST(SampleDecoder, DecodesEachRecord) {
  constexpr auto Q = KR_QUILLANDER, T = KR_TOLKA;
  // 0x39: red 1, green 2, blue 3 as the two upper bits.
  const int r = 7 + 256, g = 9 + 512, b = 11 + 768;
  const SampleCase cases[] = {
      {"code", Q, 1, {33}, {.Activity = {34}}},
      {"marks are samples behind a status", T, 1, {255}, {.Activity = {-1}}},
      {"colours", Q, 2, {0x39, 7, 9, 11}, {{}, {}, {colour(r, 30)}, {colour(g, 30)}, {colour(b, 30)}}},
      {"colours, new scale",
       Q,
       2,
       {0x39, 7, 9, 11},
       {{}, {}, {colour(r, 36)}, {colour(g, 36)}, {colour(b, 36)}},
       Decode_OK,
       NewScale},
      {"highest colours",
       Q,
       2,
       {63, 255, 255, 255},
       {{}, {}, {colour(1023, 30)}, {colour(1023, 30)}, {colour(1023, 30)}}},
      {"colours out of range", Q, 2, {64, 0, 0, 0}, {{}, {}, {-1}, {-1}, {-1}}, Decode_Physio_Decode_Error},
      {"activity and colours",
       Q,
       3,
       {1, 0, 0, 32, 64},
       {{128}, {}, {colour(0, 30)}, {colour(32, 30)}, {colour(64, 30)}},
       Decode_OK,
       NewEvents,
       1},
      {"activity stays when colours fail",
       Q,
       3,
       {1, 200, 0, 0, 0},
       {{1}, {}, {-1}, {-1}, {-1}},
       Decode_Physio_Decode_Error},
      {"lux", Q, 4, {0, 0}, {.Light = {0.0078125}}},
      {"lux, high byte first", Q, 4, {1, 64}, {.Light = {8}}},
      {"silent overflow", Q, 4, {32, 0}, {.Light = {-1}}},
      {"lux out of range", Q, 4, {33, 0}, {.Light = {-1}}, Decode_Physio_Decode_Error},
      {"activity and lux", Q, 5, {2, 0, 224}, {{2}, {1}, {}, {}, {}}},
      {"activity stays when light overflows",
       Q,
       5,
       {2, 32, 0},
       {{2}, {-1}, {}, {}, {}},
       Decode_OverflowOccurred},
      {"frequency", Q, 7, {1, 2}, {.Red = {258}}},
      {"currents", Q, 8, {0x39, 7, 9, 11}, {{}, {}, {current(r, 37)}, {current(g, 37)}, {current(b, 37)}}},
      {"currents, new scale",
       Q,
       8,
       {0, 0, 0, 0},
       {{}, {}, {current(0, 41)}, {current(0, 41)}, {current(0, 41)}},
       Decode_OK,
       NewScale},
      {"Tolka lux overflow", T, 2, {32, 0}, {.Light = {-1}}, Decode_OverflowOccurred},
      {"greatest lux", T, 2, {16, 223}, {.Light = {static_cast<float>(std::exp2(4319 / 32.0) / 128)}}},
      {"first lux beyond", T, 2, {16, 224}, {.Light = {-1}}, Decode_OverflowOccurred},
      {"Tolka both", T, 3, {5, 0, 224}, {{5}, {1}, {}, {}, {}}},
      {"Tolka both, light out of range",
       T,
       3,
       {5, 34, 0},
       {{5}, {-1}, {}, {}, {}},
       Decode_Physio_Decode_Error},
      {"Tolka test light", T, 8, {0, 224}, {.Light = {1}}},
      {"raw activity", T, 9, {250}, {.Activity = {250}}, Decode_OK, NewEvents, 0},
      {"cut behind the activity", T, 3, {5}, {{-1}, {-1}, {}, {}, {}}},
      {"cut colours", Q, 3, {5, 0, 0, 0}, {{-1}, {}, {-1}, {-1}, {-1}}},
  };
  for (const SampleCase& row : cases) {
    SCOPED_TRACE(row.Name);
    VardenRecord record = loggerRecord(row.Device, row.Mode, row.Firmware);
    record.ActivityCalibration = row.Calibration;
    Decoding decode{.Diagnostic = row.Mode > 6};
    decode(record, Stream().event(1, 0).raw(row.Bytes));
    EXPECT_EQ(decode.Result, row.Result);
    EXPECT_EQ(record.Samples, 1);
    EXPECT_EQ(numbers(record.ActivityArray), row.Expected.Activity);
    EXPECT_EQ(numbers(record.LightArray), row.Expected.Light);
    EXPECT_EQ(numbers(record.RedLightArray), row.Expected.Red);
    EXPECT_EQ(numbers(record.GreenLightArray), row.Expected.Green);
    EXPECT_EQ(numbers(record.BlueLightArray), row.Expected.Blue);
    EXPECT_EQ(record.MarkerArray.size(), 1U);
    EXPECT_EQ(record.WristStatusArray.size(), row.Device == KR_QUILLANDER ? 1U : 0U);
  }
}

TEST(SampleDecoder, DockBlanksSamples) {
  struct DockCase {
    const char* Name;
    const char* Firmware;
    int Mode;
    bool Diagnostic;
    std::vector<int> DockEvents;  ///< each followed by two samples of code 3
    std::vector<double> Expected;
  };
  const DockCase cases[] = {
      {"new, in and out", NewEvents, 1, false, {96, 32}, {3, 3, -1, -1, -1, 3}},
      {"new, found in and out", NewEvents, 1, false, {64, 128}, {3, 3, -1, -1, 3, 3}},
      {"new, start event ends the skip", NewEvents, 1, false, {1}, {3, 3, 3, 3}},
      {"old, no skip", OldEvents, 1, false, {32, 64}, {3, 3, -1, -1, 3, 3}},
      {"old, both is no change", OldEvents, 1, false, {32, 96}, {3, 3, -1, -1, -1, -1}},
      {"diagnostic decodes all", NewEvents, 1, true, {96, 32}, {3, 3, 3, 3, 3, 3}},
  };
  for (const DockCase& row : cases) {
    SCOPED_TRACE(row.Name);
    VardenRecord record = loggerRecord(KR_TOLKA, row.Mode, row.Firmware);
    Stream stream;
    stream.event(1, 0).many(2, 3);
    std::int32_t time = 120;
    for (const int bits : row.DockEvents) stream.event(bits, time).many(2, 3), time += 120;
    Decoding decode{.Diagnostic = row.Diagnostic};
    decode(record, stream);
    EXPECT_EQ(decode.Result, Decode_OK);
    EXPECT_EQ(numbers(record.ActivityArray), row.Expected);
  }
  // A start that tells of the dock, and a skip that a start takes back.
  VardenRecord record = loggerRecord(KR_TOLKA, 1);
  Decoding decode;
  decode(record, Stream().event(1 + 64, 0).many(1, 3).event(32, 60).event(1 + 32, 60).many(1, 3));
  EXPECT_EQ(numbers(record.ActivityArray), (std::vector<double>{-1, 3}));

  // Out-of-range light is not looked at in a dock, unless the mode is one of the test modes.
  VardenRecord light = loggerRecord(KR_TOLKA, 2);
  decode(light, Stream().event(1 + 64, 0).raw({99, 0, 99, 0}));
  EXPECT_EQ(decode.Result, Decode_OK);
  EXPECT_EQ(numbers(light.LightArray), (std::vector<double>{-1, -1}));
}

TEST(SampleDecoder, WristStaysOffForTheEpochOfComingBack) {
  struct WristCase {
    const char* Name;
    const char* Firmware;
    std::vector<int> Statuses;  ///< each followed by a sample; -1: no status record
    std::string Wrist;
    std::size_t Texts;
  };
  const WristCase cases[] = {
      {"new, off and back", NewEvents, {-1, 12, -1, 4, -1}, "01110", 2},
      {"new, found off, then on", NewEvents, {8, 0, -1}, "100", 2},
      {"new, marker tells on", NewEvents, {12, 1, -1}, "100", 3},
      {"old, off and back", OldEvents, {4 + 16, -1, 4, -1}, "1110", 2},
      {"old, on detected only", OldEvents, {4 + 16, 8, -1}, "100", 2},
      {"old, off bit alone does nothing", OldEvents, {16, -1}, "00", 0},
      {"old, off cancels the pulse", OldEvents, {12, 8 + 16, -1}, "111", 3},
      {"old, marker keeps off", OldEvents, {4 + 16, 1, -1}, "111", 2},
  };
  for (const WristCase& row : cases) {
    SCOPED_TRACE(row.Name);
    VardenRecord record = loggerRecord(KR_QUILLANDER, 1, row.Firmware);
    Stream stream;
    stream.event(1, 0);
    for (const int status : row.Statuses) {
      if (status >= 0) stream.status(status);
      stream.raw({1});
    }
    Decoding decode;
    decode(record, stream);
    std::string wrist;
    for (const Tristate element : record.WristStatusArray) wrist += element == Tristate::True ? '1' : '0';
    EXPECT_EQ(wrist, row.Wrist);
    EXPECT_EQ(record.EventArray.size() - 1, row.Texts);
  }
}

TEST(ModeLayouts, NeedCalibrationsAndModes) {
  struct NeedCase {
    enmDeviceType Device;
    int Mode;
    std::function<void(VardenRecord&)> Spoil;
    std::string Failure;
  };
  const auto noActivity = [](VardenRecord& r) { r.ActivityCalibration = 0; };
  const auto noBlue = [](VardenRecord& r) { r.BlueLightCalibration = 0; };
  const auto noLux = [](VardenRecord& r) { r.LightScaleCalibration = 0; };
  const auto none = [](VardenRecord&) {};
  const std::string mode = "11503 Incompatible Logging Mode", activity = "11503 Invalid Activity Calibration",
                    light = "11503 Invalid Light Calibration", both = "11503 Invalid Calibration";
  const NeedCase cases[] = {
      {KR_QUILLANDER, 1, noActivity, activity},
      {KR_QUILLANDER, 1, noBlue, ""},
      {KR_QUILLANDER, 2, noBlue, light},
      {KR_QUILLANDER, 2, noActivity, ""},
      {KR_QUILLANDER, 3, noActivity, both},
      {KR_QUILLANDER, 3, noBlue, both},
      {KR_QUILLANDER, 4, noBlue, light},
      {KR_QUILLANDER, 4, noLux, ""},
      {KR_QUILLANDER, 5, noBlue, both},
      {KR_QUILLANDER, 7, none, mode},
      {KR_QUILLANDER, 8, none, mode},
      {KR_QUILLANDER, 9, none, mode},
      {KR_QUILLANDER, 0, none, mode},
      {KR_QUILLANDER, 6, none, mode},
      {KR_TOLKA, 1, noActivity, activity},
      {KR_TOLKA, 2, noLux, light},
      {KR_TOLKA, 2, noBlue, ""},
      {KR_TOLKA, 3, noLux, both},
      {KR_TOLKA, 3, noActivity, both},
      {KR_TOLKA, 4, none, mode},
      {KR_TOLKA, 8, none, mode},
      {KR_TOLKA, 9, none, mode},
      {KR_PENDREL, 1, none, "11502 Incompatible Device Type"},
  };
  for (const NeedCase& row : cases) {
    SCOPED_TRACE(std::to_string(row.Device) + " mode " + std::to_string(row.Mode));
    VardenRecord record = loggerRecord(row.Device, row.Mode);
    row.Spoil(record);
    Decoding decode;
    EXPECT_EQ(raisedBy([&] { decode(record, Stream().event(1, 0)); }), row.Failure);
  }
}

}  // namespace
}  // namespace hy_wristlog
