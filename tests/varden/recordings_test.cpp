#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "recording.h"

namespace hy_wristlog {
namespace {

using Counts = std::vector<int>;

/// A believable recording, and what must come out of it, worked out epoch by epoch from the same script.
struct Script {
  VardenRecord Record = loggerRecord(KR_QUILLANDER, 1);
  Stream Bytes{};
  Counts Activity{};
  std::string Wrist{};
  std::map<int, int> Markers{};
  std::int32_t Time = 0;

  explicit Script(std::mt19937& random) {
    const auto below = [&random](unsigned n) { return static_cast<int>(random() % n); };
    bool off = false, docked = false;
    const ActivityScale scale(Record.ActivityCalibration);
    for (int session = 0, sessions = 1 + below(4); session < sessions; ++session) {
      const int wait = below(3) * 600 + below(60);
      for (Time += wait; static_cast<int>(Activity.size()) * 60 < Time;) {
        Activity.push_back(-1);
        Wrist += '-';
      }
      Bytes.event(1 + (docked ? 64 : 0), Time);
      for (int sample = 0, samples = 1 + below(50); sample < samples; ++sample) {
        bool back = false, skip = false;
        const int what = below(12), code = below(253);
        if (what == 0) {
          docked = !docked;
          skip = !docked;
          Bytes.event(docked ? 96 : 32, Time);
        } else if (what == 1) {
          back = off;
          off = !off;
          Bytes.status(off ? 12 : 4);
        } else if (what == 2) {
          Bytes.status(1 + (off ? 8 : 0));
          ++Markers[static_cast<int>(Activity.size())];
        }
        Bytes.raw({code});
        Activity.push_back(docked || skip ? -1 : scale[static_cast<std::uint8_t>(code)]);
        Wrist += off || back ? '1' : '0';
      }
      Time = static_cast<std::int32_t>(Activity.size()) * 60;
      Bytes.event(2 + (docked ? 64 : 0), Time);
    }
  }
};

TEST(Recordings, DecodesBelievableRecordings) {
  std::mt19937 random(20200101);
  for (int round = 0; round < 500; ++round) {
    SCOPED_TRACE(round);
    Script script(random);
    VardenRecord& record = script.Record;
    Decoding decode;
    decode(record, script.Bytes);
    ASSERT_EQ(decode.Result, Decode_OK);
    ASSERT_EQ(Counts(record.ActivityArray.begin(), record.ActivityArray.end()), script.Activity);
    std::string wrist;
    for (const Tristate element : record.WristStatusArray)
      wrist += element == Tristate::Empty ? '-' : element == Tristate::True ? '1' : '0';
    ASSERT_EQ(wrist, script.Wrist);
    int markers = 0;
    for (const auto& [index, count] : script.Markers) {
      EXPECT_EQ(record.MarkerArray[static_cast<std::size_t>(index)], Tristate::True);
      markers += count;
    }
    EXPECT_EQ(record.MarkerCount, markers);
  }
}

/// Bytes that lean towards records, with times near the start.
Stream randomStream(std::mt19937& random) {
  Stream stream;
  const auto byte = [&random] { return static_cast<int>(random() & 255); };
  if (random() % 4 != 0) stream.event(1 + (byte() & 96), static_cast<std::int32_t>(random() % 7200));
  for (auto records = random() % 12; records > 0; --records) {
    switch (random() % 5) {
      case 0:
        stream.event(byte(), static_cast<std::int32_t>(random() % 90000) - 3600);
        break;
      case 1:
        stream.event(1 << (random() % 8), static_cast<std::int32_t>(random() % 7200));
        break;
      case 2:
        stream.status(byte());
        break;
      default:
        for (auto count = random() % 9; count > 0; --count) stream.raw({byte() & (random() % 2 ? 255 : 31)});
    }
  }
  return stream;
}

TEST(Recordings, NeverLosesItsBearings) {
  const char* const firmwares[] = {OldEvents,    NewEvents,    NewScale, "00.01.0028",
                                   "00.01.0029", "00.02.0001", "?"};
  std::mt19937 random(7);
  int decoded = 0;
  for (int round = 0; round < 60000; ++round) {
    VardenRecord record = loggerRecord(random() % 2 ? KR_QUILLANDER : KR_TOLKA,
                                       static_cast<int>(random() % 10), firmwares[random() % 7]);
    record.Resets = random() % 4 == 0;
    const Stream stream = randomStream(random);
    record.RawData = stream.Bytes;
    record.BytesUsed = static_cast<std::int32_t>(stream.Bytes.size());
    if (random() % 16 == 0) record.BytesUsed += static_cast<std::int32_t>(random() % 9) - 4;
    Decoding decode{.Diagnostic = random() % 2 == 0};
    bool failed = false;
    try {
      decode(record);
    } catch (const Failure& failure) {
      failed = true;
      const auto known = {9, 11502, 11503};
      ASSERT_NE(std::find(known.begin(), known.end(), failure.Number), known.end()) << failure.Description;
    }
    if (failed || decode.Result == Decode_InputError) continue;
    ++decoded;
    const auto size =
        static_cast<std::size_t>(record.Samples > 0 ? record.Samples : record.MarkerArray.size());
    for (const std::size_t each :
         {record.ActivityArray.size(), record.LightArray.size(), record.RedLightArray.size(),
          record.GreenLightArray.size(), record.BlueLightArray.size(), record.MarkerArray.size(),
          record.Marker2Array.size(), record.WristStatusArray.size()})
      ASSERT_TRUE(each == size || each == 0);
    ASSERT_EQ(record.MarkerArray.size(), size);
    const auto marked = std::count(record.MarkerArray.begin(), record.MarkerArray.end(), Tristate::True);
    ASSERT_LE(marked, record.MarkerCount);
    ASSERT_EQ(std::count_if(record.EventArray.begin(), record.EventArray.end(),
                            [](const std::string& e) { return e.find("Marker Button 1") != e.npos; }),
              record.MarkerCount);
    ASSERT_LE(record.RawData->size(), static_cast<std::size_t>(std::max(record.BytesUsed, 0)));
  }
  EXPECT_GT(decoded, 20000);
}

}  // namespace
}  // namespace hy_wristlog
