#include <algorithm>
#include <nlohmann/json.hpp>

#include "commands/commands.h"
#include "commands/harvest.h"
#include "commands/harvest_board.h"
#include "commands/probe.h"
#include "engineering/docks.h"
#include "hy_wristlog/docks.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "session/process.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

/// Columns as wide as their widest cell; the last one is as long as it is.
void tellTable(const Speech& out, const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t column = 0; column < row.size(); ++column)
      widths[column] = std::max(widths[column], row[column].size());
  }
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      out << row[column];
      if (column + 1 < row.size()) out << std::string(widths[column] - row[column].size() + 2, ' ');
    }
    out << '\n';
  }
}

std::string resultOf(const HarvestOutcome& outcome) {
  std::string words = wordsFor(outcome.End);
  if (outcome.Configured) words += ", configured for " + outcome.Given->Options.Subject.Identity;
  if (outcome.Given != nullptr && !outcome.Configured) words += ", not configured";
  return words;
}

void tell(const std::vector<hw::Dock>& docks, const std::vector<HarvestOutcome>& outcomes) {
  std::vector<std::vector<std::string>> rows{{"DOCK", "LOGGER", "RESULT", "FOLDER"}};
  for (std::size_t place = 0; place < docks.size(); ++place) {
    const HarvestOutcome& outcome = outcomes[place];
    rows.push_back({docks[place].Name, outcome.SerialNumber.empty() ? "-" : outcome.SerialNumber,
                    resultOf(outcome), outcome.Folder.empty() ? "-" : outcome.Folder});
  }
  tellTable(say(), rows);
  for (std::size_t place = 0; place < docks.size(); ++place) {
    const HarvestOutcome& outcome = outcomes[place];
    for (const std::string& words : {outcome.Words, outcome.ConfigureWords, outcome.Remarks}) {
      if (words.empty()) continue;
      const Speech out = outcome.isGood() ? say() : complain();
      out << docks[place].Name << ": ";
      out.lines(words.ends_with('\n') ? words.substr(0, words.size() - 1) : words, "  ");
    }
  }
}

/// Those of the list who got no logger.
std::vector<const Participant*> leftOut(const HarvestOptions& options,
                                        const std::vector<HarvestOutcome>& outcomes) {
  std::vector<const Participant*> left;
  for (const Participant& one : options.Participants)
    if (std::none_of(outcomes.begin(), outcomes.end(), [&](const HarvestOutcome& outcome) {
          return outcome.Given == &one && outcome.Configured;
        }))
      left.push_back(&one);
  return left;
}

/// Raises PathFileAccess for a place that is no folder, before any logger is asked.
void requireFolder(const std::string& folder) {
  hw::platform::Files& files = hw::platform::current().files();
  const hw::platform::FileKind kind = files.state(folder).Kind;
  if (kind != hw::platform::FileKind::Missing && kind != hw::platform::FileKind::Folder)
    throw hw::Failure(hw::FailureNumber::PathFileAccess, "wristlog", folder + " is not a folder");
}

}  // namespace

int runHarvest(const CommonOptions& common, const HarvestOptions& options) {
  requireFolder(options.Folder);
  const std::vector<hw::Dock> docks = docksCalled(common.Dock);
  if (docks.empty()) throw hw::Failure(hw::ReturnCode::NotFound, "wristlog", wordsForNoDock());
  catchInterrupts();
  const auto watch = makeHarvestWatch(common.AsJson, docks);
  const std::vector<HarvestOutcome> outcomes = harvest(common, options, docks, *watch);
  const bool good = std::all_of(outcomes.begin(), outcomes.end(),
                                [](const HarvestOutcome& outcome) { return outcome.isGood(); });
  const auto left = leftOut(options, outcomes);
  const std::vector<std::string> troubles = hw::engineering::declarationTroubles();
  if (common.AsJson) {
    Json list = Json::array(), without = Json::array();
    for (std::size_t place = 0; place < docks.size(); ++place)
      list.push_back(outcomeJson(docks[place], outcomes[place]));
    for (const Participant* one : left) without.push_back(one->Line);
    printLine({{"event", "end"},
               {"good", good},
               {"docks", list},
               {"lines_without_logger", without},
               {"troubles", troubles}});
  } else {
    tell(docks, outcomes);
    for (const std::string& trouble : troubles) complain() << trouble << '\n';
    for (const Participant* one : left)
      say() << options.ListFile << ", line " << one->Line << ": " << one->Options.Subject.Identity
            << " got no logger.\n";
  }
  return good ? Good : Unsuccessful;
}

}  // namespace wristlog
