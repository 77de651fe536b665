#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hy_wristlog/api.h"
#include "hy_wristlog/enumerations.h"

namespace hy_wristlog {

/// A dock that is connected or declared, whether a logger sits in it or not.
struct Dock {
  /// What it is called as long as it is plugged in at the same place: "usb-1-1.4", or its section in
  /// Docks.INI, "Dock 1".
  std::string Name;
  /// What it can be called as well: its serial number, its device or address, its port ("COM33").
  std::vector<std::string> OtherNames;
  /// LggrPntr_KRVivid, LggrPntr_KRII, or LggrPntr_Pendreader for a plain serial port that is declared.
  enmLoggerPointer Model = LggrPntr_None;
  std::int32_t Port = 0;  ///< COM port; 0 for none
};

/// All docks of this machine, also where the thread has chosen one. Opens no port. Raises the failure of a
/// device search that fails.
HY_WRISTLOG_API std::vector<Dock> docks();

/// From now on the calling thread's world has one dock: the one of that name, in any case. The workflows are
/// run as they are; other threads are not concerned. `name` is any of a dock's names. With `model` it may
/// also be the path or address of a device that is not declared, "/dev/ttyS4" or "rfc2217://host:port".
///
/// What the thread has made stays as it is: host, loggers, subjects, and a port that is open. Each workflow
/// makes a new logger, in the dock chosen at that time. A dock that is pulled out is missed until it is back
/// at its place.
///
/// Raises NotFound for a name that no dock has and TooManyDocks for one that several have, both with the
/// docks that there are; WrongLogger for a dock of another model than `model`; InvalidCall inside a workflow.
HY_WRISTLOG_API void useDock(const std::string& name, enmLoggerPointer model = LggrPntr_None);

/// The calling thread has all docks again. Raises InvalidCall inside a workflow.
HY_WRISTLOG_API void useAllDocks();

/// The name of the dock that the calling thread has chosen; empty when it has all.
HY_WRISTLOG_API std::string dockInUse();

}  // namespace hy_wristlog
