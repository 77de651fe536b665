#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"

/// A recording as its two files keep it, raw.bin and config.ini.
namespace hy_wristlog::engineering {

struct SavedRecording {
  std::vector<std::uint8_t> Raw;
  /// The config block; what else was read of the logger, which the block may lack; and the section
  /// "Recording": the number of the bytes, their digest, and when they were retrieved.
  std::string Ini;

  /// So many bytes the logger held, by its config block.
  std::int64_t bytesInLogger() const;
  /// When it was retrieved (UTC); none when the file does not tell.
  std::optional<double> retrievedAt() const;
  /// Whether the retrieval met a low battery.
  bool lowBattery() const;
  /// Why these bytes are not exactly those that the logger held; empty when nothing speaks against it. A file
  /// without a digest is judged by the number of bytes alone.
  std::string mismatch() const;
};

/// What a retrieval has brought. Every byte that came is in it, without the filling of the last packet; none
/// when nothing came.
SavedRecording savedRecording(const Class_VardenLogger& retrieved, bool lowBattery);

/// From files; `rawFile` may be a raw data CSV. Raises what `loggerFromIni`, `rawFromFile` and
/// `openRecording` raise, and OutOfRange for a recording without bytes.
SavedRecording savedRecording(const std::string& iniFile, const std::string& rawFile);

/// The logger with its configuration and raw data, not decoded. Raises what `loggerFromConfig` raises, and 13
/// for a voltage or a time that is none.
std::shared_ptr<Class_VardenLogger> openRecording(const SavedRecording& recording);

/// Decodes the logger's raw data. Raises what decoding raises: WrongDeviceType, OutOfRange, 9.
enmDecodeResult decode(Class_VardenLogger& logger, bool diagnostic, bool& lowBatteryDetected);

/// What an INI file tells of a recording beside the config block, put into another one's text in the place of
/// what that tells; nothing for an empty `from`.
std::string withRecordingOf(const std::string& from, const std::string& into);

}  // namespace hy_wristlog::engineering
