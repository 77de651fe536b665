#include "errors/error_xml.h"

#include <array>
#include <cstdint>
#include <utility>

#include "base/ascii.h"
#include "base/formats.h"
#include "base/numbers.h"

namespace hy_wristlog {
namespace {

constexpr std::string_view Head = "<?xml version=\"1.0\"?>";

constexpr std::array<std::pair<std::int32_t, std::string_view>, 5> ActionNames{{
    {errResume, "errResume"},
    {errResumeNext, "errResumeNext"},
    {errExit, "errExit"},
    {errRaise, "errRaise"},
    {errRaiseAll, "errRaiseAll"},
}};

bool truth(std::string_view text) {
  return equalsIgnoringCase(trimBlanks(text), "true") || parseNumber(text).value_or(0) != 0;
}

std::optional<std::int32_t> wholeNumber(std::string_view text, std::int32_t lowest, std::int32_t highest) {
  const auto value = parseNumber(text);
  if (!value || !(*value >= lowest && *value <= highest)) return std::nullopt;
  return roundToInt32(*value);
}

std::int32_t actionCode(std::string_view text, std::int32_t otherwise) {
  for (const auto& [code, name] : ActionNames)
    if (name == text) return code;
  return wholeNumber(text, INT32_MIN, INT32_MAX).value_or(otherwise);
}

void store(Class_ErrorAction& action, std::string_view tag, std::string_view value) {
  if (tag == "ErrorNumber") {
    if (const auto number = wholeNumber(value, INT32_MIN, INT32_MAX))
      action.ErrorNumber = *number;
    else
      action.ErrorNumber = std::string(value);
  } else if (tag == "ErrorModule") {
    action.ErrorModule = value;
  } else if (tag == "ErrorProcedure") {
    action.ErrorProcedure = value;
  } else if (tag == "ErrorAction") {
    action.ErrorAction = actionCode(value, action.ErrorAction);
  } else if (tag == "ShowMessageBox") {
    action.ShowMessageBox = truth(value);
  } else if (tag == "LogError") {
    action.LogError = truth(value);
  } else if (tag == "ProcErrorCountLimit") {
    const auto limit = wholeNumber(value, INT16_MIN, INT16_MAX);
    action.ProcErrorCountLimit = static_cast<std::int16_t>(limit.value_or(action.ProcErrorCountLimit));
  } else if (tag == "CustomMessageText") {
    action.CustomMessageText = value;
  }
}

std::string oneLine(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if (c == '\r' || c == '\n') c = ' ';
  return result;
}

std::string element(std::string_view tag, std::string_view value) {
  return "  <" + std::string(tag) + ">" + oneLine(value) + "</" + std::string(tag) + ">";
}

std::string element(std::string_view tag, bool value) {
  return element(tag, std::string_view(value ? "True" : "False"));
}

}  // namespace

std::string_view actionName(std::int32_t action) {
  for (const auto& [code, name] : ActionNames)
    if (code == action) return name;
  return {};
}

std::vector<Class_ErrorAction> parseErrorActions(const std::vector<std::string>& lines) {
  std::vector<Class_ErrorAction> actions;
  std::optional<Class_ErrorAction> action;
  std::size_t elementIndent = 0;
  for (const std::string& line : lines) {
    if (line.starts_with("<?")) continue;
    const std::size_t indent = line.find('<');
    if (indent == std::string::npos) continue;
    const std::size_t close = line.find("</");
    if (close == std::string::npos) {
      if (indent > 0) {
        action.emplace();
        elementIndent = indent;
      }
      continue;
    }
    if (close + 1 == elementIndent) continue;
    if (close == elementIndent) {
      if (action) actions.push_back(*std::exchange(action, std::nullopt));
      continue;
    }
    const std::size_t end = line.find('>');
    if (!action || end == std::string::npos || end < indent || close < end) continue;
    const std::string_view tag = std::string_view(line).substr(indent + 1, end - indent - 1);
    store(*action, tag.substr(0, tag.find(' ')), std::string_view(line).substr(end + 1, close - end - 1));
  }
  return actions;
}

std::vector<std::string> errorLogLines(const std::vector<std::optional<Class_ErrorRecord>>& stack,
                                       std::string_view version) {
  std::vector<std::string> lines{std::string(Head), "<Errors>"};
  for (std::size_t i = 1; i < stack.size(); ++i) {
    if (!stack[i]) continue;
    const Class_ErrorRecord& record = *stack[i];
    lines.emplace_back(" <Error>");
    lines.push_back(element("ErrorNumber", std::to_string(record.ErrorNumber)));
    lines.push_back(element("ErrorModule", record.ErrorModule));
    lines.push_back(element("ErrorProcedure", record.ErrorProcedure));
    lines.push_back(element("ErrorDescription", record.ErrorDescription));
    lines.push_back(element("ErrorTime", formatDate(record.ErrorTime, "c")));
    lines.push_back(element("ErrorOriginalSource", record.ErrorOriginalSource));
    lines.push_back(element("CommandProc", record.CommandProc));
    lines.push_back(element("LineID", std::to_string(record.LineID)));
    lines.push_back(element("ErrorAction", actionName(record.ErrorAction)));
    lines.push_back(element("ApplicationName", record.ApplicationName + " Version " + std::string(version)));
    lines.push_back(element("MsgboxWasDisplayed", record.MsgboxWasDisplayed));
    lines.push_back(element("LogWasWritten", record.LogWasWritten));
    lines.push_back(element("DisplayedMessage", record.DisplayedMessage));
    lines.emplace_back(" </Error>");
  }
  lines.emplace_back("</Errors>");
  return lines;
}

}  // namespace hy_wristlog
