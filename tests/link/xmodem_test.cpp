#include <map>

#include "link/link_fixture.h"

namespace hy_wristlog {
namespace {

PacketArray packetsOf(std::size_t count, std::int32_t size = 1) {
  std::vector<Class_Packet> packets(count);
  for (std::size_t i = 0; i < count; ++i) {
    packets[i].PacketSize = size;
    packets[i].PacketNum = static_cast<std::uint8_t>(i + 1);
    packets[i].BinData.assign(size == 1 ? 128 : 1024, static_cast<std::uint8_t>(i));
  }
  return packets;
}

std::string frameOf(std::uint8_t number, std::int32_t size = 1) {
  Class_Packet packet = (*packetsOf(1, size))[0];
  packet.PacketNum = number;
  const auto frame = packet.Get_Packet();
  return {frame.begin(), frame.end()};
}

/// The control bytes and frame numbers that went out: "C", "A", "N", "X" (two cancels), "E", "#1", "#1-" when
/// the frame was cut.
std::string summary(std::string_view written) {
  std::string text;
  for (std::size_t used = 1; !written.empty(); written.remove_prefix(used), used = 1) {
    const std::size_t known = std::string_view{"\4\6\25C\3\30"}.find(written.front());
    text += known == std::string::npos ? '?' : "EANC3X"[known];
    if (written.starts_with("\x18\x18")) used = 2;
    if (!written.starts_with('\x01') || written.size() < 2) continue;
    used = std::min<std::size_t>(written.size(), 133);
    text.back() = '#';
    text += std::to_string(static_cast<std::uint8_t>(written[1])) + (used < 133 ? "-" : "");
  }
  return text;
}

/// What went out, what was told, and "!" with the number of the failure, whose text and source are checked.
std::string outcome(OpenLink& o, const Failure& failure) {
  static const std::map<std::int32_t, std::string> texts = {
      {3004, "Invalid COM Port Settings"},
      {3007, "Invalid packet array input"},
      {3008, "Failure to receive initiation character"},
      {3009, "Packet took too long to transmit"},
      {3010, "Failure to receive packet acknowledgement"},
      {3011, "Maximum number of packet transmission retries exceeded"},
      {3012, "Failure to receive acknowledgement of end of transmission"},
      {3013, "No packet received, retries exceeded"}};
  std::string text = summary(o.world->Written);
  if (!o.told.Events.empty()) text += ' ' + o.told.Events;
  EXPECT_FALSE(o.link->Get_DoingXMODEM());
  if (failure.Number == 0) return text;
  if (failure.Number < 4000) {
    EXPECT_EQ(failure.Description, texts.at(failure.Number));
    EXPECT_NE(failure.Source.find("XmodemPackets@"), std::string::npos) << failure.Source;
  }
  return text + " !" + std::to_string(failure.Number);
}

/// A logger that takes packets. One letter a sending: A, N, C, x for ACK, NAK, "C" and another byte, "." for
/// silence, "5" for "C" and an ACK after it.
struct Receiver {
  Receiver(scripted::World& far, std::string script, std::size_t length = 133)
      : world(far), answers(std::move(script)), frameLength(length) {
    world.OnWrite = [this](std::string_view bytes) {
      for (const char c : bytes) take(c);
    };
  }
  void take(char c) {
    const bool inside = inFrame > 0 || c == 1 || c == 2;
    if (inside) inFrame = (inFrame + 1) % frameLength;
    if (inFrame > 0 || (!inside && c != 4) || answers.empty()) return;
    static const std::map<char, std::string> bytes = {{'A', "\x06"}, {'N', "\x15"},  {'C', "C"},
                                                      {'x', "x"},    {'5', "C\x06"}, {'.', ""}};
    world.deliver(bytes.at(answers.front()), 10);
    answers.erase(0, 1);
  }
  scripted::World& world;
  std::string answers;
  std::size_t frameLength, inFrame = 0;
};

TEST(XmodemSend, FollowsTheAnswers) {
  const std::tuple<std::size_t, const char*, const char*> cases[] = {
      {2, "AAA", "#1#2E s1/2 s2/2"},
      {1, "NNAA", "#1#1#1E l2/3:0 l3/3:0 s1/1"},
      {1, "CNAA", "#1#1#1E l2/3:0 l3/3:0 s1/1"},
      {1, "CCC", "#1#1#1XX l2/3:0 l3/3:0 !3011"},
      {2, "ANNN", "#1#2#2#2XX s1/2 l2/3:1 l3/3:1 !3011"},
      {2, "NNANNAA", "#1#1#1#2#2#2E l2/3:0 l3/3:0 s1/2 l2/3:1 l3/3:1 s2/2"},
      {2, "AC", "#1#2XX s1/2 !3010"},
      {2, "A5A", "#1#2E s1/2 s2/2"},
      {1, ".", "#1XX !3010"},
      {1, "x", "#1XX !3010"},
      {1, "ANA", "#1EE s1/1 l2/3:-1"},
      {1, "ANNN", "#1EEEXX s1/1 l2/3:-1 l3/3:-1 !3011"},
      {1, "AC", "#1EXX s1/1 !3012"},
      {1, "A.", "#1EXX s1/1 !3012"}};
  for (const bool byteByByte : {false, true})
    for (const auto& [packets, answers, expected] : cases) {
      OpenLink o;
      Receiver far{*o.world, answers};
      o.world->deliver("junk C", 400);
      o.world->after(410, [&] { EXPECT_TRUE(o.link->Get_DoingXMODEM()); });
      const Failure failure = caught([&, count = packets] {
        o.link->subSendXmodemPackets(packetsOf(count), 13, 8, 3, 3, 1000, byteByByte, 0);
      });
      EXPECT_EQ(outcome(o, failure), expected);
      o.world->Incoming = "ab\r";
      EXPECT_EQ(o.link->fncGetCharLine('\r', 50), "ab") << "one character a read again";
    }
}

TEST(XmodemSend, TellsItsStagesAndTakesItsTime) {
  OpenLink o;
  Receiver far{*o.world, "AA"};
  o.world->deliver("C");
  o.link->subSendXmodemPackets(packetsOf(1), 6, 0, 0, 0, -1, true, -1);
  EXPECT_EQ(o.told.Progress,
            "Starting Packet Send Routine\nCOM settings changed to: 4800,n,8,2\n"
            "Waiting for starting 'C'...\nGot Starting 'C'\n"
            "Sending Packet 1 out one byte at a time...waiting for response\nACK received\n"
            "Packets sent, sending EOT\nEOT sent...waiting for response\nACK received\n"
            "End Packet Send Routine\n");
  EXPECT_EQ(o.world->journal(), "4800 n8 2; 57600 n8 2");
  // 50 for the C, 500 before the packet, 133 bytes with 1 ms before each, two answers of two polls.
  EXPECT_NEAR(static_cast<double>(o.world->Now), 50 + 500 + 133 + 200, 3);
}

TEST(XmodemSend, FailsBeforeOrWithoutAReceiver) {
  const std::tuple<PacketArray, std::int32_t, std::size_t, const char*, const char*> cases[] = {
      {packetsOf(1), 17, 0, "C", " !3004"},   {std::nullopt, 13, 0, "C", " !3007"},
      {packetsOf(0), 13, 0, "C", " !3007"},   {packetsOf(256), 13, 0, "C", " !3007"},
      {packetsOf(1), 13, 0, "", "XX !3008"},  {packetsOf(1), 13, 0, "\x15", "XX !3008"},
      {packetsOf(1), 13, 5, "C", "#1 !3009"}, {packetsOf(1, 3), 13, 0, "C", " !11301"}};
  for (const auto& [packets, baud, stuck, start, expected] : cases) {
    OpenLink o;
    o.world->Outstanding = stuck;
    o.world->deliver(start);
    const Failure failure = caught(
        [&, all = packets, at = baud] { o.link->subSendXmodemPackets(all, at, 0, 0, 0, 1000, false, 0); });
    EXPECT_EQ(outcome(o, failure), expected);
  }
}

TEST(XmodemSend, SendsTwoHundredFiftyFivePackets) {
  OpenLink o;
  Receiver far{*o.world, std::string(256, 'A'), 1029};
  o.world->deliver("C");
  o.link->subSendXmodemPackets(packetsOf(255, 2), 13, 8, 3, 3, 1000, false, 0);
  EXPECT_EQ(o.world->Written.size(), 255U * 1029 + 1);
  EXPECT_TRUE(o.told.Events.ends_with("s254/255 s255/255"));
}

TEST(XmodemSend, AbortsInEveryState) {
  const std::tuple<std::int64_t, bool, const char*, const char*, const char*> cases[] = {
      {300, false, "C", "AA", "XX aborted"},
      {600, true, "C", "AA", "#1- aborted"},
      {700, false, "C", ".", "#1XX aborted"},
      {900, false, "C", "A.", "#1EXX s1/1 aborted"}};
  for (const auto& [at, byteByByte, start, answers, expected] : cases) {
    OpenLink o;
    Receiver far{*o.world, answers};
    o.world->deliver(start);
    o.world->after(at, [&] { o.link->subAbortProcess(); });
    o.world->deliver("late", at + 500);
    o.link->subSendXmodemPackets(packetsOf(1), 13, 8, 3, 3, 3000, byteByByte, 1);
    EXPECT_EQ(outcome(o, {0, "", ""}), expected);
    EXPECT_TRUE(o.world->Written.ends_with("\x18\x18\x18\x18")) << expected;
    EXPECT_NEAR(static_cast<double>(o.world->Now), static_cast<double>(at) + 1600, 100)
        << expected << ": a second beyond the last byte";
  }
}

/// A logger that sends a packet whenever something was written to it.
struct Sender {
  Sender(scripted::World& far, std::vector<std::string> script) : world(far), frames(std::move(script)) {
    world.OnWrite = [this](std::string_view written) {
      if (written.front() == 24 || next == frames.size()) return;
      world.deliver(frames[next++], 20);
    };
  }
  scripted::World& world;
  std::vector<std::string> frames;
  std::size_t next = 0;
};

/// Digits are packets of that number, "L" a long one with number 1, "b" number 1 with a bad byte, "+" and "-"
/// number 1 too long and cut, "x" another byte, "." silence, "E" the end.
std::vector<std::string> script(std::string_view letters) {
  const std::string one = frameOf(1);
  std::string bad = one;
  bad[50] = '!';
  const std::map<char, std::string> known = {
      {'L', frameOf(1, 2)}, {'b', bad}, {'+', one + "x"}, {'-', one.substr(0, 60)},
      {'x', "x"},           {'.', ""},  {'E', "\x04"}};
  std::vector<std::string> frames;
  for (const char c : letters)
    frames.push_back(c >= '0' && c <= '9' ? frameOf(static_cast<std::uint8_t>(c - '0')) : known.at(c));
  return frames;
}

TEST(XmodemReceive, FollowsTheFrames) {
  const std::tuple<const char*, std::size_t, const char*> cases[] = {
      {"12E", 2, "CAAA r1:128 r2:256"},
      {"L2E", 2, "CAAA r1:1024 r2:1152"},
      {"E", 0, "CA"},
      {"....1E", 1, "CCCCCAA l1/4:-1 l2/4:-1 l3/4:-1 l4/4:-1 r1:128"},
      {"", 0, "CCCCCXX l1/4:-1 l2/4:-1 l3/4:-1 l4/4:-1 !3013"},
      {"bbb1E", 1, "CNNNAA l1/3:1 l2/3:1 l3/3:1 r1:128"},
      {"bbbb", 0, "CNNNXX l1/3:1 l2/3:1 l3/3:1 !3011"},
      {"1.x2E", 2, "CANNAA r1:128 l2/3:2 l3/3:2 r2:256"},
      {"1...", 0, "CANNXX r1:128 l2/3:2 l3/3:2 !3011"},
      {"+-1E", 1, "CNNAA l1/3:1 l2/3:1 r1:128"},
      {"11112E", 5, "CAAAAAA r1:128 l2/3:0 r1:256 l3/3:0 r1:384 l4/3:0 r1:512 r2:640"},
      {"11111", 0, "CAAAAXX r1:128 l2/3:0 r1:256 l3/3:0 r1:384 l4/3:0 r1:512 !3011"},
      {"11x1E", 3, "CAANAA r1:128 l2/3:0 r1:256 l2/3:2 l2/3:0 r1:384"},
      {"92E", 2, "CAAA r1:0 r2:128"},
      {"01E", 2, "CAAA l1/3:-1 r0:128 r1:256"}};
  for (const auto& [frames, count, expected] : cases) {
    OpenLink o;
    Sender far{*o.world, script(frames)};
    PacketArray packets;
    const Failure failure = caught([&] { packets = o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000); });
    EXPECT_EQ(outcome(o, failure), expected) << frames;
    EXPECT_EQ(packets ? packets->size() : 0, count) << frames;
    const auto told = static_cast<std::size_t>(std::ranges::count(std::string_view(expected), 'r'));
    EXPECT_EQ(o.link->takeReceivedPackets().size(), failure.Number != 0 ? told : 0) << frames;
    EXPECT_TRUE(o.link->takeReceivedPackets().empty());
  }
}

TEST(XmodemReceive, CountsOnFromZeroBehindPacket255) {
  for (const bool repeat255 : {false, true}) {
    OpenLink o;
    std::vector<std::string> frames;
    for (int i = 1; i <= 1024; ++i) frames.push_back(frameOf(static_cast<std::uint8_t>(i), 2));
    frames.push_back("\x04");
    if (repeat255) frames[255] = frames[254];
    Sender far{*o.world, frames};
    PacketArray packets;
    EXPECT_EQ(numberOf([&] { packets = o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 3000); }),
              repeat255 ? 6 : 0);
    EXPECT_EQ(packets ? packets->size() : 0, repeat255 ? 0U : 1024U);
    EXPECT_EQ(o.link->takeReceivedPackets().size(), repeat255 ? 255U : 0U);
    EXPECT_TRUE(o.told.Events.ends_with(repeat255 ? "r255:261120" : "r255:1047552 r0:1048576"));
    EXPECT_LT(o.world->Now, 1024 * 60 + 1000) << "one poll a packet";
  }
}

