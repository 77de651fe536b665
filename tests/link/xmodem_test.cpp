#include <numeric>

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

/// The control bytes and frame numbers that went out: "C", "A", "N", "X" (two cancels), "E", "#1".
std::string summary(std::string_view written) {
  std::string text;
  while (!written.empty()) {
    std::size_t used = 1;
    if ((written[0] == 1 || written[0] == 2) && written.size() >= 2) {
      used = std::min<std::size_t>(written.size(), written[0] == 1 ? 133 : 1029);
      text += '#' + std::to_string(static_cast<std::uint8_t>(written[1])) + (used < 133 ? "-" : "");
    } else if (written[0] == 24 && written.size() >= 2 && written[1] == 24) {
      used = 2;
      text += 'X';
    } else {
      const auto known = std::string_view(
          "\x04"
          "E"
          "\x06"
          "A"
          "\x15"
          "N"
          "C"
          "C"
          "\x03"
          "3",
          10);
      const std::size_t at = known.find(written[0]);
      text += at == std::string_view::npos ? '?' : known[at + 1];
    }
    written.remove_prefix(used);
  }
  return text;
}

/// One letter a sending: A, N, C, X for ACK, NAK, "C" and another byte, "." for silence, "5" for "C" and an
/// ACK behind it.
struct AnsweringReceiver {
  AnsweringReceiver(scripted::World& far, std::string script, std::size_t frameLength)
      : world(far), answers(std::move(script)) {
    world.OnWrite = [this, frameLength](std::string_view bytes) {
      for (const char c : bytes) take(c, frameLength);
    };
  }
  void take(char c, std::size_t frameLength) {
    if (inFrame == 0 && c == 4) return answer();
    if (inFrame == 0 && c != 1 && c != 2) return;
    if (++inFrame < frameLength) return;
    inFrame = 0;
    answer();
  }
  void answer() {
    const char next = answers.empty() ? '.' : answers.front();
    if (!answers.empty()) answers.erase(0, 1);
    if (next == 'A') world.deliver("\x06", 10);
    if (next == 'N') world.deliver("\x15", 10);
    if (next == 'C') world.deliver("C", 10);
    if (next == 'X') world.deliver("x", 10);
    if (next == '5') world.deliver("C\x06", 10);
  }
  scripted::World& world;
  std::string answers;
  std::size_t inFrame = 0;
};

constexpr const char* NoAnswer = "3010 Failure to receive packet acknowledgement";
constexpr const char* NoEnd = "3012 Failure to receive acknowledgement of end of transmission";
constexpr const char* TooMany = "3011 Maximum number of packet transmission retries exceeded";

std::string textOfFailure(const Failure& failure) {
  return failure.Number == 0 ? "" : std::to_string(failure.Number) + ' ' + failure.Description;
}

