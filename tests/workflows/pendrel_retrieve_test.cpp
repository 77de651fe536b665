#include <algorithm>

#include "base/numbers.h"
#include "workflows/pendrel_desk.h"

namespace hy_wristlog {
namespace {

using namespace pendrel_desk;
using Faults = simulator::PendrelFaults;

TEST(PendrelRetrieve, BringsWhatEachModelRecorded) {
  for (const PendrelModel model : Models) {
    SCOPED_TRACE(static_cast<int>(model));
    Desk desk(model);
    desk.record(40h);
    const auto recorded = desk.logger().recordedBytes();
    ASSERT_GT(recorded.size(), 4096U);
    desk.main->AbortComms();
    ASSERT_EQ(desk.retrieve(), 0);
    EXPECT_TRUE(desk.portClosed());
    const PendrelRecord& found = desk.read();
    EXPECT_TRUE(std::equal(recorded.begin(), recorded.end(), found.RawData.begin() + 128));
    EXPECT_NEAR(found.Samples, 40 * 120, 6);
    EXPECT_GT(found.MarkerCount, 0);
    const bool steps = model == PendrelModel::Steps;
    EXPECT_EQ(found.StepsArray.size(), steps ? found.ActivityArray.size() : 1U);
    EXPECT_EQ(steps, *std::max_element(found.StepsArray.begin(), found.StepsArray.end()) > 0);
    EXPECT_EQ(desk.battery, 178);
    EXPECT_EQ(desk.subject.Get_Identity(), "Subject 17");
    const std::int32_t blocks = found.Get_BlocksToDownload();
    EXPECT_EQ(desk.host->Downloaded, blocks * 4096);
    EXPECT_EQ(desk.workflows.ProgressPercent(), roundToInt16((blocks - 1) * 15.0 / blocks));
    EXPECT_EQ(desk.workflows.Details().Memory.size(), static_cast<std::size_t>(blocks * 4096));
  }
}

/// The checks look at what was put in the place of the gap.
TEST(PendrelRetrieve, RefusesGapsInTheSetupOrRepairsThem) {
  const std::string blank(64, ' ');
  const auto subject = [](const std::string& at28) {
    return "Subject 17             AB F" + at28 + "ASNFZ4mrze8BI0VniavN73hY/tQGlQLT2";
  };
  using Check = std::function<bool(const PendrelRecord&)>;
  const std::tuple<const char*, Arrange, std::int32_t, Check> cases[] = {
      {"length", line(4, "12"), 10016, [](const auto& r) { return r.BytesUsed == 65408; }},
      {"start", line(5, "02 03 26 09:01"), 0, [](const auto& r) { return r.StartTime > 0.3; }},
      {"start date", line(5, "xx 03 26 09 01"), 10007,
       [](const auto& r) { return r.StartDate == dateSerial(2026, 3, 2); }},
      {"start hour", line(5, "02 03 26 24 01"), 10007, [](const auto& r) { return r.StartTime > 0.4; }},
      {"epoch of 45 s", line(2, "03"), 10006, [](const auto& r) { return r.EpochLength == 30; }},
      {"zone unknown here", line(1, subject("TXYZ")), 10019,
       [](const auto& r) { return r.TimeZoneAbbrev == "EST" && r.GMToffset == -300 && r.AutoDSTadjust; }},
      {"zone UNK", line(1, subject("TUNK")), 0, [](const auto& r) { return r.GMToffset == -300; }},
      {"no subject", line(1, blank), 10019,
       [](const auto& r) { return r.TimeZoneAbbrev == "EST" && r.SubjectDOB == UnknownDate; }},
      {"no gender", line(1, std::string(subject("TEST")).replace(26, 1, " ")), 0,
       [](const auto& r) { return r.SubjectGender == " "; }},
  };
  for (const auto& [what, arrange, code, repaired] : cases) {
    SCOPED_TRACE(what);
    Desk desk(PendrelModel::Plain);
    desk.record(1h);
    arrange(desk);
    EXPECT_EQ(desk.retrieve(), code);
    EXPECT_TRUE(desk.portClosed());
    EXPECT_EQ(desk.retrieve(true), 0);
    EXPECT_TRUE(repaired(desk.read()));
  }
}

/// Of the zones with the offset at the start the first of the catalogue gives its name.
TEST(PendrelRetrieve, NamesAnUnknownZoneByItsOffset) {
  const std::tuple<std::int16_t, bool, std::int32_t, std::string> cases[] = {
      {-360, false, 0, "CAN"}, {60, true, 0, "CEU"}, {7, true, 10019, "EST"}};
  for (const auto& [minutes, daylight, code, name] : cases) {
    Desk desk(PendrelModel::Plain);
    desk.record(10min);
    Pendrel texts;
    texts.record.SubjectIdentity = "X";
    texts.record.SubjectGender = "M";
    texts.record.TimeZoneAbbrev = "UNK";
    texts.record.GMToffset = minutes;
    texts.record.AutoDSTadjust = daylight;
    texts.subEncodeSubjectInfo();
    line(1, texts.record.SubjectInfo)(desk);
    EXPECT_EQ(desk.retrieve(), code);
    EXPECT_EQ(desk.retrieve(true), 0);
    EXPECT_EQ(desk.read().TimeZoneAbbrev, name);
    EXPECT_TRUE(code != 0 || desk.read().GMToffset == minutes);
  }
}

TEST(PendrelRetrieve, EveryStateHasItsCode) {
  const auto memory = [](std::size_t address, std::uint8_t value) {
    return [=](Desk& desk) { desk.logger().memory().write(address, value); };
  };
  const std::tuple<const char*, PendrelModel, Arrange, std::int32_t, std::int32_t> cases[] = {
      {"locked up", PendrelModel::Plain, LockedPort, 8015, 8015},
      {"mode", PendrelModel::Steps, memory(109, 0), 10005, 10005},
      {"memory size", PendrelModel::Plain, line(7, "C80 80 1234 EE 00"), 10101, 10101},
      {"more than the memory", PendrelModel::Plain, line(7, "C80 80 1234 1F 00"), 10107, 10107},
      {"block sum", PendrelModel::Checksums, onCommand(&Faults::BadChecksum, 'N', once(1)), 10108, 0},
      {"short block", PendrelModel::Plain, onByte(&Faults::ShortBlock, once(1)), 3005, 0},
      {"block unheard", PendrelModel::Plain, onCommand(&Faults::Unheeded, 'N'), 3005, 3005},
  };
  for (const auto& [what, model, arrange, code, repaired] : cases) {
    SCOPED_TRACE(what);
    Desk desk(model);
    desk.record(80h);
    arrange(desk);
    EXPECT_EQ(desk.retrieve(), code);
    EXPECT_TRUE(desk.portClosed());
    desk.bench.World->advance(15s);
    EXPECT_EQ(desk.retrieve(true), repaired);
  }
}

TEST(PendrelRetrieve, AsksAgainForABlockThatThePortHasLostDataOfButNotForever) {
  for (const std::int32_t losses : {1, 4, 5}) {
    SCOPED_TRACE(losses);
    Desk desk(PendrelModel::Checksums);
    desk.record(40h);
    // A byte in the middle of a block, of each attempt.
    std::int32_t attempts = 0, inBlock = 0;
    simulator::SimulatedLine& line = desk.bench.line();
    line.Tap = [&](simulator::Direction direction, std::uint8_t) {
      if (direction == simulator::Direction::ToLogger) {
        inBlock = 0;
      } else if (++inBlock == 2000 && attempts < losses) {
        ++attempts;
        line.Faults.OverrunToPc = once();
      }
    };
    EXPECT_EQ(desk.retrieve(), losses < 5 ? 0 : 10017);
    EXPECT_EQ(attempts, losses);
    EXPECT_TRUE(desk.portClosed());
    EXPECT_EQ(desk.workflows.Details().Memory.size(), losses < 5 ? 8192U : 0U);
  }
}

}  // namespace
}  // namespace hy_wristlog
