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

std::string bashScript(const std::vector<Command>& commands) {
  std::string script =
      "# Completes the commands and options of wristlog in bash. Made by 'wristlog completion bash'.\n"
      "_wristlog() {\n"
      "  local word=\"${COMP_WORDS[COMP_CWORD]}\" before=\"${COMP_WORDS[COMP_CWORD-1]}\" place=\"\" "
      "words=\"\" i\n"
      "  COMPREPLY=()\n"
      "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
      "    case \"$place ${COMP_WORDS[i]}\" in\n"
      "      " +
      anyOf(pathsOf(commands)) +
      ") place=\"$place ${COMP_WORDS[i]}\" ;;\n"
      "    esac\n"
      "  done\n"
      "  case \"$place $before\" in\n";
  for (const Command& command : commands) {
    for (const auto& [option, values] : command.Choices)
      script += "    \"" + command.Path + " " + option + "\") words=\"" + values + "\" ;;\n";
    if (!command.Valued.empty()) script += "    " + anyOf(valuedOf(command)) + ") return ;;\n";
  }
  script += "  esac\n  [ -n \"$words\" ] || case \"$place\" in\n";
  for (const Command& command : commands) {
    script += "    \"" + command.Path + "\") words=\"";
    for (const Entry& entry : command.Entries) script += entry.Name + " ";
    script.back() = '"';
    script += " ;;\n";
  }
  return script +
         "  esac\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
         "}\n"
         "complete -o default -F _wristlog wristlog\n";
}

std::string zshScript(const std::vector<Command>& commands) {
  std::string script =
      "#compdef wristlog\n"
      "# Completes the commands and options of wristlog in zsh. Made by 'wristlog completion zsh'.\n"
      "_wristlog() {\n"
      "  local place=\"\" i\n"
      "  local -a choices\n"
      "  for ((i = 2; i < CURRENT; i++)); do\n"
      "    case \"$place ${words[i]}\" in\n"
      "      (" +
      anyOf(pathsOf(commands)) +
      ") place=\"$place ${words[i]}\" ;;\n"
      "    esac\n"
      "  done\n"
      "  case \"$place ${words[CURRENT-1]}\" in\n";
  for (const Command& command : commands) {
    for (const auto& [option, values] : command.Choices)
      script += "    (\"" + command.Path + " " + option + "\") compadd " + values + "; return ;;\n";
    if (!command.Valued.empty()) script += "    (" + anyOf(valuedOf(command)) + ") _files; return ;;\n";
  }
  script += "  esac\n  case \"$place\" in\n";
  for (const Command& command : commands) {
    script += "    (\"" + command.Path + "\") choices=(\n";
    for (const Entry& entry : command.Entries)
      script += "      " + quoted(entry.Name + ":" + entry.Description) + "\n";
    script += command.IsGroup ? "      ); _describe command choices; return ;;\n" : "      ) ;;\n";
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
