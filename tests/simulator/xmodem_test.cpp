#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

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
               {{}, {badComplement, one, badData, two, end}, "C\x15\x06\x15\x06\x06>"},
               {{}, {one, "\x18\x18"}, "C\x06", false},
               {{}, {frameOf(1, sent + std::string(768, '\x1A')), end}, "C\x06\x06>"},
               {{.NakPacket = {1, 2}}, {one, two, two, two, end}, "C\x06\x15\x15\x06\x06>"},
               {{.LoseAnswer = once()}, {one, one, two, end}, "C\x06\x06\x06>"},
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
}

}  // namespace
}  // namespace hy_wristlog::simulator
