#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "commands/commands.h"

namespace wristlog {

/// The cells of a CSV, a row a line of it; cells may stand in quotes. The separator is a comma, or a
/// semicolon where the first row has no comma. Rows whose cells are all empty are left out.
struct CsvRow {
  std::size_t Line = 0;            ///< of its beginning, from 1
  std::vector<std::string> Cells;  ///< without blanks at their ends
  bool IsClosed = true;            ///< false where a quotation mark reaches to the end of the text
};
std::vector<CsvRow> csvRows(std::string_view text);

/// Reads a list of participants. Its columns are the options of `configure` without the dashes, and
/// "serial_number" and "dock", which tell who gets which logger. Raises CLI::ParseError for what is wrong
/// with it, with its line, and PathFileAccess when it cannot be read.
std::vector<Participant> participantsIn(const std::string& file, std::int16_t attempts);

}  // namespace wristlog