TEST(XmodemSend, FollowsTheAnswers) {
  const struct {
    std::size_t Packets;
    const char* Answers;
    const char* Written;
    const char* Told;
    const char* Failure;
  } cases[] = {
      {2, "AAA", "#1#2E", "sent 1/2; sent 2/2", ""},
      {1, "NNAA", "#1#1#1E", "lost 2/3 0; lost 3/3 0; sent 1/1", ""},
      {1, "CNAA", "#1#1#1E", "lost 2/3 0; lost 3/3 0; sent 1/1", ""},
      {1, "CCC", "#1#1#1XX", "lost 2/3 0; lost 3/3 0", TooMany},
      {2, "ANNN", "#1#2#2#2XX", "sent 1/2; lost 2/3 1; lost 3/3 1", TooMany},
      {2, "NNANNAA", "#1#1#1#2#2#2E", "lost 2/3 0; lost 3/3 0; sent 1/2; lost 2/3 1; lost 3/3 1; sent 2/2",
       ""},
      {2, "AC", "#1#2XX", "sent 1/2", NoAnswer},
      {2, "A5A", "#1#2E", "sent 1/2; sent 2/2", ""},
      {1, ".", "#1XX", "", NoAnswer},
      {1, "X", "#1XX", "", NoAnswer},
      {1, "ANA", "#1EE", "sent 1/1; lost 2/3 -1", ""},
      {1, "ANNN", "#1EEEXX", "sent 1/1; lost 2/3 -1; lost 3/3 -1", TooMany},
      {1, "AC", "#1EXX", "sent 1/1", NoEnd},
      {1, "A.", "#1EXX", "sent 1/1", NoEnd},
  };
  for (const bool byteByByte : {false, true})
    for (const auto& c : cases) {
      OpenLink o;
      AnsweringReceiver far{*o.world, c.Answers, 133};
      o.world->deliver("junk C", 400);
      o.world->after(410, [&] { EXPECT_TRUE(o.link->Get_DoingXMODEM()); });
      const Failure failure = failureOf(
          [&] { o.link->subSendXmodemPackets(packetsOf(c.Packets), 13, 8, 3, 3, 1000, byteByByte, 0); });
      EXPECT_EQ(textOfFailure(failure), c.Failure) << c.Answers;
      EXPECT_EQ(summary(o.world->Written), c.Written) << c.Answers;
      EXPECT_EQ(o.told.Events, c.Told) << c.Answers;
      EXPECT_FALSE(o.link->Get_DoingXMODEM());
      if (failure.Number != 0) {
        EXPECT_NE(failure.Source.find(":Form_Comm.subSendXmodemPackets@"), std::string::npos);
      }
      o.world->Incoming.clear();
      o.world->deliver("ab\r");
      EXPECT_EQ(o.link->fncGetCharLine('\r', 50), "ab") << "one character a read again";
    }
}

TEST(XmodemSend, TellsItsStagesAndTakesItsTime) {
  OpenLink o;
  AnsweringReceiver far{*o.world, "AA", 133};
  o.world->deliver("C");
  o.link->subSendXmodemPackets(packetsOf(1), 6, 0, 0, 0, -1, true, -1);
  EXPECT_EQ(o.told.Progress,
            (std::vector<std::string>{"Starting Packet Send Routine", "COM settings changed to: 4800,n,8,2",
                                      "Waiting for starting 'C'...", "Got Starting 'C'",
                                      "Sending Packet 1 out one byte at a time...waiting for response",
                                      "ACK received", "Packets sent, sending EOT",
                                      "EOT sent...waiting for response", "ACK received",
                                      "End Packet Send Routine"}));
  EXPECT_EQ(o.world->journal(), "4800 n8 2; 57600 n8 2");
  // 50 for the C, 500 before the packet, 133 bytes with 1 in front of each, two answers of two polls.
  EXPECT_NEAR(static_cast<double>(o.world->Now), 50 + 500 + 133 + 200, 3);
}

TEST(XmodemSend, FailsBeforeOrWithoutAReceiver) {
  const struct {
    PacketArray Packets;
    std::int32_t Baud;
    std::size_t Stuck;
    const char* Start;
    const char* Failure;
    const char* Written;
  } cases[] = {
      {packetsOf(1), 17, 0, "C", "3004 Invalid COM Port Settings", ""},
      {std::nullopt, 13, 0, "C", "3007 Invalid packet array input", ""},
      {packetsOf(0), 13, 0, "C", "3007 Invalid packet array input", ""},
      {packetsOf(256), 13, 0, "C", "3007 Invalid packet array input", ""},
      {packetsOf(1), 13, 0, "", "3008 Failure to receive initiation character", "XX"},
      {packetsOf(1), 13, 0, "\x15", "3008 Failure to receive initiation character", "XX"},
      {packetsOf(1), 13, 5, "C", "3009 Packet took too long to transmit", "#1"},
      {packetsOf(1, 3), 13, 0, "C", "11301 Invalid packet type", ""},
  };
  for (const auto& c : cases) {
    OpenLink o;
    o.world->Outstanding = c.Stuck;
    o.world->deliver(c.Start);
    const Failure failure =
        failureOf([&] { o.link->subSendXmodemPackets(c.Packets, c.Baud, 0, 0, 0, 1000, false, 0); });
    EXPECT_EQ(textOfFailure(failure), c.Failure);
    EXPECT_EQ(summary(o.world->Written), c.Written) << c.Failure;
    EXPECT_FALSE(o.link->Get_DoingXMODEM());
    if (failure.Number == 3004) {
      EXPECT_TRUE(failure.Source.starts_with("3004:Form_Comm.subSendXmodemPackets@")) << failure.Source;
    }
  }
}

