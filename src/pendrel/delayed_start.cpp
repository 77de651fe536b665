#include "pendrel/delayed_start.h"

#include "base/dates.h"
#include "base/faults.h"
#include "base/numbers.h"
#include "pendrel/starred.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int32_t SecondsHeldBack = 10;
constexpr std::int32_t QuarterMinute = 15;
constexpr double QuarterMinutesPerDay = SecondsPerDay / QuarterMinute;
constexpr std::int32_t MostEpochs = 0x8080;
constexpr std::int32_t WordOfNoEpochs = 0x80;

[[noreturn]] void refuse(std::int32_t number, const char* text) {
  throw Failure(number, "Class_Pendrel.fncSendDelayedStart", text);
}

std::int16_t epochsPerDay(std::int16_t epochLength) {
  if (epochLength == 0) fault::raise(fault::DivisionByZero);
  return fault::narrow<std::int16_t>(static_cast<std::int32_t>(SecondsPerDay) / epochLength);
}

}  // namespace

std::string DelayedStart::epochWord() const { return starred::hexWord(WordOfNoEpochs - Epochs); }

std::string DelayedStart::secondsWord() const {
  return starred::hexWord(Shortened.QuarterMinutes * 256 + Shortened.Seconds);
}

Shortening shorteningFor(std::int32_t remainder) {
  if (remainder > 0) refuse(DelayOutOfBounds, "Number of seconds/quarter minutes delay is out of bounds");
  return {-(remainder / QuarterMinute), -(remainder % QuarterMinute)};
}

DelayedStart planDelayedStart(double start, double now, std::int16_t epochLength) {
  if (start < now) refuse(StartPassed, "Start date and time have already passed");
  const std::int16_t perDay = epochsPerDay(epochLength);
  const std::int32_t seconds = roundToInt32((start - now) * SecondsPerDay - SecondsHeldBack);

  DelayedStart plan;
  plan.Epochs = roundToInt32(Class_Tools::fncTrueCeiling(static_cast<double>(seconds) / epochLength));
  if (plan.Epochs < 1 || plan.Epochs > MostEpochs)
    refuse(DelayOutOfBounds, "Number of epochs to delay is out of bounds");
  plan.Shortened = shorteningFor(seconds - plan.Epochs * epochLength);
  plan.ReleaseTime = start - static_cast<double>(plan.Epochs) / perDay +
                     plan.Shortened.QuarterMinutes / QuarterMinutesPerDay +
                     plan.Shortened.Seconds / SecondsPerDay;
  return plan;
}

std::int32_t millisecondsToRelease(double releaseTime, double now) {
  const std::int64_t milliseconds = roundToInt64((releaseTime - now) * SecondsPerDay * 1000);
  if (milliseconds < 0) refuse(DelayOutOfBounds, "Too much time elapsed, time to release port has passed.");
  return fault::narrow<std::int32_t>(milliseconds);
}

}  // namespace hy_wristlog
