#include "varden/decode/acquisition.h"

#include <cmath>
#include <string>

#include "base/dates.h"
#include "base/numbers.h"
#include "varden/decode/sample_decoder.h"

namespace hy_wristlog {
namespace {

constexpr std::int64_t LongestGapSeconds = std::int64_t{30} * 86400;

/// The epochs without a value that all gaps of a recording add: those of two years in steps of 15 seconds. A
/// logger's clock and its recording live on one battery, which carries it for a year at the most.
constexpr std::int64_t MostFilledEpochs = std::int64_t{2} * 365 * 5760;

/// The second a date lies in. Sums of days carry a noise of about a microsecond, which must not move a date
/// on a whole second into the one before.
double wholeSecond(double date) { return std::trunc(date * SecondsPerDay + 0.001); }

/// Ends the walk with 15 when the gap is too long to be true; else makes room for its epochs. Fault 7 when
/// the gaps add more than a recording can mean.
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
