#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"
#include "hy_wristlog/failure.h"

/// The engineers' files of a recording and of a configuration. A file is written whole or not at all, unless
/// said otherwise; what the system refuses is raised as 53, 61, 70, 75 or 76. "\" and "/" both separate
/// folders.
namespace hy_wristlog::engineering {

/// A failure of `step`, with the files that it is about in front of its words. What the system refused (53,
/// 61, 70, 75, 76) names its file already, which may be another one.
template <class Step>
auto naming(const std::string& files, const Step& step) {
  try {
    return step();
  } catch (const Failure& failure) {
    using namespace FailureNumber;
    for (const std::int32_t refused :
         {FileNotFound, DiskFull, PermissionDenied, PathFileAccess, PathNotFound})
      if (failure.Number == refused) throw;
    throw Failure(failure.Number, failure.Source, files + ": " + failure.Description);
  }
}

/// More bytes than any recording, or dump of one, has.
inline constexpr std::size_t LongestRecordingFile = std::size_t{64} << 20;

/// What stands in a file that the user named. Raises 53 when there is none, 75 when it cannot be read or has
/// more than `most` bytes.
std::string contentOf(const std::string& path, std::size_t most = LongestRecordingFile);
/// The same for an INI file, of at most 4 MiB.
std::string iniTextOf(const std::string& path);

/// The config block kept in an INI file: the key "Raw Config Bytes" of its section "Configuration Bytes".
/// Raises 53 when there is no such file, 75 when it cannot be read, OutOfRange when it holds no block.
std::string configHexFromIni(const std::string& path);

/// The logger as the config block in an INI file describes it. A block of version 1 holds no firmware
/// version; it is then the one that the file tells. Raises what `configHexFromIni` does, and OutOfRange,
/// UnknownStructure and DamagedConfig for a block that is none; the description names the file.
std::shared_ptr<Class_VardenLogger> loggerFromIni(const std::string& path);

/// A raw recording from a file: a raw data CSV, or else the bytes themselves. Raises 53 when there is no such
/// file, 75 when it cannot be read or has more than 64 MiB, 13 or 6 for a CSV with a line that holds no byte
/// or whose address is not the next one.
std::vector<std::uint8_t> rawFromFile(const std::string& path);
/// The same, but raises 13 for a file that is no raw data CSV.
std::vector<std::uint8_t> rawFromDump(const std::string& path);

/// Makes the bytes of a saved recording the logger's raw data, as if they had just been read.
void setRawData(Class_VardenLogger& logger, std::vector<std::uint8_t> raw);

/// To be called before the work: raises 5 when the file is one of those that the command reads or writes
/// besides, even if it may be overwritten; 58 when there is a file and it may not; 75 when something else, a
/// link too, has its name; 61, 70, 75 or 76 when nothing can be written to its folder.
void checkOutput(const std::string& path, bool overwrite, const std::vector<std::string>& inputs = {});
/// The same for `saveConfigIni`, which keeps the lines of an existing file: raises 75 for one that holds
/// something but no section, or a NUL.
void checkIniOutput(const std::string& path, bool overwrite, const std::vector<std::string>& inputs = {});

void saveRawBytes(const std::vector<std::uint8_t>& raw, const std::string& path);
/// One byte a line with its address, behind the facts of the configuration.
void saveRawDump(Class_VardenLogger& logger, const std::string& path);
/// Decodes diagnostically and writes a row an epoch; tells result and low battery in message boxes. A report
/// that fails behind its heading leaves that where no file stood. Raises what decoding raises.
enmDecodeResult saveReport(Class_VardenLogger& logger, const std::string& path);
/// Raises NoLightTest for a recording that is no light test or holds no reading.
void saveLightTest(Class_VardenLogger& logger, const std::string& path);
/// The activity-only file, kind KRD. Raises OutOfRange without an activity calibration.
void saveActivityOnly(Class_VardenLogger& logger, const std::string& path);

/// Labels and values of the configuration, enumerations in words.
std::vector<std::pair<std::string, std::string>> configItems(const Class_VardenLogger& logger);
/// The configuration as an INI file that can be edited, with the block as it was read. Other lines of an
/// existing file stay, but for what it tells of a recording: that is taken from the file `recordingIni`, none
/// for an empty name.
void saveConfigIni(Class_VardenLogger& logger, const std::string& path, const std::string& recordingIni = {});
/// The 256 bytes that would be sent to the logger. Raises OutOfRange and 6 for values that it cannot take.
void saveConfigImage(Class_VardenLogger& logger, const std::string& path);
/// Both; when one fails, neither is left.
void saveConfigIniAndImage(Class_VardenLogger& logger, const std::string& ini, const std::string& image,
                           const std::string& recordingIni = {});

/// A logger with the configuration of `logger` and the edited values of an INI file, its config block as the
/// logger would make it of them. Raises 53 and 75 for a file that cannot be read, OutOfRange for one that
/// lacks values, 13, 6 and OutOfRange for values that are none or that a logger would keep as other ones; the
/// description names the key.
std::shared_ptr<Class_VardenLogger> withEditedConfig(const Class_VardenLogger& logger,
                                                     const std::string& iniPath);

}  // namespace hy_wristlog::engineering
