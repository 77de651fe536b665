#pragma once

#include <string>

#include "simulator/bench.h"

namespace wristlog {

/// Sets the fault of a text such as "lose-echo", "lose-echo@3x2" or "unheeded@1=C": its name, how many
/// occurrences pass before it strikes and how many it strikes then (else one; "xalways": all), and its
/// argument. Throws std::invalid_argument for any other text.
void setFault(const hy_wristlog::simulator::ModelBench& bench, const std::string& text);

/// A line for each fault: its name, and what it does.
std::string faultList();

}  // namespace wristlog
