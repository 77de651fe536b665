#include "varden/config/config_codec.h"

#include <random>

#include "config_support.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/VardenLogger.h"
#include "varden/config/packets.h"
#include "varden/config/wire_codes.h"
#include "varden/friendly.h"

namespace hy_wristlog {
namespace {

using ConfigCodecTest = InSimulatedWorld;

VardenRecord decoded(Block block) {
  VardenLogger logger;
  logger.record.FirmwareVersion = "from show ver";
  logger.record.MemoryFull = MemFull_Unknown;
  logger.subDecodeVardenLoggerConfig(block.packets());
  return logger.record;
}

template <class... Values>
std::vector<double> list(Values... values) {
  return {static_cast<double>(values)...};
}

TEST_F(ConfigCodecTest, EveryFieldReachesItsMember) {
  VardenLogger logger;
  logger.record.LastLoggerTime = 45000;
  logger.Let_ConfigPackets(goodBlock().packets());
  const VardenRecord& r = logger.record;
  EXPECT_EQ(r.RawConfigHex.size(), 512u);
  EXPECT_EQ(r.RawConfigHex.substr(4, 8), "0210A1B2");
  EXPECT_EQ(r.SerialNumber + "|" + r.FirmwareVersion + "|" + r.TZstandardAbbrev + "|" + r.TZdaylightAbbrev,
            "C12345\u00EB|01.01.0002|EST|EDT");
  EXPECT_EQ(r.SubjectIdentity, "Zo\u00EB" + std::string(61, 'x'));
  const std::pair<std::vector<double>, std::vector<double>> fields[] = {
      {list(r.LastLoggerTime, r.ConfigCRC, r.StructureVersion, r.MemorySize, r.FeaturesFlag1),
       list(-1, r.ConfigBlock.Crc, 2, 1024, 0xA1)},
      {list(r.FeaturesFlag2, r.BytesUsed, r.LowPowerShutdownFlag, r.Model, r.DeviceType, r.MemoryFull),
       list(0xB2, 70000, LowPower_ShutdownNotOccurred, 2, KR_QUILLANDER, MemFull_Yes)},
      {list(r.Unused1->size(), r.Unused1->front(), r.Unused1->back(), r.Unused2->back(), r.BootLoaderFlag),
       list(26, 37, 62, '2', 7)},
      {list(r.SubjectWeight, r.BatteryDate, r.StartTimeGMT, r.EndTimeGMT, r.LightScaleCalibration),
       list(72.2f, 25569 + 17e8 / 86400, 45458.5, 25569 + 2147483647 / 86400.0, 0xFEDC)},
      {list(r.ActivityCalibration, r.AcquisitionMode, r.EpochLength, r.TZbias, r.TZstandardBias, r.GMToffset),
       list(77, VardenMode_InternalLightCalibration, 30, 300, 0, -240)},
      {list(r.TZdaylightBias, r.AutoDSTadjust, r.TZdstStart, r.TZdstEnd),
       list(-60, true, 25569 + SpringForward / 86400.0, 25569 + FallBack / 86400.0)},
      {list(r.TimeFormat, r.DateFormat, r.RedLightCalibration, r.GreenLightCalibration),
       list(TimeFormat_24hour, DateFormat_DDMM, 1000, 50000)},
      {list(r.BlueLightCalibration, r.Button1Map, r.Button2Map, r.Resets, r.LowPowerShutdowns),
       list(65535, ButtonMap_Marker1BacklightDateTime, ButtonMap_BacklightAndDateTime, 10, 5)},
      {list(r.AcqThreshold, r.DataAvailable, r.ScoreMin, r.ScoreMax, r.OffWristOnThreshold),
       list(2, DataAvail_Yes, 3, 4, 0x1234)}};
  for (const auto& [read, expected] : fields) EXPECT_EQ(read, expected);
  EXPECT_EQ(r.OffWristOffThreshold, 0xABCD);
  ASSERT_TRUE(r.TimeZone);
  EXPECT_EQ(r.TimeZone->Abbreviation, "EST");
  EXPECT_EQ(platform::current().objects().get<VardenConfigBlock>().AcquisitionMode, 18);
}

TEST_F(ConfigCodecTest, VersionsAndFirmwareMoveTheMiddlePart) {
  // Version, stored firmware; read firmware, memory-full flag, size of Unused1.
  const std::tuple<int, std::string, std::string> cases[] = {
      {1, "01010002", "from show ver 2 35"},
      {2, "00020002", "00.02.0002 1 26"},
      {2, "01020000", "01.02.0000 2 27"},
      {2, std::string(8, '\xFF'), "\u00FF\u00FF.\u00FF\u00FF.\u00FF\u00FF\u00FF\u00FF 2 27"},
      {2, "010" + std::string(5, '\0'), "01.0. 2 27"},
  };
  for (const auto& [version, stored, outcome] : cases) {
    const VardenRecord r = decoded(goodBlock().number(2, 1, version).text(28, stored));
    const std::string rest = std::to_string(r.MemoryFull) + " " + std::to_string(r.Unused1->size());
    EXPECT_EQ(r.FirmwareVersion + " " + rest, outcome);
  }
}

/// The codes of the rows, which count on from the unknown one, or up to it.
template <class Row>
void expectRows(Row unknown, const std::vector<int>& wires) {
  for (int wire = 0; wire < 256; ++wire) {
    const auto at = std::find(wires.begin(), wires.end(), wire) - wires.begin();
    const bool known = at < std::ssize(wires);
    const Row row = known ? static_cast<Row>(at + (unknown == 0 ? 1 : 0)) : unknown;
    EXPECT_EQ(rowOfWire<Row>(wire), row) << wire;
    EXPECT_EQ(wireOfRow(rowOfWire<Row>(wire)), known ? std::optional(wire) : std::nullopt);
  }
  EXPECT_EQ(friendlyText(unknown), "Unknown");
  EXPECT_FALSE(wireOfRow(static_cast<Row>(99)));
}

TEST_F(ConfigCodecTest, CodesAndTheirRows) {
  expectRows(VardenMode_Unknown, {1, 2, 3, 6, 7, 0, 8, 18, 33});
  expectRows(TimeFormat_Unknown, {0, 1, 2});
  expectRows(DateFormat_Unknown, {0, 1});
  expectRows(ButtonMap_Unknown, {1, 2, 4, 8, 5, 6, 12, 9, 10, 13, 14});
  expectRows(DataAvail_Unknown, {0, 85});
  expectRows(MemFull_Unknown, {0, 85});
  expectRows(LowPower_Unknown, {85, 255});
  EXPECT_EQ(fncFriendlyAcqModeFormat(VardenMode_InternalActivity32Hz) + fncFriendlyKRmodel(3) +
                fncFriendlyDataAvailableFormat(DataAvail_Yes),
            "[Internal] Activity 32 Hz mode (32)Unknown (not Varden)Data available (1)");
  EXPECT_EQ(decoded(goodBlock().number(27, 1, 1)).DeviceType, KR_TOLKA);
  EXPECT_EQ(decoded(goodBlock().number(27, 1, 3)).DeviceType, Device_Unknown);
  EXPECT_TRUE(decoded(goodBlock().number(218, 4, 0)).AutoDSTadjust);
  EXPECT_FALSE(decoded(goodBlock().number(214, 8, 0)).AutoDSTadjust);
}

TEST_F(ConfigCodecTest, DecodingFailures) {
  PacketArray truncated = goodBlock().packets(), damaged = truncated;
  truncated->back().BinData.pop_back();
  damaged->back().BinData[72] ^= 1;
  const std::string badCrc = "11505 Logger configuration CRC verification failed";
  const std::pair<PacketArray, std::string> cases[] = {
      {{}, "11503 Invalid packet array input"},
      {std::vector<Class_Packet>{}, badCrc},
      {truncated, badCrc},
      {damaged, badCrc},
      {goodBlock().number(2, 1, 0).packets(), "11504 This logger data version (0) is not supported."},
  };
  for (const auto& [packets, failure] : cases) {
    VardenLogger logger;
    logger.record.LastLoggerTime = 45000;
    EXPECT_EQ(raisedBy([&] { logger.Let_ConfigPackets(packets); }), failure);
    EXPECT_EQ(logger.record.LastLoggerTime, packets ? -1 : 45000);
    EXPECT_EQ(logger.record.RawConfigHex.empty(), !packets || packets->empty());
    EXPECT_EQ(logger.record.SerialNumber, "");
  }
  EXPECT_EQ(outcome([&] { VardenLogger().Let_ConfigPackets({}); }).substr(6, 17), "Let_ConfigPackets");
  EXPECT_EQ(outcome([&] { VardenLogger().subDecodeVardenLoggerConfig(damaged); }).substr(6, 46),
            "Class_VardenLogger.subDecodeVardenLoggerConfig");
}

TEST_F(ConfigCodecTest, WhatIsSentIsTheBlockFromItsSubjectOn) {
  Block block = goodBlock().number(212, 1, -60).number(210, 2, -32768).number(218, 4, 0);
  VardenLogger logger;
  logger.record = decoded(block);
  const PacketArray packets = logger.Get_ConfigPackets();
  ASSERT_TRUE(packets && packets->size() == 2);
  for (const Class_Packet& packet : *packets)
    EXPECT_EQ(list(packet.PacketSize, packet.BinData.size(), packet.PacketNum),
              list(1, 128, &packet - packets->data() + 1));
  ByteArray expected(block.Bytes.begin() + 64, block.Bytes.end());
  expected.resize(256);
  EXPECT_EQ(joinPackets(*packets), expected);
  EXPECT_EQ(logger.record.EncodedConfigBytes, expected);

  VardenRecord& r = logger.record;
  r.EncodedSetup = std::string(200, 's');
  r.TZstandardAbbrev = "ABCD";
  r.TZdaylightAbbrev = "\u00EBx";
  r.EpochLength = static_cast<std::int16_t>(0x8005);
  r.Resets = 0xF1;
  r.LowPowerShutdowns = 0x12;
  r.Unused2.reset();
  ByteArray sent = encodeConfigBlock(r);
  EXPECT_EQ(list(sent[126], sent[127], sent[136], sent[137], sent[175]), list('s', 0, 5, 0, 0x21));
  EXPECT_EQ(std::string(sent.begin() + 158, sent.begin() + 166), std::string("ABC\0\xEBx\0\0", 8));
  EXPECT_EQ(std::count(sent.begin() + 184, sent.end(), 0), 72);
  r.Unused2 = ByteArray(20, 9);
  sent = encodeConfigBlock(r);
  EXPECT_EQ(list(std::count(sent.begin() + 184, sent.end(), 9), sent[191]), list(8, 9));
}

TEST_F(ConfigCodecTest, EncodingFailures) {
  const char* version = "11504 This version of logger configuration structure not supported";
  const std::pair<void (*)(VardenRecord&), const char*> cases[] = {
      {[](auto& r) { r.StructureVersion = 3; }, version},
      {[](auto& r) { r.BatteryDate = 0; }, "11503 Date is before 12/13/1901 8:45:52 PM"},
      {[](auto& r) { r.LightScaleCalibration = 65536; }, "6 Overflow"},
      {[](auto& r) { r.AcquisitionMode = VardenMode_Unknown; }, "11503 Invalid Logging Mode"},
      {[](auto& r) { r.EndTimeGMT = 60000; }, "6 Overflow"},
      {[](auto& r) { r.TZbias = 32768; }, "11503 Out of Bounds Offset Value"},
      {[](auto& r) { r.TZstandardBias = 128; }, "11503 Out of Bounds Standard Offset Value"},
      {[](auto& r) { r.TZdaylightBias = -129; }, "11503 Out of Bounds Standard Offset Value"},
      {[](auto& r) { r.TimeFormat = TimeFormat_Unknown; }, "11503 Invalid Time Format"},
      {[](auto& r) { r.DateFormat = DateFormat_Unknown; }, "11503 Invalid Date Format"},
      {[](auto& r) { r.Button1Map = ButtonMap_Unknown; }, "11503 Invalid Button 1 Map"},
      {[](auto& r) { r.Button2Map = static_cast<enmButtonMap>(12); }, "11503 Invalid Button 1 Map"},
      {[](auto& r) { r.DataAvailable = DataAvail_Unknown; }, "11503 Invalid Data Available Flag"}};
  for (const auto& [spoil, failure] : cases) {
    VardenLogger logger;
    logger.record = decoded(goodBlock());
    spoil(logger.record);
    EXPECT_EQ(raisedBy([&] { logger.Get_ConfigPackets(); }), failure);
    EXPECT_FALSE(logger.record.EncodedConfigBytes);
  }
}

TEST_F(ConfigCodecTest, ZoneByAbbreviationThenByBias) {
  const std::pair<Block, const char*> cases[] = {
      {goodBlock(), "Eastern Standard Time EST -240"},
      {goodBlock().number(214, 4, SpringForward + 60).text(222, "IND"), "Eastern Standard Time EST -240"},
      {goodBlock().number(210, 2, -330), "India Standard Time IND 330"},
      {goodBlock().number(214, 8, 0), "Eastern Standard Time EST -300"},
      {goodBlock().text(222, "est").number(210, 2, 0), "GMT Standard Time GMT 60"},
      {goodBlock().text(222, "UNK"), "Eastern Standard Time UNK -240"},
  };
  VardenLogger logger;
  logger.Let_ConfigPackets(goodBlock().number(210, 2, 17).packets());
  EXPECT_FALSE(logger.record.TimeZone);
  const auto zone = [&](Block block) {
    logger.Let_ConfigPackets(block.packets());
    const Class_TimeZoneInfo& found = *logger.record.TimeZone;
    return found.KeyName + " " + found.Abbreviation + " " + std::to_string(logger.record.GMToffset);
  };
  for (const auto& [block, expected] : cases) EXPECT_EQ(zone(block), expected);
  EXPECT_EQ(zone(goodBlock().number(210, 2, 17)), "Eastern Standard Time UNK -240") << "stays as it was";
  EXPECT_TRUE(TimeZoneTools().fncGetTZIfromAbbrev("EST")) << "the catalogue's own zone keeps its name";
}

TEST_F(ConfigCodecTest, RandomBlocksGiveASaneRecordOrAKnownFailure) {
  std::mt19937 random(7);
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  int encodes = 0;
  for (int round = 0; round < 3000; ++round) {
    Block block = goodBlock();
    for (unsigned i = below(2) * below(2000); i > 0; --i)
      block.Bytes[below(256)] = static_cast<std::uint8_t>(random());
    PacketArray packets = block.number(2, 1, below(4)).packets();
    const unsigned damage = below(8);
    if (damage == 0) packets->back().BinData.resize(below(128));
    if (damage == 1) packets->front().BinData[below(128)] ^= static_cast<std::uint8_t>(1 + below(255));
    if (damage == 2) packets->emplace_back().BinData.resize(below(1024));

    VardenLogger logger;
    const std::string failure = raisedBy([&] { logger.Let_ConfigPackets(packets); });
    const bool badVersion = block.Bytes[2] % 3 == 0;
    EXPECT_EQ(failure.substr(0, 5), damage < 2 ? "11505" : badVersion ? "11504" : "") << round;
    if (!failure.empty()) continue;
    const std::string refusal = raisedBy([&] { logger.Get_ConfigPackets(); });
    EXPECT_TRUE(refusal.empty() || refusal.substr(0, 6) == "11503 ") << refusal;
    if (!refusal.empty()) continue;
    ++encodes;
    // Texts may have lost what stood after a NUL, an epoch its sign; everything else comes back.
    block.Bytes[201] &= 0x7F;
    const ByteArray& sent = *logger.record.EncodedConfigBytes;
    EXPECT_TRUE(std::equal(sent.begin() + 128, sent.begin() + 158, block.Bytes.begin() + 192)) << round;
    EXPECT_TRUE(std::equal(sent.begin() + 166, sent.begin() + 192, block.Bytes.begin() + 230)) << round;
  }
  EXPECT_GT(encodes, 100);
}

}  // namespace
}  // namespace hy_wristlog
