#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "commands/commands.h"

namespace wristlog {

/// The cells of a CSV, a row a line of it; cells may stand in quotes. The separator is a comma, or a
/// semicolon where the first row has no comma. Empty lines are left out. `Line` counts from 1.
struct CsvRow {
  std::size_t Line = 0;
  std::vector<std::string> Cells;
};
std::vector<CsvRow> csvRows(std::string_view text);

/// Reads a list of participants. Its columns are the options of `configure` without the dashes, and
/// "serial_number" and "dock", which tell who gets which logger. Raises CLI::ParseError for what is wrong
/// with it, with its line, and PathFileAccess when it cannot be read.
std::vector<Participant> participantsIn(const std::string& file, std::int16_t attempts);

}  // namespace wristlog
