#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "errors/Class_ErrorAction.h"
#include "errors/Class_ErrorRecord.h"

namespace hy_wristlog {

/// Values that every room reads. Each thread's world has one set, filled by start-up.
struct GlobalState {
  std::string AppName = "HY_Wristlog";
  std::string ShortDateFormat, ShortDateTimeFormat, LongDateFormat, LongDateTimeFormat, TimeOfDayFormat;
  std::string UserDataFolder, DocumentsFolder, CommonDataFolder;
  std::string VersionShort, VersionFull;
  std::int16_t DecimalSeparator = '.';

  /// The failures of the running command. Element 0 holds the last failure, also between commands; no
  /// element at all means that the stack has not been made yet.
  std::vector<std::optional<Class_ErrorRecord>> ErrorStack;
  /// The file that this stack was logged to; empty until then.
  std::string ErrorLogPath;
  std::vector<Class_ErrorAction> ErrorActions;
  /// Writes ErrorStack to the error log. Installed by start-up; may raise.
  std::function<void()> saveErrorRecords;

  /// Drops everything and leaves an empty element 0.
  void emptyErrorStack() {
    ErrorStack.clear();
    ErrorStack.emplace_back();
    ErrorLogPath.clear();
  }
  /// Drops everything but element 0.
  void cutErrorStack() {
    ErrorStack.resize(1);
    ErrorLogPath.clear();
  }
};

/// The calling thread's global state. The first call runs start-up.
GlobalState& globals();

/// Names the procedure that fills the global state when a thread first needs it.
void setStartUp(void (*startUp)());

/// The clock's local time as a date, milliseconds dropped.
double now();

}  // namespace hy_wristlog
