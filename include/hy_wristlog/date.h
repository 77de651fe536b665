#pragma once

namespace hy_wristlog {

/// A moment as the count of days since 30 December 1899; the fraction is the time of day.
using Date = double;

}  // namespace hy_wristlog
