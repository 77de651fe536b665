#include "errors/error_xml.h"

#include <gtest/gtest.h>

#include <random>

namespace hy_wristlog {
namespace {

std::vector<std::string> split(std::string_view text) {
  std::vector<std::string> lines;
  for (; !text.empty(); text.remove_prefix(std::min(text.size(), lines.back().size() + 1)))
    lines.emplace_back(text.substr(0, text.find('\n')));
  return lines;
}

/// "number/module/procedure action show log limit text", with the number in quotes when it is a text.
std::string brief(const Class_ErrorAction& a) {
  const auto* number = std::get_if<std::int32_t>(&a.ErrorNumber);
  return (number ? std::to_string(*number) : "'" + std::get<std::string>(a.ErrorNumber) + "'") + "/" +
         a.ErrorModule + "/" + a.ErrorProcedure + " " + std::to_string(a.ErrorAction) +
         (a.ShowMessageBox ? " show" : "") + (a.LogError ? " log" : "") + " " +
         std::to_string(a.ProcErrorCountLimit) + " " + a.CustomMessageText + "\n";
}

TEST(ErrorActionsText, LinesAreReadByTheirIndentation) {
  constexpr const char* Five = "5// 0 -1 \n";
  const std::pair<const char*, std::string> cases[] = {
      {"", ""},
      {"<?xml version=\"1.0\"?>\n<Errors>\n</Errors>", ""},
      // Any indentation will do, when an element's lines have more of it than the element.
      {"   <Error>\n     <ErrorNumber>5</ErrorNumber>\n   </Error>\n</Errors>", Five},
      {"\t<Error>\n\t\t<ErrorNumber>5</ErrorNumber>\n\t</Error>\n</Errors>", Five},
      {"<Error>\n<ErrorNumber>5</ErrorNumber>\n</Error>", ""},
      // Attributes are cut from the tag; unknown tags mean nothing.
      {" <Error>\n  <ErrorNumber kind=\"x\">5</ErrorNumber>\n  <Else>6</Else>\n </Error>", Five},
      // Only whole elements count, each once; any line without an end tag begins one.
      {" <Error>\n  <ErrorNumber>5</ErrorNumber>", ""},
      {"  <ErrorNumber>5</ErrorNumber>\n </Error>", ""},
      {" <Error>\n  <ErrorNumber>5</ErrorNumber>\n </Error>\n </Error>", Five},
      {" <Error>\n <Error>\n  <ErrorNumber>5</ErrorNumber>\n </Error>", Five},
      {" <Error>\n  <ErrorNumber>\n  <ErrorModule>M</ErrorModule>\n </Error>", ""},
      {" <Error>\n  ErrorModule>M</ErrorModule\n    </ErrorModule>\n no\n\n >\n </Error>", "0// 0 -1 \n"},
      // Values that make no sense leave the field as it was.
      {" <Error>\n  <ErrorAction>errNone</ErrorAction>\n  <LogError>9E999</LogError>\n"
       "  <ProcErrorCountLimit>32768</ProcErrorCountLimit>\n  <ShowMessageBox></ShowMessageBox>\n </Error>",
       "0// 0 -1 \n"},
      {" <Error>\n  <ErrorNumber>-2147483649</ErrorNumber>\n  <LogError>-1</LogError>\n"
       "  <ShowMessageBox> TRUE </ShowMessageBox>\n  <ErrorAction> 5003 </ErrorAction>\n </Error>",
       "'-2147483649'// 5003 show log -1 \n"},
      {" <Error>\n  <ErrorNumber>&H46</ErrorNumber>\n  <ProcErrorCountLimit>2.5</ProcErrorCountLimit>\n"
       "  <CustomMessageText>a > b</CustomMessageText>\n </Error>",
       "70// 0 2 a > b\n"},
  };
  for (const auto& [text, expected] : cases) {
    std::string read;
    for (const Class_ErrorAction& action : parseErrorActions(split(text))) read += brief(action);
    EXPECT_EQ(read, expected) << text;
  }
}

TEST(ErrorActionsText, DamageStaysBehindTheElementsBeforeIt) {
  std::mt19937 random{20260302};
  const auto pick = [&](std::size_t n) {
    return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
  };
  constexpr std::size_t LinesBefore = 2, LinesEach = 10;
  for (int round = 0; round < 300; ++round) {
    std::vector<std::string> lines{"<?xml version=\"1.0\"?>", "<Errors>"}, expected;
    for (std::size_t count = pick(8); count > 0; --count) {
      const Class_ErrorAction a{std::string(pick(40), 't'),
                                static_cast<std::int16_t>(random()),
                                "M" + std::to_string(pick(9)),
                                "p",
                                static_cast<std::int32_t>(random()),
                                static_cast<std::int32_t>(errResume + pick(6)),
                                pick(2) == 0,
                                pick(2) == 0};
      const std::string name{actionName(a.ErrorAction)};
      const std::pair<const char*, std::string> fields[] = {
          {"ErrorNumber", std::to_string(std::get<0>(a.ErrorNumber))},
          {"ErrorModule", a.ErrorModule},
          {"ErrorProcedure", a.ErrorProcedure},
          {"ErrorAction", name.empty() || pick(2) == 0 ? std::to_string(a.ErrorAction) : name},
          {"ShowMessageBox", a.ShowMessageBox ? "True" : "False"},
          {"LogError", a.LogError ? "True" : "False"},
          {"ProcErrorCountLimit", std::to_string(a.ProcErrorCountLimit)},
          {"CustomMessageText", a.CustomMessageText}};
      lines.emplace_back(" <Error>");
      for (const auto& [tag, value] : fields)
        lines.push_back(std::string("  <") + tag + ">" + value + "</" + tag + ">");
      lines.emplace_back(" </Error>");
      expected.push_back(brief(a));
    }
    lines.emplace_back("</Errors>");
    ASSERT_EQ(parseErrorActions(lines).size(), expected.size());

    const std::size_t damage = pick(lines.size());
    for (std::size_t at = damage; at < lines.size(); at += 1 + pick(20)) {
      std::string& line = lines[at];
      if (!line.empty()) line.erase(pick(line.size()), 1 + pick(6));
      line.insert(pick(line.size() + 1), 1, "</> \0\xff-9"[pick(8)]);
    }
    const auto read = parseErrorActions(lines);
    for (std::size_t i = 0; LinesBefore + (i + 1) * LinesEach <= damage && i < expected.size(); ++i)
      ASSERT_EQ(i < read.size() ? brief(read[i]) : "", expected[i]);
  }
}

TEST(ErrorLogText, HasFifteenLinesForEachRecordButTheLast) {
  const Class_ErrorRecord record{"a <b> & c", true,         false,       "App", 0,   "user",  true,
                                 -5,          "one\r\ntwo", errRaiseAll, "M",   "p", 46083.5, "-5:M.p@"};
  Class_ErrorRecord closing = record;
  closing.ErrorAction = errClose;
  const auto lines = errorLogLines({closing, record, closing}, "5.0.1");
  const auto expected = split(
      "<?xml version=\"1.0\"?>\n<Errors>\n <Error>\n  <ErrorNumber>-5</ErrorNumber>\n"
      "  <ErrorModule>M</ErrorModule>\n  <ErrorProcedure>p</ErrorProcedure>\n"
      "  <ErrorDescription>one  two</ErrorDescription>\n  <ErrorTime>3/2/2026 12:00:00 PM</ErrorTime>\n"
      "  <ErrorOriginalSource>-5:M.p@</ErrorOriginalSource>\n  <CommandProc>True</CommandProc>\n"
      "  <LineID>0</LineID>\n  <ErrorAction>errRaiseAll</ErrorAction>\n"
      "  <ApplicationName>App Version 5.0.1</ApplicationName>\n"
      "  <MsgboxWasDisplayed>True</MsgboxWasDisplayed>\n  <LogWasWritten>False</LogWasWritten>\n"
      "  <DisplayedMessage>a <b> & c</DisplayedMessage>\n </Error>");
  ASSERT_EQ(lines.size(), 2U + 2U * 15U + 1U);
  EXPECT_EQ(std::vector(lines.begin(), lines.begin() + 17), expected);
  EXPECT_EQ(lines[26], "  <ErrorAction></ErrorAction>");
  EXPECT_EQ(lines.back(), "</Errors>");
}

}  // namespace
}  // namespace hy_wristlog
