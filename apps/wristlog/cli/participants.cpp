#include "cli/participants.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>
#include <utility>

#include "base/ascii.h"
#include "base/code_page.h"
#include "cli/cli.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace platform = hy_wristlog::platform;

namespace {

constexpr const char* SerialColumn = "serial-number";
constexpr const char* DockColumn = "dock";

[[noreturn]] void refuse(const std::string& file, std::size_t line, const std::string& words) {
  throw CLI::ValidationError(file + ", line " + std::to_string(line) + ": " + words);
}

class CsvReader {
 public:
  explicit CsvReader(std::string_view text) : text_(text) {
    const std::string_view first = text.substr(0, text.find('\n'));
    if (first.find(',') == first.npos && first.find(';') != first.npos) separator_ = ';';
  }

  std::vector<CsvRow> read() {
    while (at_ < text_.size()) readRow();
    return std::move(rows_);
  }

 private:
  void readRow() {
    CsvRow row;
    row.Line = line_;
    do row.Cells.push_back(readCell());
    while (ended_ == separator_);
    const bool isEmpty =
        std::all_of(row.Cells.begin(), row.Cells.end(), [](const std::string& cell) { return cell.empty(); });
    row.IsClosed = !cutOff_;
    if (!isEmpty || cutOff_) rows_.push_back(std::move(row));
  }

  std::string readCell() {
    std::string cell;
    bool quoted = false;
    for (; at_ < text_.size(); ++at_) {
      const char c = text_[at_];
      if (c == '\n') ++line_;
      if (c == '"') {
        const bool doubled = quoted && at_ + 1 < text_.size() && text_[at_ + 1] == '"';
        if (doubled) cell += text_[++at_];
        if (!doubled) quoted = !quoted;
      } else if (!quoted && (c == separator_ || c == '\n')) {
        ended_ = text_[at_++];
        return trimmed(std::move(cell));
      } else {
        cell += c;
      }
    }
    ended_ = '\n';
    cutOff_ = quoted;
    return trimmed(std::move(cell));
  }

  static std::string trimmed(std::string cell) {
    if (cell.ends_with('\r')) cell.pop_back();
    return std::string(hw::trimBlanks(cell));
  }

  std::string_view text_;
  std::vector<CsvRow> rows_;
  std::size_t at_ = 0, line_ = 1;
  char separator_ = ',', ended_ = '\n';
  bool cutOff_ = false;
};

/// "Serial number" and "serial_number" are "serial-number".
std::string columnName(std::string heading) {
  for (char& c : heading) c = c == ' ' || c == '_' ? '-' : hw::asciiLower(c);
  return heading;
}

class ListReader {
 public:
  ListReader(std::string file, std::int16_t attempts) : file_(std::move(file)), attempts_(attempts) {}

  std::vector<Participant> read(const std::vector<CsvRow>& rows) {
    if (!rows.empty() && !rows.back().IsClosed)
      refuse(file_, rows.back().Line, "A quotation mark of this row is not closed");
    if (rows.size() < 2) refuse(file_, 1, "It names no participant below a row of headings");
    for (const std::string& heading : rows.front().Cells) columns_.push_back(columnName(heading));
    checkColumns(rows.front().Line);
    std::vector<Participant> list;
    for (auto row = rows.begin() + 1; row != rows.end(); ++row) list.push_back(participantOf(*row));
    return list;
  }

 private:
  /// The options that are columns: all but those that the parser adds itself.
  static void addColumns(CLI::App& app, ConfigureOptions& options) {
    app.set_help_flag();
    addConfigureOptions(&app, options);
  }

  void checkColumns(std::size_t line) const {
    CLI::App app;
    ConfigureOptions options;
    addColumns(app, options);
    std::set<std::string> seen;
    for (const std::string& column : columns_) {
      const bool isOwn = column == SerialColumn || column == DockColumn;
      if (!isOwn && app.get_option_no_throw("--" + column) == nullptr)
        refuse(file_, line,
               "\"" + column +
                   "\" is no column of a list: they are serial_number, dock, and the options of 'wristlog "
                   "configure' without the dashes");
      if (!seen.insert(column).second)
        refuse(file_, line, "The column \"" + column + "\" stands there twice");
    }
  }

  Participant participantOf(const CsvRow& row) {
    if (row.Cells.size() > columns_.size())
      refuse(file_, row.Line, "It has more cells than there are columns");
    Participant one;
    one.Line = row.Line;
    CLI::App app;
    addColumns(app, one.Options);
    std::vector<std::string> arguments;
    for (std::size_t column = 0; column < row.Cells.size(); ++column) {
      const std::string& cell = row.Cells[column];
      if (cell.empty()) continue;
      if (columns_[column] == SerialColumn)
        one.SerialNumber = cell;
      else if (columns_[column] == DockColumn)
        one.Dock = cell;
      else
        arguments.push_back("--" + columns_[column] + "=" + cell);
    }
    if (!one.SerialNumber.empty() && !one.Dock.empty())
      refuse(file_, row.Line, "It names a logger and a dock, of which one is enough");
    std::reverse(arguments.begin(), arguments.end());
    try {
      app.parse(arguments);
    } catch (const CLI::ParseError& error) {
      refuse(file_, row.Line, error.what());
    }
    one.Options.Attempts = attempts_;
    for (const std::string& key :
         {one.SerialNumber.empty() ? "" : "s" + one.SerialNumber, one.Dock.empty() ? "" : "d" + one.Dock})
      if (!key.empty() && !taken_.insert(hw::asciiLower(key)).second)
        refuse(file_, row.Line, "The logger or dock " + key.substr(1) + " is given to two participants");
    return one;
  }

  std::string file_;
  std::int16_t attempts_;
  std::vector<std::string> columns_;
  std::set<std::string> taken_;
};

}  // namespace

std::vector<CsvRow> csvRows(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  return CsvReader(text).read();
}

std::vector<Participant> participantsIn(const std::string& file, std::int16_t attempts) {
  try {
    const std::string text = platform::current().files().readUpTo(platform::Files::LongestText, file);
    if (!hw::utf16FromUtf8(text)) refuse(file, 1, "The list is not in UTF-8: save it as UTF-8");
    return ListReader(file, attempts).read(csvRows(text));
  } catch (const platform::SystemError& error) {
    throw hw::Failure(hw::FailureNumber::PathFileAccess, "wristlog",
                      file + ": " + platform::current().environment().errorText(error.Number));
  }
}

}  // namespace wristlog
