#include <functional>
#include <map>

#include "support/surroundings.h"
#include "varden/VardenLogger.h"
#include "varden/config/config_check.h"
#include "varden/config/config_codec.h"
#include "varden/config/config_text.h"
#include "varden_support.h"

namespace hy_wristlog {
namespace {

/// A value in every field, none like its neighbour.
VardenRecord fullRecord() {
  VardenRecord r = loggerRecord(KR_QUILLANDER, VardenMode_ActivityAndSpecialLight);
  r.EncodedSetup = "  2Zo\u00EB \"'; [Config Data]= \"";
  r.BatteryDate = dateAt(-40 * Day + 3600);
  r.LightScaleCalibration = 65535;
  r.ActivityCalibration = 77;
  r.EndTimeGMT = dateAt(86399);
  r.TZbias = -330;
  r.TZstandardBias = 5;
  r.TZdaylightBias = -60;
  r.TZdstStart = dateAt(90 * Day + 7200);
  r.TZstandardAbbrev = "'E'";
  r.TZdaylightAbbrev = "DT ";
  r.TimeFormat = TimeFormat_24hour;
  r.DateFormat = DateFormat_DDMM;
  r.RedLightCalibration = 1100;
  r.GreenLightCalibration = 1200;
  r.BlueLightCalibration = 1300;
  r.Button1Map = ButtonMap_Marker1BacklightDateTime;
  r.Button2Map = ButtonMap_BacklightAndDateTime;
  r.Resets = 3;
  r.LowPowerShutdowns = 4;
  r.AcqThreshold = 255;
  r.DataAvailable = DataAvail_Yes;
  r.ScoreMin = 6;
  r.ScoreMax = 8;
  r.OffWristOnThreshold = 700;
  r.OffWristOffThreshold = 800;
  r.Unused2 = ByteArray{0, 255, 1, 2, 3, 4, 5, 0xA6};
  r.ConfigCRC = 0xAB;
  r.StructureVersion = 2;
  r.MemorySize = 1024;
  r.FeaturesFlag1 = 0xF;
  r.FeaturesFlag2 = 0xA0;
  r.SerialNumber = "V0012345";
  r.BytesUsed = 0x1D2A3;
  r.LowPowerShutdownFlag = LowPower_ShutdownNotOccurred;
  r.Model = 2;
  r.MemoryFull = MemFull_Yes;
  r.Unused1 = ByteArray{9, 10};
  r.BootLoaderFlag = 7;
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
  // The words are the INI's lines, without the quotes of its texts and with a name beside each code.
  std::map<std::string, std::string> named{
      {"Acquisition Mode", "Activity & Special Light (Quillander Only=lux) (7)"},
      {"Displayed Time Format", "24 hour (24)"},
      {"Displayed Date Format", "DDMM (1)"},
      {"Button 1 Map", "Marker 1, Backlight, and Date/Time (0xD)"},
      {"Button 2 Map", "Backlight and Date/Time (0xC)"},
      {"Data Available", "Data available (1)"}};
  std::string words;
  std::istringstream lines(golden("config.ini"));
  for (std::string key, value; std::getline(lines, key, '=') && std::getline(lines, value);) {
    if (key.starts_with('[')) key = key.substr(key.find('\n') + 1);
    if (key == "Raw Config Bytes") break;
    if (value.starts_with('"')) value = value.substr(1, value.size() - 3) + '\r';
    words += key + ": " + (named.contains(key) ? named[key] + '\r' : value) + '\n';
  }
  EXPECT_EQ(logger.fncConfigToString(": "), words);

  logger.subWriteConfigToINIfile(
      folder.put("other.ini", "; mine\r\n[CONFIG DATA]\r\nresets=9\r\n[Own]\r\nkey=1\r\n"));
  const std::string other = contentOf(folder / "other.ini");
  EXPECT_TRUE(other.starts_with("; mine\r\n[CONFIG DATA]\r\nResets=3\r\nSubject Identity=")) << other;
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
    const ByteArray sent = encodeConfigBlock(logger.record);
    logger.subReadConfigFromINIfile(folder / "config.ini");
    EXPECT_EQ(encodeConfigBlock(logger.record), sent);

    VardenLogger other;
    other.record.StructureVersion = 2;
    other.record.BatteryDate = dateAt(-40 * Day + 3600);
    other.subReadConfigFromINIfile(folder / "config.ini");
    EXPECT_EQ(encodeConfigBlock(other.record), sent);
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
  const std::string noDate = "\" is no date of the form MM-DD-YYYY Hh:Nn:Ss";
  const auto start = moment(&VardenRecord::StartTimeGMT), battery = moment(&VardenRecord::BatteryDate);
  const struct {
    const char* Line;
    std::function<std::string(const VardenRecord&)> Shown;
    std::string Outcome;
  } cases[] = {
      {"resets = \" 12 \"", number(&VardenRecord::Resets), "12"},
      {"Resets=256", {}, "6 Overflow: Resets: \"256\""},
      {"Resets=-1", {}, "6 Overflow: Resets: \"-1\""},
      {"Resets=many", {}, "13 Type mismatch: Resets: \"many\" is no number"},
      {"Resets=", {}, "13 Type mismatch: Resets: \"\" is no number"},
      {"Epoch Length=60,5", {}, "13 Type mismatch: Epoch Length: \"60,5\" is no number"},
      {"Epoch Length=32767", number(&VardenRecord::EpochLength), "32767"},
      {"Epoch Length=32768", {}, "6 Overflow: Epoch Length: \"32768\""},
      {"Light Calibration Factor=1E99", {}, "6 Overflow: Light Calibration Factor: \"1E99\""},
      {"Acquisition Mode=77", number(&VardenRecord::AcquisitionMode), "77"},
      {"Acquisition Start Time=02-29-2024 23:59:58", start, "2024-02-29 23:59:58"},
      {"Acquisition Start Time=02/29/2024", start, "2024-02-29 00:00:00"},
      {"Acquisition Start Time=\"   \"", start, "2020-01-01 00:00:00"},
      {"Acquisition Start Time=    ", start, "2020-01-01 00:00:00"},
      {"Acquisition Start Time=02-30-2024",
       {},
       "13 Type mismatch: Acquisition Start Time: \"02-30-2024" + noDate},
      {"Acquisition Start Time=02-20-2024 24:00:00",
       {},
       "13 Type mismatch: Acquisition Start Time: \"02-20-2024 24:00:00" + noDate},
      {"Acquisition Start Time=2024-02-20",
       {},
       "13 Type mismatch: Acquisition Start Time: \"2024-02-20" + noDate},
      {"Acquisition Start Time=1-2-24", {}, "13 Type mismatch: Acquisition Start Time: \"1-2-24" + noDate},
      {"Battery Installed/Charged Date=11-22-2019", battery, "2019-11-22 01:00:00"},
      {"Battery Installed/Charged Date=11-23-2019", battery, "2019-11-23 00:00:00"},
      {"Unused 2=0a0B", [](const VardenRecord& r) { return seriesText(*r.Unused2); }, "10 11"},
      {"Unused 2=0a0", {}, "13 Type mismatch: Unused 2: \"0a0\" is no hexadecimal text"},
      {"Unused 2=xx", {}, "13 Type mismatch: Unused 2: \"xx\" is no hexadecimal text"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Line);
    logger.record = fullRecord();
    const std::string path = folder.put("edited.ini", "[Config Data]\n" + std::string(c.Line) + "\n");
    const std::string raised = raisedBy([&] { logger.subReadConfigFromINIfile(path); });
    EXPECT_EQ(c.Shown ? raised + c.Shown(logger.record) : raised, c.Outcome);
    if (c.Shown) continue;
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
  const struct {
    std::string Key, Value, Raised;
  } cases[] = {
      {"Resets", " +15.0 ", ""},
      {"Resets", "16", kept("16", "0")},
      {"Epoch Length", "-5", kept("-5", "32763")},
      {"Epoch Length", "60.6", kept("60.6", "61")},
      {"Epoch Length", "0", "11503 KEY: an epoch has at least one second"},
      {"Off Wrist On Threshold", "-1", kept("-1", "255")},
      {"Red Light Calibration", "65536", "6 KEY: \"65536\": Overflow"},
      {"Subject Identity", std::string(127, 'x'), ""},
      {"Subject Identity", std::string(128, 'x'), kept(std::string(128, 'x'), std::string(127, 'x'))},
      {"Subject Identity", "\u65E5", kept("\u65E5", "?")},
      {"Time Zone Daylight Abbreviation", "ABCDEFG", kept("ABCDEFG", "ABC")},
      {"Unused 2", "", ""},
      {"Unused 2", "1e99999999999999", ""},
      {"Unused 2", "000102030405060708", kept("000102030405060708", "0001020304050607")},
      {"Time Zone Bias", "32768", "11503 KEY: \"32768\": Out of Bounds Offset Value"},
      {"Button 2 Map", "77", "11503 KEY: \"77\": Invalid Button 1 Map"},
      {"Battery Installed/Charged Date", early,
       "11503 KEY: \"" + early + "\": Date is before 12/13/1901 8:45:52 PM"},
      {"Acquisition Start Time", "13-01-9999", "13 Type mismatch: KEY: \"13-01-9999\"" + form},
      {"Time Zone DST End", "12-31-9999 99:00:00", "13 Type mismatch: KEY: \"12-31-9999 99:00:00\"" + form}};
  for (const auto& c : cases) {
    IniFile file(content);
    file.setValue(ConfigDataSection, c.Key, IniFile::quotedIfNeeded(c.Value));
    std::string expected = c.Raised;
    if (const auto key = expected.find("KEY"); key != std::string::npos) expected.replace(key, 3, c.Key);
    EXPECT_EQ(raisedBy([&] { checkEditedConfig(file); }), expected) << c.Key << '=' << c.Value;
  }
}

TEST_F(ConfigText, WhatIsMissingHasADefault) {
  logger.subReadConfigFromINIfile(folder.put("empty.ini", "nonsense\n[Other]\nResets=5\n"));
  const VardenRecord& r = logger.record;
  EXPECT_EQ(r.EncodedSetup + r.TZstandardAbbrev + r.TZdaylightAbbrev, "UNKUNK");
  EXPECT_EQ(r.EpochLength, 1);
  EXPECT_EQ(r.Resets + r.LightScaleCalibration + r.AcquisitionMode + r.Button1Map + r.TZbias, 0);
  EXPECT_EQ(r.StartTimeGMT, dateAt(0));
  EXPECT_FALSE(r.Unused2);
  EXPECT_EQ(numberOf([&] { logger.subReadConfigFromINIfile(folder / "none.ini"); }), 53);
  EXPECT_EQ(numberOf([&] { logger.subReadConfigFromINIfile(folder.path()); }), 75);
}

}  // namespace
}  // namespace hy_wristlog
