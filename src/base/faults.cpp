#include "base/faults.h"

namespace hy_wristlog::fault {
namespace {

const char* usualDescription(std::int32_t number) {
  switch (number) {
    case InvalidCall:
      return "Invalid procedure call or argument";
    case Overflow:
      return "Overflow";
    case OutOfMemory:
      return "Out of memory";
    case Subscript:
      return "Subscript out of range";
    case DivisionByZero:
      return "Division by zero";
    case TypeMismatch:
      return "Type mismatch";
    case FileNotFound:
      return "File not found";
    case DiskFull:
      return "Disk full";
    case PermissionDenied:
      return "Permission denied";
    case PathFileAccess:
      return "Path/File access error";
    case PathNotFound:
      return "Path not found";
    case ObjectNotSet:
      return "Object variable not set";
    default:
      return "Internal error";
  }
}

}  // namespace

void raise(std::int32_t number, const std::string& detail) {
  std::string description = usualDescription(number);
  if (!detail.empty()) description += ": " + detail;
  throw Failure(number, "HY_Wristlog", description);
}

}  // namespace hy_wristlog::fault
