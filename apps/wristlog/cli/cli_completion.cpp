// Scripts by which bash and zsh complete commands, options and their values, made from the command line
// itself.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/cli.h"
#include "cli/cli_names.h"
#include "words/say.h"

namespace wristlog {
namespace {

struct Entry {
  std::string Name, Description;
};

/// What may follow a command.
struct Command {
  std::string Path;  ///< " legacy status"; empty for the program itself
  bool IsGroup = false;
  std::vector<Entry> Entries;
  std::vector<std::pair<std::string, std::string>>
      Choices;                      ///< an option, and its values with blanks between
  std::vector<std::string> Valued;  ///< options with other values
};

/// "vivid kestrin2" of "TEXT:{vivid,kestrin2}".
std::string choicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t begin = type.find('{'), end = type.find('}');
  if (begin == std::string::npos || end == std::string::npos) return {};
  std::string values = type.substr(begin + 1, end - begin - 1);
  std::replace(values.begin(), values.end(), ',', ' ');
  return values;
}

void collect(const CLI::App& app, const std::string& path, std::vector<Command>& commands) {
  const auto all = commandsOf(app);
  Command command{path, !all.empty(), {}, {}, {}};
  for (const CLI::App* sub : all) command.Entries.push_back({sub->get_name(), sub->get_description()});
  for (const CLI::Option* option : optionsOf(app))
    for (const std::string& name : option->get_lnames()) {
      command.Entries.push_back({"--" + name, option->get_description()});
      if (const std::string values = choicesOf(*option); !values.empty())
        command.Choices.emplace_back("--" + name, values);
      else if (option->get_items_expected_max() > 0)
        command.Valued.push_back("--" + name);
    }
  commands.push_back(std::move(command));
  for (const CLI::App* sub : all) collect(*sub, path + " " + sub->get_name(), commands);
}

/// "\" a\"|\" b\"": a pattern of the shells that fits each of the words.
std::string anyOf(const std::vector<std::string>& words) {
  std::string pattern;
  for (const std::string& word : words) pattern += (pattern.empty() ? "\"" : "|\"") + word + "\"";
  return pattern;
}

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? "'\\''" : std::string(1, c);
  return result + "'";
}

std::vector<std::string> pathsOf(const std::vector<Command>& commands) {
  std::vector<std::string> paths;
  for (const Command& command : commands)
    if (!command.Path.empty()) paths.push_back(command.Path);
  return paths;
}

std::vector<std::string> valuedOf(const Command& command) {
  std::vector<std::string> valued;
  for (const std::string& option : command.Valued) valued.push_back(command.Path + " " + option);
  return valued;
}

/// What differs between the shells in the beginning of their scripts, which finds the command, and in what
/// completes an option's value.
struct Shell {
  const char *Words, *First, *Current;  ///< the array of words, its first index, and the word to be completed
  const char *BeforeChoices, *BehindChoices, *OtherValue;
};

constexpr Shell Bash{"COMP_WORDS", "1", "COMP_CWORD", "words=\"", "\"", "return"};
constexpr Shell Zsh{"words", "2", "CURRENT", "compadd ", "; return", "_files; return"};

std::string caseOf(const std::string& pattern, const std::string& action) {
  return "    (" + pattern + ") " + action + " ;;\n";
}

std::string beginOf(const Shell& shell, const std::vector<Command>& commands) {
  const std::string array = shell.Words, current = shell.Current, word = "${" + array + "[i]}";
  std::string script = std::string("  for ((i = ") + shell.First + "; i < " + current + "; i++)); do\n" +
                       "    case \"$place " + word + "\" in\n  " +
                       caseOf(anyOf(pathsOf(commands)), "place=\"$place " + word + "\"") +
                       "    esac\n  done\n  case \"$place ${" + array + "[" + current + "-1]}\" in\n";
  for (const Command& command : commands) {
    for (const auto& [option, values] : command.Choices)
      script +=
          caseOf(anyOf({command.Path + " " + option}), shell.BeforeChoices + values + shell.BehindChoices);
    if (!command.Valued.empty()) script += caseOf(anyOf(valuedOf(command)), shell.OtherValue);
  }
  return script + "  esac\n";
}

std::string bashScript(const std::vector<Command>& commands) {
  std::string script =
      "# Completes the commands and options of wristlog in bash. Made by 'wristlog completion bash'.\n"
      "_wristlog() {\n"
      "  local place=\"\" words=\"\" i\n"
      "  COMPREPLY=()\n" +
      beginOf(Bash, commands) + "  [ -n \"$words\" ] || case \"$place\" in\n";
  for (const Command& command : commands) {
    std::string words;
    for (const Entry& entry : command.Entries) words += (words.empty() ? "" : " ") + entry.Name;
    script += caseOf(anyOf({command.Path}), "words=\"" + words + "\"");
  }
  return script +
         "  esac\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n"
         "}\n"
         "complete -o default -F _wristlog wristlog\n";
}

std::string zshScript(const std::vector<Command>& commands) {
  std::string script =
      "#compdef wristlog\n"
      "# Completes the commands and options of wristlog in zsh. Made by 'wristlog completion zsh'.\n"
      "_wristlog() {\n"
      "  local place=\"\" i\n"
      "  local -a choices\n" +
      beginOf(Zsh, commands) + "  case \"$place\" in\n";
  for (const Command& command : commands) {
    std::string choices = "choices=(\n";
    for (const Entry& entry : command.Entries)
      choices += "      " + quoted(entry.Name + ":" + entry.Description) + "\n";
    script += caseOf(anyOf({command.Path}),
                     choices + (command.IsGroup ? "      ); _describe command choices; return" : "      )"));
  }
  return script +
         "  esac\n"
         "  _describe -o option choices\n"
         "  _files\n"
         "}\n"
         "_wristlog \"$@\"\n";
}

}  // namespace

void addCompletionCommand(CommandLine& cli) {
  auto shell = std::make_shared<std::string>();
  CLI::App* sub =
      cli.add("completion", "A script by which a shell completes commands and options", [&cli, shell] {
        std::vector<Command> commands;
        collect(cli.named({}), "", commands);
        say().lines(*shell == "bash" ? bashScript(commands) : zshScript(commands), "");
        return Good;
      });
  sub->add_option("shell", *shell, "bash or zsh")->required()->check(CLI::IsMember({"bash", "zsh"}));
  sub->footer(
      "Example: wristlog completion bash > ~/.local/share/bash-completion/completions/wristlog\n"
      "The packages install both scripts.");
}

}  // namespace wristlog
