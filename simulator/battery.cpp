#include "simulator/battery.h"

#include <algorithm>

namespace hy_wristlog::simulator {
namespace {

using FloatDays = std::chrono::duration<double, std::ratio<86400>>;

constexpr double CoinCellDays = 365.0, RechargeableDays = 30.0, DaysToCharge = 0.125;

}  // namespace

double Battery::charge() const {
  const double days = FloatDays{timeline_.now() - since_}.count();
  double change = -days / (kind_ == Kind::CoinCell ? CoinCellDays : RechargeableDays);
  if (kind_ == Kind::Rechargeable && docked_) change = days / DaysToCharge;
  return std::clamp(chargeThen_ + change, 0.0, 1.0);
}

void Battery::setCharge(double charge) {
  chargeThen_ = std::clamp(charge, 0.0, 1.0);
  since_ = timeline_.now();
}

void Battery::setDocked(bool docked) {
  setCharge(charge());
  docked_ = docked;
}

void Battery::persist(SavedState& state) {
  state.moment("battery.since", since_);
  state.real("battery.charge", chargeThen_, 0, 1);
  state.flag("battery.docked", docked_);
}

double Battery::voltage() const {
  if (fixed_) return fixed_->Resting;
  const double used = 1.0 - charge();
  return kind_ == Kind::CoinCell ? 3.05 - 0.2 * used : 4.15 - 1.33 * used;
}

double Battery::voltageUnderLoad() const {
  if (fixed_) return fixed_->Loaded;
  const double used = 1.0 - charge();
  const double drop = used < 0.78 ? 0.034 + 0.060 * (used / 0.78) : 0.094 + 0.080 * ((used - 0.78) / 0.22);
  return voltage() - drop;
}

}  // namespace hy_wristlog::simulator
