#pragma once

#include <cstddef>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "commands/commands.h"
#include "hy_wristlog/docks.h"

namespace wristlog {

/// Who gets which logger of a harvest.
class Allotment {
 public:
  /// Raises InvalidCall, with the line, for a row whose dock another row names too, or whose name several of
  /// the docks have. `options` and `docks` outlive it.
  Allotment(const HarvestOptions& options, const std::vector<hy_wristlog::Dock>& docks);

  /// Who gets the logger of this number in the dock at `place`; null for nobody.
  const Participant* find(std::size_t place, const std::string& serialNumber) const;
  /// Whether the participant has no logger yet, and from now on has one. Threads may call it at the same
  /// time.
  bool take(const Participant& participant);

 private:
  const HarvestOptions& options_;
  std::vector<const Participant*> ofDocks_;
  std::mutex mutex_;
  std::set<const Participant*> taken_;
};

}  // namespace wristlog
