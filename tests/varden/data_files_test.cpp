#include <cerrno>
#include <filesystem>
#include <functional>
#include <random>

#include "errors/GlobalState.h"
#include "start_up/error_files.h"
#include "support/surroundings.h"
#include "varden/VardenLogger.h"
#include "varden/files/data_files.h"
#include "varden_support.h"

namespace hy_wristlog {
namespace {

std::string golden(const std::string& name) { return contentOf(std::string(TEST_DATA "/") + name); }

using Writer = void (VardenLogger::*)(std::string_view);

struct DataFiles : InSimulatedWorld {
  DataFiles() {
    world->setHost(boxes);
    globals().LongDateTimeFormat = "dddd, MMMM dd, yyyy h:mm:ss AMPM";
    globals().ShortDateTimeFormat = "M/d/yyyy h:mm:ss AMPM";
  }

  /// A logger of Eastern standard time with a recording.
  void fill(enmDeviceType device, int mode, const Stream& stream, const char* firmware = NewEvents) {
    VardenRecord& r = logger.record;
    r = loggerRecord(device, mode, firmware);
    r.SerialNumber = "V0012345";
    r.EncodedSetup = "2Zo\u00EB, \"the\" subject" + std::string(40, ' ');
    r.Model = device == KR_TOLKA ? 1 : 2;
    r.ConfigBlock.AcquisitionMode = 33;
    r.GMToffset = -300;
    r.RawData = stream.Bytes;
    r.BytesUsed = static_cast<std::int32_t>(stream.Bytes.size());
  }
  std::string written(Writer write) {
    (logger.*write)(folder / "file");
    return contentOf(folder / "file");
  }

