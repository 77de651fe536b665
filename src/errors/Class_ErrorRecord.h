#pragma once

#include <cstdint>
#include <string>

#include "base/dates.h"

namespace hy_wristlog {

/// What the answer to a failure makes a procedure do.
inline constexpr std::int32_t errResume = 5001;      ///< repeat the failed statement
inline constexpr std::int32_t errResumeNext = 5002;  ///< go on after the failed statement
inline constexpr std::int32_t errExit = 5003;        ///< leave the procedure quietly
inline constexpr std::int32_t errRaise = 5004;       ///< leave it and raise the failure again
inline constexpr std::int32_t errRaiseAll = 5005;    ///< the same, up to the command procedure
inline constexpr std::int32_t errClose = 5006;       ///< leave quietly; the software should close

/// One failure as one procedure saw it.
struct Class_ErrorRecord {
  std::string DisplayedMessage;
  bool MsgboxWasDisplayed = false;
  bool LogWasWritten = false;
  std::string ApplicationName;
  std::int32_t LineID = 0;
  std::string ErrLogonID;
  bool CommandProc = false;
  std::int32_t ErrorNumber = 0;
  std::string ErrorDescription;
  std::int32_t ErrorAction = errRaise;
  std::string ErrorModule;
  std::string ErrorProcedure;
  double ErrorTime = 0;  ///< local time
  std::string ErrorOriginalSource;
  /// Neither shown nor logged, since it followed another command's failure within seconds.
  bool Silenced = false;
};

}  // namespace hy_wristlog
