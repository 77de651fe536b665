#include <numeric>

#include "link/Class_Packet.h"
#include "link/link_fixture.h"

namespace hy_wristlog {
namespace {

Class_Packet packetOf(std::int32_t size, std::size_t dataLength, std::uint8_t number = 7) {
  Class_Packet packet;
  packet.PacketSize = size;
  packet.PacketNum = number;
  packet.BinData.resize(dataLength);
  std::iota(packet.BinData.begin(), packet.BinData.end(), std::uint8_t{1});
  return packet;
}

TEST(Packet, FramesAreTakenOnlyWhenSound) {
  using Frame = std::vector<std::uint8_t>;
  const Frame shortFrame = packetOf(1, 128).Get_Packet(), longFrame = packetOf(2, 1024, 0).Get_Packet();
  const auto changed = [](Frame frame, std::size_t at, int by) {
    frame[at] = static_cast<std::uint8_t>(frame[at] + by);
    return frame;
  };
  const auto resized = [](Frame frame, std::size_t size) {
    frame.resize(size);
    return frame;
  };
  const std::tuple<const char*, Frame, bool, std::int32_t, std::int32_t> cases[] = {
      {"short", shortFrame, true, 1, 7},
      {"long, number 0", longFrame, true, 2, 0},
      {"short with the long lead byte", changed(shortFrame, 0, 1), false, 0, 99},
      {"cut", resized(shortFrame, 132), false, 0, 99},
      {"one more", resized(shortFrame, 134), false, 0, 99},
      {"wrong number", changed(shortFrame, 1, 1), false, 1, 99},
      {"wrong complement", changed(shortFrame, 2, 1), false, 1, 99},
      {"wrong data", changed(shortFrame, 77, 1), false, 1, 7},
      {"wrong CRC, low byte", changed(shortFrame, 132, 128), false, 1, 7}};
  for (const auto& [name, bytes, valid, size, number] : cases) {
    Class_Packet packet;
    packet.PacketNum = 99;
    packet.Let_Packet(bytes);
    EXPECT_EQ(packet.Get_IsValidPacket(), valid) << name;
    EXPECT_EQ(packet.PacketSize, size) << name;
    EXPECT_EQ(packet.PacketNum, number) << name;
    EXPECT_EQ(packet.Get_InvPacketNum(), 255 - number) << name;
    EXPECT_EQ(packet.BinData.empty(), !valid) << name;
    if (!valid) continue;
    EXPECT_EQ(packet.Get_Packet(), bytes) << name;
    packet.Let_Packet(changed(bytes, 3, 1));
    EXPECT_FALSE(packet.Get_IsValidPacket());
    EXPECT_EQ(packet.BinData.size(), bytes.size() - 5) << "a bad frame leaves the former data";
  }
}

TEST(Packet, FramesHaveTheCrcOfTheDataHighByteFirst) {
  Class_Packet packet;
  packet.PacketSize = 1;
  packet.BinData = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
  const auto frame = packet.Get_Packet();
  ASSERT_EQ(frame.size(), 133U);
  EXPECT_EQ(frame[131], 0x31);
  EXPECT_EQ(frame[132], 0xC3);
  EXPECT_EQ(frame[12], 0) << "the rest of the field stays zero";
  EXPECT_EQ(packet.CRC, 0x31C3);

  EXPECT_EQ(packet.Get_FriendlyPacketText().substr(0, 83),
            "\r\n<Packet>\r\n  01 00 FF\r\n    31 32 33 34 35 36 37 38 39 00 00 00 00 00 00 00\r\n    00");
  EXPECT_TRUE(packet.Get_FriendlyPacketText().ends_with(" 00\r\n  31 C3\r\n</Packet>\r\n"));
}

TEST(Packet, RefusesWhatMakesNoFrame) {
  const scripted::InWorld world;
  std::tuple<Class_Packet, std::int32_t, const char*> cases[] = {
      {packetOf(1, 0), 11301, "No packet data have been set"},
      {packetOf(0, 128), 11301, "Invalid Packet Size"},
      {packetOf(3, 128), 11301, "Invalid packet type"},
      {packetOf(1, 131), 9, "Subscript out of range"}};
  for (auto& [packet, number, text] : cases)
    EXPECT_EQ(failureOf([&] { packet.Get_Packet(); }), (std::pair{number, std::string{text}}));
  Class_Packet packet;
  EXPECT_EQ(caught([&] { packet.Let_Packet({}); }).Description, "Input data are invalid");
}

}  // namespace
}  // namespace hy_wristlog
