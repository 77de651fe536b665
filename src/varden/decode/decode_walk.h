#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "base/faults.h"
#include "varden/decode/epoch_arrays.h"
#include "varden/logging_modes.h"
#include "varden/record.h"

namespace hy_wristlog {

/// The source of what decoding raises.
inline constexpr const char* DecodeProcedure = "fncDecodeDataArrays";

struct DecodeOptions {
  /// Relaxes the checks: any epoch length, unknown gaps, the internal modes, and values recorded in a dock.
  bool Diagnostic = false;
  /// The present time, UTC.
  double NowUtc = 0;
  /// An event's date as text.
  std::function<std::string(double)> DateText;
  std::function<void(std::string_view title, std::string_view text)> ShowMessage;
  /// The bytes may end inside a sample, which then is none.
  bool BeginningOnly = false;
};

/// What the walk over a recording knows at its present position; shared by those who handle its records.
struct DecodeWalk {
  VardenRecord& Record;
  const DecodeOptions& Options;
  EpochArrays Arrays{Record};
  const LoggingMode* Mode = nullptr;
  bool Quillander = false;
  bool NewEventFormat = false;
  double EpochsPerDay = 0;

  std::span<const std::uint8_t> Raw{};
  std::int64_t Length = 0;  ///< bytes to decode; the raw bytes may be more or fewer
  std::int64_t Position = 0;
  std::int64_t Index = 0;  ///< of the epoch that comes next
  enmDecodeResult Result = Decode_InputError;
  bool Stop = false;
  bool LowBattery = false;

  bool Acquiring = false;
  double EventTime = 0;   ///< of the last acquisition start; 0 before the first
  double LastStop = 0;    ///< 0 when none counts
  double LastSample = 0;  ///< of the latest sample or filled epoch

  std::int64_t Filled = 0;  ///< epochs that gaps have added

  bool Docked = false;
  bool UndockSkip = false;  ///< the next sample counts as docked
  bool OffWrist = false;
  bool OnWristPulse = false;  ///< the next epoch still counts as off the wrist

  double epoch() const { return 1 / EpochsPerDay; }
  double timeOf(std::int64_t index) const {
    return Record.StartTimeGMT + static_cast<double>(index) / EpochsPerDay;
  }
  bool inside(std::int64_t position) const { return position < Length; }
  /// Raises Subscript for a position beyond the raw bytes, which may end before `Length`.
  std::uint8_t byteAt(std::int64_t position) const { return fault::at(Raw, position); }
  /// The wrist element of the epoch at `Index`. The epoch in which the logger comes back to the wrist still
  /// counts as off it.
  Tristate takeWristStatus() {
    const bool off = OnWristPulse || OffWrist;
    OnWristPulse = false;
    return off ? Tristate::True : Tristate::False;
  }
  void stop(enmDecodeResult result) {
    Stop = true;
    Result = result;
  }
};

}  // namespace hy_wristlog
