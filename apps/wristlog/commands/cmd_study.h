#pragma once

#include "session/options.h"
#include "study/study.h"

namespace wristlog {

int runStudy(const CommonOptions& common, const StudyOptions& options);

}  // namespace wristlog
