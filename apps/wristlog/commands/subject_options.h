#pragma once

#include <string>

#include "commands/commands.h"
#include "hy_wristlog/Class_Subject.h"

namespace wristlog {

/// The subject as a logger gives it back: texts without the blanks around them, sizes in tenths.
hy_wristlog::Class_Subject subjectFrom(const SubjectOptions& options);

/// A zone's letters as the catalogue has them.
std::string upper(std::string text);

}  // namespace wristlog
