#pragma once

#include <string>

#include "commands/commands.h"
#include "hy_wristlog/Class_Subject.h"

namespace wristlog {

/// The subject in the form in which a logger returns it: texts without blanks around them, sizes in tenths,
/// the gender "X" where none is given.
hy_wristlog::Class_Subject subjectFrom(const SubjectOptions& options);

/// The text in capital letters, as the catalogue has its zones.
std::string upper(std::string text);

}  // namespace wristlog
