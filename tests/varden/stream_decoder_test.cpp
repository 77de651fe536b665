#include "varden/decode/stream_decoder.h"

#include "varden_support.h"

namespace hy_wristlog {
namespace {

std::string eventTexts(const VardenRecord& record) {
  std::string texts;
  for (std::size_t i = 0; i < record.EventArray.size(); ++i)
    texts += (texts.empty() ? "" : "|") + record.EventArray.words(i);
  return texts;
}

struct With {
  const char* Firmware = NewEvents;
  std::uint8_t Resets = 0;
  bool Diagnostic = false;
  enmDeviceType Device = KR_TOLKA;
  int Mode = 1;
  double Now = dateAt(20 * Day);
};

TEST(StreamDecoder, EndsEachWalk) {
  const With diagnostic{.Diagnostic = true}, old{.Firmware = OldEvents}, reset{.Resets = 1},
      later{.Device = KR_QUILLANDER, .Mode = 5, .Now = dateAt(61 + 30 * Day)};
  // Outcome: result: activity; number of events; a moved start time; what is left of the bytes.
  const struct {
    const char *Name, *Bytes, *Outcome;
    With Options{};
  } cases[] = {
      {"nothing", "", "8: ; 0"},
      {"one event mark", "253", "0: ?; 0"},
      {"event cut short", "start@0 5x3 253 1 0x4", "0: 5x3; 1"},
      {"status cut short", "start@0 5x3 254", "0: 5x3; 1"},
      {"event at the end while acquiring", "start@0 5x3 event64@180", "0: 5x3 -1; 2"},
      {"status at the end while acquiring", "start@0 5x3 status2", "0: 5x3 -1; 2"},
      {"marks after a status are samples", "start@0 5 status2 253 5 status2 254", "0: 5 -1 5 -1; 3"},
      {"self test failed", "start@0 5x3 event8=256 5x9", "1: 5x3; 2"},
      {"self test passed", "start@0 5x3 event9=0 5x9", "2: 5x3; 2"},
      {"memory full, never a shutdown", "start@0 5x3 event5@180 5x9", "4: 5x3; 2"},
      {"start before the last stop", "start@0 5x3 stop@180 start@179 5x9", "5: 5x3; 3"},
      {"stops between", "start@0 5x3 stop@180 stop@400 start@300", "5: 5x3; 4"},
      {"stop at the end of the last epoch", "start@0 5x3 stop@180", "0: 5x3; 2"},
      {"stop within the last epoch", "start@0 5x3 stop@179 5x9", "6: 5x3; 2"},
      {"both bits are a start", "event3@0 5x3", "0: 5x3; 1"},
      {"status before any start, diagnostic", "status1 start@0", "7: ?x9; 0", diagnostic},
      {"samples before any start", "5x3 start@0 5", "9: ?x11; 0"},
      {"samples before any start, diagnostic", "5x3 start@0 5", "9: 5; 1", diagnostic},
      {"no event bits", "start@0 5x3 event0@180 5x9", "10: 5x3; 2"},
      {"old format, bit 128", "start@0 5x3 event160@180", "10: 5x3; 2", old},
      {"old format, bit 16 alone", "start@0 5x3 event16@180 5x9", "10: 5x3; 2", old},
      {"new format, bit 128", "start@0 5x3 event128@180 5", "0: 5x4; 2"},
      {"build 29 alone has the new format", "start@0 5x3 event16@180 5", "0: 5x4; 2", {"00.01.0029"}},
      {"pre-scan replaces a passed test", "start@0 5x3 253 8 0x5", "17: 5x3; 2", reset},
      {"pre-scan looks at byte 2", "start@0 5x3 253 8 1 0x4", "2: 5x3; 2", reset},
      {"second match saves the shortened one", "start@0 5x2 253 8 0 7 0x3 5x2 253 8 0 7 0x3 5x3",
       "17: 5x2; 2; bytes 16", reset},
      {"no pre-scan without resets", "start@0 status2 253 8 0 33 0x3", "0: -1 8 0 34 0x3; 2"},
      {"restart while acquiring fills", "start@0 5x3 start@300 5", "0: 5x3 -1x2 5; 2"},
      {"restart after a stop fills", "start@0 5x3 stop@190 start@300 5", "0: 5x3 -1x2 5; 3"},
      {"late start fills up to it", "start@121 5", "0: -1x3 5; 1"},
      {"the last filled epoch counts", "start@121 stop@179", "6: -1x3; 2"},
      {"a stop after it", "start@121 stop@180", "0: -1x3; 2"},
      {"after a gap it is one more", "start@0 5 stop@60 start@121 stop@239", "6: 5 -1x2; 4"},
      {"and a stop after that", "start@0 5 stop@60 start@121 stop@240", "0: 5 -1x2; 4"},
      {"late start, diagnostic", "start@121 5", "0: 5; 1; start 121", diagnostic},
      {"early start moves the start time", "start@-1 5", "0: 5; 1; start -1"},
      {"30 days late", "start@2592000 5", "0: -1x43200 5; 1"},
      {"30 days and a second late", "start@2592001 5x9", "15: ?x16; 1"},
      {"gap of 30 days", "start@0 5 stop@60 start@2592060 5", "0: 5 -1x43200 5; 3"},
      {"gap of 30 days and a second", "start@0 5 stop@60 start@2592061 5", "15: 5; 3"},
      {"such a gap, diagnostic", "start@0 5 stop@60 start@2592061 5", "0: 5 -1x43201 5; 3", diagnostic},
      {"two years", "start@0 5 stop@60 start@63072060 5", "0: 5 -1x1051200 5; 3", diagnostic},
      {"barrier", "start@0 5x70000", "14: 5x65529; 1", {"00.01.0028"}},
      {"barrier replaces the full memory", "start@0 5x65528 event4@0", "14: 5x65528; 2", {"00.01.0028"}},
      {"no barrier", "start@0 5x70000", "0: 5x70000; 1", {"00.01.0029"}},
      {"stop long ago", "start@0 5 32 0 stop@60", "16: 5; 2", later},
      {"overflow after it", "start@0 1x3 stop@60 start@60 1 32 0", "11: 1x2; 3", later},
      {"memory full after it", "start@0 1 32 0 stop@60 start@60 1x3 event4@120", "4: 1x2; 4", later},
      {"samples after it", "start@0 1 32 0 stop@60 1", "9: 1; 2", later},
      {"stop 30 days ago", "start@0 1x3 stop@61", "0: 1; 2", later},
      {"Tolka looks at no stop", "start@0 1 stop@60", "0: 1; 2", {.Now = dateAt(99 * Day)}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.Name);
    VardenRecord record = loggerRecord(row.Options.Device, row.Options.Mode, row.Options.Firmware);
    record.Resets = row.Options.Resets;
    Decoding decode{.Diagnostic = row.Options.Diagnostic, .Now = row.Options.Now};
    const Stream bytes = row.Bytes;
    decode(record, bytes);
    std::string outcome = std::to_string(decode.Result) + ": " + seriesText(record.ActivityArray) + "; " +
                          std::to_string(record.EventArray.size());
    const auto moved = std::lround((record.StartTimeGMT - dateAt(0)) * Day);
    if (moved != 0) outcome += "; start " + std::to_string(moved);
    if (*record.RawData != bytes.Bytes) outcome += "; bytes " + std::to_string(record.RawData->size());
    EXPECT_EQ(outcome, row.Outcome);
    EXPECT_EQ(record.BytesUsed, static_cast<std::int32_t>(record.RawData->size()));
    EXPECT_EQ(record.DecodeResult, decode.Result);
    EXPECT_EQ(record.MarkerArray.size(), record.ActivityArray.size());
  }
}

TEST(StreamDecoder, NamesEvents) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {NewEvents, "event33@0", "Acquisition Start w/ Docked Status Changed and Currently Out of Dock"},
      {NewEvents, "event66@0", "Acquisition Stop w/ No Docked Status Change and Currently In Dock"},
      {NewEvents, "event96@0 event32@0",
       "Docked Status Changed and Currently In Dock|Docked Status Changed and Currently Out of Dock"},
      {NewEvents, "event64@0 event16@0",
       "No Docked Status Change and Currently In Dock|No Docked Status Change and Currently Out of Dock"},
      {OldEvents, "event97@0", "Acquisition Start w/ Both Docked and Undocked"},
      {OldEvents, "event33@0 event66@0", "Acquisition Start w/ Docked|Acquisition Stop w/ Undocked"},
      {OldEvents, "event2@0 event96@0 event64@0 event32@0",
       "Acquisition Stop|Docked and Undocked event|Undocked event|Docked event"},
      {NewEvents, "event4@0", "Memory Full"},
      {NewEvents, "event8=0", "Self Test Passed: (Reset Occurred)"},
      {OldEvents, "start@0 status63 1",
       "Acquisition Start|Marker Button 1|Marker Button 2|Low Battery|Off-wrist Detected|On-wrist Detected"},
  };
  for (const auto& [firmware, bytes, texts] : cases) {
    VardenRecord record = loggerRecord(KR_QUILLANDER, 1, firmware);
    Decoding()(record, bytes);
    EXPECT_EQ(eventTexts(record), texts);
  }
  VardenRecord tolka = loggerRecord(KR_TOLKA, 1, OldEvents);
  Decoding()(tolka, "start@0 status255 1");
  EXPECT_EQ(eventTexts(tolka), "Acquisition Start|Marker Button 1|Low Battery");
}

