#include "engineering/files.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "base/ascii.h"

#include "base/faults.h"
#include "base/inside.h"
#include "engineering/recording.h"
#include "engineering/saved_pendrel.h"
#include "engineering/saved_recording.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "platform/platform.h"
#include "start_up/start_up.h"
#include "tools/Class_Tools.h"
#include "tools/ini_file.h"
#include "tools/paths.h"
#include "varden/VardenLogger.h"
#include "varden/config/config_check.h"
#include "varden/config/config_codec.h"
#include "varden/config/config_text.h"
#include "varden/files/data_files.h"

namespace hy_wristlog::engineering {

using namespace FailureNumber;
namespace {

ByteArray bytesOfDump(std::string_view content, const std::string& path) {
  return naming(path, [&] { return readRawDump(content, LongestRecordingFile, Addresses::Checked); });
}

/// Runs a step without the failures of earlier commands, which would hide its own. A failure that the site
/// wants to be left quietly or passed over is raised all the same, since the user waits for the outcome.
template <class Step>
void anew(Step&& step) {
  auto& stack = globals().ErrorStack;
  globals().emptyErrorStack();
  step();
  if (stack.empty() || !stack.front()) return;
  const std::int32_t action = stack.front()->ErrorAction;
  if (action != errExit && action != errResumeNext) return;
  throw Failure(stack.front()->ErrorNumber, stack.front()->ErrorOriginalSource,
                stack.front()->ErrorDescription);
}

/// The same for a step that writes the file `named`; raises FileNotFound when there is none after it.
template <class Step>
void writtenAnew(const std::string& named, Step&& step) {
  anew(step);
  const std::string path = nativePath(named);
  if (platform::current().files().state(path).Kind != platform::FileKind::File)
    fault::raise(fault::FileNotFound, path + " was not written");
}

/// Lets a step write the file; when it fails, the former content is brought back.
template <class Step>
void restoring(const std::string& named, Step&& step) {
  const std::string path = nativePath(named);
  platform::Files& files = platform::current().files();
  std::optional<std::string> former;
  withFileFaults(path, [&] {
    if (files.state(path).Kind == platform::FileKind::File) former = files.read(path);
  });
  try {
    step();
  } catch (const Failure&) {
    ignoringFailures([&] {
      withFileFaults(path, [&] {
        if (former)
          files.write(path, *former);
        else
          files.remove(path);
      });
    });
    throw;
  }
}

std::string hexOf(const ByteArray& bytes) { return Class_Tools::fncConvertByteArrayToHexString(bytes); }

/// The block that a logger keeps when it is sent `sent`: the logger's own part first, and a checksum over
/// all.
ByteArray storedBlock(const std::string& formerHex, const ByteArray& sent) {
  const auto former = Class_Tools::fncConvertHexStringToByteArray(formerHex);
  ByteArray block(former.begin(), former.end());
  if (block.size() < ConfigBlockSize || sent.size() < ConfigBlockSize - ConfigSentFrom)
    fault::raise(fault::Subscript);
  block.resize(ConfigBlockSize);
  std::copy_n(sent.begin(), ConfigBlockSize - ConfigSentFrom, block.begin() + ConfigSentFrom);
  const auto checksum =
      static_cast<std::uint16_t>(Class_Tools::fncGetCRC16(std::span(block).subspan(sizeof(std::uint16_t))));
  block[0] = static_cast<std::uint8_t>(checksum & 255);
  block[1] = static_cast<std::uint8_t>(checksum >> 8);
  return block;
}

/// A key that is not there would count as 0.
void requireAllKeys(const IniFile& file, const VardenRecord& record, const std::string& path) {
  std::vector<std::string> missing;
  for (const auto& [label, value] : editableConfig(record))
    if (!file.value(ConfigDataSection, label)) missing.push_back(label);
  if (missing.empty()) return;
  const std::string more = missing.size() > 1 ? " and " + std::to_string(missing.size() - 1) + " more" : "";
  throw Failure(OutOfRange, "engineering.withEditedConfig",
                path + " lacks \"" + missing.front() + "\"" + more + " in its section \"" +
                    std::string(ConfigDataSection) + "\". Export the configuration and edit that file");
}

bool isSameFile(const std::string& one, const std::string& other) {
  std::error_code error;
  if (std::filesystem::equivalent(one, other, error)) return true;
  const auto place = [&](const std::string& path) {
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
  };
  const auto first = place(one);
  return !first.empty() && first == place(other);
}

bool isIniText(std::string_view text) {
  return text.find('\0') == text.npos && (trimBlanks(text).empty() || IniFile(text).hasSections());
}

}  // namespace

std::string contentOf(const std::string& named, std::size_t most) {
  openLibrary();
  const std::string path = nativePath(named);
  platform::Platform& world = platform::current();
  try {
    switch (world.files().state(path).Kind) {
      case platform::FileKind::Missing:
        fault::raise(fault::FileNotFound, path);
      case platform::FileKind::Folder:
        fault::raise(fault::PathFileAccess, path + " is a folder, not a file");
      case platform::FileKind::Other:
        fault::raise(fault::PathFileAccess, path + " is not an ordinary file");
      case platform::FileKind::File:
        break;
    }
    return world.files().readUpTo(most, path);
  } catch (const platform::SystemError& error) {
    fault::raise(fault::PathFileAccess,
                 path + " cannot be read: " + world.environment().errorText(error.Number));
  }
}

std::string iniTextOf(const std::string& path) { return contentOf(path, platform::Files::LongestText); }

std::string configHexFromIni(const std::string& path) {
  const std::string content = iniTextOf(path);
  if (isPendrelConfig(content)) naming(path, [] { refusePendrel("engineering.configHexFromIni"); });
  const IniFile file(content);
  const auto hex = file.value(ConfigBytesSection, RawConfigBytesKey);
  if (!hex || hex->empty()) IniFile::requireUtf8(content, path);
  if (!hex || hex->empty())
    throw Failure(OutOfRange, "engineering.configHexFromIni",
                  path + " has no key \"Raw Config Bytes\" in a section \"Configuration Bytes\"");
  return std::string(*hex);
}

std::shared_ptr<Class_VardenLogger> loggerFromIni(const std::string& path) {
  const std::string hex = configHexFromIni(path);
  auto logger = naming(path, [&] { return loggerFromConfig(hex); });
  std::string& firmware = Inside::of(*logger).record.FirmwareVersion;
  if (firmware.empty())
    firmware = IniFile(iniTextOf(path)).value(ReadOnlyConfigSection, "Firmware Version").value_or("");
  return logger;
}

std::vector<std::uint8_t> rawFromFile(const std::string& path) {
  const std::string content = contentOf(path);
  if (!isRawDump(content)) return {content.begin(), content.end()};
  return bytesOfDump(content, path);
}

std::vector<std::uint8_t> rawFromDump(const std::string& path) {
  const std::string content = contentOf(path);
  if (!isRawDump(content))
    throw Failure(fault::TypeMismatch, "engineering.rawFromDump",
                  path + " is no raw data file: 'wristlog raw dump' makes one");
  return bytesOfDump(content, path);
}

void setRawData(Class_VardenLogger& logger, std::vector<std::uint8_t> raw) {
  Inside::of(logger).setRawData(std::move(raw));
}

void checkOutput(const std::string& named, bool overwrite, const std::vector<std::string>& inputs) {
  openLibrary();
  const std::string path = nativePath(named);
  for (const std::string& input : inputs)
    if (isSameFile(path, nativePath(input)))
      throw Failure(fault::InvalidCall, "engineering.checkOutput",
                    std::string(path)
                        .append(" cannot be written: this command needs ")
                        .append(input)
                        .append(", the same file"));
  const platform::FileKind kind =
      withFileFaults(path, [&] { return platform::current().files().state(path).Kind; });
  std::error_code none;
  if (std::filesystem::is_symlink(path, none))
    throw Failure(fault::PathFileAccess, "engineering.checkOutput", path + " is in the way: it is a link");
  if (kind != platform::FileKind::Missing && kind != platform::FileKind::File)
    throw Failure(fault::PathFileAccess, "engineering.checkOutput",
                  path + " is in the way: it is not a file");
  if (kind == platform::FileKind::File && !overwrite)
    throw Failure(FailureNumber::FileExists, "engineering.checkOutput",
                  path + " exists. Use --force to overwrite it.");
  withFileFaults(path, [&] {
    const std::string trial = path.substr(0, path.find_last_of('/') + 1) + ".wristlog-trial";
    platform::current().files().write(trial, {});
    platform::current().files().remove(trial);
  });
}

void checkIniOutput(const std::string& named, bool overwrite, const std::vector<std::string>& inputs) {
  checkOutput(named, overwrite, inputs);
  const std::string path = nativePath(named);
  if (platform::current().files().state(path).Kind == platform::FileKind::Missing) return;
  const std::string content = iniTextOf(path);
  if (isIniText(content) || IniFile::isUtf16(content))
    IniFile::requireUtf8(content, path);
  else
    throw Failure(fault::PathFileAccess, "engineering.checkIniOutput",
                  path + " is no INI file, so the configuration cannot be put into it");
}

void saveRawBytes(const std::vector<std::uint8_t>& raw, const std::string& named) {
  const std::string path = nativePath(named);
  withFileFaults(path, [&] { platform::current().files().write(path, std::string(raw.begin(), raw.end())); });
}

void saveRawDump(Class_VardenLogger& logger, const std::string& path) {
  writtenAnew(path, [&] { Inside::of(logger).subSaveRawDataToFile(path); });
}

enmDecodeResult saveReport(Class_VardenLogger& logger, const std::string& path) {
  writtenAnew(path, [&] { Inside::of(logger).subSaveDecodedDataToFile(path); });
  return Inside::of(logger).record.DecodeResult;
}

void saveLightTest(Class_VardenLogger& logger, const std::string& path) {
  const auto& raw = Inside::of(logger).record.RawData;
  if (raw && raw->size() < ShortestLightTest)
    throw Failure(NoLightTest, "engineering.saveLightTest",
                  "too short for a light test: " + std::to_string(raw->size()) + " bytes hold no reading");
  writtenAnew(path, [&] { Inside::of(logger).subSaveDecodedTolkaTestDataToFile(path); });
}

void saveActivityOnly(Class_VardenLogger& logger, const std::string& path) {
  writtenAnew(path, [&] { Inside::of(logger).subSaveActivityOnlyKRD(path); });
}

ConfigItems configItems(const Class_VardenLogger& logger) { return configInWords(Inside::of(logger).record); }

void saveConfigIni(Class_VardenLogger& logger, const std::string& path, const std::string& recordingIni) {
  const std::string recording = recordingIni.empty() ? std::string() : iniTextOf(recordingIni);
  restoring(path, [&] {
    writtenAnew(path, [&] { Inside::of(logger).subWriteConfigToINIfile(path); });
    const std::string written = iniTextOf(path), native = nativePath(path);
    const std::string whole = withRecordingOf(recording, written);
    if (whole != written) withFileFaults(native, [&] { platform::current().files().write(native, whole); });
  });
}

void saveConfigImage(Class_VardenLogger& logger, const std::string& path) {
  writtenAnew(path, [&] { Inside::of(logger).subWriteConfigToBINfile(path); });
}

void saveConfigIniAndImage(Class_VardenLogger& logger, const std::string& ini, const std::string& image,
                           const std::string& recordingIni) {
  restoring(image, [&] {
    saveConfigImage(logger, image);
    saveConfigIni(logger, ini, recordingIni);
  });
}

std::shared_ptr<Class_VardenLogger> withEditedConfig(const Class_VardenLogger& logger,
                                                     const std::string& iniPath) {
  const std::string former = Inside::of(logger).record.RawConfigHex;
  const auto edited = loggerFromConfig(former);
  const std::string content = iniTextOf(iniPath);
  IniFile::requireUtf8(content, iniPath);
  const IniFile file(content);
  requireAllKeys(file, Inside::of(*edited).record, iniPath);
  naming(iniPath, [&] {
    anew([&] { checkEditedConfig(file); });
    anew([&] { Inside::of(*edited).subReadConfigFromINIfile(iniPath); });
    anew([&] { Inside::of(*edited).fncEncodeVardenLoggerConfig(); });
  });
  const auto& sent = Inside::of(*edited).record.EncodedConfigBytes;
  auto result = loggerFromConfig(hexOf(storedBlock(former, sent ? *sent : ByteArray())));
  std::string& firmware = Inside::of(*result).record.FirmwareVersion;
  if (firmware.empty()) firmware = logger.Get_FirmwareVersion();
  return result;
}

}  // namespace hy_wristlog::engineering
