#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_Subject.h"
#include "hy_wristlog/api.h"
#include "hy_wristlog/enumerations.h"

namespace hy_wristlog {

/// The workflows of a Class_Main for a Pendrel logger in a Pendreader. The public interface refuses the
/// family (10009); this is the way to them for tests and the terminal program. Everything returns a code: 0,
/// one of its own, or the number of the failure that ended it. `Class_Main::AbortComms` stops them.
class HY_WRISTLOG_API LegacyWorkflows {
 public:
  /// `main` must outlive this.
  explicit LegacyWorkflows(Class_Main& main);

  const std::shared_ptr<Class_Pendrel>& LegacyLogger() const;
  /// Percent of the running retrieval or set-up.
  std::int16_t ProgressPercent() const;

  /// `DataCollectionLocalStartTime` are local logger seconds, 0: as soon as possible; it gets the start that
  /// was set. The outputs are set on success.
  std::int32_t ConfigureLegacy(enmPDLoggingMode AcquisitionMode, std::int32_t EpochLength,
                               Class_Subject& Subject, const std::string& TimeZoneAbbrev, bool AutoDSTadjust,
                               std::int32_t& DataCollectionLocalStartTime, bool SearchCOMport,
                               float& BatteryLifeRemaining, std::string& DeviceSerialNumber);
  /// With `RepairSetup` gaps in the set-up are repaired instead of refused. `Unread` is read by nothing.
  std::int32_t RetrieveLegacy(Class_Subject& Subject, bool Unread, float& BatteryLifeRemaining,
                              bool SearchCOMport, bool RepairSetup);
  /// `DateText` is six digits: day, month, year.
  std::int32_t UpdateBatteryDate(const std::string& DateText, bool SearchCOMport);
  /// Tries ports 1 to 64; the one with a prompt goes to Settings.INI.
  std::int32_t SearchAndSetLegacyCOMport(std::int16_t& FoundPort, std::string& FoundPortText);
  std::int32_t fncReadCOMportFromINI(std::int16_t& Port, std::string& Text);
  std::int32_t fncWriteCOMportToINI(std::int16_t Port);
  /// Writes LegacyLogger's data as a KRC text file. 10002 for a path that cannot be written.
  std::int32_t fncWriteKRCfile(const std::string& Path);

 private:
  MainState& state_;
};

}  // namespace hy_wristlog
