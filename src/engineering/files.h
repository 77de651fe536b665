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
/// said otherwise. What the system refuses is raised as FileNotFound, DiskFull, PermissionDenied,
/// PathFileAccess or PathNotFound. Both "\" and "/" separate folders.
namespace hy_wristlog::engineering {

/// Runs `step`; a failure of it gets the names of the files that it is about before its words. What the
/// system refuses is left alone: it names its own file already, which may be another one.
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

/// More bytes than any recording has, or any dump of one.
inline constexpr std::size_t LongestRecordingFile = std::size_t{64} << 20;

/// The content of a file that the user named. Raises FileNotFound when there is none, PathFileAccess when it
/// cannot be read or has more than `most` bytes.
std::string contentOf(const std::string& path, std::size_t most = LongestRecordingFile);
/// The same for an INI file, of at most 4 MiB.
std::string iniTextOf(const std::string& path);

/// The config block that an INI file keeps, under the key "Raw Config Bytes" of the section "Configuration
/// Bytes". Raises FileNotFound when there is no such file, PathFileAccess when it cannot be read, OutOfRange
/// when it holds no block.
std::string configHexFromIni(const std::string& path);

/// The logger that the config block of an INI file describes. A block of version 1 holds no firmware version;
/// that is then taken from the file's own key. Raises what `configHexFromIni` does, and OutOfRange,
/// UnknownStructure and DamagedConfig for a damaged block; the description names the file.
std::shared_ptr<Class_VardenLogger> loggerFromIni(const std::string& path);

/// A raw recording from a file, which holds a raw data CSV or the bytes themselves. Raises FileNotFound when
/// there is no such file, PathFileAccess when it cannot be read or has more than 64 MiB, TypeMismatch or
/// Overflow for a CSV with a line that holds no byte or whose address is not the next one.
std::vector<std::uint8_t> rawFromFile(const std::string& path);
/// The same, but raises TypeMismatch for a file that is no raw data CSV.
std::vector<std::uint8_t> rawFromDump(const std::string& path);

/// Makes the bytes of a saved recording the logger's raw data, as if they had just been read.
void setRawData(Class_VardenLogger& logger, std::vector<std::uint8_t> raw);

/// Whether an output can be written; to be called before the work. Raises InvalidCall when the file is one
/// that the command also reads or writes, even if it may be overwritten; FileExists when it exists and may
/// not be overwritten; PathFileAccess when its name belongs to something else, such as a folder or a link;
/// DiskFull, PermissionDenied, PathFileAccess or PathNotFound when nothing can be written to its folder.
void checkOutput(const std::string& path, bool overwrite, const std::vector<std::string>& inputs = {});
/// The same for `saveConfigIni`, which keeps the lines of an existing file: raises PathFileAccess for a file
/// that has content but no section, or that holds a NUL.
void checkIniOutput(const std::string& path, bool overwrite, const std::vector<std::string>& inputs = {});

void saveRawBytes(const std::vector<std::uint8_t>& raw, const std::string& path);
/// The facts of the configuration, and then one byte a line with its address.
void saveRawDump(Class_VardenLogger& logger, const std::string& path);
/// Decodes diagnostically and writes one row for each epoch; message boxes tell the result and a low battery.
/// A report that fails after its heading leaves the heading, unless the file existed before. Raises what
/// decoding raises.
enmDecodeResult saveReport(Class_VardenLogger& logger, const std::string& path);
/// Raises NoLightTest for a recording that is no light test or holds no reading.
void saveLightTest(Class_VardenLogger& logger, const std::string& path);
/// The activity-only file, kind KRD. Raises OutOfRange without an activity calibration.
void saveActivityOnly(Class_VardenLogger& logger, const std::string& path);

/// Labels and values of the configuration, enumerations in words.
std::vector<std::pair<std::string, std::string>> configItems(const Class_VardenLogger& logger);
/// The configuration as an INI file that can be edited, with the block as it was read. The other lines of an
/// existing file stay, but for what it says of a recording: that is replaced by what the file `recordingIni`
/// says, or removed when that name is empty.
void saveConfigIni(Class_VardenLogger& logger, const std::string& path, const std::string& recordingIni = {});
/// The 256 bytes that would be sent to the logger. Raises OutOfRange and Overflow for values that the logger
/// cannot take.
void saveConfigImage(Class_VardenLogger& logger, const std::string& path);
/// Writes both; when one fails, neither is left.
void saveConfigIniAndImage(Class_VardenLogger& logger, const std::string& ini, const std::string& image,
                           const std::string& recordingIni = {});

/// A logger with the configuration of `logger` and the edited values of an INI file. Its config block is the
/// one that the logger would make of them. Raises FileNotFound and PathFileAccess for a file that cannot be
/// read, OutOfRange for one that lacks values, and TypeMismatch, Overflow and OutOfRange for values that are
/// damaged or that a logger would keep differently; the description names the key.
std::shared_ptr<Class_VardenLogger> withEditedConfig(const Class_VardenLogger& logger,
                                                     const std::string& iniPath);

}  // namespace hy_wristlog::engineering
