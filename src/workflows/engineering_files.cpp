#include "workflows/engineering_files.h"

#include <algorithm>
#include <utility>

#include "base/faults.h"
#include "errors/GlobalState.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/ini_file.h"
#include "tools/paths.h"
#include "varden/VardenLogger.h"
#include "varden/config_codec.h"
#include "varden/config_text.h"
#include "varden/data_files.h"
#include "workflows/engineering.h"
#include "workflows/start_up.h"

namespace hy_wristlog::engineering {
namespace {

constexpr std::int32_t FileExists = 58;
constexpr std::size_t LongestFile = std::size_t{64} << 20;
constexpr std::size_t SentFrom = 64;

/// What stands in a file that the user named; every failure names it too.
std::string contentOf(const std::string& named) {
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
    std::string content = world.files().read(path);
    if (content.size() > LongestFile)
      fault::raise(fault::PathFileAccess, path + " is too long for a recording");
    return content;
  } catch (const platform::SystemError& error) {
    fault::raise(fault::PathFileAccess,
                 path + " cannot be read: " + world.environment().errorText(error.Number));
  }
}

/// Failures of `step` get the file's name in front of their words.
template <class Step>
auto naming(const std::string& path, Step&& step) {
  try {
    return step();
  } catch (const Failure& failure) {
    throw Failure(failure.Number, failure.Source, path + ": " + failure.Description);
  }
}

ByteArray bytesOfDump(std::string_view content, const std::string& path) {
  return naming(path, [&] { return readRawDump(content, LongestFile); });
}

/// A step of its own: a failure of a former command does not hide its failures, and one that the site wants
/// to be left quietly is raised all the same, since the user waits for a file.
template <class Step>
void anew(Step&& step) {
  auto& stack = globals().ErrorStack;
  globals().emptyErrorStack();
  step();
  if (stack.empty() || !stack.front() || stack.front()->ErrorAction != errExit) return;
  throw Failure(stack.front()->ErrorNumber, stack.front()->ErrorOriginalSource,
                stack.front()->ErrorDescription);
}

std::string hexOf(const ByteArray& bytes) { return Class_Tools::fncConvertByteArrayToHexString(bytes); }

/// The block that a logger keeps when it is sent `sent`: its own part in front, and a checksum over all.
ByteArray storedBlock(const std::string& formerHex, const ByteArray& sent) {
  const auto former = Class_Tools::fncConvertHexStringToByteArray(formerHex);
  ByteArray block(former.begin(), former.end());
  if (block.size() < ConfigBlockSize || sent.size() < ConfigBlockSize - SentFrom)
    fault::raise(fault::Subscript);
  block.resize(ConfigBlockSize);
  std::copy_n(sent.begin(), ConfigBlockSize - SentFrom, block.begin() + SentFrom);
  const auto checksum =
      static_cast<std::uint16_t>(Class_Tools::fncGetCRC16(std::span(block).subspan(sizeof(std::uint16_t))));
  block[0] = static_cast<std::uint8_t>(checksum & 255);
  block[1] = static_cast<std::uint8_t>(checksum >> 8);
  return block;
}

/// A key that is not there would count as 0.
void requireAllKeys(const VardenRecord& record, const std::string& path) {
  const IniFile file(contentOf(path));
  std::vector<std::string> missing;
  for (const auto& [label, value] : editableConfig(record))
    if (!file.value(ConfigDataSection, label)) missing.push_back(label);
  if (missing.empty()) return;
  const std::string more = missing.size() > 1 ? " and " + std::to_string(missing.size() - 1) + " more" : "";
  throw Failure(11503, "engineering.withEditedConfig",
                path + " lacks \"" + missing.front() + "\"" + more + " in its section \"" +
                    std::string(ConfigDataSection) + "\". Export the configuration and edit that file");
}

}  // namespace

std::string configHexFromIni(const std::string& path) {
  const IniFile file(contentOf(path));
  const auto hex = file.value(ConfigBytesSection, RawConfigBytesKey);
  if (!hex || hex->empty())
    throw Failure(11503, "engineering.configHexFromIni",
                  path + " has no key \"Raw Config Bytes\" in a section \"Configuration Bytes\"");
  return std::string(*hex);
}

std::shared_ptr<Class_VardenLogger> loggerFromIni(const std::string& path) {
  const std::string hex = configHexFromIni(path);
  auto logger = naming(path, [&] { return loggerFromConfig(hex); });
  std::string& firmware = logger->inside().record.FirmwareVersion;
  if (firmware.empty())
    firmware = IniFile(contentOf(path)).value(ReadOnlyConfigSection, "Firmware Version").value_or("");
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
  VardenRecord& record = logger.inside().record;
  record.BytesUsed = fault::narrow<std::int32_t>(raw.size());
  record.RawData = std::move(raw);
}

void checkOutput(const std::string& named, bool overwrite) {
  openLibrary();
  const std::string path = nativePath(named);
  const platform::FileKind kind =
      withFileFaults(path, [&] { return platform::current().files().state(path).Kind; });
  if (kind == platform::FileKind::Missing) return;
  if (kind != platform::FileKind::File)
    throw Failure(fault::PathFileAccess, "engineering.checkOutput",
                  path + " is in the way: it is not a file");
  if (!overwrite)
    throw Failure(FileExists, "engineering.checkOutput", path + " exists. Use --force to overwrite it.");
}

void saveRawBytes(const std::vector<std::uint8_t>& raw, const std::string& named) {
  const std::string path = nativePath(named);
  withFileFaults(path, [&] { platform::current().files().write(path, std::string(raw.begin(), raw.end())); });
}

void saveRawDump(Class_VardenLogger& logger, const std::string& path) {
  anew([&] { logger.inside().subSaveRawDataToFile(path); });
}

enmDecodeResult saveReport(Class_VardenLogger& logger, const std::string& path) {
  anew([&] { logger.inside().subSaveDecodedDataToFile(path); });
  return logger.inside().record.DecodeResult;
}

void saveLightTest(Class_VardenLogger& logger, const std::string& path) {
  anew([&] { logger.inside().subSaveDecodedTolkaTestDataToFile(path); });
}

void saveActivityOnly(Class_VardenLogger& logger, const std::string& path) {
  anew([&] { logger.inside().subSaveActivityOnlyKRD(path); });
}

ConfigItems configItems(const Class_VardenLogger& logger) { return configInWords(logger.inside().record); }

std::string configText(Class_VardenLogger& logger, std::string_view separator) {
  return logger.inside().fncConfigToString(separator);
}

void saveConfigIni(Class_VardenLogger& logger, const std::string& path) {
  anew([&] { logger.inside().subWriteConfigToINIfile(path); });
}

void saveConfigImage(Class_VardenLogger& logger, const std::string& path) {
  anew([&] { logger.inside().subWriteConfigToBINfile(path); });
}

std::shared_ptr<Class_VardenLogger> withEditedConfig(const Class_VardenLogger& logger,
                                                     const std::string& iniPath) {
  const std::string former = rawConfigHex(logger);
  const auto edited = loggerFromConfig(former);
  requireAllKeys(edited->inside().record, iniPath);
  naming(iniPath, [&] {
    anew([&] { edited->inside().subReadConfigFromINIfile(iniPath); });
    anew([&] { edited->inside().fncEncodeVardenLoggerConfig(); });
  });
  const auto& sent = edited->inside().record.EncodedConfigBytes;
  return loggerFromConfig(hexOf(storedBlock(former, sent ? *sent : ByteArray())));
}

}  // namespace hy_wristlog::engineering
