#include "errors/error_xml.h"

#include <gtest/gtest.h>

#include <sstream>

namespace hy_wristlog {
namespace {

std::vector<Class_ErrorAction> parse(const std::string& text) {
  std::istringstream stream{text};
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return parseErrorActions(lines);
}

/// Numbers that are texts stand in quotes.
std::string brief(const Class_ErrorAction& a) {
  const auto* number = std::get_if<std::int32_t>(&a.ErrorNumber);
  return (number ? std::to_string(*number) : "'" + std::get<std::string>(a.ErrorNumber) + "'") + "/" +
         a.ErrorModule + "/" + a.ErrorProcedure + " " + std::to_string(a.ErrorAction) +
         (a.ShowMessageBox ? " show" : "") + (a.LogError ? " log" : "") + " " +
         std::to_string(a.ProcErrorCountLimit) + " " + a.CustomMessageText + "\n";
}

TEST(ErrorActionsText, LinesAreReadByTheirIndentation) {
  // clang-format off
  constexpr const char* Five = "5// 0 -1 \n", *None = "0// 0 -1 \n";
  const std::pair<const char*, std::string> cases[] = {
      {"", ""},
      {" <Error>\n  <ErrorModule>M</ErrorModule>\n  <ErrorProcedure>p</ErrorProcedure>\n"
       "  <ErrorAction>errExit</ErrorAction>\n  <LogError>True</LogError>\n  <CustomMessageText>a > b</CustomMessageText>\n </Error>",
       "0/M/p 5003 log -1 a > b\n"},
      // Any indentation will do, when an element's lines have more of it than the element.
      {"   <Error>\n     <ErrorNumber>5</ErrorNumber>\n   </Error>\n</Errors>", Five},
      {"\t<Error>\n\t\t<ErrorNumber>5</ErrorNumber>\n\t</Error>\n</Errors>", Five},
      {"<Error>\n<ErrorNumber>5</ErrorNumber>\n</Error>", ""},
      // Attributes are cut from the tag; unknown tags mean nothing.
      {" <Error>\n  <ErrorNumber kind=\"x\">5</ErrorNumber>\n  <Else>6</Else>\n </Error>", Five},
      // Only whole elements count, each once; any line without an end tag begins one.
      {" <Error>\n  <ErrorNumber>5</ErrorNumber>", ""},
      {"  <ErrorNumber>5</ErrorNumber>\n </Error>", ""},
      {" <Error>\n <Error>\n  <ErrorNumber>5</ErrorNumber>\n </Error>\n </Error>", Five},
      {" <Error>\n  <ErrorNumber>\n  <ErrorModule>M</ErrorModule>\n </Error>", ""},
      {" <Error>\n  ErrorModule>M</ErrorModule\n    </ErrorModule>\n no\n\n >\n </Error>", None},
      // Values that make no sense leave the field as it was.
      {" <Error>\n  <ErrorAction>errNone</ErrorAction>\n  <LogError>9E999</LogError>\n </Error>", None},
      {" <Error>\n  <ProcErrorCountLimit>32768</ProcErrorCountLimit>\n </Error>", None},
      {" <Error>\n  <ErrorNumber>-2147483649</ErrorNumber>\n  <LogError>-1</LogError>\n </Error>",
       "'-2147483649'// 0 log -1 \n"},
      {" <Error>\n  <ShowMessageBox> TRUE </ShowMessageBox>\n  <ErrorAction> 5003 </ErrorAction>\n </Error>",
       "0// 5003 show -1 \n"},
      {" <Error>\n  <ErrorNumber>&H46</ErrorNumber>\n  <ProcErrorCountLimit>2.5</ProcErrorCountLimit>\n </Error>",
       "70// 0 2 \n"},
  };
  // clang-format on
  for (const auto& [text, expected] : cases) {
    std::string read;
    for (const Class_ErrorAction& action : parse(text)) read += brief(action);
    EXPECT_EQ(read, expected) << text;
  }
}

TEST(ErrorLogText, HasFifteenLinesForEachRecordButTheLast) {
  const Class_ErrorRecord record{"a <b> & c", true,         false,       "App", 0,   "user",  true,
                                 -5,          "one\r\ntwo", errRaiseAll, "M",   "p", 46083.5, "-5:M.p@"};
  Class_ErrorRecord closing = record;
  closing.ErrorAction = errClose;
  const auto lines = errorLogLines({closing, record, closing}, "5.0.1");
  // clang-format off
  const std::vector<std::string> expected{
      R"(<?xml version="1.0"?>)", "<Errors>", " <Error>", "  <ErrorNumber>-5</ErrorNumber>",
      "  <ErrorModule>M</ErrorModule>", "  <ErrorProcedure>p</ErrorProcedure>",
      "  <ErrorDescription>one  two</ErrorDescription>", "  <ErrorTime>3/2/2026 12:00:00 PM</ErrorTime>",
      "  <ErrorOriginalSource>-5:M.p@</ErrorOriginalSource>", "  <CommandProc>True</CommandProc>",
      "  <LineID>0</LineID>", "  <ErrorAction>errRaiseAll</ErrorAction>",
      "  <ApplicationName>App Version 5.0.1</ApplicationName>", "  <MsgboxWasDisplayed>True</MsgboxWasDisplayed>",
      "  <LogWasWritten>False</LogWasWritten>", "  <DisplayedMessage>a <b> & c</DisplayedMessage>", " </Error>"};
  // clang-format on
  ASSERT_EQ(lines.size(), 2U + 2U * 15U + 1U);
  EXPECT_EQ(std::vector(lines.begin(), lines.begin() + 17), expected);
  EXPECT_EQ(lines[26], "  <ErrorAction></ErrorAction>");
  EXPECT_EQ(lines.back(), "</Errors>");
}

}  // namespace
}  // namespace hy_wristlog
