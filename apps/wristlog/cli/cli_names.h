#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace wristlog {

std::vector<const CLI::App*> commandsOf(const CLI::App& app);
/// With those of its groups of options.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app);

/// " Did you mean retrieve?" when a command or an option of `app` has almost the name `word`, else empty.
std::string suggestionFor(const std::string& word, const CLI::App& app);

}  // namespace wristlog