TEST(XmodemReceive, AbortsInEveryState) {
  const std::tuple<const char*, std::int64_t, std::string> cases[] = {
      {"", 1500, "CCXX"}, {"-", 500, "CXX"}, {"1234567", 120, "CAXX"}};
  for (const auto& [frames, at, written] : cases) {
    OpenLink o;
    Sender far{*o.world, script(frames)};
    o.world->after(at, [&] { o.link->subAbortProcess(); });
    EXPECT_FALSE(o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000)) << frames;
    const std::string result = outcome(o, {0, "", ""});
    EXPECT_TRUE(result.starts_with(written + ' ') && result.ends_with(" aborted")) << result;
    EXPECT_EQ(!o.link->takeReceivedPackets().empty(), written.find('A') != std::string::npos);
    EXPECT_EQ(o.world->Incoming, "");
  }
  OpenLink o;
  o.link->subAbortProcess();
  EXPECT_EQ(o.world->Written, "\x03") << "outside a transfer CTRL-C goes out at once";
  Sender far{*o.world, script("1E")};
  EXPECT_TRUE(o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000)) << "and nothing is remembered";
}

TEST(XmodemReceive, LostDataSpoilsThePacketBeingCollected) {
  OpenLink o;
  Sender far{*o.world, script("-1E")};
  o.world->deliver(frameOf(1).substr(60), 200);
  o.world->after(120, [&] { o.world->Errors.Overrun = 1; });
  EXPECT_TRUE(o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000));
  EXPECT_EQ(o.told.Events, "event 1006 Data Lost Error l1/3:1 r1:128");
  EXPECT_EQ(o.link->Get_LastCOMerrorNum(), 2);
}

