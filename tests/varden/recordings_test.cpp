#include <algorithm>
#include <random>

#include "varden_support.h"

namespace hy_wristlog {
namespace {

/// A believable recording, and what must come out of it, worked out epoch by epoch from the same script.
struct Script {
  VardenRecord Record = loggerRecord(KR_QUILLANDER, 1);
  Stream Bytes{};
  ActivitySeries Activity{};
  TristateSeries Wrist{}, Marker{};
  std::int32_t Markers = 0;
  std::int32_t Time = 0;

  void add(std::int32_t activity, Tristate wrist, bool marked = false) {
    Activity.push_back(activity), Wrist.push_back(wrist);
    Marker.push_back(marked ? Tristate::True : Tristate::Empty);
  }
  explicit Script(std::mt19937& random) {
    const auto below = [&random](unsigned n) { return static_cast<int>(random() % n); };
    bool off = false, docked = false;
    const ActivityScale scale(Record.ActivityCalibration);
    for (int session = 0, sessions = 1 + below(4); session < sessions; ++session) {
      const int wait = below(3) * 600 + below(60);
      for (Time += wait; static_cast<int>(Activity.size()) * 60 < Time;) add(-1, Tristate::Empty);
      Bytes.event(1 + (docked ? 64 : 0), Time);
      for (int sample = 0, samples = 1 + below(50); sample < samples; ++sample) {
        bool back = false, skip = false, marked = false;
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
          marked = true;
          ++Markers;
        }
        Bytes.many(1, code);
        add(docked || skip ? -1 : scale[static_cast<std::uint8_t>(code)],
            off || back ? Tristate::True : Tristate::False, marked);
      }
      Time = static_cast<std::int32_t>(Activity.size()) * 60;
      Bytes.event(2 + (docked ? 64 : 0), Time);
    }
  }
};

TEST(Recordings, DecodesBelievableRecordings) {
  std::mt19937 random(20200101);
  for (int round = 0; round < 500; ++round) {
    Script script(random);
    VardenRecord& record = script.Record;
    Decoding decode;
    decode(record, script.Bytes);
    ASSERT_EQ(decode.Result, Decode_OK) << round;
    ASSERT_EQ(record.ActivityArray, script.Activity) << round;
    ASSERT_EQ(record.WristStatusArray, script.Wrist) << round;
    ASSERT_EQ(record.MarkerArray, script.Marker) << round;
    ASSERT_EQ(record.MarkerCount, script.Markers) << round;
  }
}

/// Bytes that lean towards records, with times near the start.
Stream randomStream(std::mt19937& random) {
  Stream stream;
  const auto byte = [&random] { return static_cast<int>(random() & 255); };
  if (random() % 4 != 0) stream.event(1 + (byte() & 96), static_cast<std::int32_t>(random() % 7200));
  for (auto records = random() % 12; records > 0; --records) {
    const auto kind = random() % 5;
    const int bits = kind == 0 ? byte() : 1 << (random() % 8);
    if (kind < 2)
      stream.event(bits, static_cast<std::int32_t>(random() % 20000) - 3600);
    else if (kind == 2)
      stream.status(byte());
    else
      for (auto count = random() % 9; count > 0; --count) stream.many(1, byte() & (random() % 2 ? 255 : 31));
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
    const std::string failure = raisedBy([&] { decode(record); });
    ASSERT_TRUE(failure.empty() || failure[0] == '9' || failure.substr(0, 5) == "11503") << failure;
    if (!failure.empty() || decode.Result == Decode_InputError) continue;
    ++decoded;
    const std::size_t size = record.MarkerArray.size();
    ASSERT_TRUE(record.Samples == 0 || size == static_cast<std::size_t>(record.Samples));
    for (const auto* lights :
         {&record.LightArray, &record.RedLightArray, &record.GreenLightArray, &record.BlueLightArray})
      ASSERT_TRUE(lights->empty() || lights->size() == size);
    ASSERT_TRUE(record.ActivityArray.empty() || record.ActivityArray.size() == size);
    ASSERT_EQ(record.WristStatusArray.size(), record.DeviceType == KR_TOLKA ? 0 : size);
    const auto marked = std::count(record.MarkerArray.begin(), record.MarkerArray.end(), Tristate::True);
    ASSERT_LE(marked, record.MarkerCount);
    std::int32_t told = 0;
    for (std::size_t i = 0; i < record.EventArray.size(); ++i)
      told += record.EventArray.words(i) == "Marker Button 1";
    ASSERT_EQ(told, record.MarkerCount);
    ASSERT_LE(record.RawData->size(), static_cast<std::size_t>(std::max(record.BytesUsed, 0)));
  }
  EXPECT_GT(decoded, 20000);
}

}  // namespace
}  // namespace hy_wristlog
