#pragma once

#include <cstdint>
#include <string>

namespace hy_wristlog {

class Procedure;

/// Raises a failure whose source is the procedure `name` of Class_VardenLogger.
[[noreturn]] void raiseFrom(const char* name, std::int32_t number, const std::string& text);

/// The same as a statement of `procedure`. It returns when a site's action for the failure is to go on.
void raiseIn(Procedure& procedure, const char* name, std::int32_t number, const std::string& text);

}  // namespace hy_wristlog
