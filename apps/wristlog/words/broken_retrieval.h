#pragma once

#include <cstdint>
#include <string>

#include "hy_wristlog/enumerations.h"

namespace wristlog {

/// Where a retrieval broke off.
struct BrokenRetrieval {
  std::int32_t Code = 0;
  hy_wristlog::enmLoggerPointer Model = hy_wristlog::LggrPntr_None;
  hy_wristlog::enmRetrieveStep Step = hy_wristlog::RetrieveStep_None;
  std::int64_t Came = 0, InLogger = 0;  ///< bytes
};

/// What happened, whether the recording is still in the logger, whether that still records, and what to do
/// next. For a code that does not break a retrieval off: what it means.
std::string wordsFor(const BrokenRetrieval& broken);

}  // namespace wristlog
