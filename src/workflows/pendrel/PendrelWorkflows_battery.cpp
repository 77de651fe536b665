#include <array>
#include <optional>
#include <string>

#include "base/dates.h"
#include "base/numbers.h"
#include "pendrel/Pendrel.h"
#include "workflows/pendrel/pendrel_run.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

/// The date of "ddmmyy"; none when there is no such day.
std::optional<double> dateOf(const std::string& text) {
  constexpr std::size_t PairLength = 2;
  std::array<std::int32_t, 3> pairs{};
  if (text.size() != pairs.size() * PairLength) return std::nullopt;
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const auto number = parseNumber(text.substr(i * PairLength, PairLength));
    if (!number) return std::nullopt;
    pairs[i] = roundToInt32(*number);
  }
  const auto [day, month, year] = pairs;
  if (day < 1 || day > 31 || month < 1 || month > 12 || year < 0 || year > 99) return std::nullopt;
  const double date = dateSerial(year, month, day);
  // A day that its month does not have has been carried into the next month.
  if (civilFromDate(date).Day != day) return std::nullopt;
  return date;
}

}  // namespace

std::int32_t PendrelWorkflows::UpdateBatteryDate(const std::string& DateText, bool SearchCOMport) {
  PendrelRun run(state_, "UpdateBatteryDate",
                 {NoCharacters, NoFinalCharacter, WrongCharacters, PendrelChecksum});
  return run.run([&] {
    const auto date = run.step([&] { return dateOf(DateText); });
    if (!date) {
      run.endWith(ReturnCode::WrongDate);
      return;
    }
    if (!reachPendrelLogger(run, *this, state_, SearchCOMport) || run.aborted()) return;
    Pendrel& logger = state_.pendrel();
    run.step([&] { logger.subSendBatteryDate(*date); });
    if (run.aborted()) return;
    run.step([&] { logger.fncReadSetup(); });
    if (run.aborted()) return;
    const bool kept = secondsBetween(*date, logger.record.BatteryDate) == 0;
    run.endWith(kept ? ReturnCode::Success : ReturnCode::VerificationFailed);
  });
}

}  // namespace hy_wristlog
