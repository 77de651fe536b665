#include <gtest/gtest.h>

#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

std::string imageOf(SimulatedLogger& logger) {
  const auto image = logger.block().image();
  return {image.begin(), image.end()};
}

void fill(SimulatedLogger& logger, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    logger.memory().write(i, static_cast<std::uint8_t>(i * 7 + i / 256));
  logger.block().set(block::NextAddress, static_cast<std::int64_t>(count));
}

TEST(Sending, CutsTheRecordingIntoPackets) {
  const struct {
    std::size_t Bytes, Long, Short;
  } cases[] = {{0, 0, 0},
               {1, 0, 1},
               {128, 0, 1},
               {1023, 0, 8},
               {1024, 1, 0},
               {1025, 1, 1},
               {300 * 1024 + 200, 300, 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Bytes);
    Wire wire;
    fill(*wire.Lab.Logger, c.Bytes);
    std::vector<std::string> frames;
    const std::string data = wire.download("show data", &frames);
    const auto recorded = wire.Lab.Logger->recordedBytes();
    ASSERT_EQ(data.size(), c.Long * 1024 + c.Short * 128);
    EXPECT_EQ(data.substr(0, c.Bytes), std::string(recorded.begin(), recorded.end()));
    EXPECT_EQ(data.find_first_not_of('\x1A', c.Bytes), std::string::npos);
    EXPECT_EQ(wire.End, ">");
    for (std::size_t i = 0; i < frames.size(); ++i) {
      EXPECT_EQ(static_cast<std::uint8_t>(frames[i][1]), (i + 1) % 256);
      EXPECT_EQ(frames[i][0], i < c.Long ? '\x02' : '\x01');
    }
    EXPECT_EQ(wire.exchange("\r"), "\r>");
  }
}

TEST(Sending, ConfigComesInTwoPacketsWithItsChecksum) {
  Wire wire;
  std::vector<std::string> frames;
  EXPECT_EQ(wire.exchange("show config\r", 2000), "show config\r") << "silent before the C";
  const std::string first = wire.exchange("C");
  EXPECT_EQ(first, pcFrame(1, imageOf(*wire.Lab.Logger).substr(0, 128)));
  EXPECT_EQ(wire.exchange("\x15"), first);
  EXPECT_EQ(wire.exchange("C"), first) << "a C counts as NAK for the first packet";
  const std::string second = wire.exchange("\x06");
  EXPECT_EQ(second, pcFrame(2, imageOf(*wire.Lab.Logger).substr(128)));
  EXPECT_EQ(wire.exchange("C"), "");
  EXPECT_EQ(wire.exchange("\x06"), "\x04");
  EXPECT_EQ(wire.exchange("\x15"), "\x04");
  EXPECT_EQ(wire.exchange("\x06"), ">");
  const std::string image = imageOf(*wire.Lab.Logger);
  EXPECT_EQ(wireCrc(image.substr(2)),
            static_cast<std::uint8_t>(image[0]) + static_cast<std::uint8_t>(image[1]) * 256U);
}

TEST(Sending, EndsOnCancelCtrlCAndPatience) {
  const struct {
    const char* Name;
    std::string Typed;
    int Wait;
  } cases[] = {{"cancel", "\x18\x18\x18\x18", 10}, {"CTRL-C", "\x03", 10}, {"no C", "", 21000}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    Wire wire;
    wire.exchange("show config\r");
    EXPECT_EQ(wire.exchange(c.Typed, c.Wait), "");
    EXPECT_EQ(wire.exchange("\r"), "\r>");
  }
  Wire wire;
  wire.exchange("show config\r");
  EXPECT_EQ(wire.exchange("C\x18", 100).size(), 133U);
  EXPECT_EQ(wire.exchange("\x06").size(), 133U) << "one CAN is none";
}

TEST(Sending, Faults) {
  const auto first = [](std::function<void(TransferFaults&)> set) {
    Wire wire;
    set(wire.Lab.Logger->Faults.Transfer);
    wire.exchange("show config\r");
    return wire.exchange("C", 500);
  };
  const std::string damaged = first([](TransferFaults& f) { f.DamagePacket = once(); });
  ASSERT_EQ(damaged.size(), 133U);
  EXPECT_NE(damaged, pcFrame(1, damaged.substr(3, 128)));
  EXPECT_EQ(first([](TransferFaults& f) { f.LosePacket = once(); }), "");
  EXPECT_EQ(first([](TransferFaults& f) { f.CancelPacket = once(); }), "\x18\x18");
  EXPECT_EQ(first([](TransferFaults& f) { f.TruncatePacket = once(); }).size(), 66U);
  const std::string misnumbered = first([](TransferFaults& f) { f.MisnumberPacket = once(); });
  EXPECT_EQ(misnumbered, pcFrame(3, misnumbered.substr(3, 128)));

  Wire wire;
  wire.Lab.Logger->Faults.Transfer = {.DamagePacket = once(1), .DoublePacket = once(1)};
  std::vector<std::string> frames;
  const std::string data = wire.download("show config", &frames);
  const std::string image = imageOf(*wire.Lab.Logger);
  ASSERT_EQ(frames.size(), 4U);
  EXPECT_EQ(data, image + image.substr(128)) << "the doubled packet came twice, the damaged one again";
  wire.Lab.Logger->Faults.BadConfigChecksum = once();
  EXPECT_NE(wire.download("show config"), image);
  EXPECT_EQ(wire.download("show config"), image);
}