  TemporaryFolder folder;
  std::shared_ptr<NotingHost> boxes = std::make_shared<NotingHost>();
  VardenLogger logger;
};

/// One sample of each mode with its columns; light 1.0 lux, colours 2^10 of their scale.
// clang-format off
const std::tuple<enmDeviceType, int, const char*> Modes[] = {
      {KR_QUILLANDER, 1, "200 status12 0 255"}, {KR_QUILLANDER, 2, "36 64 64 64 status12 0 0 0 0"},
      {KR_QUILLANDER, 3, "200 36 64 64 64 status12 1 0 0 0 0"}, {KR_QUILLANDER, 4, "0 224 status12 2 0"},
      {KR_QUILLANDER, 5, "200 0 224 status12 1 2 0"}, {KR_QUILLANDER, 7, "1 2 status12 200 255"},
      {KR_QUILLANDER, 8, "36 64 64 64 status12 0 0 0 0"}, {KR_TOLKA, 1, "200 0"}, {KR_TOLKA, 2, "0 224 2 0"},
      {KR_TOLKA, 3, "200 0 224 1 2 0"}, {KR_TOLKA, 8, "0 0 2 0"}};
// clang-format on

TEST_F(DataFiles, WholeFiles) {
  const char* const activity = "event2@-60 start@0 1 200 status1 252 event64@120 255 3x2 stop@300 9x9";
  const char* const lightTest = "253 1 0 225 11 94 0 10 1 20 2 30 3 40 7 255 9x8";
  const std::tuple<enmDeviceType, int, const char*, Writer, const char*> cases[] = {
      {KR_QUILLANDER, 3, "start@0 9", &VardenLogger::subSaveRawDataToFile, "raw_dump.csv"},
      {KR_QUILLANDER, 1, "start@0 200 status3 1 event96@120 stop@300",
       &VardenLogger::subSaveDecodedDataToFile, "report.csv"},
      {KR_TOLKA, 1, lightTest, &VardenLogger::subSaveDecodedTolkaTestDataToFile, "light_test.csv"},
      {KR_TOLKA, 1, activity, &VardenLogger::subSaveActivityOnlyKRD, "activity.krd"}};
  for (const auto& [device, mode, stream, write, file] : cases) {
    SCOPED_TRACE(file);
    fill(device, mode, stream);
    EXPECT_EQ(written(write), golden(file));
  }
  EXPECT_EQ(logger.record.StartTimeGMT, dateAt(0));
}

TEST_F(DataFiles, ReportColumnsByDeviceAndMode) {
  std::string all;
  for (const auto& [device, mode, samples] : Modes) {
    fill(device, mode, ("start@0 " + std::string(samples)).c_str());
    const std::string report = written(&VardenLogger::subSaveDecodedDataToFile);
    const std::size_t from = report.find("\"Date/"), to = report.find("\r\n\"-----");
    all += (device == KR_TOLKA ? "Tolka " : "Quillander ") + std::to_string(mode) + "\r\n" +
           report.substr(from, to - from);
  }
  EXPECT_EQ(all, golden("report_columns.txt"));
}

TEST_F(DataFiles, AReportWithoutColumnsLeavesItsHeadingWhereNothingStood) {
  for (const auto& [device, mode] : {std::pair{25, 9}, {25, 6}, {26, 9}, {26, 5}, {0, 1}}) {
    fill(static_cast<enmDeviceType>(device), mode, device == KR_TOLKA ? "start@0 7" : "");
    const std::string former = folder.put("former", "kept"), fresh = folder / std::to_string(device + mode);
    for (const std::string& path : {former, fresh})
      EXPECT_EQ(raisedBy([&] { logger.subSaveDecodedDataToFile(path); }),
                device == 0 ? "11502 Incompatible Device Type" : "11503 Incompatible Logging Mode");
    EXPECT_EQ(contentOf(former), "kept");
    EXPECT_TRUE(contentOf(fresh).ends_with("\"Acquisition Mode:\",\"33\"\r\n\r\n"));
  }
}

TEST_F(DataFiles, BoxesTellResultAndBattery) {
  const std::pair<const char*, const char*> cases[] = {
      {"start@0 7", ""},
      {"start@0 status2 7", "[HY_Wristlog] Low battery condition detected (but not shutdown.\n"},
      {"start@0 7 event8=256", "power reset, but the power-on-self-test FAILED! Decod"},
      {"event4@0 1", "[HY_Wristlog] Logger memory is full. Proceeding with decode...\n"},
      {"start@0 7x9 stop@60", "but any data after the error will ignored.\n"},
      {"", "[HY_Wristlog] Invalid input. Aborting decode.\n"},
      {"event0@0", "the data stream is damaged. Decoding will proceed but any"},
      {"start@0 7 253 8 0x5 0", "a stream of data that can't be distinguished from other"}};
  for (const auto& [stream, box] : cases) {
    fill(KR_QUILLANDER, 1, stream);
    logger.record.Resets = std::string_view(stream).find("253 8") != std::string_view::npos;
    boxes->Shown.clear();
    written(&VardenLogger::subSaveDecodedDataToFile);
    EXPECT_NE(boxes->Shown.find(box), std::string::npos) << stream << boxes->Shown;
    EXPECT_EQ(boxes->Shown.empty(), *box == '\0');
  }
}

TEST_F(DataFiles, ADumpReadBackGivesTheSameBytesAndNoConfiguration) {
  std::mt19937 random(7);
  for (const std::size_t size : {0, 1, 4096, 300000, 300001}) {
    Stream stream;
    for (std::size_t i = 0; i < size; ++i) stream.many(1, static_cast<int>(random() & 255));
    fill(KR_TOLKA, 1, stream);
    logger.record.EncodedSetup = "2Address, \"Address\"";
    written(&VardenLogger::subSaveRawDataToFile);
    VardenLogger reader;
    const bool tooLong = size > 300000;
    EXPECT_EQ(numberOf([&] { reader.subReadRawDataFromFile(folder / "file"); }), tooLong ? 9 : 0);
    EXPECT_EQ(reader.record.RawData, tooLong ? std::optional<ByteArray>() : stream.Bytes);
    EXPECT_EQ(reader.record.BytesUsed, tooLong ? 0 : static_cast<int>(size));
    EXPECT_EQ(reader.record.SerialNumber + std::to_string(reader.record.EpochLength), "0");
    EXPECT_EQ(readRawDump(contentOf(folder / "file"), size), stream.Bytes);
  }
}

TEST_F(DataFiles, TheDumpEndsWithBytesUsed) {
  fill(KR_TOLKA, 1, "1 2 3 4");
  const auto bytes = [&](std::int32_t used) {
    logger.record.BytesUsed = used;
    return seriesText(readRawDump(written(&VardenLogger::subSaveRawDataToFile)));
  };
  EXPECT_EQ(bytes(3) + "|" + bytes(0) + "|" + bytes(4) + "|" + bytes(99) + "|" + bytes(-3),
            "1 2 3|1 2 3 4|1 2 3 4|1 2 3 4|");
}

TEST_F(DataFiles, NonsenseFilesAreRefused) {
  const std::string heading = "\"QV/HY Varden Logger Raw Data Output File\"\r\n",
                    start = heading + "\"Address\"\r\n\r\n";
  const std::pair<std::string, std::string> cases[] = {
      {"", "box"},
      {std::string(3, '\0') + "\xFF\xFE" + heading.substr(9), "box"},
      {heading, "13 Type mismatch: the raw data file ends before its line \"Address\""},
      {start, ""},
      {heading + "Address,Raw\n\n0,1\n\n0,\" 255 \"\n2", "1 255 2"},
      {start + "0,1,2\r\n", "13 Type mismatch: \"1,2\" is no byte in line 4"},
      {start + "0,x" + std::string(99, 'x') + "\n",
       "13 Type mismatch: \"" + std::string(40, 'x') + "\" is no byte in line 4"},
      {start + "0,256\n", "6 Overflow: \"256\" is no byte in line 4"},
      {start + "0,1" + std::string(999, '0') + "\n",
       "6 Overflow: \"1" + std::string(39, '0') + "\" is no byte in line 4"}};
  for (const auto& [content, expected] : cases) {
    boxes->Shown.clear();
    logger.record.RawData.reset();
    const std::string path = folder.put("nonsense", content);
    std::string outcome = raisedBy([&] { logger.subReadRawDataFromFile(path); });
    if (boxes->Shown.starts_with("[Incorrect file format] Incorrect file format. ")) outcome = "box";
    if (outcome.empty()) outcome = seriesText(*logger.record.RawData);
    EXPECT_EQ(outcome, expected) << content;
  }
  const std::string swapped =
      start + "\"00000 (0)\",7\r\n\r\n2\r\n,3\r\n\"00004 (4)\",5\r\n\"00003 (3)\",4\r\n";
  EXPECT_EQ(seriesText(readRawDump(swapped)), "7 2 3 5 4");
  EXPECT_EQ(raisedBy([&] { readRawDump(swapped, 99, Addresses::Checked); }).substr(0, 67),
            "13 Type mismatch: address 4 stands in line 8 where 3 belongs: lines");
  EXPECT_EQ(numberOf([&] { logger.subReadRawDataFromFile(folder / "none"); }), 53);
}

TEST_F(DataFiles, LightTestAndActivityRefuseWhatTheyCannotRead) {
  const auto lightTest = &VardenLogger::subSaveDecodedTolkaTestDataToFile;
  const auto krd = &VardenLogger::subSaveActivityOnlyKRD;
  const std::tuple<Writer, const char*, const char*> cases[] = {
      {lightTest, "254 1 0x4", "11506 First byte of Tolka Test data stream is not 253 event mark."},
      {lightTest, "253 2 0x4",
       "11506 Second byte of Tolka Test data stream is not acquisition start bitmap."},
      {lightTest, "253 1 0 0", "9 Subscript out of range"},
      {krd, "start@0 7", "11503 Next memory address is zero! Try 'Show Config' first..."},
      {krd, "", "11503 Activity calibration is zero! Try 'Show Config' first..."}};
  for (const auto& [write, stream, raised] : cases) {
    fill(KR_TOLKA, 1, stream);
    logger.record.ActivityCalibration = *stream != '\0' ? 128 : 0;
    if (write == krd) logger.record.BytesUsed = 0;
    EXPECT_EQ(raisedBy([&] { (logger.*write)(folder / "file"); }), raised);
    EXPECT_FALSE(std::filesystem::exists(folder / "file"));
  }
  EXPECT_EQ(outcome([&] { (logger.*krd)(folder / "file"); }).substr(0, 47),
            "11503 Class_VardenLogger.subSaveActivityOnlyKRD");
}

/// Counts are scaled without the decoder's limit, and code 255 too; a time's last byte counts as a code.
TEST_F(DataFiles, ActivityIsScaled) {
  fill(KR_TOLKA, 1, "0 1 32 33 243 255 9x8");
  const auto rows = [&](int calibration) {
    logger.record.ActivityCalibration = static_cast<std::uint8_t>(calibration);
    std::string text = written(&VardenLogger::subSaveActivityOnlyKRD);
    text.erase(0, text.find("M\r\n") + 3);
    std::replace(text.begin(), text.end(), '\n', ' ');
    std::erase(text, '\r');
    return text;
  };
  EXPECT_EQ(rows(128), "0 1 32 34 32767 -1 ");
  EXPECT_EQ(rows(1), "0 128 4096 4352 4194176 -128 ");
  EXPECT_EQ(rows(255), "0 1 16 17 16448 -1 ");
}

TEST_F(DataFiles, WhatTheDiskRefusesHarmsNoFormerFile) {
  const Writer writers[] = {&VardenLogger::subSaveRawDataToFile, &VardenLogger::subSaveDecodedDataToFile,
                            &VardenLogger::subSaveDecodedTolkaTestDataToFile,
                            &VardenLogger::subSaveActivityOnlyKRD, &VardenLogger::subWriteConfigToINIfile};
  fill(KR_TOLKA, 1, "start@0 1x30000");
  fncLoadGlobalErrors();
  const std::string former = folder.put("former", "[kept]\r\nkey=value\r\n"), fresh = folder / "new";
  // clang-format off
  const simulator::Fault always = simulator::always(), later = simulator::once(1);
  const std::tuple<std::string, std::int32_t, std::int32_t, simulator::Fault> cases[] = {
      {former, ENOSPC, 61, always}, {fresh, ENOSPC, 61, always}, {former, EACCES, 70, always}, {folder.path(), 0, 75, {}},
      {folder / "none/new", 0, 76, {}}, {former, ENOSPC, 61, later},
      {fresh, ENOSPC, 61, later}};
  // clang-format on
  for (const Writer write : writers)
    for (const auto& [path, error, raised, when] : cases) {
      // In the middle of a file: only those of the recording have one.
      if (write == writers[4] && when.Skip > 0) continue;
      globals().emptyErrorStack();
      world->Faults.FileWrite = {error, when};
      EXPECT_EQ(numberOf([&, &path = path] { (logger.*write)(path); }), raised) << path << ' ' << error;
      EXPECT_EQ(contentOf(former), "[kept]\r\nkey=value\r\n");
      const auto left = std::filesystem::directory_iterator(folder.path());
      EXPECT_EQ(std::distance(begin(left), end(left)), 1);
    }
  world->Faults.FileWrite = {};
  for (const Writer write : writers) {
    EXPECT_EQ(numberOf([&] { (logger.*write)(folder / "fine"); }), 0);
    EXPECT_TRUE(std::filesystem::remove(folder / "fine"));
  }
  logger.record.RawData.reset();
  for (const Writer write : {writers[0], writers[1], writers[2], writers[3]}) {
    boxes->Shown.clear();
    (logger.*write)(former);
    EXPECT_EQ(boxes->Shown, "[HY_Wristlog] Insufficient data\n");
  }
  EXPECT_EQ(contentOf(former), "[kept]\r\nkey=value\r\n");
}

}  // namespace
}  // namespace hy_wristlog
