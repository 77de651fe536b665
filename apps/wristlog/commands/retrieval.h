#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "hy_wristlog/Class_Main.h"

namespace wristlog {

/// What Class_Main::Retrieve has handed out.
struct Retrieval {
  std::int32_t Code = 0;
  std::shared_ptr<hy_wristlog::Class_VardenLogger> Logger;
  std::shared_ptr<hy_wristlog::Class_Subject> Subject = std::make_shared<hy_wristlog::Class_Subject>();
  std::optional<hy_wristlog::enmDecodeResult> Verdict;  ///< none when nothing was decoded
  bool LowBattery = false;
};

Retrieval retrieve(hy_wristlog::Class_Main& main, hy_wristlog::enmLoggerPointer model, bool ignoreWarnings);

/// The verdict, how much was decoded, and of which logger. Only with a verdict.
std::string verdictWords(const Retrieval& retrieval);

}  // namespace wristlog
