#include "varden/decode/acquisition.h"

#include <cmath>
#include <string>

#include "base/dates.h"
#include "base/numbers.h"

namespace hy_wristlog {
namespace {

constexpr auto LongestGapSeconds = static_cast<std::int64_t>(30 * SecondsPerDay);

/// The most epochs that the gaps of one recording may add: two years of 15 seconds. The logger's clock and
/// its memory live on one battery, which lasts a year at most.
constexpr auto MostFilledEpochs = static_cast<std::int64_t>(2 * 365 * SecondsPerDay / 15);

/// The second in which a date lies. Sums of days are wrong by about a microsecond, which must not move a date
/// that lies on a whole second into the second before.
double wholeSecond(double date) { return std::trunc(date * SecondsPerDay + 0.001); }

/// Makes room for the epochs of a gap. Ends the walk with Decode_BigDiffBetweenAcqTimes, and returns false,
/// when the gap is longer than 30 days. Raises OutOfMemory when the recording's gaps add up to more than
/// `MostFilledEpochs`.
bool prepareFill(DecodeWalk& walk, double from) {
  if (!walk.Options.Diagnostic && secondsBetween(from, walk.EventTime) > LongestGapSeconds) {
    walk.stop(Decode_BigDiffBetweenAcqTimes);
    return false;
  }
  const double gap = (walk.EventTime - from) * walk.EpochsPerDay;
  const std::int32_t bound = roundToInt32(static_cast<double>(walk.Arrays.upperBound()) + gap);
  if (gap > 0) walk.Filled += static_cast<std::int64_t>(gap);
  if (walk.Filled > MostFilledEpochs)
    fault::raise(fault::OutOfMemory,
                 "the gaps between the recording's starts and stops add up to more than " +
                     std::to_string(MostFilledEpochs) +
                     " epochs, longer than a battery lasts: its times are damaged");
  walk.Arrays.redimension(bound);
  return true;
}

void fillEpoch(DecodeWalk& walk, SeriesSet set) {
  walk.Arrays.storeNoValue(set, walk.Index);
  ++walk.Index;
}

void fillFromStartTime(DecodeWalk& walk) {
  double time = walk.Record.StartTimeGMT;
  if (!prepareFill(walk, time)) return;
  while (secondsBetween(time, walk.EventTime) > 0) {
    walk.LastSample = time;
    fillEpoch(walk, walk.Mode->firstFill());
    time += walk.epoch();
  }
}

void fillFromLastSample(DecodeWalk& walk, SeriesSet set) {
  double time = walk.LastSample + walk.epoch();
  if (!prepareFill(walk, time)) return;
  while (secondsBetween(time, walk.EventTime) > 0) {
    fillEpoch(walk, set);
    time += walk.epoch();
  }
  walk.LastSample = time;
}

void startFirst(DecodeWalk& walk, double time) {
  const std::int64_t late = secondsBetween(walk.Record.StartTimeGMT, time);
  walk.EventTime = time;
  walk.Acquiring = true;
  if (late > 0 && !walk.Options.Diagnostic) return fillFromStartTime(walk);
  if (late != 0) walk.Record.StartTimeGMT = time;
  walk.LastSample = time;
}

}  // namespace

void startAcquisition(DecodeWalk& walk, double time) {
  if (walk.Acquiring) {
    walk.EventTime = time;
    fillFromLastSample(walk, walk.Mode->restartFill());
  } else if (walk.EventTime == 0) {
    startFirst(walk, time);
  } else if (walk.LastStop == 0) {
    walk.EventTime = time;
    walk.Acquiring = true;
    walk.LastSample = time;
  } else if (secondsBetween(time, walk.LastStop) >= 1) {
    walk.EventTime = time;
    walk.stop(Decode_StartBeforeLastStop);
  } else {
    walk.Acquiring = true;
    walk.EventTime = time;
    walk.LastStop = 0;
    fillFromLastSample(walk, walk.Mode->samples());
  }
}

void stopAcquisition(DecodeWalk& walk, double time) {
  if (walk.Quillander && secondsBetween(time, walk.Options.NowUtc) > LongestGapSeconds)
    walk.Result = Decode_TooLongSinceLastAcqStop;
  walk.LastStop = time;
  if (!walk.Acquiring) return;
  if (wholeSecond(walk.LastSample + walk.epoch()) > wholeSecond(time))
    walk.stop(Decode_AcqStopTimeBeforePriorData);
  else
    walk.Acquiring = false;
}

}  // namespace hy_wristlog
