#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/enumerations.h"

/// A saved recording: what its two files, raw.bin and config.ini, hold.
namespace hy_wristlog::engineering {

struct SavedRecording {
  std::vector<std::uint8_t> Raw;
  /// The config block, or a Pendrel's set-up answer; what else was read of the logger and these may lack; and
  /// the section "Recording" with the number of bytes, their digest, and the time of the retrieval.
  std::string Ini;

  /// Whether it is a recording of the older family: see saved_pendrel.h.
  bool isPendrel() const;
  /// How many bytes the logger held, by its configuration.
  std::int64_t bytesInLogger() const;
  /// Whether the configuration tells the digest of what was retrieved.
  bool hasDigest() const;
  /// The time of the retrieval (UTC); none when the file does not tell.
  std::optional<double> retrievedAt() const;
  /// Whether the retrieval met a low battery.
  bool lowBattery() const;
  /// Whether these are, as its retrieval has noted, only the beginning of what the logger held.
  bool isPart() const;
  /// Whether these are fewer bytes of the same recording than `other` has.
  bool isPartOfSame(const SavedRecording& other) const;
  /// Why these bytes are not exactly those that the logger held, or the part that was retrieved; empty when
  /// nothing contradicts it. Without a digest in the file only the number of bytes is compared.
  std::string mismatch() const;
};

/// The recording that a retrieval has brought, whole or in part: `RawData`. Empty when nothing came.
SavedRecording savedRecording(const Class_VardenLogger& retrieved, bool lowBattery);

/// The recording from its files; `rawFile` may be a raw data CSV. Raises what `loggerFromIni`, `rawFromFile`
/// and `openRecording` raise, and OutOfRange for a recording without bytes.
SavedRecording savedRecording(const std::string& iniFile, const std::string& rawFile);

/// The logger with its configuration and raw data, not decoded. Raises what `loggerFromConfig` raises, and
/// TypeMismatch for a voltage or a time that cannot be read.
std::shared_ptr<Class_VardenLogger> openRecording(const SavedRecording& recording);

/// Decodes the logger's raw data. Raises what decoding raises: WrongDeviceType, OutOfRange, Subscript.
enmDecodeResult decode(Class_VardenLogger& logger, bool diagnostic, bool& lowBatteryDetected);

/// The INI text `into` with what `from` tells of a recording, besides the config block, in place of its own.
/// An empty `from` tells nothing.
std::string withRecordingOf(const std::string& from, const std::string& into);

}  // namespace hy_wristlog::engineering
