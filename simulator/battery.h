#pragma once

#include <chrono>
#include <optional>

#include "simulator/saved_state.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// A logger's battery. A coin cell (the Vivid's) lives about a year and shows its age by how far its voltage
/// drops under load; a rechargeable one (the Kestrin 2's) lasts about thirty days and charges in the dock.
class Battery {
 public:
  enum class Kind { CoinCell, Rechargeable };

  Battery(const Timeline& timeline, Kind kind) : timeline_(timeline), kind_(kind), since_(timeline.now()) {}

  /// How much is left, 0 to 1.
  double charge() const;
  void setCharge(double charge);
  void setDocked(bool docked);
  /// Fixed voltages in place of those that follow from the charge.
  void setVoltages(double voltage, double loaded) { fixed_ = Voltages{voltage, loaded}; }

  void persist(SavedState& state);

  double voltage() const;
  double voltageUnderLoad() const;
  bool low() const { return charge() < 0.07; }
  bool exhausted() const { return charge() <= 0.0; }

 private:
  struct Voltages {
    double Resting, Loaded;
  };

  const Timeline& timeline_;
  Kind kind_;
  Moment since_;
  double chargeThen_ = 1.0;
  bool docked_ = false;
  std::optional<Voltages> fixed_;
};

}  // namespace hy_wristlog::simulator
