#include <random>
#include <set>

#include "base/dates.h"
#include "pendrel_session/session.h"

namespace hy_wristlog::pendrel_session {
namespace {

using Call = std::function<std::int64_t(Pendrel&)>;

constexpr int Old = KR_PENDREL, Crc = KR_PENDREL_CRC, Steps = KR_PENDREL_CRC_STEPS;
constexpr double Start = 46204 + 12.0 / 24 + 40.0 / 1440;  // 5 min 3.211 s after the scripted clock's time

std::string line(const std::string& text) { return text + '\r'; }
std::string told(const std::string& value, const std::string& address = "006D") {
  return line(value) + line(sumOf(address + value)) + ">";
}
std::string setupAnswer(const std::string& device, std::string checksum = {}) {
  const std::string lines = "\r" + std::string(64, '\xE9') + "\r04\r00\r0102\r31 12 09 23 59\r01 02 26\r" +
                            device + " 80 1234 FF 07";
  if (device != "C8F" && checksum.empty()) checksum = sumOf(lines);
  return line(lines) + (checksum.empty() ? "" : line(checksum)) + ">";
}

Call readAt(std::int32_t address) {
  return [address](Pendrel& l) { return l.fncReadMemoryLocation(address); };
}
Call readBlock(std::int16_t block) {
  return [block](Pendrel& l) { return l.fncReadMemoryBlock(block).size(); };
}
std::int64_t readSetup(Pendrel& logger) { return logger.fncReadSetup(), 0; }
std::int64_t sendDelay(Pendrel& logger) { return logger.fncSendDelayedStart(Start); }

struct Command {
  enum Kind : std::uint8_t { Plain, Setup, Block, Mute };

