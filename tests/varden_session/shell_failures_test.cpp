#include "varden_session/session.h"

namespace hy_wristlog::session {
namespace {

using Lines = std::vector<std::string>;

struct Command {
  const char* Name;
  const char* Text;
  std::function<void(VardenLogger&)> Call;
};

const std::vector<Command> Readers = {
    {"fncReadVardenFWversion", "show ver", [](auto& l) { l.fncReadVardenFWversion(); }},
    {"fncReadVardenBatteryVoltage", "show battery", [](auto& l) { l.fncReadVardenBatteryVoltage(); }},
    {"fncReadVardenTime", "show clock time", [](auto& l) { l.fncReadVardenTime(); }},
    {"subVardenConfigCRCreset", "show clock mode", [](auto& l) { l.subVardenConfigCRCreset(); }},
    {"fncReadVardenMemoryLocation", "debug mem r 0xFFFFFFFF",
     [](auto& l) { l.fncReadVardenMemoryLocation(-1); }}};

const std::vector<Command> Setters = {
    {"subSetVardenClock", "clock time 0", [](auto& l) { l.subSetVardenClock(25569.0); }},
    {"subSetVardenAcqStop", "acq stop 2147483647", [](auto& l) { l.subSetVardenAcqStop(2147483647); }},
    {"subSetVardenMemoryPointer", "acq dptr 0", [](auto& l) { l.subSetVardenMemoryPointer(0); }},
    {"subSetDataAvailFlag", "data avail 1", [](auto& l) { l.subSetDataAvailFlag(true); }},
    {"subSetVardenSleep", "sleep 0", [](auto& l) { l.subSetVardenSleep(false); }},
    {"subSetVardenMemoryLocation", "debug mem w 0x10 0xFF",
     [](auto& l) { l.subSetVardenMemoryLocation(16, 255); }},
    {"subClearVardenMemory", "memory erase", [](auto& l) { l.subClearVardenMemory(); }}};

const std::vector<Command> Transfers = {
    {"fncReadVardenConfig", "show config", [](auto& l) { l.fncReadVardenConfig(false); }},
    {"fncReadVardenData", "show data", [](auto& l) { l.fncReadVardenData(); }},
    {"subSendVardenConfig", "config", [](auto& l) { l.subSendVardenConfig(); }}};

TEST(ShellFailures, ASendIsTriedThreeTimesAnAnswerAskedForOnce) {
  for (const auto* commands : {&Readers, &Setters, &Transfers})
    for (const auto& [name, text, call] : *commands) {
      SCOPED_TRACE(name);
      const bool transfer = commands == &Transfers;
      for (const bool deaf : {true, false}) {
        ScriptedSession session{{}, deaf ? "..." : "~~~"};
        const auto [result, elapsed] = session.timed([&] { call(session.logger); });
        EXPECT_EQ(result, std::string(deaf ? "3001" : "3003") + " Class_VardenLogger." + name +
                              ": Failure to send command");
        EXPECT_NEAR(elapsed, deaf ? 4.5 : 1.5, 0.1);
        const std::string cancels(std::string_view(text) == "config" ? 4 : 0, '\x18');
        const std::string once = text[0] + cancels;
        EXPECT_EQ(session.world->Written, once + once + once);
      }
      for (const bool silent : {true, false}) {
        if (transfer) continue;
        ScriptedSession session{{{text, {silent ? "" : "x"}}}};
        const auto [result, elapsed] = session.timed([&] { call(session.logger); });
        EXPECT_EQ(result,
                  silent ? "3001 Form_Comm.fncGetCharLine: No characters received"
                         : "3002 Form_Comm.fncGetCharLine: No carriage return or final character received");
        EXPECT_EQ(session.Lines, Lines{text});
        static const std::map<std::string, double> waits = {
            {"memory erase", 40}, {"show ver", 1}, {"show battery", 0.5}};
        EXPECT_NEAR(elapsed, waits.contains(text) ? waits.at(text) : 0.2, 0.15);
      }
    }
}

TEST(ShellFailures, ThreeRoundsForAValue) {
  const std::string logger = "11507 Class_VardenLogger.", checksum = ": Checksum failed when ";
  const std::string failures[] = {
      logger + "fncReadVardenFWversion" + checksum + "retrieving logger time",
      logger + "fncReadVardenBatteryVoltage: Checksum or format error when retrieving logger time",
      logger + "fncReadVardenTime" + checksum + "retrieving logger time",
      logger + "subVardenConfigCRCreset" + checksum + "reseting logger CRC",
      "11510 Class_VardenLogger.fncReadVardenMemoryLocation: Failed to read logger memory"};
  const std::string good[] = {value("01.01.0007 01.02"), value("3.0 01012026"), value("1772452800"),
                              value("12"), "0xA5#0000\r>"};
  for (std::size_t i = 0; i < Readers.size(); ++i) {
    const Command& command = Readers[i];
    SCOPED_TRACE(command.Name);
    for (const bool recovers : {false, true}) {
      const std::string bad = "1#0001\r>";
      ScriptedSession session{{{command.Text, {bad, bad, recovers ? good[i] : bad}},
                               {"clock mode 12", {">"}},
                               {"clock mode 24", {">"}}}};
      session.logger.record.LastLoggerTime = 7;
      EXPECT_EQ(outcome([&] { command.Call(session.logger); }), recovers ? "" : failures[i]);
      const Lines& lines = session.Lines;
      EXPECT_EQ(std::count(lines.begin(), lines.end(), command.Text), 3);
      const bool reads = std::string_view(command.Text) == "show clock time";
      EXPECT_EQ(session.logger.record.LastLoggerTime, !reads ? 7 : recovers ? 46083.5 : -1);
    }
  }
}

TEST(ShellFailures, ATimeMustBeANumberAndAMemoryLineNineLong) {
  ScriptedSession session{{{"show clock time", {value("--"), value("99999999999")}},
                           {"debug mem r 0x7", {"0xA5#123\r>", "0xA5#12345\r>", "0xa5#????\r>"}}}};
  EXPECT_EQ(outcome([&] { session.logger.fncReadVardenTime(); }),
            "6 Class_VardenLogger.fncReadVardenTime: Overflow");
  EXPECT_EQ(session.logger.record.LastLoggerTime, -1.0);
  EXPECT_EQ(session.logger.fncReadVardenMemoryLocation(7), 0xA5);
}

TEST(ShellFailures, SendsAreABudgetForAllRounds) {
  const std::string bad = "1#0001\r>", ask = "show clock mode";
  const std::string failure = "3001 Class_VardenLogger.subVardenConfigCRCreset: Failure to send command";
  const std::tuple<const char*, std::string, Lines> cases[] = {
      {"..    ", "", {ask, ask, "clock mode 24", "clock mode 12"}},
      {".. .", failure, {ask}},
      {". . .", failure, {ask, ask}},
      {".  .  ", "", {ask, ask, "clock mode 24", "clock mode 12"}}};
  for (const auto& [hearings, expected, lines] : cases) {
    ScriptedSession session{{{ask, {bad, value("12")}}, {"clock mode 12", {">"}}, {"clock mode 24", {">"}}},
                            hearings};
    EXPECT_EQ(outcome([&] { session.logger.subVardenConfigCRCreset(); }), expected);
    EXPECT_EQ(session.Lines, lines);
  }
}

TEST(ShellFailures, TransfersThatBringNothing) {
  ScriptedSession nothing{{{"show config", {"\x04"}}}};
  EXPECT_EQ(outcome([&] { nothing.logger.fncReadVardenConfig(false); }),
            "3013 Class_VardenLogger.fncReadVardenConfig: No packets received");

  Session session{simulator::vividBenchOptions()};
  session.connect();
  session.logger.fncReadVardenSetup();
  EXPECT_EQ(outcome([&] { session.logger.fncReadVardenData(); }),
            "11503 Class_VardenLogger.subSetRawDataFromPackets: Invalid packet array input");
  session.bench.Logger->Faults.Transfer.LoseInvitation = simulator::always();
  EXPECT_EQ(outcome([&] { session.logger.subSendVardenConfig(); }),
            "3008 Form_Comm.subSendXmodemPackets: Failure to receive initiation character");
}

TEST(ShellFailures, PromptIsFalseInsteadOfAFailure) {
  const std::tuple<const char*, bool, double> cases[] = {
      {"", false, 0.2}, {"no prompt", false, 0.25}, {">", true, 0}};
  for (const auto& [answer, expected, wanted] : cases) {
    ScriptedSession session{{{"", {answer}}}};
    bool prompt = !expected;
    const auto [result, elapsed] = session.timed([&] { prompt = session.logger.fncGetVardenPrompt(); });
    EXPECT_EQ(result, "");
    EXPECT_NEAR(elapsed, wanted, 0.03);
    EXPECT_EQ(prompt, expected);
    EXPECT_EQ(session.world->Written, "\r");
  }
  Session session{simulator::vividBenchOptions()};
  session.connect();
  session.bench.Dock->unplug();
  EXPECT_EQ(outcome([&] { session.logger.fncReadVardenTime(); }).substr(0, 5), "8015 ") << "no silence";
}

}  // namespace
}  // namespace hy_wristlog::session
