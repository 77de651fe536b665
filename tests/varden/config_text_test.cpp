#include <functional>

#include "config_support.h"
#include "support/surroundings.h"
#include "varden/VardenLogger.h"
#include "varden/config/config_check.h"
#include "varden/config/config_codec.h"
#include "varden/config/config_text.h"

namespace hy_wristlog {
namespace {

VardenRecord fullRecord() {
  VardenRecord r;
  applyConfigBlock(readConfigBlock(goodBlock().number(0, 2, 0xAB).Bytes), r);
  r.EncodedSetup = "  2Zo\u00EB \"'; [Config Data]= \"";
  r.TZstandardAbbrev = "'E'";
  r.TZdaylightAbbrev = "DT ";
  r.TZdstEnd = 0;
  r.RawConfigHex = "0102AB";
  return r;
}

struct ConfigText : InSimulatedWorld {
  ConfigText() { logger.record = fullRecord(); }
  std::string golden(const char* name) { return contentOf(std::string(TEST_DATA "/") + name); }
  TemporaryFolder folder;
  VardenLogger logger;
};

TEST_F(ConfigText, IniFileAndWords) {
  logger.subWriteConfigToINIfile(folder / "config.ini");
  EXPECT_EQ(contentOf(folder / "config.ini"), golden("config.ini"));
  const std::string words = logger.fncConfigToString(": ");
  EXPECT_EQ(std::count(words.begin(), words.end(), '\n'), 44);
  for (const char* line :
       {"Subject Identity:   2Zo\u00EB \"'; [Config Data]= \"\r\n",
        "Button 2 Map: Backlight and Date/Time (0xC)\r\n",
        "Acquisition Mode: [Internal] Light calibration mode (18)\r\n", "Boot Loader Flag: 07\r\n"})
    EXPECT_NE(words.find(line), std::string::npos) << line;

  logger.subWriteConfigToINIfile(
      folder.put("other.ini", "; mine\r\n[CONFIG DATA]\r\nresets=9\r\n[Own]\r\nkey=1\r\n"));
  const std::string other = contentOf(folder / "other.ini");
  EXPECT_TRUE(other.starts_with("; mine\r\n[CONFIG DATA]\r\nResets=10\r\nSubject Identity=")) << other;
  EXPECT_NE(other.find("[Own]\r\nkey=1\r\n"), std::string::npos);

  logger.record.SerialNumber = "V\n1";
  EXPECT_EQ(raisedBy([&] { logger.subWriteConfigToINIfile(folder / "none"); }),
            "5 Invalid procedure call or argument: Serial Number holds a line break");
  EXPECT_EQ(contentOf(folder / "none"), "");
}

TEST_F(ConfigText, WrittenAndReadTheSameIsSent) {
  for (const bool emptyUnused : {false, true}) {
    if (emptyUnused) logger.record.Unused2.reset();
    logger.subWriteConfigToINIfile(folder / "config.ini");
    VardenLogger other;
    other.record.StructureVersion = 2;
    other.record.BatteryDate = fullRecord().BatteryDate;
    other.subReadConfigFromINIfile(folder / "config.ini");
    EXPECT_EQ(encodeConfigBlock(other.record), encodeConfigBlock(logger.record));
    EXPECT_EQ(other.record.SerialNumber + other.record.FirmwareVersion, "") << "read only";
  }
  logger.subWriteConfigToBINfile(folder / "image.bin");
  const ByteArray sent = encodeConfigBlock(logger.record);
  EXPECT_EQ(contentOf(folder / "image.bin"), std::string(sent.begin(), sent.end()));
  logger.record.DataAvailable = DataAvail_Unknown;
  EXPECT_EQ(raisedBy([&] { logger.subWriteConfigToBINfile(folder / "image.bin"); }),
            "11503 Invalid Data Available Flag");
  EXPECT_EQ(contentOf(folder / "image.bin").size(), 256u);
}

TEST_F(ConfigText, ValuesAreReadOrRefused) {
  const auto number = [](auto field) {
    return [=](const VardenRecord& r) { return std::to_string(static_cast<std::int32_t>(r.*field)); };
  };
  const auto moment = [](auto field) {
    return [=](const VardenRecord& r) { return formatDate(r.*field, "yyyy-mm-dd hh:nn:ss"); };
  };
  const auto noDate = [](const std::string& text) {
    return "13 Type mismatch: Acquisition Start Time: \"" + text +
           "\" is no date of the form MM-DD-YYYY Hh:Nn:Ss";
  };
  const auto start = moment(&VardenRecord::StartTimeGMT), battery = moment(&VardenRecord::BatteryDate);
  using Shows = std::function<std::string(const VardenRecord&)>;
  const std::tuple<std::string, Shows, std::string> cases[] = {
      {"resets = \" 12 \"", number(&VardenRecord::Resets), "12"},
      {"Resets=256", {}, "6 Overflow: Resets: \"256\""},
      {"Resets=-1", {}, "6 Overflow: Resets: \"-1\""},
      {"Resets=many", {}, "13 Type mismatch: Resets: \"many\" is no number"},
      {"Epoch Length=60,5", {}, "13 Type mismatch: Epoch Length: \"60,5\" is no number"},
      {"Epoch Length=32767", number(&VardenRecord::EpochLength), "32767"},
      {"Epoch Length=32768", {}, "6 Overflow: Epoch Length: \"32768\""},
      {"Light Calibration Factor=1E99", {}, "6 Overflow: Light Calibration Factor: \"1E99\""},
      {"Acquisition Mode=77", number(&VardenRecord::AcquisitionMode), "77"},
      {"Acquisition Start Time=02-29-2024 23:59:58", start, "2024-02-29 23:59:58"},
      {"Acquisition Start Time=02/29/2024", start, "2024-02-29 00:00:00"},
      {"Acquisition Start Time=\"   \"", start, "2024-06-15 12:00:00"},
      {"Acquisition Start Time=02-30-2024", {}, noDate("02-30-2024")},
      {"Acquisition Start Time=02-20-2024 24:00:00", {}, noDate("02-20-2024 24:00:00")},
      {"Acquisition Start Time=2024-02-20", {}, noDate("2024-02-20")},
      {"Acquisition Start Time=1-2-24", {}, noDate("1-2-24")},
      {"Battery Installed/Charged Date=11-14-2023", battery, "2023-11-14 22:13:20"},
      {"Battery Installed/Charged Date=11-15-2023", battery, "2023-11-15 00:00:00"},
      {"Unused 2=0a0B", [](const VardenRecord& r) { return seriesText(*r.Unused2); }, "10 11"},
      {"Unused 2=0a0", {}, "13 Type mismatch: Unused 2: \"0a0\" is no hexadecimal text"}};
  for (const auto& [line, shows, outcome] : cases) {
    SCOPED_TRACE(line);
    logger.record = fullRecord();
    const std::string path = folder.put("edited.ini", "[Config Data]\n" + line + "\n");
    const std::string raised = raisedBy([&] { logger.subReadConfigFromINIfile(path); });
    EXPECT_EQ(shows ? raised + shows(logger.record) : raised, outcome);
    if (shows) continue;
    VardenLogger untouched;
    untouched.record = fullRecord();
    EXPECT_EQ(logger.fncConfigToString("="), untouched.fncConfigToString("="));
  }
}

TEST_F(ConfigText, WhatALoggerWouldKeepOtherwiseIsRefused) {
  logger.subWriteConfigToINIfile(folder / "config.ini");
  const std::string content = contentOf(folder / "config.ini");
  const auto kept = [](const std::string& asked, const std::string& stored) {
    return "11503 KEY: of \"" + asked + "\" a logger would keep \"" + stored + "\"";
  };
  const std::string form = " is no date of the form MM-DD-YYYY Hh:Nn:Ss", early = "01-01-1900";
  // clang-format off
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"Resets", " +15.0 ", ""}, {"Resets", "16", kept("16", "0")}, {"Epoch Length", "-5", kept("-5", "32763")},
      {"Epoch Length", "60.6", kept("60.6", "61")},
      {"Epoch Length", "0", "11503 KEY: an epoch has at least one second"},
      {"Off Wrist On Threshold", "-1", kept("-1", "255")},
      {"Red Light Calibration", "65536", "6 KEY: \"65536\": Overflow"},
      {"Subject Identity", std::string(127, 'x'), ""},
      {"Subject Identity", std::string(128, 'x'), kept(std::string(128, 'x'), std::string(127, 'x'))},
      {"Subject Identity", "\u65E5", kept("\u65E5", "?")},
      {"Time Zone Daylight Abbreviation", "ABCDEFG", kept("ABCDEFG", "ABC")}, {"Unused 2", "1e99999999999999", ""},
      {"Unused 2", "000102030405060708", kept("000102030405060708", "0001020304050607")},
      {"Time Zone Bias", "32768", "11503 KEY: \"32768\": Out of Bounds Offset Value"},
      {"Button 2 Map", "77", "11503 KEY: \"77\": Invalid Button 1 Map"},
      {"Battery Installed/Charged Date", early, "11503 KEY: \"" + early + "\": Date is before 12/13/1901 8:45:52 PM"},
      {"Acquisition Start Time", "13-01-9999", "13 Type mismatch: KEY: \"13-01-9999\"" + form},
      {"Time Zone DST End", "12-31-9999 99:00:00", "13 Type mismatch: KEY: \"12-31-9999 99:00:00\"" + form}};
  // clang-format on
  for (auto [key, value, expected] : cases) {
    IniFile file(content);
    file.setValue(ConfigDataSection, key, IniFile::quotedIfNeeded(value));
    if (const auto at = expected.find("KEY"); at != std::string::npos) expected.replace(at, 3, key);
    EXPECT_EQ(raisedBy([&] { checkEditedConfig(file); }), expected) << key << '=' << value;
  }
}

TEST_F(ConfigText, WhatIsMissingHasADefault) {
  logger.subReadConfigFromINIfile(folder.put("empty.ini", "nonsense\n[Other]\nResets=5\n"));
  const VardenRecord& r = logger.record;
  EXPECT_EQ(r.EncodedSetup + r.TZstandardAbbrev + r.TZdaylightAbbrev, "UNKUNK");
  EXPECT_EQ(r.EpochLength + r.Resets + r.LightScaleCalibration + r.AcquisitionMode + r.TZbias, 1);
  EXPECT_EQ(r.StartTimeGMT, fullRecord().StartTimeGMT);
  EXPECT_FALSE(r.Unused2);
  EXPECT_EQ(numberOf([&] { logger.subReadConfigFromINIfile(folder.path()); }), 75);
}

}  // namespace
}  // namespace hy_wristlog