TEST(XmodemSend, SendsTwoHundredFiftyFivePackets) {
  OpenLink o;
  AnsweringReceiver far{*o.world, std::string(256, 'A'), 1029};
  o.world->deliver("C");
  o.link->subSendXmodemPackets(packetsOf(255, 2), 13, 8, 3, 3, 1000, false, 0);
  EXPECT_EQ(o.world->Written.size(), 255U * 1029 + 1);
  EXPECT_TRUE(o.told.Events.ends_with("sent 254/255; sent 255/255"));
}

TEST(XmodemSend, AbortsInEveryState) {
  const struct {
    const char* State;
    std::int64_t At;
    bool ByteByByte;
    const char* Start;
    const char* Answers;
    const char* Written;
  } cases[] = {
      {"waiting for C", 200, false, "", "", "XX"},
      {"pause before a packet", 300, false, "C", "AA", "XX"},
      {"between bytes", 600, true, "C", "AA", "#1-"},
      {"waiting for the answer", 700, false, "C", ".", "#1XX"},
      {"waiting for the answer to EOT", 900, false, "C", "A.", "#1EXX"},
  };
  for (const auto& c : cases) {
    OpenLink o;
    AnsweringReceiver far{*o.world, c.Answers, 133};
    o.world->deliver(c.Start);
    o.world->after(c.At, [&] { o.link->subAbortProcess(); });
    o.world->deliver("late", c.At + 500);
    o.link->subSendXmodemPackets(packetsOf(1), 13, 8, 3, 3, 3000, c.ByteByByte, 1);
    EXPECT_EQ(summary(o.world->Written), c.Written) << c.State;
    EXPECT_TRUE(o.world->Written.ends_with("\x18\x18\x18\x18")) << c.State;
    EXPECT_TRUE(o.told.Events.ends_with("aborted")) << c.State;
    EXPECT_FALSE(o.link->Get_DoingXMODEM());
    EXPECT_NEAR(static_cast<double>(o.world->Now), static_cast<double>(c.At) + 1600, 100)
        << c.State << ": a second beyond the last byte";
  }
}

/// Sends `frames` one after another, each when something was written to it; an empty one is silence.
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

const std::string Eot = "\x04";

std::string spoilt(std::string frame, std::size_t at = 50) {
  frame[at] = static_cast<char>(frame[at] + 1);
  return frame;
}