std::string upload(Wire& wire, const std::vector<std::string>& frames) {
  std::string answers = wire.exchange("config\r");
  for (const std::string& frame : frames) answers += wire.exchange(frame, 300);
  return answers;
}

std::string block192(char seed) {
  std::string block(256, '\0');
  for (std::size_t i = 0; i < 192; ++i) block[i] = static_cast<char>(seed + static_cast<char>(i % 50));
  return block;
}

TEST(Receiving, StoresTheBlockAndRenewsItsChecksum) {
  const std::string sent = block192('0');
  const std::string one = pcFrame(1, sent.substr(0, 128)), two = pcFrame(2, sent.substr(128));
  std::string bad = two;
  bad[50] ^= 1;
  std::string badComplement = one;
  badComplement[2] ^= 1;
  const struct {
    const char* Name;
    std::vector<std::string> Frames;
    std::string Answers;
    bool Stored;
  } cases[] = {{"as it should be", {one, two, "\x04"}, "\x06\x06\x06>", true},
               {"repeated", {one, one, two, two, "\x04"}, "\x06\x06\x06\x06\x06>", true},
               {"damaged", {badComplement, one, bad, two, "\x04"}, "\x15\x06\x15\x06\x06>", true},
               {"wrong number", {two, one, two, "\x04"}, "\x15\x06\x06\x06>", true},
               {"cut short", {one, "\x04"}, "\x06\x06>", false},
               {"cancelled", {one, "\x18\x18"}, "\x06", false},
               {"long packet", {pcFrame(1, sent + std::string(768, '\x1A')), "\x04"}, "\x06\x06>", true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    Wire wire;
    const std::string before = imageOf(*wire.Lab.Logger);
    EXPECT_EQ(upload(wire, c.Frames), "config\rC" + c.Answers);
    const std::string after = imageOf(*wire.Lab.Logger);
    EXPECT_EQ(after.substr(2, 62), before.substr(2, 24) + '\xFF' + before.substr(27, 37));
    EXPECT_EQ(after.substr(64), c.Stored ? sent.substr(0, 192) : before.substr(64));
    EXPECT_EQ(wireCrc(after.substr(2)),
              static_cast<std::uint8_t>(after[0]) + static_cast<std::uint8_t>(after[1]) * 256U);
    EXPECT_EQ(wire.exchange("\r"), "\r>");
  }
}

TEST(Receiving, InvitesEveryThreeSecondsAndGivesUp) {
  Wire wire;
  EXPECT_EQ(wire.exchange("config\r", 2990), "config\rC");
  EXPECT_EQ(wire.exchange("", 20), "C");
  EXPECT_EQ(wire.exchange("", 60000), "CCCCCCCC");
  EXPECT_EQ(wire.exchange("\r"), "\r>");
  wire.exchange("config\r");
  EXPECT_EQ(wire.exchange("\x01\x01", 1100), "\x15") << "half a frame is refused";
}

TEST(Receiving, Faults) {
  const std::string sent = block192('A');
  const std::string one = pcFrame(1, sent.substr(0, 128)), two = pcFrame(2, sent.substr(128));
  const struct {
    const char* Name;
    std::function<void(LoggerFaults&)> Set;
    std::vector<std::string> Frames;
    std::string Answers;
  } cases[] = {
      {"NAK",
       [](LoggerFaults& f) {
         f.Transfer.NakPacket = {1, 2};
       },
       {one, two, two, two, "\x04"},
       "C\x06\x15\x15\x06\x06>"},
      {"NAK of the end",
       [](LoggerFaults& f) { f.Transfer.NakEnd = once(); },
       {one, two, "\x04", "\x04"},
       "C\x06\x06\x15\x06>"},
      {"lost answer",
       [](LoggerFaults& f) { f.Transfer.LoseAnswer = once(); },
       {one, one, two, "\x04"},
       "C\x06\x06\x06>"},
      {"no invitation",
       [](LoggerFaults& f) { f.Transfer.LoseInvitation = once(); },
       {one, two, "\x04"},
       "\x06\x06\x06>"},
      {"cancel", [](LoggerFaults& f) { f.Transfer.CancelReceive = once(1); }, {one, two}, "C\x06\x18\x18"},
      {"stored wrong",
       [](LoggerFaults& f) { f.MisstoreConfig = once(); },
       {one, two, "\x04"},
       "C\x06\x06\x06>"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    Wire wire;
    c.Set(wire.Lab.Logger->Faults);
    EXPECT_EQ(upload(wire, c.Frames), "config\r" + c.Answers);
    const bool same = imageOf(*wire.Lab.Logger).substr(64) == sent.substr(0, 192);
    EXPECT_EQ(same, c.Name != std::string{"cancel"} && c.Name != std::string{"stored wrong"});
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
