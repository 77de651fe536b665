#include "simulator/pendrel_logger.h"

#include <cstdio>
#include <stdexcept>

#include "simulator/calendar.h"
#include "simulator/line.h"

namespace hy_wristlog::simulator {
namespace {

constexpr std::uint8_t FirstWithChecksums = 144;

/// Day, month, year, hour and minute, two digits each.
std::string digitsOf(const CivilTime& time) {
  char text[32];
  std::snprintf(text, sizeof text, "%02d%02d%02d%02d%02d", time.Day, time.Month, time.Year % 100, time.Hour,
                time.Minute);
  return text;
}

std::uint8_t firmwareOf(const PendrelOptions& options) {
  const bool plain = options.Model == PendrelModel::Plain, steps = options.Model == PendrelModel::Steps;
  const std::uint8_t firmware = options.Firmware.value_or(plain   ? std::uint8_t{0x8B}
                                                          : steps ? std::uint8_t{0x21}
                                                                  : std::uint8_t{0x94});
  if (!steps && plain != (firmware < FirstWithChecksums))
    throw std::invalid_argument("this model never had that firmware");
  return firmware;
}

PendrelParts makeParts(const Timeline& timeline, const PendrelOptions& options) {
  const std::size_t size = options.MemoryKilobytes;
  if (size != 8 && size != 16 && size != 32 && size != 64)
    throw std::invalid_argument("a Pendrel logger has 8, 16, 32 or 64 kilobytes");
  if (options.SerialDigits.size() != 4 || (!options.BatteryDate.empty() && options.BatteryDate.size() != 6))
    throw std::invalid_argument("four serial digits, and a battery date as ddmmyy");
  PendrelParts parts{options.Model,
                     firmwareOf(options),
                     options.ActivityCalibration,
                     options.Resets,
                     0,
                     options.SerialDigits,
                     2,
                     {},
                     PendrelMemory{size}};
  parts.Texts.BatteryDate =
      options.BatteryDate.empty() ? digitsOf(civilTime(timeline.now())).substr(0, 6) : options.BatteryDate;
  return parts;
}

}  // namespace

void persist(SavedState& state, PendrelOptions& options) {
  constexpr std::size_t SerialLength = 4;
  constexpr std::int64_t MostZoneMinutes = std::int64_t{24} * 60;
  std::uint8_t firmware = firmwareOf(options);
  std::int64_t zone = options.Zone.value_or(std::chrono::minutes{0}).count();
  state.number("model", options.Model, static_cast<std::int64_t>(PendrelModel::Plain),
               static_cast<std::int64_t>(PendrelModel::Steps));
  state.number("firmware", firmware);
  state.number("memory_kilobytes", options.MemoryKilobytes, 8, 64);
  state.text("serial_digits", options.SerialDigits, SerialLength);
  state.number("activity_calibration", options.ActivityCalibration);
  state.number("zone_minutes", zone, -MostZoneMinutes, MostZoneMinutes);
  options.Firmware = firmware;
  options.Zone = std::chrono::minutes{zone};
}

SimulatedPendrel::SimulatedPendrel(Timeline& timeline, const PendrelOptions& options)
    : timeline_(timeline),
      parts_(makeParts(timeline, options)),
      recorder_(timeline, parts_),
      shell_(timeline, parts_, recorder_, Faults,
             {[this](std::span<const std::uint8_t> bytes, nanoseconds delay) { say(bytes, delay); },
              [this](std::int32_t baud) { setBaud(baud); }},
             [this](Notice notice) { tell(notice); }),
      zone_(options.Zone.value_or(std::chrono::minutes{0})) {
  recorder_.setDrift(options.ClockDrift);
}

std::vector<std::uint8_t> SimulatedPendrel::recordedBytes() const {
  const auto bytes = parts_.Memory.recorded();
  return {bytes.begin(), bytes.end()};
}

void SimulatedPendrel::setUp(const PendrelSetup& setup) {
  const std::string start = digitsOf(civilTime(momentOf(setup.StartTime), zone_));
  parts_.EpochCode = pendrel_epoch::code(setup.EpochLength);
  parts_.Texts.Subject = setup.Subject;
  parts_.Texts.StartDate = start.substr(0, 6);
  parts_.Texts.StartTime = start.substr(6);
  parts_.Memory.clear();
  if (parts_.Model == PendrelModel::Steps)
    parts_.Memory.write(PendrelMemory::ModeAddress,
                        setup.CountsSteps ? PendrelMemory::StepsMode : PendrelMemory::ActivityMode);
  recorder_.startAt(momentOf(setup.StartTime));
}

void SimulatedPendrel::wear(nanoseconds duration, const WearOptions& options) {
  away(options.Redock, [&] {
    Wearer wearer{options, zone_};
    recorder_.setSource(&wearer);
    for (const Happening& happening : options.Happenings)
      if (happening.After <= duration)
        timeline_.after(happening.After, [this, happening] { befall(happening); });
    timeline_.advance(duration);
    recorder_.setSource(wearer_ ? &*wearer_ : nullptr);
  });
}

void SimulatedPendrel::putOn(const WearOptions& options) {
  wears_ = options;
  wearer_.emplace(options, zone_);
  recorder_.setSource(&*wearer_);
}

void SimulatedPendrel::persist(SavedState& state) {
  constexpr std::size_t SubjectLength = 64, DayLength = 6, TimeLength = 4;
  state.number("status_byte", parts_.StatusByte);
  state.number("resets", parts_.Resets);
  state.number("epoch_code", parts_.EpochCode);
  state.text("subject", parts_.Texts.Subject, SubjectLength);
  state.text("start_date", parts_.Texts.StartDate, DayLength);
  state.text("start_time", parts_.Texts.StartTime, TimeLength);
  state.text("battery_date", parts_.Texts.BatteryDate, DayLength);
  parts_.Memory.persist(state);
  recorder_.persist(state);
  shell_.persist(state);
  simulator::persist(state, wears_);
  if (!state.loading()) return;
  putOn(wears_);
  recorder_.dockChanged(false);
  recorder_.released();
}

/// The logger does not measure its battery: a low one changes nothing, an empty one ends the recording.
void SimulatedPendrel::befall(const Happening& happening) {
  switch (happening.What) {
    case Happening::Kind::PowerReset:
      powerReset();
      break;
    case Happening::Kind::BatteryEmpty:
      recorder_.stop();
      break;
    case Happening::Kind::IntoDock:
    case Happening::Kind::OutOfDock:
      recorder_.dockChanged(happening.What == Happening::Kind::IntoDock);
      break;
    case Happening::Kind::BatteryLow:
      break;
  }
}

void SimulatedPendrel::powerReset() {
  shell_.restart();
  recorder_.stop();
  if (parts_.Resets < 255) ++parts_.Resets;
}

void SimulatedPendrel::attentionChanged() {
  shell_.cutOff();
  if (!awake()) recorder_.released();
}

void SimulatedPendrel::setBaud(std::int32_t baud) {
  if (line() == nullptr) return;
  platform::LineSettings settings = line()->farSettings();
  settings.Baud = baud;
  line()->setFarSettings(settings);
}

}  // namespace hy_wristlog::simulator
