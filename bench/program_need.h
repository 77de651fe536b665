#pragma once

#include <string>
#include <vector>

namespace hy_wristlog {

/// What a run of the program took. -1 stands for a failure.
struct Need {
  double MiB = -1;  ///< the most memory that it ever had
  double Seconds = -1;
};

/// Runs the program to its end.
Need needOf(std::vector<std::string> arguments);

}  // namespace hy_wristlog