TEST(XmodemReceive, FollowsTheFrames) {
  const std::string one = frameOf(1), two = frameOf(2), big = frameOf(1, 2), bad = spoilt(one);
  const struct {
    const char* Name;
    std::vector<std::string> Frames;
    std::size_t Packets;
    const char* Written;
    const char* Told;
    const char* Failure;
  } cases[] = {
      {"two packets", {one, two, Eot}, 2, "CAAA", "received 1 128; received 2 256", ""},
      {"both sizes", {big, two, Eot}, 2, "CAAA", "received 1 1024; received 2 1152", ""},
      {"EOT at once", {Eot}, 0, "CA", "", ""},
      {"a late start",
       {"", "", "", "", one, Eot},
       1,
       "CCCCCAA",
       "lost 1/4 -1; lost 2/4 -1; lost 3/4 -1; lost 4/4 -1; received 1 128",
       ""},
      {"silence",
       {},
       0,
       "CCCCCXX",
       "lost 1/4 -1; lost 2/4 -1; lost 3/4 -1; lost 4/4 -1",
       "3013 No packet received, retries exceeded"},
      {"first bad three times",
       {bad, bad, bad, one, Eot},
       1,
       "CNNNAA",
       "lost 1/3 1; lost 2/3 1; lost 3/3 1; received 1 128",
       ""},
      {"first bad four times",
       {bad, bad, bad, bad},
       0,
       "CNNNXX",
       "lost 1/3 1; lost 2/3 1; lost 3/3 1",
       TooMany},
      {"second bad twice",
       {one, "", "x", two, Eot},
       2,
       "CANNAA",
       "received 1 128; lost 2/3 2; lost 3/3 2; received 2 256",
       ""},
      {"second bad three times",
       {one, "", "", ""},
       0,
       "CANNXX",
       "received 1 128; lost 2/3 2; lost 3/3 2",
       TooMany},
      {"too long and too short",
       {one + "x", one.substr(0, 100), one, Eot},
       1,
       "CNNAA",
       "lost 1/3 1; lost 2/3 1; received 1 128",
       ""},
      {"duplicates count as data",
       {one, one, two, Eot},
       3,
       "CAAAA",
       "received 1 128; lost 2/3 0; received 1 256; received 2 384",
       ""},
      {"three duplicates",
       {one, one, one, one, two, Eot},
       5,
       "CAAAAAA",
       "received 1 128; lost 2/3 0; received 1 256; lost 3/3 0; received 1 384; lost 4/3 0; received 1 512; "
       "received 2 640",
       ""},
      {"four duplicates",
       {one, one, one, one, one},
       0,
       "CAAAAXX",
       "received 1 128; lost 2/3 0; received 1 256; lost 3/3 0; received 1 384; lost 4/3 0; received 1 512",
       TooMany},
      {"a NAK forgets duplicates",
       {one, one, one, one, "x", one, Eot},
       5,
       "CAAAANAA",
       "received 1 128; lost 2/3 0; received 1 256; lost 3/3 0; received 1 384; lost 4/3 0; received 1 512; "
       "lost 2/3 2; lost 2/3 0; received 1 640",
       ""},
      {"another number is taken uncounted",
       {frameOf(9), two, Eot},
       2,
       "CAAA",
       "received 1 0; received 2 128",
       ""},
      {"number 0 first is a duplicate of nothing",
       {frameOf(0), one, Eot},
       2,
       "CAAA",
       "lost 1/3 -1; received 0 128; received 1 256",
       ""},
  };
  for (const auto& c : cases) {
    OpenLink o;
    Sender far{*o.world, c.Frames};
    PacketArray packets;
    const Failure failure = failureOf([&] { packets = o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000); });
    EXPECT_EQ(textOfFailure(failure), c.Failure) << c.Name;
    EXPECT_EQ(o.told.Events, c.Told) << c.Name;
    EXPECT_EQ(summary(o.world->Written), c.Written) << c.Name;
    EXPECT_EQ(packets ? packets->size() : 0, c.Packets) << c.Name;
    EXPECT_FALSE(o.link->Get_DoingXMODEM());
  }
}

TEST(XmodemReceive, CountsOnFromZeroBehindPacket255) {
  for (const bool repeat255 : {false, true}) {
    OpenLink o;
    std::vector<std::string> frames;
    for (int i = 1; i <= 257; ++i) frames.push_back(frameOf(static_cast<std::uint8_t>(i)));
    frames.push_back(Eot);
    if (repeat255) frames[255] = frameOf(255);
    Sender far{*o.world, frames};
    PacketArray packets;
    const Failure failure = failureOf([&] { packets = o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000); });
    EXPECT_EQ(failure.Number, repeat255 ? 6 : 0);
    if (repeat255) {
      EXPECT_TRUE(failure.Source.starts_with("6:Form_Comm.fncReceiveXmodemPackets@"));
      EXPECT_FALSE(o.link->Get_DoingXMODEM());
    } else {
      ASSERT_TRUE(packets);
      EXPECT_EQ(packets->size(), 257U);
      EXPECT_TRUE(o.told.Events.ends_with("received 255 32640; received 0 32768; received 1 32896"));
    }
  }
}

