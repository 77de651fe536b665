#include "cli/cli_names.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>
#include <utility>

namespace wristlog {
namespace {

/// The least number of letters that are to be put in, taken out or exchanged, where two neighbours that
/// changed places count once (optimal string alignment distance).
std::size_t distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> before, last(to.size() + 1), row(to.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= from.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const bool same = from[i - 1] == to[j - 1];
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
        row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = std::exchange(last, row);
  }
  return last.back();
}

std::vector<std::string> namesIn(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : commandsOf(app)) names.push_back(command->get_name());
  for (const CLI::Option* option : optionsOf(app))
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  return names;
}

}  // namespace

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* sub) { return !sub->get_name().empty(); });
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
  std::vector<const CLI::Option*> options = app.get_options();
  for (const CLI::App* group :
       app.get_subcommands([](const CLI::App* sub) { return sub->get_name().empty(); }))
    for (const CLI::Option* option : optionsOf(*group)) options.push_back(option);
  return options;
}

std::string suggestionFor(const std::string& word, const CLI::App& app) {
  constexpr std::size_t LongestWord = 64, LettersAMistake = 3;
  if (word.size() > LongestWord) return {};
  const std::string bare = word.substr(0, word.find('='));
  std::size_t least = bare.size() / LettersAMistake + 1;
  std::string best;
  for (const std::string& name : namesIn(app))
    if (const std::size_t mistakes = distance(bare, name); mistakes < least) {
      least = mistakes;
      best = name;
    }
  return best.empty() ? best : " Did you mean " + best + "?";
}

}  // namespace wristlog
