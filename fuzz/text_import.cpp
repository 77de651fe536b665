// The engineers' text files: configurations that were edited, and raw data files.
#include <algorithm>
#include <string>

#include "engineering/files.h"
#include "engineering/pendrel_files.h"
#include "engineering/recording.h"
#include "engineering/saved_pendrel.h"
#include "engineering/saved_recording.h"
#include "support/logger_bytes.h"
#include "support/quiet_world.h"
#include "support/script.h"
#include "tools/Class_Tools.h"
#include "tools/ini_file.h"
#include "varden/VardenLogger.h"
#include "varden/config/config_check.h"
#include "varden/config/config_codec.h"
#include "varden/config/config_text.h"
#include "varden/files/data_files.h"

namespace hy_wristlog::fuzz {
namespace {

constexpr std::string_view Lines[] = {"[Config Data]",
                                      "[Read Only Config Data]",
                                      "[Configuration Bytes]",
                                      "Raw Config Bytes=#",
                                      "[Recording]",
                                      "Subject Identity=2Jo",
                                      "Battery Installed/Charged Date=02-29-2024",
                                      "Acquisition Mode=#",
                                      "Epoch Length=#",
                                      "Acquisition Start Time=03-31-2020 02:00:00",
                                      "Time Zone Bias=#",
                                      "Time Zone Standard Bias=#",
                                      "Time Zone DST End=",
                                      "Time Zone Standard Abbreviation=' E'",
                                      "Button 1 Map=#",
                                      "Resets=#",
                                      "Off Wrist On Threshold=#.5",
                                      "Unused 2=00FF0102030405A6",
                                      "Bytes=#",
                                      "Part=1",
                                      "[Pendrel Set-up]",
                                      "Recorded Bytes=#",
                                      "Start Date=2026-03-02",
                                      "Start Time=09:#:00",
                                      "Time Zone=EST",
                                      "Offset=-#",
                                      "Battery Voltage=3.#",
                                      "Retrieved=2026-03-02 14:00:00",
                                      "; #",
                                      "\"QV/HY Varden Logger Raw Data Output File\"",
                                      "\"Address\",\"Raw Data Value\"",
                                      "\"0000# (#)\",\"#\"",
                                      "#",
                                      "\"\",\"253\""};

/// What an INI file holds is the same after it was written and read.
void checkIni(std::string_view text) {
  IniFile file(text);
  const std::string whole = file.content();
  require(IniFile(whole).content() == whole, "an INI file written again differs");
  constexpr std::string_view Value = " 'a\" ";
  file.setValue("Recording", "Bytes", IniFile::quotedIfNeeded(Value));
  require(IniFile(file.content()).value("recording", "bytes") == Value, "a value got lost");
  require(file.removeKey("Recording", "BYTES"), "a key cannot be removed");
  file.removeSection("Recording");
}

void checkConfiguration(const QuietWorld& world, std::string_view text) {
  const IniFile file(text);
  VardenRecord record;
  if (world.failureOf([&] { checkEditedConfig(file); }) == 0)
    reached("configurations that a logger would keep", 1);
  if (world.failureOf([&] { readEditableConfig(file, record); }) != 0) return;
  world.failureOf([&] { encodeConfigBlock(record); });
  ConfigItems items;
  if (world.failureOf([&] { items = editableConfig(record); }) != 0) return;
  IniFile written("");
  for (const auto& [label, value] : items) {
    if (!IniFile::canHold(value)) return;
    written.setValue(ConfigDataSection, label, IniFile::quotedIfNeeded(value));
  }
  VardenRecord back = record;
  require(world.failureOf([&] { readEditableConfig(IniFile(written.content()), back); }) == 0,
          "a configuration that was written cannot be read");
  require(editableConfig(back) == items, "a configuration read back differs");
  reached("configurations", 1);
}

/// A short number in the place of a config block stands for the block of that mode.
std::string withBlock(std::string_view text) {
  IniFile file(text);
  const auto value = file.value(ConfigBytesSection, RawConfigBytesKey);
  if (!value || value->size() > 4) return std::string(text);
  const std::string line = "mode " + std::string(*value);
  const std::int64_t mode = Line(line).number(1);
  file.setValue(ConfigBytesSection, RawConfigBytesKey,
                Class_Tools::fncConvertByteArrayToHexString(configBlock(mode, mode)));
  return file.content();
}

/// The program's way: the file is opened as a saved recording and as an edited configuration.
void openFile(const QuietWorld& world, std::string_view text) {
  const std::string path = "/quiet/folders/config.ini", raw = "/quiet/folders/raw",
                    saved = "/quiet/folders/saved.ini";
  world->files().write(path, withBlock(text));
  world->files().write(raw, text);
  std::shared_ptr<Class_VardenLogger> logger;
  if (world.failureOf([&] { logger = engineering::loggerFromIni(path); }) == 0) {
    reached("files with a config block", 1);
    world.failureOf([&] {
      const auto edited = engineering::withEditedConfig(*logger, path);
      reached("edited configurations", 1);
      engineering::saveConfigIni(*edited, saved, path);
      require(engineering::loggerFromIni(saved)->Get_ConfigBlock() == edited->Get_ConfigBlock(),
              "a configuration saved as text is another one");
    });
  }
  world.failureOf([&] {
    const auto recording = engineering::savedRecording(path, raw);
    recording.mismatch();
    recording.retrievedAt();
    if (recording.isPendrel()) {
      const auto pendrel = engineering::openPendrel(recording);
      reached("recordings of the older family", 1);
      engineering::saveRawDump(*pendrel, saved);
      engineering::saveReport(*pendrel, saved);
      return;
    }
    bool low = false;
    engineering::decode(*engineering::openRecording(recording), true, low);
    reached("recordings that were opened", 1);
  });
}

void checkDump(const QuietWorld& world, std::string_view text) {
  ByteArray strict, lenient;
  const auto refused = world.failureOf(
      [&] { strict = readRawDump(text, engineering::LongestRecordingFile, Addresses::Checked); });
  if (world.failureOf([&] { lenient = readRawDump(text, MostDumpedBytes); }) != 0) return;
  if (refused == 0) require(strict == lenient, "the addresses change the bytes");
  if (lenient.empty()) return;
  VardenLogger logger;
  logger.record.RawData = lenient;
  logger.record.BytesUsed = static_cast<std::int32_t>(lenient.size());
  const std::string path = "/quiet/folders/dump.csv";
  if (world.failureOf([&] { logger.subSaveRawDataToFile(path); }) != 0) return;
  require(readRawDump(world->files().read(path), MostDumpedBytes, Addresses::Checked) == lenient,
          "a dump read back differs");
  reached("bytes of dumps", static_cast<std::int64_t>(lenient.size()));
}

}  // namespace

const std::span<const std::string_view> Grammar = Lines;

void run(std::string_view text) {
  const QuietWorld world;
  world.failureOf([&] { IniFile::requireUtf8(text, "file"); });
  checkIni(text);
  if (isRawDump(text))
    checkDump(world, text);
  else
    checkConfiguration(world, text);
  openFile(world, text);
}

}  // namespace hy_wristlog::fuzz