TEST(XmodemReceive, PutsTheLineBackAndRepeatsPortStateFailures) {
  for (const int failures : {0, 10, 11}) {
    OpenLink o;
    Sender far{*o.world, script("1E")};
    o.failIn("write", failures);
    const Failure failure = caught([&] { o.link->fncReceiveXmodemPackets(6, 0, 0, 0, 1000); });
    EXPECT_EQ(failure.Number, failures == 11 ? 8015 : 0);
    EXPECT_FALSE(o.link->Get_DoingXMODEM());
    EXPECT_EQ(o.world->Journal.front().second, "4800 n8 2");
    EXPECT_EQ(o.world->Journal.back().second, failures == 11 ? "dtr on" : "57600 n8 2");
  }
}

TEST(XmodemConsole, ShowsBytesInHexadecimal) {
  OpenLink o{true, true};
  Sender far{*o.world, script("1E")};
  const PacketArray packets = o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000);
  const std::string passed = Form_Comm::fncGetFriendlyPacketText(packets) + "[06]\r\n[04][06]\r\n";
  EXPECT_TRUE(o.link->consoleText().starts_with("[43][0101FE00"));
  EXPECT_NE(o.link->consoleText().find(passed), std::string::npos);
  o.link->cmdClear();
  Receiver receiver{*o.world, "AA"};
  o.world->deliver("C!");
  o.link->subSendXmodemPackets(packets, 13, 8, 3, 3, 1000, false, 0);
  EXPECT_EQ(o.link->consoleText(), "[43]!" + passed);
}

}  // namespace
}  // namespace hy_wristlog