TEST(XmodemReceive, AbortsInEveryState) {
  const std::string one = frameOf(1);
  const struct {
    const char* State;
    std::vector<std::string> Frames;
    std::int64_t At;
    const char* Written;
  } cases[] = {
      {"inviting", {}, 1500, "CCXX"},
      {"waiting for a packet", {one}, 500, "CAXX"},
      {"collecting a packet", {one.substr(0, 60)}, 500, "CXX"},
      {"waiting for silence", {spoilt(one)}, 500, "CNXX"},
      {"packets come without end", std::vector<std::string>(1000, one), 120, "CAXX"},
  };
  for (const auto& c : cases) {
    OpenLink o;
    Sender far{*o.world, c.Frames};
    o.world->after(c.At, [&] { o.link->subAbortProcess(); });
    EXPECT_FALSE(o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000)) << c.State;
    EXPECT_EQ(summary(o.world->Written), c.Written) << c.State;
    EXPECT_TRUE(o.told.Events.ends_with("aborted")) << c.State << ' ' << o.told.Events;
    EXPECT_FALSE(o.link->Get_DoingXMODEM());
    EXPECT_EQ(o.world->Incoming, "");
  }
  OpenLink o;
  o.link->subAbortProcess();
  EXPECT_EQ(o.world->Written, "\x03") << "outside a transfer CTRL-C goes out at once";
  Sender far{*o.world, {one, Eot}};
  EXPECT_TRUE(o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000)) << "and nothing is remembered";
}

TEST(XmodemReceive, LostDataSpoilsThePacketBeingCollected) {
  OpenLink o;
  const std::string one = frameOf(1);
  Sender far{*o.world, {one.substr(0, 60), one, Eot}};
  o.world->deliver(one.substr(60), 200);
  o.world->after(120, [&] { o.world->Errors.Overrun = 1; });
  const PacketArray packets = o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000);
  ASSERT_TRUE(packets);
  EXPECT_EQ(o.told.Events, "event 1006 Data Lost Error; lost 1/3 1; received 1 128");
  EXPECT_EQ(o.link->Get_LastCOMerrorNum(), 2);
}

TEST(XmodemReceive, PutsTheLineBackAndRepeatsPortStateFailures) {
  for (const int failures : {0, 10, 11}) {
    OpenLink o;
    Sender far{*o.world, {frameOf(1), Eot}};
    int left = failures;
    o.world->Before = [&](const std::string& operation) {
      if (operation == "write" && left-- > 0) throw Failure(8015, "MSComm", "broken");
    };
    const Failure failure = failureOf([&] { o.link->fncReceiveXmodemPackets(6, 0, 0, 0, 1000); });
    EXPECT_EQ(failure.Number, failures == 11 ? 8015 : 0);
    EXPECT_FALSE(o.link->Get_DoingXMODEM());
    EXPECT_EQ(o.world->Journal.front().second, "4800 n8 2");
    EXPECT_EQ(o.world->Journal.back().second, failures == 11 ? "dtr on" : "57600 n8 2");
  }
}

TEST(XmodemReceive, TakesAMegabyte) {
  OpenLink o;
  std::vector<std::string> frames;
  for (int i = 1; i <= 1024; ++i) frames.push_back(frameOf(static_cast<std::uint8_t>(i), 2));
  frames.push_back(Eot);
  Sender far{*o.world, frames};
  const PacketArray packets = o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 3000);
  ASSERT_TRUE(packets);
  EXPECT_EQ(packets->size(), 1024U);
  EXPECT_TRUE(o.told.Events.ends_with("received 0 1048576"));
  EXPECT_LT(o.world->Now, 1024 * 60 + 1000) << "one poll a packet";
}

TEST(XmodemConsole, ShowsBytesInHexadecimal) {
  OpenLink o{true, true};
  Sender far{*o.world, {frameOf(1), Eot}};
  const PacketArray packets = o.link->fncReceiveXmodemPackets(13, 8, 3, 3, 1000);
  const std::string text = o.link->consoleText();
  EXPECT_TRUE(text.starts_with("[43][0101FE00")) << text.substr(0, 40);
  EXPECT_NE(text.find(Form_Comm::fncGetFriendlyPacketText(packets) + "[06]\r\n[04][06]\r\n"),
            std::string::npos);
  o.link->cmdClear();
  AnsweringReceiver receiver{*o.world, "AA", 133};
  o.world->deliver("C!");
  o.link->subSendXmodemPackets(packets, 13, 8, 3, 3, 1000, false, 0);
  EXPECT_EQ(o.link->consoleText(),
            "[43]!" + Form_Comm::fncGetFriendlyPacketText(packets) + "[06]\r\n[04][06]\r\n");
}

}  // namespace
}  // namespace hy_wristlog