TEST(StreamDecoder, WritesEventEntriesOfTheComingEpoch) {
  VardenRecord record = loggerRecord(KR_QUILLANDER, 1);
  Decoding decode;
  decode(record, "event97@3600 1 status23 1 event8=16777216");
  // The first epoch is the configured start time.
  const std::vector<std::string> expected = {
      R"("01-01 01:00:00","Acquisition Start w/ Docked Status Changed and Currently In Dock","FD615A10EF0B5E")",
      R"("01-01 01:01:00","Marker Button 1","FE17")",
      R"("01-01 01:01:00","Marker Button 2","FE17")",
      R"("01-01 01:01:00","Low Battery","FE17")",
      R"("01-01 01:01:00","Off-Wrist Status Changed and Currently On-Wrist","FE17")",
      R"x("Time Unknown","Self Test Failed: (Reset Occurred)","FD085A00000001")x"};
  ASSERT_EQ(record.EventArray.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(record.EventArray.text(i), expected[i]);
  EXPECT_EQ(std::lround((record.EventArray.time(1) - dateAt(0)) * Day), 3660);
  EXPECT_EQ(record.EventArray.time(5), UnknownDate);
  EXPECT_TRUE(decode.LowBattery);
  EXPECT_EQ(record.Samples + record.MarkerCount * 1000 + record.Marker2Count * 10000, 11062);
  EXPECT_EQ(seriesText(record.MarkerArray) + seriesText(record.Marker2Array), "?x61 1?x61 1");
  EXPECT_EQ(seriesText(record.WristStatusArray), "?x60 0 1");
}

TEST(StreamDecoder, StopsOnWholeSecondsWhateverTheNoiseOfDates) {
  for (const int epoch : {15, 30, 60, 120, 300})
    for (int samples = 1; samples < 2000; samples += 37)
      for (const int early : {0, 1}) {
        VardenRecord record = loggerRecord(KR_TOLKA, 1);
        record.EpochLength = static_cast<std::int16_t>(epoch);
        const std::int32_t start = samples * 7919;
        record.StartTimeGMT = dateAt(start);
        Decoding decode;
        decode(record, Stream().event(1, start).many(samples, 5).event(2, start + samples * epoch - early));
        ASSERT_EQ(decode.Result, early ? Decode_AcqStopTimeBeforePriorData : Decode_OK)
            << samples << " epochs of " << epoch;
      }
}

TEST(StreamDecoder, FailsAndKeepsWhatItHas) {
  constexpr bool Diagnostic = true;
  const char *subscript = "9 Subscript out of range",
             *gaps =
                 "7 Out of memory: the gaps between the recording's starts and stops add up to more than "
                 "4204800 epochs, longer than a battery lasts: its times are damaged";
  std::string months = "start@0 1";
  for (int month = 1; month <= 25; ++month) months += " start@" + std::to_string(month * 30 * Day) + " 1";
  using Change = void (*)(VardenRecord&);
  const Change none = [](auto&) {}, mode2 = [](auto&r) { r.AcquisitionMode = VardenMode_StandardLightOnly; },
               mode9 = [](auto&r) { r.AcquisitionMode = VardenMode_InternalActivity32Hz; };
  const struct {
    const char *Bytes, *Failure;
    std::size_t Kept;
    Change Spoil;
    bool IsDiagnostic = false;
  } cases[] = {
      {"5", "11503 Invalid Epoch Length", 0, [](auto& r) { r.StartTimeGMT = r.EpochLength = 9; }},
      {"start@0 5", "", 1, [](auto& r) { r.EpochLength = 10; }, Diagnostic},
      {"5", "11 Division by zero", 0, [](auto& r) { r.EpochLength = 0; }, Diagnostic},
      {"5", "11503 Invalid Start Time", 0, [](auto& r) { r.StartTimeGMT = 25568.99; }},
      {"start@0", "5 Invalid procedure call or argument", 0, [](auto& r) { r.StartTimeGMT = 1e300; }},
      {"5", "11503 Invalid Firmware Version", 0, [](auto& r) { r.FirmwareVersion = "2"; }},
      {"start@0 5x3", subscript, 3, [](auto& r) { r.BytesUsed = 100; }},
      {"start@0 5x3", subscript, 0, [](auto& r) { r.BytesUsed = 100, r.Resets = 1; }},
      {"start@0 5", subscript, 0, [](auto& r) { r.RawData.reset(); }},
      {"5", "7 Out of memory", 0, [](auto& r) { r.BytesUsed = INT32_MAX; }},
      {"start@0 1", "11503 Incompatible Logging Mode", 0, mode9, Diagnostic},
      {"start@0 1x4 start@300", subscript, 1, mode2},
      {"start@9000 1x3 start@7620 1x12", subscript, 3, none, Diagnostic},
      {"event1=0 1 event1=2147483647", gaps, 1, [](auto& r) { r.EpochLength = 15; }, Diagnostic},
      {months.c_str(), gaps, 24 * 172800 + 1, [](auto& r) { r.EpochLength = 15; }},
      {"event1=-2147483648 1 event1=2147483647", "6 Overflow", 1, [](auto& r) { r.EpochLength = 1; }, true},
  };
  for (const auto& row : cases) {
    VardenRecord record = loggerRecord(KR_QUILLANDER, 1);
    record.RawData = Stream(row.Bytes).Bytes;
    record.BytesUsed = static_cast<std::int32_t>(record.RawData->size());
    row.Spoil(record);
    Decoding decode{.Diagnostic = row.IsDiagnostic};
    EXPECT_EQ(raisedBy([&] { decode(record); }), row.Failure) << row.Bytes;
    EXPECT_EQ(record.MarkerArray.size(), row.Kept) << row.Bytes;
  }
}

}  // namespace
}  // namespace hy_wristlog
