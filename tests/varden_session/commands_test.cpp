#include "base/dates.h"
#include "errors/GlobalState.h"
#include "varden_session/session.h"

namespace hy_wristlog::session {
namespace {

using simulator::BenchOptions;
using Lines = std::vector<std::string>;

constexpr double Noon = 46083.5;  // 2 March 2026, 12:00

struct Step {
  std::function<void(VardenLogger&)> Call;
  Lines Commands;
  std::function<bool(Session&)> Holds = [](Session&) { return true; };
  double AtLeast = 0;
};

void runTranscript(const BenchOptions& options) {
  Session session{options};
  VardenLogger& logger = session.logger;
  simulator::SimulatedLogger& device = *session.bench.Logger;
  const bool vivid = device.model() == simulator::LoggerModel::Vivid;
  session.connect();

  const std::vector<Step> steps = {
      {[](auto& l) { l.fncReadVardenSetup(); },
       {"show config", "show ver", "show battery", "show clock time"},
       [&](auto&) {
         const VardenRecord& record = logger.record;
         return record.FirmwareVersion == device.firmware().version() &&
                record.LCDfirmwareVersion == (vivid ? "01.02" : "") &&
                record.DeviceType == (vivid ? KR_QUILLANDER : KR_TOLKA) &&
                std::abs(record.BatteryVoltage - device.battery().voltage()) < 0.001 &&
                record.LoadedBattVoltage > 0 && std::abs(logger.Get_CurrentGMTtime() - Noon) < 1;
       }},
      {[](auto& l) { l.subSetVardenClock({}); },
       {"clock time *"},
       [&](auto& s) { return std::abs(device.clock().seconds() - s.bench.World->now()) <= 1; }},
      {[](auto& l) { l.subSetVardenAcqStop(0); }, {"acq stop 0"}, [](auto&) { return true; }, 2.0},
      {[](auto& l) { l.subSetVardenMemoryPointer(0xA1B); },
       {"acq dptr A1B"},
       [&](auto&) { return device.block().number(simulator::block::NextAddress) == 0xA1B; }},
      {[](auto& l) { l.subSetVardenSleep(true); }, {"sleep 1"}, [&](auto&) { return device.inStorage(); }},
      {[](auto& l) { l.subSetVardenMemoryLocation(0x1F, 0xA); },
       {"debug mem w 0x1F 0xA"},
       [&](auto&) { return device.memory().read(0x1F) == 0xA; },
       0.1},
      {[](auto& l) { EXPECT_EQ(l.fncReadVardenMemoryLocation(0x1F), 0xA); }, {"debug mem r 0x1F"}},
      {[](auto& l) { l.subVardenConfigCRCreset(); }, {"show clock mode", "clock mode 24", "clock mode 12"}},
      {[](auto& l) { l.fncReadVardenData(); },
       {"show data"},
       [&](auto&) {
         const ByteArray& raw = logger.record.RawData.value();
         return raw.size() >= 0xA1B && raw[0x1F] == 0xA && raw[0x1E] == 0xFF;
       }},
      {[](auto& l) {
         l.record.AcqThreshold = 77;
         l.subSendVardenConfig();
       },
       {"config"},
       [&](auto&) { return device.block().number(simulator::block::Threshold) == 77; }},
      {[](auto& l) {
         const auto other = l.fncReadVardenConfig(true);
         ASSERT_NE(other, nullptr);
         EXPECT_EQ(other->record.AcqThreshold, 77);
       },
       {"show config"},
       [&](auto&) { return logger.record.AcqThreshold == 0 && logger.record.DeviceType == Device_Unknown; }},
      {[](auto& l) { l.subClearVardenMemory(); },
       {"memory erase"},
       [&](auto&) { return device.memory().read(0x1F) == 0xFF; },
       vivid ? 37.0 : 4.0},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.Commands.front());
    device.forgetCommands();
    std::string result;
    const double elapsed = session.elapsedDuring([&] { result = outcome([&] { step.Call(logger); }); });
    EXPECT_EQ(result, "");
    if (step.Commands.front().ends_with('*'))
      EXPECT_EQ(session.commands().size(), 1U);
    else
      EXPECT_EQ(session.commands(), step.Commands);
    EXPECT_TRUE(step.Holds(session));
    EXPECT_GE(elapsed, step.AtLeast);
  }
}

TEST(Commands, Transcripts) {
  runTranscript(simulator::vividBenchOptions());
  runTranscript(simulator::kestrin2BenchOptions());
}

TEST(Commands, ChecksumLine) {
  const auto crcOf = [](const std::string& text) {
    const std::string line = value(text);
    return line.substr(0, line.size() - 2);
  };
  // clang-format off
  const std::tuple<std::string, std::string, bool> cases[] = {
      {"123456789#31C3", "123456789", true}, {"123456789#31c3", "123456789", true},
      {"123456789#31C3 and more#", "123456789", true}, {crcOf("  two words  "), "two words", true},
      {crcOf("\n12"), "\n12", true}, {" 123456789#31C3", "", false}, {"123456789#31C4", "", false},
      {"123456789#31", "", false}, {"123456789#31G3", "", false}, {"12345678931C3", "", false}, {"#31C3", "", false},
      {"", "", false}, {std::string(1, '\0') + "#0000", "", false}};
  // clang-format on
  for (const auto& [given, data, passes] : cases) {
    std::string line = given;
    EXPECT_EQ(VardenLogger::fncCheckCRCandParse(line), passes) << given;
    EXPECT_EQ(line, data) << given;
  }
}

TEST(Commands, BatteryLine) {
  const double rolledOver = dateSerial(2026, 3, 3);
  // clang-format off
  const std::tuple<const char*, const char*, std::array<double, 3>, bool> cases[] = {
      {"01.00.0012", "3.051 31022026 2.95", {3.051, 2.95, rolledOver}, true},
      {"01.00.0012", "  3  01011999   2 more", {3, 2, dateSerial(1999, 1, 1)}, true},
      {"01.00.0012", "3.051 31022026", {-1, -1, -1}, false}, {"01.00.0012", "3.051 31022026 x", {-1, -1, -1}, false},
      {"01.00.0012", "3.051 3102202 2.95", {-1, -1, -1}, false},
      {"01.00.0012", "3.051 32022026 2.95", {3.051, 2.95, -1}, false},
      {"00.01.0030", "3.051 31022026 x", {3.051, -1, rolledOver}, true},
      {"00.01.0030", "3.051 01132026", {3.051, -1, -1}, false},
      {"00.01.0030", "3.051 2026-1-1", {3.051, -1, -1}, false}, {"00.01.0030", "volts 31022026", {-1, -1, -1}, false},
      {"00.01.0030", "3.051 31129999", {3.051, -1, dateSerial(9999, 12, 31)}, true}};
  // clang-format on
  for (const auto& [firmware, line, values, reads] : cases) {
    SCOPED_TRACE(line);
    ScriptedSession session{{{"show battery", {value(line)}}}};
    VardenRecord& record = session.logger.record;
    record.FirmwareVersion = firmware;
    EXPECT_EQ(outcome([&] { session.logger.fncReadVardenBatteryVoltage(); }),
              reads ? ""
                    : "11507 Class_VardenLogger.fncReadVardenBatteryVoltage: Checksum or format error "
                      "when retrieving logger time");
    EXPECT_FLOAT_EQ(record.BatteryVoltage, static_cast<float>(values[0]));
    EXPECT_FLOAT_EQ(record.LoadedBattVoltage, static_cast<float>(values[1]));
    EXPECT_EQ(record.BatteryDate, values[2]);
  }
}

TEST(Commands, ClockModeGoesForthAndBack) {
  const Lines cases[] = {{"0", "12"}, {"12", "24"}, {"24", "12"}, {"7", "12"}, {"off", "12"}};
  for (const Lines& row : cases) {
    ScriptedSession session{{{"show clock mode", {value(" " + row[0] + " ")}},
                             {"clock mode " + row[0], {">"}},
                             {"clock mode " + row[1], {">"}}}};
    EXPECT_EQ(outcome([&] { session.logger.subVardenConfigCRCreset(); }), "");
    EXPECT_EQ(session.Lines, (Lines{"show clock mode", "clock mode " + row[1], "clock mode " + row[0]}));
  }
}

TEST(Commands, SettingsThatCannotBeReadAreTriedOnceMoreAfterAReset) {
  const Lines reset{"show config", "show clock mode", "clock mode 24", "clock mode 12", "show config"};
  Lines all = reset;
  all.insert(all.end(), {"show ver", "show battery", "show clock time"});
  const std::tuple<void (*)(simulator::LoggerFaults&), std::string, Lines> cases[] = {
      {[](auto& faults) { faults.BadConfigChecksum = simulator::once(); }, "", all},
      {[](auto& faults) { faults.BadConfigChecksum = simulator::always(); },
       "11505 Class_VardenLogger.fncReadVardenConfig: Logger configuration CRC verification failed", reset},
      {[](auto& faults) { faults.Transfer.CancelPacket = simulator::once(); }, "", all},
      {[](auto& faults) { faults.BadLineChecksum = simulator::always(); },
       "11507 Class_VardenLogger.fncReadVardenFWversion: Checksum failed when retrieving logger time",
       {"show config", "show ver", "show ver", "show ver"}}};
  for (const auto& [spoil, expected, commands] : cases) {
    Session session{simulator::vividBenchOptions()};
    session.connect();
    spoil(session.bench.Logger->Faults);
    EXPECT_EQ(outcome([&] { session.logger.fncReadVardenSetup(); }), expected);
    EXPECT_EQ(session.commands(), commands);
    for (const auto& record : globals().ErrorStack)
      EXPECT_FALSE(record && record->ErrorProcedure == "fncReadVardenSetup" && record->MsgboxWasDisplayed);
  }
}

/// The memory is blank, so that only their numbers tell the packets apart.
TEST(Commands, ARepeatedPacketIsNoPartOfTheRecording) {
  constexpr std::int32_t Packets = 300;
  for (const std::int32_t repeated : {0, 1, 253, 254, 255, 256, Packets - 1}) {
    Session session{simulator::vividBenchOptions()};
    session.connect();
    session.bench.Logger->block().set(simulator::block::NextAddress, Packets * 1024);
    session.bench.Logger->Faults.Transfer.DoublePacket = simulator::once(repeated);
    // Behind packet 255 the link's count overflows; another attempt brings everything.
    constexpr std::int32_t Packet255 = 254;
    EXPECT_EQ(
        outcome([&] { session.logger.fncReadVardenData(); }),
        repeated == Packet255 ? "3011 Class_VardenLogger.fncReadVardenData: Packet 255 was repeated" : "");
    if (repeated == Packet255) {
      session.logger.subAbortLoggerComms();
      EXPECT_EQ(outcome([&] { session.logger.fncReadVardenData(); }), "");
    }
    EXPECT_EQ(session.logger.record.RawData->size(), std::size_t{Packets} * 1024) << repeated;
  }
}

TEST(Commands, TimeStamps) {
  ScriptedSession session;
  globals().ShortDateTimeFormat = "yyyy-mm-dd hh:nn:ss";
  VardenLogger& logger = session.logger;
  logger.record.StartTimeGMT = Noon;
  logger.record.EpochLength = 30;
  EXPECT_EQ(logger.fncTimeStamp(3), "2026-03-02 12:01:30");
  EXPECT_EQ(logger.fncTimeStamp(12343, 7), "2026-03-03 12:00:00");
  EXPECT_EQ(logger.fncTimeStamp(-1, 15), "2026-03-02 11:59:45");
  for (const std::int32_t tooLong : {0, 200000})
    EXPECT_EQ(outcome([&] { logger.fncTimeStamp(1, tooLong); }),
              "11 Class_VardenLogger.fncTimeStamp: Division by zero");
}

}  // namespace
}  // namespace hy_wristlog::session
