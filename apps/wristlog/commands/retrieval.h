#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hy_wristlog/Class_Main.h"
#include "recording/retrieved_recording.h"

namespace wristlog {

/// What Class_Main::Retrieve has handed out.
struct Retrieval {
  std::int32_t Code = 0;
  std::shared_ptr<hy_wristlog::Class_VardenLogger> Logger;
  std::shared_ptr<hy_wristlog::Class_Subject> Subject = std::make_shared<hy_wristlog::Class_Subject>();
  std::optional<hy_wristlog::enmDecodeResult> Verdict;  ///< none when nothing was decoded
  bool LowBattery = false;
  bool IgnoresWarnings = false;
  bool IsDone = false;      ///< the logger was told that it was read
  double NetworkDelay = 0;  ///< how long an answer of the dock takes over a network, in seconds

  /// Whether all that the logger holds came and the logger was told so; what was warned of may be ignored.
  bool isGood() const;
};

Retrieval retrieve(hy_wristlog::Class_Main& main, hy_wristlog::enmLoggerPointer model, bool ignoreWarnings);

/// What the retrieval came to, in words, and corrects its code after what came: bytes that are not those of
/// the logger are no success. `stopped`: the user has asked to stop.
std::string judge(Retrieval& retrieval, const RetrievedRecording& recording,
                  hy_wristlog::enmLoggerPointer model, bool stopped);

/// The warnings that were ignored, in words; empty unless the retrieval came to its end.
std::vector<std::string> ignoredWarnings(const Retrieval& retrieval);

/// The verdict, how much was decoded, and of which logger. Only with a verdict.
std::string verdictWords(const Retrieval& retrieval);

}  // namespace wristlog
