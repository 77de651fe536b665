#include "varden/acquisition.h"

#include <cmath>

#include "base/dates.h"
#include "base/numbers.h"
#include "varden/sample_decoder.h"

namespace hy_wristlog {
namespace {

constexpr std::int64_t LongestGapSeconds = std::int64_t{30} * 86400;

/// The second a date lies in. Sums of days carry a noise of about a microsecond, which must not move a date
/// on a whole second into the one before.
double wholeSecond(double date) { return std::trunc(date * SecondsPerDay + 0.001); }

/// Ends the walk with 15 when the gap is too long to be true; else makes room for its epochs.
bool prepareFill(DecodeWalk& walk, double from) {
  if (!walk.Options.Diagnostic && secondsBetween(from, walk.EventTime) > LongestGapSeconds) {
    walk.stop(Decode_BigDiffBetweenAcqTimes);
    return false;
  }
  const double bound =
      static_cast<double>(walk.Arrays.upperBound()) + (walk.EventTime - from) * walk.EpochsPerDay;
  walk.Arrays.redimension(roundToInt32(bound));
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
    fillEpoch(walk, walk.Layout->FirstFill);
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
    fillFromLastSample(walk, walk.Layout->RunningFill);
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
    fillFromLastSample(walk, walk.Layout->Samples);
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
