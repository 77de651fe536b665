#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

TEST(Sending, CutsTheRecordingIntoPackets) {
  const std::tuple<std::size_t, std::size_t, std::size_t> cases[] = {
      {0, 0, 0}, {128, 0, 1}, {1023, 0, 8}, {1025, 1, 1}, {300 * 1024 + 200, 300, 2}};
  for (const auto& [bytes, longOnes, shortOnes] : cases) {
    Wire wire;
    for (std::size_t i = 0; i < bytes; ++i)
      wire.Lab.Logger->memory().write(i, static_cast<std::uint8_t>(i * 7 + i / 256));
    wire.Lab.Logger->block().set(block::NextAddress, static_cast<std::int64_t>(bytes));
    const std::string data = wire.download("show data");
    ASSERT_EQ(data.size(), longOnes * 1024 + shortOnes * 128);
    EXPECT_EQ(data.substr(0, bytes), textOf(wire.Lab.Logger->recordedBytes()));
    EXPECT_EQ(data.find_first_not_of('\x1A', bytes), std::string::npos);
    EXPECT_EQ(wire.End, ">");
    for (std::size_t i = 0; i < wire.Frames.size(); ++i) {
      EXPECT_EQ(static_cast<std::uint8_t>(wire.Frames[i][1]), (i + 1) % 256);
      EXPECT_EQ(wire.Frames[i][0], i < longOnes ? '\x02' : '\x01');
    }
  }
}

TEST(Sending, ConfigComesInTwoPackets) {
  Wire wire;
  EXPECT_EQ(wire.exchange("show config\r", 2000), "show config\r") << "silent before the C";
  const std::string image = imageOf(*wire.Lab.Logger);
  const std::string one = frameOf(1, image.substr(0, 128)), two = frameOf(2, image.substr(128));
  const std::pair<const char*, std::string> dialogue[] = {
      {"C", one}, {"\x15", one}, {"C", one},       {"\x18", ""},     {"\x06", two},
      {"C", ""},  {"\x15", two}, {"\x06", "\x04"}, {"\x15", "\x04"}, {"\x06", ">"}};
  for (const auto& [answer, expected] : dialogue) EXPECT_EQ(wire.exchange(answer), expected);
  for (const auto& [typed, patience] : {std::pair{"\x18\x18\x18\x18", 10}, {"\x03", 10}, {"", 21000}}) {
    wire.exchange("show config\r");
    EXPECT_EQ(wire.exchange(typed, patience), "");
    EXPECT_EQ(wire.exchange("\r"), "\r>");
  }
}

TEST(Sending, Faults) {
  Wire wire;
  wire.Lab.Logger->Faults.Transfer = {.DamagePacket = once(1), .DoublePacket = once(1)};
  const std::string image = imageOf(*wire.Lab.Logger), one = frameOf(1, image.substr(0, 128));
  EXPECT_EQ(wire.download("show config"), image + image.substr(128)) << "one came twice, one again";
  EXPECT_EQ(wire.Frames.size(), 4U);
  wire.Lab.Logger->Faults.BadConfigChecksum = once();
  EXPECT_NE(wire.download("show config"), image);
  EXPECT_EQ(wire.download("show config"), image);
  wire.Lab.Logger->Faults.Transfer = {
      .LosePacket = once(), .TruncatePacket = once(1), .MisnumberPacket = once(2), .CancelPacket = once(3)};
  wire.exchange("show config\r");
  for (const std::string& expected :
       {std::string{}, one.substr(0, 66), frameOf(3, image.substr(0, 128)), std::string{"\x18\x18"}})
    EXPECT_EQ(wire.exchange("C"), expected);
}

TEST(Receiving, StoresTheBlockAndRenewsItsChecksum) {
  std::string sent(256, '\0');
  for (std::size_t i = 0; i < 192; ++i) sent[i] = static_cast<char>('0' + i % 50);
  const std::string one = frameOf(1, sent.substr(0, 128)), two = frameOf(2, sent.substr(128)), end = "\x04";
  std::string badData = two, badComplement = one;
  badData[50] ^= 1, badComplement[2] ^= 1;
  const struct {
    TransferFaults Faults;
    std::vector<std::string> Frames;
    std::string Answers;
    bool Stored = true;
  } cases[] = {{{}, {one, two, end}, "C\x06\x06\x06>"},
               {{}, {one, one, two, two, end}, "C\x06\x06\x06\x06\x06>"},
               {{}, {badComplement, one, badData, two, end}, "C\x15\x06\x15\x06\x06>"},
               {{}, {"\x01\x01", one, two, end}, "C\x15\x06\x06\x06>"},
               {{}, {two, one, two, end}, "C\x15\x06\x06\x06>"},
               {{}, {one, end}, "C\x06\x06>", false},
               {{}, {one, "\x18\x18"}, "C\x06", false},
               {{}, {frameOf(1, sent + std::string(768, '\x1A')), end}, "C\x06\x06>"},
               {{.NakPacket = {1, 2}}, {one, two, two, two, end}, "C\x06\x15\x15\x06\x06>"},
               {{.NakEnd = once()}, {one, two, end, end}, "C\x06\x06\x15\x06>"},
               {{.LoseAnswer = once()}, {one, one, two, end}, "C\x06\x06\x06>"},
               {{.LoseInvitation = once()}, {one, two, end}, "\x06\x06\x06>"},
               {{.CancelReceive = once(1)}, {one, two}, "C\x06\x18\x18", false}};
  for (const auto& c : cases) {
    Wire wire;
    wire.Lab.Logger->Faults.Transfer = c.Faults;
    const std::string before = imageOf(*wire.Lab.Logger);
    std::string answers = wire.exchange("config\r");
    for (const std::string& frame : c.Frames) answers += wire.exchange(frame, 1100);
    EXPECT_EQ(answers, "config\r" + c.Answers);
    const std::string after = imageOf(*wire.Lab.Logger);
    EXPECT_EQ(after.substr(2, 62), before.substr(2, 24) + '\xFF' + before.substr(27, 37));
    EXPECT_EQ(after.substr(64) == sent.substr(0, 192), c.Stored);
    EXPECT_EQ(wireCrc(after.substr(2)),
              static_cast<std::uint8_t>(after[0]) + static_cast<std::uint8_t>(after[1]) * 256U);
    EXPECT_EQ(wire.exchange("\r"), "\r>");
  }
  Wire wire;
  EXPECT_EQ(wire.exchange("config\r", 2990), "config\rC");
  EXPECT_EQ(wire.exchange("", 20), "C");
  EXPECT_EQ(wire.exchange("", 60000), "CCCCCCCC");
  EXPECT_EQ(wire.exchange("\r"), "\r>");
}

}  // namespace
}  // namespace hy_wristlog::simulator
