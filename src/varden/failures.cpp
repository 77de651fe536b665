#include "varden/failures.h"

#include "errors/Procedure.h"

namespace hy_wristlog {

void raiseFrom(const char* name, std::int32_t number, const std::string& text) {
  throw Failure(number, std::string("Class_VardenLogger.") + name, text);
}

void raiseIn(Procedure& procedure, const char* name, std::int32_t number, const std::string& text) {
  procedure.statement([&] { raiseFrom(name, number, text); });
}

}  // namespace hy_wristlog
