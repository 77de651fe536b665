#include <gtest/gtest.h>

#include "varden_session/session.h"

namespace hy_wristlog::session {
namespace {

using Lines = std::vector<std::string>;

struct Command {
  const char* Name;
  const char* Text;
  std::function<void(VardenLogger&)> Call;
};

const std::vector<Command>& readers() {
  static const std::vector<Command> commands = {
      {"fncReadVardenFWversion", "show ver", [](auto& l) { l.fncReadVardenFWversion(); }},
      {"fncReadVardenBatteryVoltage", "show battery", [](auto& l) { l.fncReadVardenBatteryVoltage(); }},
      {"fncReadVardenTime", "show clock time", [](auto& l) { l.fncReadVardenTime(); }},
      {"subVardenConfigCRCreset", "show clock mode", [](auto& l) { l.subVardenConfigCRCreset(); }},
      {"fncReadVardenMemoryLocation", "debug mem r 0xFFFFFFFF",
       [](auto& l) { l.fncReadVardenMemoryLocation(-1); }},
  };
  return commands;
}

const std::vector<Command>& setters() {
  static const std::vector<Command> commands = {
      {"subSetVardenClock", "clock time 0", [](auto& l) { l.subSetVardenClock(25569.0); }},
      {"subSetVardenAcqStop", "acq stop 2147483647", [](auto& l) { l.subSetVardenAcqStop(2147483647); }},
      {"subSetVardenMemoryPointer", "acq dptr 0", [](auto& l) { l.subSetVardenMemoryPointer(0); }},
      {"subSetDataAvailFlag", "data avail 1", [](auto& l) { l.subSetDataAvailFlag(true); }},
      {"subSetVardenSleep", "sleep 0", [](auto& l) { l.subSetVardenSleep(false); }},
      {"subSetVardenMemoryLocation", "debug mem w 0x10 0xFF",
       [](auto& l) { l.subSetVardenMemoryLocation(16, 255); }},
      {"subClearVardenMemory", "memory erase", [](auto& l) { l.subClearVardenMemory(); }},
  };
  return commands;
}

std::vector<Command> allCommands() {
  std::vector<Command> all = readers();
  all.insert(all.end(), setters().begin(), setters().end());
  all.push_back({"fncReadVardenConfig", "show config", [](auto& l) { l.fncReadVardenConfig(false); }});
  all.push_back({"fncReadVardenData", "show data", [](auto& l) { l.fncReadVardenData(); }});
  all.push_back({"subSendVardenConfig", "config", [](auto& l) { l.subSendVardenConfig(); }});
  return all;
}

TEST(ShellFailures, ACommandThatIsNotHeardIsSentThreeTimes) {
  for (const Command& command : allCommands()) {
    for (const Hearing hearing : {Hearing::Deaf, Hearing::Garbled}) {
      SCOPED_TRACE(command.Name);
      ScriptedSession session{{}, {3, hearing}};
      std::string result;
      const double elapsed =
          session.elapsedDuring([&] { result = outcome([&] { command.Call(session.logger); }); });
      EXPECT_EQ(result, std::string(hearing == Hearing::Deaf ? "3001" : "3003") + " Class_VardenLogger." +
                            command.Name + ": Failure to send command");
      EXPECT_NEAR(elapsed, hearing == Hearing::Deaf ? 4.5 : 1.5, 0.1);
      EXPECT_EQ(session.Lines, Lines{});
      const std::string cancels(std::string_view(command.Text) == "config" ? 4 : 0, '\x18');
      const std::string once = command.Text[0] + cancels;
      EXPECT_EQ(session.world->Written, once + once + once);
    }
  }
}

TEST(ShellFailures, AnswersThatStayAwayAreNotAskedForAgain) {
  std::vector<Command> commands = readers();
  commands.insert(commands.end(), setters().begin(), setters().end());
  for (const Command& command : commands) {
    for (const bool silent : {true, false}) {
      SCOPED_TRACE(command.Name);
      ScriptedSession session{{{command.Text, {silent ? "" : "x"}}}};
      std::string result;
      const double elapsed =
          session.elapsedDuring([&] { result = outcome([&] { command.Call(session.logger); }); });
      EXPECT_EQ(result,
                silent ? "3001 Form_Comm.fncGetCharLine: No characters received"
                       : "3002 Form_Comm.fncGetCharLine: No carriage return or final character received");
      EXPECT_EQ(session.Lines, Lines{command.Text});
      const std::string_view text = command.Text;
      const double silence = text == "memory erase"   ? 40
                             : text == "show ver"     ? 1
                             : text == "show battery" ? 0.5
                                                      : 0.2;
      EXPECT_NEAR(elapsed, silence, 0.15);
    }
  }
}

TEST(ShellFailures, ThreeRoundsForAValue) {
  const std::string failures[] = {
      "11507 Class_VardenLogger.fncReadVardenFWversion: Checksum failed when "
      "retrieving logger time",
      "11507 Class_VardenLogger.fncReadVardenBatteryVoltage: Checksum or format "
      "error when retrieving logger time",
      "11507 Class_VardenLogger.fncReadVardenTime: Checksum failed when "
      "retrieving logger time",
      "11507 Class_VardenLogger.subVardenConfigCRCreset: Checksum failed when "
      "reseting logger CRC",
      "11510 Class_VardenLogger.fncReadVardenMemoryLocation: Failed to read "
      "logger memory"};
  const std::string good[] = {value("01.01.0007 01.02"), value("3.0 01012026"), value("1772452800"),
                              value("12"), "0xA5#0000\r>"};
  for (std::size_t i = 0; i < readers().size(); ++i) {
    const Command& command = readers()[i];
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
  constexpr auto Good = Hearing::Good, Deaf = Hearing::Deaf;
  const std::string bad = "1#0001\r>";
  const std::string failure = "3001 Class_VardenLogger.subVardenConfigCRCreset: Failure to send command";
  const struct {
    std::deque<Hearing> Hearings;
    std::string Outcome;
    Lines Commands;
  } cases[] = {
      {{Deaf, Deaf, Good, Good, Good, Good},
       "",
       {"show clock mode", "show clock mode", "clock mode 24", "clock mode 12"}},
      {{Deaf, Deaf, Good, Deaf}, failure, {"show clock mode"}},
      {{Deaf, Good, Deaf, Good, Deaf}, failure, {"show clock mode", "show clock mode"}},
      {{Deaf, Good, Good, Deaf, Good, Good},
       "",
       {"show clock mode", "show clock mode", "clock mode 24", "clock mode 12"}},
  };
  for (const auto& row : cases) {
    ScriptedSession session{
        {{"show clock mode", {bad, value("12")}}, {"clock mode 12", {">"}}, {"clock mode 24", {">"}}},
        row.Hearings};
    EXPECT_EQ(outcome([&] { session.logger.subVardenConfigCRCreset(); }), row.Outcome);
    EXPECT_EQ(session.Lines, row.Commands);
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
  for (const auto& [answer, expected, elapsed] : cases) {
    ScriptedSession session{{{"", {answer}}}};
    bool prompt = false;
    std::string result;
    EXPECT_NEAR(session.elapsedDuring(
                    [&] { result = outcome([&] { prompt = session.logger.fncGetVardenPrompt(); }); }),
                elapsed, 0.03);
    EXPECT_EQ(result, "");
    EXPECT_EQ(prompt, expected);
    EXPECT_EQ(session.world->Written, "\r");
  }
  Session silent{simulator::vividBenchOptions()};
  silent.connect();
  silent.bench.Logger->Faults.Silent = true;
  EXPECT_NEAR(silent.elapsedDuring([&] { EXPECT_FALSE(silent.logger.fncGetVardenPrompt()); }), 0.2, 0.02);
}

TEST(ShellFailures, AnUnpluggedDockIsNotSilence) {
  Session session{simulator::vividBenchOptions()};
  session.connect();
  session.bench.Dock->unplug();
  std::string result;
  EXPECT_LT(session.elapsedDuring([&] { result = outcome([&] { session.logger.fncReadVardenTime(); }); }),
            0.4);
  EXPECT_EQ(result.substr(0, 5), "8015 ");
}

}  // namespace
}  // namespace hy_wristlog::session
