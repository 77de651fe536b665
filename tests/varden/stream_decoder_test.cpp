#include "varden/stream_decoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "recording.h"

namespace hy_wristlog {
namespace {

std::vector<int> activity(const VardenRecord& record) {
  return {record.ActivityArray.begin(), record.ActivityArray.end()};
}

std::vector<std::string> eventTexts(const VardenRecord& record) {
  std::vector<std::string> texts;
  for (const std::string& entry : record.EventArray) {
    const auto begin = entry.find("\",\"") + 3;
    texts.push_back(entry.substr(begin, entry.find("\",\"", begin) - begin));
  }
  return texts;
}

using Texts = std::vector<std::string>;
using Counts = std::vector<int>;

struct WalkCase {
  const char* Name;
  Stream Bytes;
  enmDecodeResult Result;
  Counts Activity;  ///< none: no sample, and the arrays keep an empty element for each byte
  Texts Events;
  bool Diagnostic = false;
  const char* Firmware = NewEvents;
  int Resets = 0;
  enmDeviceType Device = KR_TOLKA;
};

const char* const Start = "Acquisition Start w/ No Docked Status Change and Currently Out of Dock";
const char* const StopText = "Acquisition Stop w/ No Docked Status Change and Currently Out of Dock";
const char* const InDock = "No Docked Status Change and Currently In Dock";
const char* const OutOfDock = "No Docked Status Change and Currently Out of Dock";
const char* const Passed = "Self Test Passed: (Reset Occurred)";

TEST(StreamDecoder, EndsEachWalk) {
  const Stream run = Stream().event(1, 0).many(3, 5);
  const WalkCase cases[] = {
      {"samples", Stream(run), Decode_OK, {5, 5, 5}, {Start}},
      {"one event mark", Stream().raw({253}), Decode_OK, {}, {}},
      {"event cut short", Stream(run).raw({253, 1, 0, 0, 0, 0}), Decode_OK, {5, 5, 5}, {Start}},
      {"status cut short", Stream(run).raw({254}), Decode_OK, {5, 5, 5}, {Start}},
      {"event at the end while acquiring",
       Stream(run).event(64, 180),
       Decode_OK,
       {5, 5, 5, -1},
       {Start, InDock}},
      {"status at the end while acquiring",
       Stream(run).status(2),
       Decode_OK,
       {5, 5, 5, -1},
       {Start, "Low Battery"}},
      {"marks behind a status are samples",
       Stream(run).status(2).raw({253, 5}).status(2).raw({254}),
       Decode_OK,
       {5, 5, 5, -1, 5, -1},
       {Start, "Low Battery", "Low Battery"}},
      {"self test failed",
       Stream(run).eventValue(8, 256).many(9, 5),
       Decode_ResetPOSTfailed,
       {5, 5, 5},
       {Start, "Self Test Failed: (Reset Occurred)"}},
      {"self test passed",
       Stream(run).eventValue(8 + 1, 0).many(9, 5),
       Decode_ResetPOSTpassed,
       {5, 5, 5},
       {Start, Passed}},
      {"memory full, never a shutdown",
       Stream(run).event(4 + 1, 180).many(9, 5),
       Decode_MemoryFull,
       {5, 5, 5},
       {Start, "Memory Full"}},
      {"start before the last stop",
       Stream(run).event(2, 180).event(1, 179).many(9, 5),
       Decode_StartBeforeLastStop,
       {5, 5, 5},
       {Start, StopText, Start}},
      {"stop at the end of the last epoch",
       Stream(run).event(2, 180),
       Decode_OK,
       {5, 5, 5},
       {Start, StopText}},
      {"stop within the last epoch",
       Stream(run).event(2, 179).many(9, 5),
       Decode_AcqStopTimeBeforePriorData,
       {5, 5, 5},
       {Start, StopText}},
      {"status before any start",
       Stream().status(1).event(1, 0),
       Decode_MarkerEventOutsideAcquisition,
       {},
       {}},
      {"status before any start, diagnostic",
       Stream().status(1).event(1, 0),
       Decode_MarkerEventOutsideAcquisition,
       {},
       {},
       true},
      {"samples before any start",
       Stream().many(3, 5).event(1, 0).many(1, 5),
       Decode_NonEventDataOutsideAcquisition,
       {},
       {}},
      {"samples before any start, diagnostic",
       Stream().many(3, 5).event(1, 0).many(1, 5),
       Decode_NonEventDataOutsideAcquisition,
       {5},
       {Start},
       true},
      {"no event bits",
       Stream(run).event(0, 180).many(9, 5),
       Decode_EventDecodingError,
       {5, 5, 5},
       {Start, "Event Decoding Error"}},
      {"old format, bit 128",
       Stream(run).event(128 + 32, 180),
       Decode_EventDecodingError,
       {5, 5, 5},
       {"Acquisition Start", "Event Decoding Error"},
       false,
       OldEvents},
      {"old format, bit 16 alone",
       Stream(run).event(16, 180).many(9, 5),
       Decode_EventDecodingError,
       {5, 5, 5},
       {"Acquisition Start", "Event Decoding Error"},
       false,
       OldEvents},
      {"new format, bit 128",
       Stream(run).event(128, 180).many(1, 5),
       Decode_OK,
       {5, 5, 5, 5},
       {Start, OutOfDock}},
      {"build 29 alone has the new format",
       Stream(run).event(16, 180).many(1, 5),
       Decode_OK,
       {5, 5, 5, 5},
       {Start, OutOfDock},
       false,
       "00.01.0029"},
      {"gap of 30 days and a second",
       Stream(run).event(2, 180).event(1, 180 + 30 * Day + 1).many(9, 5),
       Decode_BigDiffBetweenAcqTimes,
       {5, 5, 5},
       {Start, StopText, Start}},
      {"start 30 days and a second late",
       Stream().event(1, 30 * Day + 1).many(9, 5),
       Decode_BigDiffBetweenAcqTimes,
       {},
       {Start}},
      {"stop long ago",
       Stream(run).event(2, 180 - 20 * Day - 200),
       Decode_AcqStopTimeBeforePriorData,
       {5, 5, 5},
       {Start, StopText},
       false,
       NewEvents,
       0,
       KR_QUILLANDER},
      {"pre-scan finds the reset in a record",
       Stream(run).raw({253, 8, 0, 99, 0, 0, 0}).many(4, 5),
       Decode_POSTcausedEventError,
       {5, 5, 5},
       {Start, "Self Test Failed: (Reset Occurred)"},
       false,
       NewEvents,
       1},
      {"pre-scan replaces a passed test",
       Stream(run).raw({253, 8, 0, 0, 0, 0, 0}),
       Decode_POSTcausedEventError,
       {5, 5, 5},
       {Start, Passed},
       false,
       NewEvents,
       1},
      {"pre-scan finds none",
       Stream(run).raw({253, 8, 1, 0, 0, 0, 0}),
       Decode_ResetPOSTpassed,
       {5, 5, 5},
       {Start, Passed},
       false,
       NewEvents,
       1},
      {"no pre-scan without resets",
       Stream().event(1, 0).status(2).raw({253, 8, 0, 33, 0, 0, 0}),
       Decode_OK,
       {-1, 8, 0, 34, 0, 0, 0},
       {Start, "Low Battery"}},
      {"restart while acquiring fills",
       Stream(run).event(1, 300).many(1, 5),
       Decode_OK,
       {5, 5, 5, -1, -1, 5},
       {Start, Start}},
      {"restart behind a stop fills",
       Stream(run).event(2, 190).event(1, 300).many(1, 5),
       Decode_OK,
       {5, 5, 5, -1, -1, 5},
       {Start, StopText, Start}},
      {"stops between",
       Stream(run).event(2, 180).event(2, 400).event(1, 300),
       Decode_StartBeforeLastStop,
       {5, 5, 5},
       {Start, StopText, StopText, Start}},
      {"late start fills up to it", Stream().event(1, 121).many(1, 5), Decode_OK, {-1, -1, -1, 5}, {Start}},
      {"late start, diagnostic", Stream().event(1, 121).many(1, 5), Decode_OK, {5}, {Start}, true},
      {"old dock events",
       Stream(run).event(96, 180).event(64, 180).event(32, 180).many(1, 5),
       Decode_OK,
       {5, 5, 5, -1},
       {"Acquisition Start", "Docked and Undocked event", "Undocked event", "Docked event"},
       false,
       OldEvents},
      {"old suffixes",
       Stream().event(1 + 32, 0).event(3 + 96, 60).event(2 + 64, 120),
       Decode_OK,
       {},
       {"Acquisition Start w/ Docked", "Acquisition Start w/ Both Docked and Undocked",
        "Acquisition Stop w/ Undocked"},
       false,
       OldEvents},
  };
  for (const WalkCase& row : cases) {
    SCOPED_TRACE(row.Name);
    VardenRecord record = loggerRecord(row.Device, 1, row.Firmware);
    record.Resets = static_cast<std::uint8_t>(row.Resets);
    Decoding decode{.Diagnostic = row.Diagnostic};
    decode(record, row.Bytes);
    EXPECT_EQ(decode.Result, row.Result);
    EXPECT_EQ(record.DecodeResult, row.Result);
    EXPECT_EQ(record.Samples, static_cast<std::int32_t>(row.Activity.size()));
    EXPECT_EQ(activity(record),
              row.Activity.empty() ? Counts(row.Bytes.Bytes.size(), EmptyActivity) : row.Activity);
    EXPECT_EQ(record.MarkerArray.size(), record.ActivityArray.size());
    EXPECT_EQ(eventTexts(record), row.Events);
  }
}

TEST(StreamDecoder, WritesEventEntries) {
  VardenRecord record = loggerRecord(KR_QUILLANDER, 1);
  Decoding decode;
  decode(record,
         Stream().event(1 + 96, 3600).raw({1}).status(1 + 2 + 16 + 4).raw({1}).eventValue(8, 1 << 24));
  const std::string start =
      "\"01-01 01:00:00\",\"Acquisition Start w/ Docked Status Changed and Currently In Dock\"";
  // The first epoch is the configured start time.
  const Texts expected = {
      start + ",\"FD615A10EF0B5E\"",
      "\"01-01 01:01:00\",\"Marker Button 1\",\"FE17\"",
      "\"01-01 01:01:00\",\"Marker Button 2\",\"FE17\"",
      "\"01-01 01:01:00\",\"Low Battery\",\"FE17\"",
      "\"01-01 01:01:00\",\"Off-Wrist Status Changed and Currently On-Wrist\",\"FE17\"",
      "\"Time Unknown\",\"Self Test Failed: (Reset Occurred)\",\"FD085A00000001\"",
  };
  EXPECT_EQ(record.EventArray, expected);
  EXPECT_TRUE(decode.LowBattery);
  EXPECT_EQ(record.Samples, 62);
  EXPECT_EQ(record.MarkerCount, 1);
  EXPECT_EQ(record.Marker2Count, 1);
  EXPECT_EQ(record.MarkerArray[61], Tristate::True);
  EXPECT_EQ(record.Marker2Array[61], Tristate::True);
  EXPECT_EQ(record.MarkerArray[60], Tristate::Empty);
  EXPECT_EQ(record.WristStatusArray[59], Tristate::Empty) << "a filled gap";
  EXPECT_EQ(record.WristStatusArray[60], Tristate::False);
  EXPECT_EQ(record.WristStatusArray[61], Tristate::True);

  // The smaller model knows button 1 and the battery alone; the old format has another bit for button 2.
  VardenRecord tolka = loggerRecord(KR_TOLKA, 1);
  decode(tolka, Stream().event(1, 0).status(255).raw({1}));
  EXPECT_EQ(eventTexts(tolka), (Texts{Start, "Marker Button 1", "Low Battery"}));
  VardenRecord old = loggerRecord(KR_QUILLANDER, 1, OldEvents);
  decode(old, Stream().event(1, 0).status(32 + 16 + 4 + 8).raw({1}));
  EXPECT_EQ(eventTexts(old),
            (Texts{"Acquisition Start", "Marker Button 2", "Off-wrist Detected", "On-wrist Detected"}));
}

TEST(StreamDecoder, StartMovesTheStartTimeBackOnly) {
  const std::pair<std::int32_t, double> cases[] = {{-3600, -3600}, {-1, -1}, {0, 0}, {90, 0}};
  for (const auto& [start, expected] : cases) {
    VardenRecord record = loggerRecord(KR_TOLKA, 1);
    Decoding decode;
    decode(record, Stream().event(1, start).many(2, 5));
    EXPECT_EQ(record.StartTimeGMT, dateAt(expected)) << start;
  }
  VardenRecord record = loggerRecord(KR_TOLKA, 1);
  Decoding diagnostic{.Diagnostic = true};
  diagnostic(record, Stream().event(1, 90).many(2, 5));
  EXPECT_EQ(record.StartTimeGMT, dateAt(90));
}

TEST(StreamDecoder, StopsOnWholeSecondsWhateverTheNoiseOfDates) {
  for (const int epoch : {15, 30, 60, 120, 300}) {
    for (int samples = 1; samples < 2000; samples += 37) {
      for (const int early : {0, 1}) {
        VardenRecord record = loggerRecord(KR_TOLKA, 1);
        record.EpochLength = static_cast<std::int16_t>(epoch);
        const std::int32_t start = samples * 7919;
        record.StartTimeGMT = dateAt(start);
        Decoding decode{.Now = dateAt(0)};
        decode(record, Stream()
                           .event(1, start)
                           .many(static_cast<std::size_t>(samples), 5)
                           .event(2, start + samples * epoch - early));
        ASSERT_EQ(decode.Result, early ? Decode_AcqStopTimeBeforePriorData : Decode_OK)
            << samples << " epochs of " << epoch;
      }
    }
  }
}

TEST(StreamDecoder, FillsThirtyDays) {
  for (const int mode : {1, 2, 3, 4, 5}) {
    VardenRecord record = loggerRecord(KR_QUILLANDER, mode);
    record.EpochLength = 15;
    Decoding decode{.Now = dateAt(0)};
    decode(record, Stream().event(1, 30 * Day));
    EXPECT_EQ(decode.Result, Decode_OK);
    EXPECT_EQ(record.Samples, 30 * 5760 + 1) << "the start stands at the end of the bytes";
    const auto allMissing = [&](const auto& array) {
      return static_cast<std::int32_t>(array.size()) == record.Samples &&
             std::all_of(array.begin(), array.end(), [](auto value) { return value == -1; });
    };
    EXPECT_EQ(allMissing(record.ActivityArray), mode == 1 || mode == 3 || mode == 5);
    EXPECT_EQ(allMissing(record.RedLightArray), mode == 2 || mode == 3);
    EXPECT_EQ(allMissing(record.LightArray), mode == 4 || mode == 5);
    EXPECT_EQ(std::count(record.MarkerArray.begin(), record.MarkerArray.end(), Tristate::Empty),
              record.Samples);
  }
}

TEST(StreamDecoder, OldFirmwareEndsAt64K) {
  struct BarrierCase {
    const char* Firmware;
    std::size_t Samples;
    enmDecodeResult Result;
  };
  for (const BarrierCase& row : {BarrierCase{"00.01.0028", 65529, Decode_Special65Kdefect},
                                 BarrierCase{"00.01.0029", 70000, Decode_OK}}) {
    VardenRecord record = loggerRecord(KR_TOLKA, 1, row.Firmware);
    Decoding decode;
    decode(record, Stream().event(1, 0).many(70000, 5));
    EXPECT_EQ(decode.Result, row.Result);
    EXPECT_EQ(record.ActivityArray.size(), row.Samples);
  }
  VardenRecord record = loggerRecord(KR_TOLKA, 1, "00.01.0028");
  Decoding decode;
  decode(record, Stream().event(1, 0).many(65529, 5).event(4, 65529 * 60));
  EXPECT_EQ(decode.Result, Decode_Special65Kdefect) << "replaces the full memory";
}

TEST(StreamDecoder, LaterResultsReplaceEarlierOnes) {
  const Stream longAgo = Stream().event(1, 0).raw({1, 32, 0}).event(2, 60);
  const std::pair<Stream, enmDecodeResult> cases[] = {
      {longAgo, Decode_TooLongSinceLastAcqStop},
      {Stream(longAgo).event(1, 60).raw({1, 32, 0}), Decode_OverflowOccurred},
      {Stream(longAgo).event(1, 60).raw({1, 1, 0}).event(4, 120), Decode_MemoryFull},
      {Stream(longAgo).raw({1}), Decode_NonEventDataOutsideAcquisition},
  };
  for (const auto& [stream, result] : cases) {
    VardenRecord record = loggerRecord(KR_QUILLANDER, 5);
    Decoding decode{.Now = dateAt(61 + 30 * Day)};
    decode(record, stream);
    EXPECT_EQ(decode.Result, result);
  }
  // A stop of exactly 30 days ago is not too long ago, and the smaller model does not look.
  for (const auto& [device, now] : {std::pair{KR_QUILLANDER, 60 + 30 * Day}, std::pair{KR_TOLKA, 99 * Day}}) {
    VardenRecord record = loggerRecord(device, 1);
    Decoding decode{.Now = dateAt(now)};
    decode(record, Stream().event(1, 0).raw({5}).event(2, 60));
    EXPECT_EQ(decode.Result, Decode_OK);
  }
}

TEST(StreamDecoder, PreScanKeepsTheShortenedLength) {
  // Two matches: the second saves the length that the first has shortened, but decoding runs to the second.
  Stream stream = Stream().event(1, 0).many(2, 5).raw({253, 8, 0, 7, 0, 0, 0}).many(2, 5);
  stream.raw({253, 8, 0, 7, 0, 0, 0}).many(3, 5);
  VardenRecord record = loggerRecord(KR_TOLKA, 1);
  record.Resets = 3;
  Decoding decode;
  decode(record, stream);
  EXPECT_EQ(decode.Result, Decode_POSTcausedEventError);
  EXPECT_EQ(record.BytesUsed, 16);
  EXPECT_EQ(record.RawData->size(), 16U);
  EXPECT_EQ(activity(record), (Counts{5, 5}));

  VardenRecord once = loggerRecord(KR_TOLKA, 1);
  once.Resets = 1;
  const Stream single = Stream().event(1, 0).many(2, 5).raw({253, 8, 0, 0, 0, 0, 0}).many(2, 5);
  decode(once, single);
  EXPECT_EQ(once.BytesUsed, 18);
  EXPECT_EQ(once.RawData, single.Bytes);
}

TEST(StreamDecoder, RefusesWhatItCannotDecode) {
  struct RefusalCase {
    const char* Name;
    void (*Spoil)(VardenRecord&);
    std::string Failure;
    bool Diagnostic = false;
  };
  const RefusalCase cases[] = {
      {"epoch", [](VardenRecord& r) { r.EpochLength = 10; }, "11503 Invalid Epoch Length"},
      {"epoch, diagnostic", [](VardenRecord& r) { r.EpochLength = 10; }, "", true},
      {"no epoch, diagnostic", [](VardenRecord& r) { r.EpochLength = 0; }, "11 Division by zero", true},
      {"epoch before start",
       [](VardenRecord& r) {
         r.EpochLength = 10;
         r.StartTimeGMT = 0;
       },
       "11503 Invalid Epoch Length"},
      {"start", [](VardenRecord& r) { r.StartTimeGMT = 25568.99; }, "11503 Invalid Start Time"},
      {"impossible start", [](VardenRecord& r) { r.StartTimeGMT = 1e300; },
       "5 Invalid procedure call or argument"},
      {"firmware", [](VardenRecord& r) { r.FirmwareVersion = "02.00.0000"; },
       "11503 Invalid Firmware Version"},
      {"raw bytes end early", [](VardenRecord& r) { r.BytesUsed = 100; }, "9 Subscript out of range"},
      {"raw bytes end early, pre-scan",
       [](VardenRecord& r) {
         r.BytesUsed = 100;
         r.Resets = 1;
       },
       "9 Subscript out of range"},
      {"no raw bytes", [](VardenRecord& r) { r.RawData.reset(); }, "9 Subscript out of range"},
      {"absurd length", [](VardenRecord& r) { r.BytesUsed = INT32_MAX; }, "7 Out of memory"},
  };
  for (const RefusalCase& row : cases) {
    SCOPED_TRACE(row.Name);
    VardenRecord record = loggerRecord(KR_TOLKA, 1);
    record.RawData = Stream().event(1, 0).many(3, 5).Bytes;
    record.BytesUsed = 10;
    row.Spoil(record);
    Decoding decode{.Diagnostic = row.Diagnostic};
    EXPECT_EQ(raisedBy([&] { decode(record); }), row.Failure);
  }

  VardenRecord empty = loggerRecord(KR_PENDREL, 0);
  Decoding decode{.Diagnostic = true};
  decode(empty);
  EXPECT_EQ(empty.DecodeResult, Decode_InputError);
  empty.BytesUsed = 1;
  empty.FirmwareVersion = "";
  decode(empty);
  EXPECT_EQ(empty.DecodeResult, Decode_InputError);
  ASSERT_EQ(decode.Messages.size(), 1U);
  EXPECT_EQ(decode.Messages[0],
            "Unknown FW version: Firmware version is unknown. Do a 'show version' before 'show data'\r\n"
            "(or, for 00.02.xxxx+ firmware, do a 'show config' before 'show data').");
}

TEST(StreamDecoder, FailsInsideTheWalkAndKeepsWhatItHas) {
  struct FaultCase {
    const char* Name;
    int Mode;
    std::int16_t Epoch;
    Stream Bytes;
    std::string Failure;
    std::size_t Kept;
  };
  const FaultCase cases[] = {
      {"mode 9 has no samples", 9, 60, Stream().event(1, 0).raw({1, 2}), "11503 Incompatible Logging Mode",
       0},
      {"restart in mode 2 misses the light array", 2, 60, Stream().event(1, 0).many(4, 1).event(1, 300),
       "9 Subscript out of range", 1},
      {"restart that runs back", 1, 60, Stream().event(1, 9000).many(3, 1).event(1, 7200).many(3, 1),
       "9 Subscript out of range", 3},
      {"restart before all arrays", 1, 60, Stream().event(1, 9000).many(3, 1).event(1, -9000),
       "9 Subscript out of range", 3},
      {"gap of 68 years", 1, 15,
       Stream().event(1, -StartSeconds).many(1, 1).event(1, 0x7FFFFFFF - StartSeconds), "7 Out of memory", 1},
      {"gap of 136 years in seconds", 1, 1,
       Stream().eventValue(1, INT32_MIN).many(1, 1).eventValue(1, INT32_MAX), "6 Overflow", 1},
      {"time that runs backwards", 9, -15, Stream().event(1, 0).raw({1}), "11503 Incompatible Logging Mode",
       0},
      {"restart with time that runs backwards", 1, -15, Stream().event(1, 0).many(2, 1).event(1, 0),
       "9 Subscript out of range", 14},
  };
  for (const FaultCase& row : cases) {
    SCOPED_TRACE(row.Name);
    VardenRecord record = loggerRecord(KR_QUILLANDER, row.Mode);
    record.EpochLength = row.Epoch;
    Decoding decode{.Diagnostic = true};
    EXPECT_EQ(raisedBy([&] { decode(record, row.Bytes); }), row.Failure);
    EXPECT_EQ(record.MarkerArray.size(), row.Kept);
    EXPECT_FALSE(record.EventArray.empty());
  }
}

}  // namespace
}  // namespace hy_wristlog
