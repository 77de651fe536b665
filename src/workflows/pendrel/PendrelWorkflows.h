#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_Subject.h"
#include "hy_wristlog/enumerations.h"

namespace hy_wristlog {

/// What is known of a Pendrel logger besides the properties of Class_Pendrel.
struct PendrelDetails {
  enmDeviceType DeviceType = Device_Unknown;
  std::string DeviceText;            ///< "Pendrel", "Pendrel Steps", or empty
  std::int16_t MemorySizeKB = 0;     ///< -1 for an unknown code
  std::int32_t MaxBytesUsed = 0;     ///< what a recording may take
  double MaxRecordingTime = 0;       ///< days that the memory lasts in the present mode and epoch
  std::string SetupText;             ///< the lines of the set-up as they came, each with CR LF
  std::vector<std::uint8_t> Memory;  ///< what the last retrieval read of the memory, whatever its code
  bool SetupTouched = false;  ///< the last ConfigureLegacy began to change the logger, whatever its code
};

/// The workflows of a Class_Main for a Pendrel logger in a Pendreader. The public interface refuses the
/// family (WrongLogger); tests and the terminal program come here. Everything returns a code: 0, one of its
/// own, or the number of the failure that ended it. `Class_Main::AbortComms` ends what talks to a logger with
/// Aborted at its next checkpoint, which may take a dozen seconds.
class PendrelWorkflows {
 public:
  /// `main` must outlive this.
  explicit PendrelWorkflows(Class_Main& main);

  /// The one logger object, which every workflow fills anew as far as it comes. Its values count only after a
  /// code of 0.
  const std::shared_ptr<Class_Pendrel>& LegacyLogger() const;
  /// At most 14 while a retrieval reads the memory.
  std::int16_t ProgressPercent() const;
  PendrelDetails Details() const;
  /// The Pendreader's port in place of the one in Settings.INI; 0 for none.
  std::int16_t ChosenPort = 0;
  /// Called before each port of a search.
  std::function<void(std::int16_t port)> TryingPort;

  /// Reads the set-up of the logger in the reader into `LegacyLogger`, and changes nothing.
  std::int32_t ReadPendrelSetup(bool SearchCOMport);

  /// Sets the logger up, reads the set-up back, and tells the logger how long to wait for its start.
  ///
  /// `EpochLength` is 15, 30 or 60 seconds. A mode with steps gives activity alone on a logger that counts no
  /// steps. `TimeZoneAbbrev` is an abbreviation of the zone catalogue; empty: the machine's zone.
  /// `DataCollectionLocalStartTime` is in local logger seconds, cut to the minute; 0: as soon as possible.
  /// The start must not lie before the next full minute (the next but one when the minute has begun), nor
  /// more than 32896 epochs ahead, else WrongStart, nor after 2029, else WrongDate, since a logger keeps two
  /// digits of the year. An empty Identity or GUID of the subject is filled in. The memory of a logger that
  /// can clear it is cleared unless LegacyClearMemoryOnConfigure is false. The outputs,
  /// `DataCollectionLocalStartTime` among them, are set on success.
  std::int32_t ConfigureLegacy(enmPDLoggingMode AcquisitionMode, std::int32_t EpochLength,
                               Class_Subject& Subject, const std::string& TimeZoneAbbrev, bool AutoDSTadjust,
                               std::int32_t& DataCollectionLocalStartTime, bool SearchCOMport,
                               float& BatteryLifeRemaining, std::string& DeviceSerialNumber);
  /// Reads the logger's memory into `LegacyLogger` and decodes it; the recording stays in the logger. With
  /// `RepairSetup` gaps in the set-up are repaired instead of refused: an unknown length becomes the longest,
  /// a start now, an epoch 30 seconds, a zone the machine's, and the subject is taken as it is. `Unread` is
  /// not used.
  std::int32_t RetrieveLegacy(Class_Subject& Subject, bool Unread, float& BatteryLifeRemaining,
                              bool SearchCOMport, bool RepairSetup);
  /// `DateText` is six digits: day, month, year (30 to 99: 1930 to 1999). WrongDate for a day that does not
  /// exist.
  std::int32_t UpdateBatteryDate(const std::string& DateText, bool SearchCOMport);
  /// Tries ports 1 to 64, about three seconds each; the first one with a prompt is written to Settings.INI. A
  /// port that fails is passed over, whatever the failure. The outputs are set when a port was found, even if
  /// Settings.INI could not be written.
  std::int32_t SearchAndSetLegacyCOMport(std::int16_t& FoundPort, std::string& FoundPortText);
  /// Settings.INI lies in the user's data folder. Overflow for a number beyond 16 bits. The outputs are set
  /// on success.
  std::int32_t fncReadCOMportFromINI(std::int16_t& Port, std::string& Text);
  std::int32_t fncWriteCOMportToINI(std::int16_t Port);
  /// Writes LegacyLogger's data as a KRC text file, UTF-8 with CR LF, whole or not at all. NotWritable for a
  /// folder that cannot be written to, Subscript when the arrays are shorter than Samples.
  std::int32_t fncWriteKRCfile(const std::string& Path);

 private:
  MainState& state_;
};

}  // namespace hy_wristlog