  Kind Is;
  int Type;
  ScriptedSession::Answers Answers;
  double Wait;  ///< seconds after the last characters
  Call Do;
  std::int64_t Result = 0;
};

std::vector<Command> commands() {
  const std::string words = "007B0007", echo = "\r" + line(words + sumOf(words)) + ">", block(4096, 'U');
  const auto battery = [](Pendrel& l) { return l.subSendBatteryDate(dateSerial(2024, 2, 29) + 0.7), 0; };
  return {
      {Command::Plain, Crc, {{"***O00FF", told("A5", "00FF")}}, 0.5, readAt(255), 0xA5},
      {Command::Plain, Old, {{"***OFFFF", "0a5\r>"}}, 0.5, readAt(65535), 0xA5},
      {Command::Plain,
       Crc,
       {{"***P00000A", "\r>"}},
       0.5,
       [](auto& l) { return l.subSetMemorylocation(0, 10), 0; }},
      {Command::Plain, Crc, {{"***X0F", "\r>"}}, 12, [](auto& l) { return l.subClearMemory(15), 0; }},
      {Command::Mute, Crc, {{"***GU", ""}}, 1, [](auto& l) { return l.subResetDevice(), 0; }},
      {Command::Plain, Crc, {{"***L290224", "\r>"}}, 0.5, battery},
      {Command::Plain, Crc, {{"***W" + words, echo}}, 0.5, sendDelay, 10211},
      {Command::Plain, Old, {{"***H007B", "\r"}, {"***F0007", "\r"}}, 1, sendDelay, 10211},
      {Command::Block, Old, {{"***NF0", block}}, 1.35, readBlock(15), 4096},
      {Command::Block, Crc, {{"***N10", block + std::string("\x50\0", 2)}}, 1.35, readBlock(1), 4098},
      {Command::Setup, Crc, {{"***C", setupAnswer("C8F")}}, 0.5, readSetup},
      {Command::Setup, Old, {{"***C", setupAnswer("C90")}}, 0.5, readSetup},
      {Command::Setup, Old, {{"***C", setupAnswer("B90")}, {"***O006D", told("47")}}, 1, readSetup},
  };
}

/// A session in which `command` can be called; `spoil` changes the answers to it.
ScriptedSession sessionFor(const Command& command, const std::string& hearings = {},
                           const std::function<void(std::string&)>& spoil = {}) {
  ScriptedSession::Answers answers = command.Answers;
  if (spoil)
    for (auto& [text, answer] : answers) spoil(answer);
  return ScriptedSession{std::move(answers), hearings, command.Type};
}

TEST(Commands, AreTypedAtTheLoggersPaceAndFailUnheard) {
  for (const Command& command : commands()) {
    const bool setup = command.Is == Command::Setup, block = command.Is == Command::Block;
    SCOPED_TRACE(command.Answers.begin()->first);
    double typed = 0, read = 0;
    for (const auto& [text, answer] : command.Answers) {
      typed += static_cast<double>(text.size());
      read += block ? 0 : static_cast<double>(answer.size());
    }
    ScriptedSession session = sessionFor(command);
    const double elapsed =
        session.timed([&] { EXPECT_EQ(command.Do(session.logger), command.Result); }).second;
    EXPECT_NEAR(elapsed, 0.15 * typed + command.Wait + 0.005 * read + (setup || block ? 2 : 0), 0.05);
    EXPECT_EQ(session.world->Written.size(), typed) << "no carriage return";
    EXPECT_EQ(session.world->journal(), block ? "4800 n8 0; 600 n8 0" : "");

    const auto happens = [&](const std::string& hearings, const char* answer = nullptr) {
      ScriptedSession other = sessionFor(command, hearings, [&](std::string& text) {
        if (answer != nullptr) text = answer;
      });
      return other.timed([&] { command.Do(other.logger); });
    };
    const std::string
        echo = " Form_Comm.subSendChars: ",
        reader = " Form_Comm.fncGetCharLine: ",
        thrice = " Class_Pendrel.fncReadSetup: Failure to send read setup command",
        few = "3005 Form_Comm.fncGetBinaryStream: Insufficient number of binary data bytes received",
        silent = "3001" + reader + "No characters received",
        partial = "3002" + reader + "No carriage return or final character received";
    const auto deaf = happens("...");
    EXPECT_EQ(deaf.first, "3001" + (setup ? thrice : echo + "No Characters Received"));
    EXPECT_NEAR(deaf.second, setup ? 3 * 3.15 + 4 : 3.15, 0.01);
    EXPECT_EQ(happens("~~~").first, "3003" + (setup ? thrice : echo + "Wrong Characters Received"));
    EXPECT_EQ(happens(setup ? ".~" : "").first, "");
    if (command.Is != Command::Mute) {
      EXPECT_EQ(happens("", "").first, block ? few : silent);
      EXPECT_EQ(happens("", "?").first, block ? few : partial);
    }
    ScriptedSession gone = sessionFor(command);
    gone.world->Before = [](const std::string& operation) {
      if (operation == "write") throw Failure(8015, "", "gone");
    };
    EXPECT_EQ(outcome([&] { command.Do(gone.logger); }), "8015 Form_Comm.subSendChars: gone");
  }
}

TEST(Commands, AnswersThatDoNotHold) {
  const std::string o = "***O006D", c = "***C", n = "***N20", block(4096, '\x02'), w = "***W007B0007",
                    words = "007B0007", sum = sumOf(words);
  const auto echoed = [](const std::string& text) { return "\r" + line(text) + ">"; };
  const std::string wrong = "10108 Error Verifying Communications Checksum",
                    other = "10113 Wrong echo received from delayed start command", type = "13 Type mismatch";
  // clang-format off
  const std::tuple<int, std::string, std::string, std::string> cases[] = {
      {Crc, o, "FF\r" + sumOf("006DFF") + "more\r>", ""}, {Crc, o, "FF\r" + sumOf("006DFE") + "\r>", wrong},
      {Crc, o, told("100"), "6 Overflow"}, {Crc, o, told("-1"), type}, {Old, o, "\r>", type},
      {Old, c, setupAnswer("C90", "E3F"), wrong}, {Crc, c, setupAnswer("C8F", "0000"), ""},
      {Crc, c, setupAnswer("C8F").substr(0, setupAnswer("C8F").size() - 1), "3001 No characters received"},
      {Crc, w, echoed(words + sum + "0"), other}, {Crc, w, echoed("007B0008" + sum), other},
      {Crc, w, echoed(words + "0000"), wrong}, {Steps, n, block + std::string("\x20\0more", 6), ""},
      {Crc, n, block + std::string("\x20\x01", 2), wrong}, {Crc, n, block + std::string("\0\x20", 2), wrong},
      {Crc, n, block, "3005 Insufficient number of binary data bytes received"}};
  // clang-format on
  for (const auto& [model, text, answer, expected] : cases) {
    ScriptedSession session{{{text, answer}}, {}, model};
    const Call call = text == o ? readAt(0x6D) : text == c ? readSetup : text == n ? readBlock(2) : sendDelay;
    const auto [number, description] = failureOf([&] { call(session.logger); });
    EXPECT_EQ(number == 0 ? "" : std::to_string(number) + ' ' + description, expected)
        << testing::PrintToString(answer);
    const auto& image = session.logger.record.RawData;
    EXPECT_EQ(std::ranges::count(image, 2), text == n && number == 0 ? 4096 : 0) << "kept when it is right";
  }
}

TEST(Commands, TheSetupTextTellsTheMode) {
  for (const auto& [mode, digits] : {std::pair{2, "47"}, {1, "FF"}, {0, "FE"}}) {
    ScriptedSession session{{{"***C", setupAnswer("B90")}, {"***O006D", told(digits)}}};
    session.logger.fncReadSetup();
    EXPECT_EQ(session.logger.record.AcquisitionMode, mode);
    EXPECT_EQ(session.logger.record.Resets, 7);
    std::string text =
        setupAnswer("B90").substr(1, setupAnswer("B90").size() - 2) + "***O006D" + digits + '\r';
    for (std::size_t at = 0; (at = text.find('\r', at)) != std::string::npos; at += 2)
      text.insert(at + 1, 1, '\n');
    EXPECT_EQ(session.logger.record.SetupText, text);
  }
}

TEST(Commands, BlocksAndAddressesThatAreNot) {
  ScriptedSession session;
  Pendrel& logger = session.logger;
  const std::string source = " Class_Pendrel.";
  for (const auto& [size, block] : {std::pair{64, 16}, {64, -1}, {8, 2}, {3, 0}, {-1, 0}}) {
    logger.record.MemorySizeKB = static_cast<std::int16_t>(size);
    EXPECT_EQ(outcome([&, number = block] { logger.fncReadMemoryBlock(static_cast<std::int16_t>(number)); }),
              "10107" + source + "fncReadMemoryBlock: Invalid block number for download");
  }
  logger.record.MemorySizeKB = 64;
  logger.record.SerialNumber = "A";
  EXPECT_EQ(outcome([&] { logger.fncReadMemoryBlock(15); }),
            "10102" + source + "fncReadMemoryBlock: Unsupported device");
  for (const std::int32_t wrong : {-1, 65536}) {
    EXPECT_EQ(outcome([&] { logger.fncReadMemoryLocation(wrong); }),
              "10110" + source + "fncReadMemoryLocation: Invalid memory address");
    EXPECT_EQ(outcome([&] { logger.subSetMemorylocation(wrong, 0); }),
              "10110" + source + "subSetMemorylocation: Invalid memory address");
  }
  EXPECT_EQ(session.world->Written, "");
}

TEST(Commands, NonsenseFromTheWire) {
  constexpr std::string_view Letters = "\r\r\r>>0123456789ABCDEFG C\xFF\x80\n";
  const std::set<std::int32_t> expected = {0, 6, 13, 3001, 3002, 3003, 3005, 10108, 10113};
  const auto all = commands();
  std::mt19937 random{4096};
  const auto below = [&](std::size_t limit) { return random() % limit; };
  for (int round = 0; round < 1000; ++round) {
    const Command& command = all[below(all.size())];
    ScriptedSession session = sessionFor(command, below(5) == 0 ? "~" : "", [&](std::string& answer) {
      if (below(3) == 0) answer.resize(below(200));
      const std::size_t spared = below(3) == 0 ? 1 : 1 + answer.size() / 3;
      for (char& character : answer)
        if (below(spared) == 0) character = Letters[below(Letters.size())];
    });
    EXPECT_TRUE(expected.contains(numberOf([&] { command.Do(session.logger); })));
    EXPECT_LT(session.world->Now, 30000);
    EXPECT_LE(session.logger.record.BytesUsed, 65408);
  }
}

}  // namespace
}  // namespace hy_wristlog::pendrel_session
