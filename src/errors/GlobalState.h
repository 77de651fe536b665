#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "errors/Class_ErrorAction.h"
#include "errors/Class_ErrorRecord.h"

namespace hy_wristlog {

/// What every room reads; one set for each thread's world, filled by start-up.
struct GlobalState {
  std::string AppName = "HY_Wristlog";
  std::string ShortDateFormat, ShortDateTimeFormat, LongDateFormat, LongDateTimeFormat, TimeOfDayFormat;
  std::string UserDataFolder, DocumentsFolder, CommonDataFolder;
  std::string VersionShort, VersionFull;
  std::int16_t DecimalSeparator = '.';

  /// The failures of the running command. Element 0 holds the last failure, also between commands; no
  /// element at all means that the stack has not been made yet.
  std::vector<std::optional<Class_ErrorRecord>> ErrorStack;
  /// The file that this stack has been logged to; empty before that.
  std::string ErrorLogPath;
  std::vector<Class_ErrorAction> ErrorActions;
  /// Writes ErrorStack to the error log. Installed by start-up; may raise.
  std::function<void()> saveErrorRecords;

  /// Leaves an empty element 0.
  void emptyErrorStack() {
    ErrorStack.clear();
    ErrorStack.emplace_back();
    ErrorLogPath.clear();
  }
  /// Leaves element 0 as it is.
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
