#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "errors/Class_ErrorAction.h"
#include "errors/Class_ErrorRecord.h"

/// The text of ErrorActions.XML and of the error logs: one element a line, the indentation carries the
/// structure.
namespace hy_wristlog {

/// Reads a site's error actions. Lines that fit nowhere and senseless values are skipped.
std::vector<Class_ErrorAction> parseErrorActions(const std::vector<std::string>& lines);

/// The log of a stack; element 0 is left out. `version` follows each record's application name. Line breaks
/// within a value become blanks.
std::vector<std::string> errorLogLines(const std::vector<std::optional<Class_ErrorRecord>>& stack,
                                       std::string_view version);

/// The name of an action code ("errResume"), empty for one without a name.
std::string_view actionName(std::int32_t action);

}  // namespace hy_wristlog
