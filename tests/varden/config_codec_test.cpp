#include "varden/config_codec.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <random>

#include "base/dates.h"
#include "codec_world.h"
#include "timezones/Class_TimeZoneTools.h"
#include "varden/VardenLogger.h"
#include "varden/friendly.h"
#include "varden/wire_codes.h"

namespace hy_wristlog {
namespace {

/// A block as a logger makes it.
struct Block {
  std::array<std::uint8_t, 256> Bytes{};

  Block& number(std::size_t offset, std::size_t size, std::int64_t value) {
    for (std::size_t i = 0; i < size; ++i, value >>= 8) Bytes[offset + i] = static_cast<std::uint8_t>(value);
    return *this;
  }
  Block& text(std::size_t offset, std::string_view text) {
    std::copy(text.begin(), text.end(), Bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return *this;
  }
  Block& seal() {
    std::uint32_t crc = 0;
    for (std::size_t i = 2; i < 256; ++i) {
      crc ^= static_cast<std::uint32_t>(Bytes[i]) << 8;
      for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x8000) != 0 ? (crc << 1 ^ 0x1021) : crc << 1;
    }
    return number(0, 2, crc & 0xFFFF);
  }
  PacketArray packets() const {
    std::vector<Class_Packet> result(2);
    result[0].BinData.assign(Bytes.begin(), Bytes.begin() + 128);
    result[1].BinData.assign(Bytes.begin() + 128, Bytes.end());
    return result;
  }
};

constexpr std::int64_t Start = 1718452800;                                 // 2024-06-15 12:00
constexpr std::int64_t SpringForward = 1710054000, FallBack = 1730613600;  // 2024 in Eastern

Block goodBlock() {
  Block block;
  block.number(2, 1, 2).number(3, 1, 16).number(4, 1, 0xA1).number(5, 1, 0xB2).text(6, "C12345\xEB");
  block.number(22, 4, 70000).number(26, 1, 255).number(27, 1, 2).text(28, "01010002").number(36, 1, 85);
  for (std::size_t i = 37; i < 63; ++i) block.number(i, 1, static_cast<std::int64_t>(i));
  block.number(63, 1, 7).text(64, "2Zo\xEB" + std::string(96, 'x') + "F061519900072201805");
  block.number(192, 4, 1700000000)
      .number(196, 2, 0xFEDC)
      .number(198, 1, 77)
      .number(199, 1, 18)
      .number(200, 2, 30);
  block.number(202, 4, Start)
      .number(206, 4, 2147483647)
      .number(210, 2, 300)
      .number(212, 1, 0)
      .number(213, 1, -60);
  block.number(214, 4, SpringForward).number(218, 4, FallBack).text(222, "EST").text(226, "EDT");
  block.number(230, 1, 0x12).number(231, 2, 1000).number(233, 2, 50000).number(235, 2, 65535);
  block.number(237, 1, 13).number(238, 1, 12).number(239, 1, 0x5A).number(240, 1, 2).number(241, 1, 85);
  block.number(242, 1, 3)
      .number(243, 1, 4)
      .number(244, 2, 0x1234)
      .number(246, 2, 0xABCD)
      .text(248, "unused 2");
  return block.seal();
}

class ConfigCodecTest : public InCodecWorld {
 protected:
  static VardenRecord decoded(const Block& block) {
    VardenRecord record;
    record.FirmwareVersion = "from show ver";
    record.MemoryFull = MemFull_Unknown;
    checkConfigCrc(block.Bytes);
    checkConfigVersion(block.Bytes);
    record.ConfigBlock = readConfigBlock(block.Bytes);
    applyConfigBlock(record.ConfigBlock, record);
    return record;
  }
};

TEST_F(ConfigCodecTest, EveryFieldReachesItsMember) {
  VardenLogger logger;
  logger.record.LastLoggerTime = 45000;
  logger.Let_ConfigPackets(goodBlock().packets());
  const VardenRecord& r = logger.record;
  EXPECT_EQ(r.LastLoggerTime, -1);
  EXPECT_EQ(r.RawConfigHex.size(), 512u);
  EXPECT_EQ(r.RawConfigHex.substr(4, 8), "0210A1B2");
  EXPECT_EQ(r.ConfigCRC, r.ConfigBlock.Crc);
  EXPECT_EQ(r.StructureVersion, 2);
  EXPECT_EQ(r.MemorySize, 1024);
  EXPECT_EQ(r.FeaturesFlag1, 0xA1);
  EXPECT_EQ(r.FeaturesFlag2, 0xB2);
  EXPECT_EQ(r.SerialNumber, "C12345\xC3\xAB");
  EXPECT_EQ(r.BytesUsed, 70000);
  EXPECT_EQ(r.LowPowerShutdownFlag, LowPower_ShutdownNotOccurred);
  EXPECT_EQ(r.Model, 2);
  EXPECT_EQ(r.DeviceType, KR_QUILLANDER);
  EXPECT_EQ(r.FirmwareVersion, "01.01.0002");
  EXPECT_EQ(r.MemoryFull, MemFull_Yes);
  EXPECT_EQ(r.Unused1->size(), 26u);
  EXPECT_EQ(r.Unused1->back(), 62);
  EXPECT_EQ(r.BootLoaderFlag, 7);
  EXPECT_EQ(r.SubjectIdentity, "Zo\xC3\xAB" + std::string(61, 'x'));
  EXPECT_EQ(r.SubjectWeight, 72.2f);
  EXPECT_EQ(r.BatteryDate, 25569 + 1700000000 / 86400.0);
  EXPECT_EQ(r.LightScaleCalibration, 0xFEDC);
  EXPECT_EQ(r.ActivityCalibration, 77);
  EXPECT_EQ(r.AcquisitionMode, VardenMode_InternalLightCalibration);
  EXPECT_EQ(r.EpochLength, 30);
  EXPECT_EQ(r.StartTimeGMT, dateFromCivil({2024, 6, 15, 12, 0, 0, 0}));
  EXPECT_EQ(r.EndTimeGMT, 25569 + 2147483647 / 86400.0);
  EXPECT_EQ(r.TZbias, 300);
  EXPECT_EQ(r.TZdaylightBias, -60);
  EXPECT_TRUE(r.AutoDSTadjust);
  EXPECT_EQ(r.TZstandardAbbrev + r.TZdaylightAbbrev, "ESTEDT");
  EXPECT_EQ(r.TimeFormat, TimeFormat_24hour);
  EXPECT_EQ(r.DateFormat, DateFormat_DDMM);
  EXPECT_EQ(r.RedLightCalibration, 1000);
  EXPECT_EQ(r.GreenLightCalibration, 50000);
  EXPECT_EQ(r.BlueLightCalibration, 65535);
  EXPECT_EQ(r.Button1Map, ButtonMap_Marker1BacklightDateTime);
  EXPECT_EQ(r.Button2Map, ButtonMap_BacklightAndDateTime);
  EXPECT_EQ(r.Resets, 10);
  EXPECT_EQ(r.LowPowerShutdowns, 5);
  EXPECT_EQ(r.AcqThreshold, 2);
  EXPECT_EQ(r.DataAvailable, DataAvail_Yes);
  EXPECT_EQ(r.ScoreMin, 3);
  EXPECT_EQ(r.ScoreMax, 4);
  EXPECT_EQ(r.OffWristOnThreshold, 0x1234);
  EXPECT_EQ(r.OffWristOffThreshold, 0xABCD);
  EXPECT_EQ(r.Unused2->back(), '2');
  ASSERT_TRUE(r.TimeZone);
  EXPECT_EQ(r.TimeZone->Abbreviation, "EST");
  EXPECT_EQ(r.GMToffset, -240);
  EXPECT_EQ(platform::current().objects().get<VardenConfigBlock>().AcquisitionMode, 18);
}

TEST_F(ConfigCodecTest, VersionsAndFirmwareMoveTheMiddlePart) {
  struct {
    int Version;
    std::string_view Stored;
    const char* Firmware;
    enmMemoryFull MemoryFull;
    std::size_t Unused;
  } const cases[] = {
      {1, "01010002", "from show ver", MemFull_Unknown, 35},
      {2, "00020001", "00.02.0001", MemFull_Unknown, 27},
      {2, "00020002", "00.02.0002", MemFull_Yes, 26},
      {2, "01020000", "01.02.0000", MemFull_Unknown, 27},
      {2, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF",
       "\xC3\xBF\xC3\xBF.\xC3\xBF\xC3\xBF.\xC3\xBF\xC3\xBF\xC3\xBF\xC3\xBF", MemFull_Unknown, 27},
      {2, {"\0\0\0\0\0\0\0\0", 8}, "..", MemFull_Unknown, 27},
      {2, {"010\0\0\0\0\0", 8}, "01.0.", MemFull_Unknown, 27},
  };
  for (const auto& c : cases) {
    const VardenRecord record = decoded(goodBlock().number(2, 1, c.Version).text(28, c.Stored).seal());
    EXPECT_EQ(record.FirmwareVersion, c.Firmware);
    EXPECT_EQ(record.MemoryFull, c.MemoryFull) << c.Firmware;
    EXPECT_EQ(record.Unused1->size(), c.Unused) << c.Firmware;
    EXPECT_EQ(record.BootLoaderFlag, 7);
  }
}

TEST_F(ConfigCodecTest, CodesAndTheirRows) {
  const auto expectRows = [](auto unknown, std::initializer_list<int> wires) {
    using Row = decltype(unknown);
    std::array<int, 256> rows{};
    rows.fill(unknown);
    int row = unknown == 0 ? 1 : 0;  // rows count on from the unknown one, or before it
    for (const int wire : wires) rows[static_cast<std::size_t>(wire)] = row++;
    for (int wire = 0; wire < 256; ++wire) {
      const Row read = rowOfWire<Row>(wire);
      EXPECT_EQ(read, rows[static_cast<std::size_t>(wire)]) << wire;
      EXPECT_EQ(wireOfRow(read),
                read == unknown ? std::nullopt : std::optional(static_cast<std::uint8_t>(wire)));
    }
    EXPECT_EQ(friendlyText(unknown), "Unknown");
    EXPECT_FALSE(wireOfRow(static_cast<Row>(99)));
  };
  expectRows(VardenMode_Unknown, {1, 2, 3, 6, 7, 0, 8, 18, 33});
  expectRows(TimeFormat_Unknown, {0, 1, 2});
  expectRows(DateFormat_Unknown, {0, 1});
  expectRows(ButtonMap_Unknown, {1, 2, 4, 8, 5, 6, 12, 9, 10, 13, 14});
  expectRows(DataAvail_Unknown, {0, 85});
  expectRows(MemFull_Unknown, {0, 85});
  expectRows(LowPower_Unknown, {85, 255});

  EXPECT_EQ(fncFriendlyAcqModeFormat(VardenMode_InternalActivity32Hz), "[Internal] Activity 32 Hz mode (32)");
  EXPECT_EQ(fncFriendlyLowPowerFormat(LowPower_ShutdownNotOccurred), "Shutdown Did NOT Occur (0x0)");
  EXPECT_EQ(fncFriendlyDataAvailableFormat(DataAvail_Yes), "Data available (1)");
  EXPECT_EQ(fncFriendlyKRmodel(2) + fncFriendlyKRmodel(3), "Quillander (2)Unknown (not Varden)");
  EXPECT_EQ(decoded(goodBlock().number(27, 1, 1).seal()).DeviceType, KR_TOLKA);
  EXPECT_EQ(decoded(goodBlock().number(27, 1, 3).seal()).DeviceType, Device_Unknown);
}

TEST_F(ConfigCodecTest, DecodingFailures) {
  Block damaged = goodBlock();
  damaged.Bytes[200] ^= 1;
  PacketArray truncated = goodBlock().packets();
  truncated->back().BinData.pop_back();
  struct {
    PacketArray Packets;
    std::int32_t Number;
    const char* Text;
  } const cases[] = {
      {{}, 11503, "Invalid packet array input"},
      {std::vector<Class_Packet>{}, 11505, "Logger configuration CRC verification failed"},
      {truncated, 11505, "Logger configuration CRC verification failed"},
      {damaged.packets(), 11505, "Logger configuration CRC verification failed"},
      {goodBlock().number(2, 1, 0).seal().packets(), 11504, "This logger data version (0) is not supported."},
      {goodBlock().number(2, 1, 255).seal().packets(), 11504,
       "This logger data version (255) is not supported."},
      {goodBlock().number(200, 2, 0x8000).seal().packets(), 6, "Overflow"},
  };
  for (const auto& c : cases) {
    VardenLogger logger;
    logger.record.LastLoggerTime = 45000;
    std::string text, source;
    EXPECT_EQ(failureOf([&] { logger.Let_ConfigPackets(c.Packets); }, &text, &source), c.Number);
    EXPECT_EQ(text, c.Text);
    EXPECT_NE(source.find("Class_VardenLogger.subDecodeVardenLoggerConfig"), std::string::npos) << source;
    EXPECT_EQ(logger.record.LastLoggerTime, c.Packets ? -1 : 45000);
    EXPECT_EQ(logger.record.RawConfigHex.empty(), !c.Packets || c.Packets->empty());
    EXPECT_EQ(logger.record.SerialNumber.empty(), c.Number != 6);
  }
}

TEST_F(ConfigCodecTest, WhatIsSentIsTheBlockFromItsSubjectOn) {
  Block block = goodBlock();
  block.number(212, 1, -60).number(210, 2, -32768).number(218, 4, 0).seal();
  VardenLogger logger;
  logger.record = decoded(block);
  const PacketArray packets = logger.Get_ConfigPackets();
  ASSERT_TRUE(packets && packets->size() == 2);
  for (std::uint8_t i = 0; i < 2; ++i) {
    EXPECT_EQ((*packets)[i].PacketSize, 1);
    EXPECT_EQ((*packets)[i].PacketNum, i + 1);
    EXPECT_EQ((*packets)[i].BinData.size(), 128u);
  }
  ByteArray expected(block.Bytes.begin() + 64, block.Bytes.end());
  expected.resize(256);
  EXPECT_EQ(joinPackets(*packets), expected);
  EXPECT_EQ(logger.record.EncodedConfigBytes, expected);
  EXPECT_EQ(expected[148], 196);

  VardenRecord& r = logger.record;
  r.EncodedSetup = std::string(200, 's');
  r.TZstandardAbbrev = "ABCD";
  r.TZdaylightAbbrev = "\xC3\xABx";
  r.EpochLength = static_cast<std::int16_t>(0x8005);
  r.Unused2.reset();
  r.Resets = 0xF1;
  r.LowPowerShutdowns = 0x12;
  const ByteArray sent = encodeConfigBlock(r);
  EXPECT_EQ(sent[126], 's');
  EXPECT_EQ(sent[127], 0);
  EXPECT_EQ(sent[136] | sent[137] << 8, 5);
  EXPECT_EQ(std::string(sent.begin() + 158, sent.begin() + 166), std::string("ABC\0\xEBx\0\0", 8));
  EXPECT_EQ(sent[175], 0x21);
  EXPECT_TRUE(std::all_of(sent.begin() + 184, sent.end(), [](std::uint8_t byte) { return byte == 0; }));
  r.Unused2 = ByteArray(20, 9);
  EXPECT_EQ(encodeConfigBlock(r)[191], 9);
  EXPECT_EQ(encodeConfigBlock(r)[192], 0);
}

TEST_F(ConfigCodecTest, EncodingFailures) {
  using Change = void (*)(VardenRecord&);
  struct {
    Change Spoil;
    std::int32_t Number;
    const char* Text;
  } const cases[] = {
      {[](VardenRecord& r) { r.StructureVersion = 3; }, 11504,
       "This version of logger configuration structure not supported"},
      {[](VardenRecord& r) { r.BatteryDate = 0; }, 11503, "Date is before 12/13/1901 8:45:52 PM"},
      {[](VardenRecord& r) { r.LightScaleCalibration = 65536; }, 6, "Overflow"},
      {[](VardenRecord& r) { r.OffWristOffThreshold = -256; }, 6, "Overflow"},
      {[](VardenRecord& r) { r.AcquisitionMode = VardenMode_Unknown; }, 11503, "Invalid Logging Mode"},
      {[](VardenRecord& r) { r.AcquisitionMode = static_cast<enmVardenLoggingMode>(10); }, 11503,
       "Invalid Logging Mode"},
      {[](VardenRecord& r) { r.EndTimeGMT = 60000; }, 6, "Overflow"},
      {[](VardenRecord& r) { r.TZbias = 32768; }, 11503, "Out of Bounds Offset Value"},
      {[](VardenRecord& r) { r.TZbias = -32769; }, 11503, "Out of Bounds Offset Value"},
      {[](VardenRecord& r) { r.TZstandardBias = 128; }, 11503, "Out of Bounds Standard Offset Value"},
      {[](VardenRecord& r) { r.TZdaylightBias = -129; }, 11503, "Out of Bounds Standard Offset Value"},
      {[](VardenRecord& r) { r.TimeFormat = TimeFormat_Unknown; }, 11503, "Invalid Time Format"},
      {[](VardenRecord& r) { r.DateFormat = DateFormat_Unknown; }, 11503, "Invalid Date Format"},
      {[](VardenRecord& r) { r.Button1Map = ButtonMap_Unknown; }, 11503, "Invalid Button 1 Map"},
      {[](VardenRecord& r) { r.Button2Map = static_cast<enmButtonMap>(12); }, 11503, "Invalid Button 1 Map"},
      {[](VardenRecord& r) { r.DataAvailable = DataAvail_Unknown; }, 11503, "Invalid Data Available Flag"},
  };
  VardenLogger logger;
  logger.record = decoded(goodBlock());
  logger.Get_ConfigPackets();
  const auto before = logger.record.EncodedConfigBytes;
  for (const auto& c : cases) {
    logger.record = decoded(goodBlock());
    logger.record.EncodedConfigBytes = before;
    logger.record.ScoreMax = 99;
    c.Spoil(logger.record);
    std::string text;
    EXPECT_EQ(failureOf([&] { logger.Get_ConfigPackets(); }, &text), c.Number) << c.Text;
    EXPECT_EQ(text, c.Text);
    EXPECT_EQ(logger.record.EncodedConfigBytes, before);
  }
}

TEST_F(ConfigCodecTest, ZoneByAbbreviationThenByBias) {
  struct {
    Block Config;
    const char* Key;  ///< null: stays as it was
    int Offset;
  } const cases[] = {
      {goodBlock(), "Eastern Standard Time", -240},
      {goodBlock().number(214, 4, SpringForward + 60).text(222, "IND").seal(), "Eastern Standard Time", -240},
      {goodBlock().number(210, 2, -330).seal(), "India Standard Time", 330},
      {goodBlock().number(214, 4, 0).number(218, 4, 0).number(202, 4, Start).seal(), "Eastern Standard Time",
       -300},
      {goodBlock().number(210, 2, 17).seal(), nullptr, 0},
      {goodBlock().text(222, "est").number(210, 2, 0).seal(), "Greenwich Standard Time", 0},
  };
  for (const auto& c : cases) {
    VardenLogger logger;
    logger.Let_ConfigPackets(c.Config.packets());
    EXPECT_EQ(logger.record.TimeZone ? logger.record.TimeZone->KeyName : "none",
              c.Key != nullptr ? c.Key : "none");
    EXPECT_EQ(logger.record.GMToffset, c.Offset);
  }
  VardenLogger logger;
  logger.Let_ConfigPackets(goodBlock().packets());
  logger.Let_ConfigPackets(goodBlock().number(210, 2, 17).seal().packets());
  EXPECT_EQ(logger.record.TimeZone->KeyName, "Eastern Standard Time");
}

TEST_F(ConfigCodecTest, AnUnknownZoneDoesNotRenameTheCatalogues) {
  VardenLogger logger;
  logger.Let_ConfigPackets(goodBlock().text(222, "UNK").seal().packets());
  EXPECT_EQ(logger.record.TimeZone->Abbreviation, "UNK");
  EXPECT_EQ(logger.record.TimeZone->KeyName, "Eastern Standard Time");
  const auto catalogued = TimeZoneTools().fncGetTZIfromAbbrev("EST");
  ASSERT_TRUE(catalogued);
  EXPECT_EQ(catalogued->KeyName, "Eastern Standard Time");
}

TEST_F(ConfigCodecTest, RandomBlocksGiveASaneRecordOrAKnownFailure) {
  std::mt19937 random(7);
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  int decodes = 0, encodes = 0;
  for (int round = 0; round < 3000; ++round) {
    Block block = goodBlock();
    if (below(2) == 0)
      for (auto& byte : block.Bytes) byte = static_cast<std::uint8_t>(random());
    for (unsigned i = below(20); i > 0; --i) block.Bytes[below(256)] = static_cast<std::uint8_t>(random());
    block.number(2, 1, below(4)).seal();
    PacketArray packets = block.packets();
    const unsigned damage = below(8);
    if (damage == 0) packets->back().BinData.resize(below(128));
    if (damage == 1) packets->front().BinData[below(128)] ^= static_cast<std::uint8_t>(1 + below(255));
    if (damage == 2) packets->emplace_back().BinData.resize(below(1024));

    VardenLogger logger;
    const std::int32_t number = failureOf([&] { logger.Let_ConfigPackets(packets); });
    const bool broken = damage < 2, badVersion = block.Bytes[2] != 1 && block.Bytes[2] != 2,
               badEpoch = (block.Bytes[201] & 0x80) != 0;
    EXPECT_EQ(number, broken ? 11505 : badVersion ? 11504 : badEpoch ? 6 : 0) << round;
    if (number != 0) continue;
    ++decodes;
    EXPECT_LE(logger.record.Resets, 15);
    EXPECT_GE(logger.record.SubjectInfoVersion, -1);
    const std::int32_t encoding = failureOf([&] { logger.Get_ConfigPackets(); });
    EXPECT_TRUE(encoding == 0 || encoding == 11503) << encoding;
    if (encoding != 0) continue;
    ++encodes;
    // Texts may have lost what stood behind a NUL; everything else comes back.
    const ByteArray& sent = *logger.record.EncodedConfigBytes;
    EXPECT_TRUE(std::equal(sent.begin() + 128, sent.begin() + 158, block.Bytes.begin() + 192)) << round;
    EXPECT_TRUE(std::equal(sent.begin() + 166, sent.begin() + 192, block.Bytes.begin() + 230)) << round;
  }
  EXPECT_GT(decodes, 300);
  EXPECT_GT(encodes, 100);
}

}  // namespace
}  // namespace hy_wristlog
