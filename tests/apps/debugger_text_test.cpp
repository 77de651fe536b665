#include "debugger/debugger_text.h"

#include <gtest/gtest.h>

#include "debugger/clipboard.h"
#include "words/safe_text.h"

namespace wristlog {
namespace {

using Motion = DebuggerText::Motion;

/// The window's rows, "|" after each; what is selected stands in braces, the caret's cell is marked "^".
std::string seen(const DebuggerText& text) {
  std::string shown;
  std::size_t number = 0;
  const auto caret = text.caret();
  for (const auto& row : text.window()) {
    for (std::size_t column = 0; column <= row.Text.size(); ++column) {
      const bool selected = row.SelectedTo > row.SelectedFrom;
      if (selected && column == row.SelectedFrom) shown += '{';
      if (selected && column == row.SelectedTo) shown += '}';
      if (caret && caret->Row == number && caret->Column == column) shown += '^';
      if (column < row.Text.size()) shown += utf8Of(row.Text.substr(column, 1));
    }
    shown += '|';
    ++number;
  }
  return shown;
}

DebuggerText textOf(std::string_view content, std::size_t width = 4, std::size_t height = 3) {
  DebuggerText text;
  text.resize(width, height);
  text.append(content);
  return text;
}

TEST(SafeText, LetsNothingCommandTheTerminal) {
  const std::pair<std::string_view, const char*> cases[] = {
      {"plain ~ \u00E9\u20AC\u2026", "plain ~ \u00E9\u20AC\u2026"},
      {"a\r\nb\rc\nd\r\r\n", "a\nb\nc\nd\n\n"},
      {"\x1B]52;c;AA\a\x1B[2J", R"(\x1B]52;c;AA\x07\x1B[2J)"},
      {{"\0\t\x7F", 3}, R"(\x00\x09\x7F)"},
      {"\u0080\u009B\u00AD", R"(\x80\x9B\xAD)"},
      {"\x9B"
       "31m\xC3",
       R"(\x9B31m\xC3)"},
      {"\xC0\x9B\xE0\x80\x9B\xED\xA0\x80", R"(\xC0\x9B\xE0\x80\x9B\xED\xA0\x80)"},
      {"\u200F\u2028\uFF21\uFEFF", R"(\u200F\u2028\uFF21\uFEFF)"},
      {"\U0001F600", R"(\xF0\x9F\x98\x80)"}};
  for (const auto& [text, safe] : cases) EXPECT_EQ(safeText(text), safe);
}

TEST(SafeText, KeepsALineALineInAnyScript) {
  const std::pair<std::string_view, const char*> cases[] = {
      {"日本 Ωμ\U0001F600", "日本 Ωμ\U0001F600"},
      {"a\r\nb\tc\x1B[2J", R"(a\x0D\x0Ab\x09c\x1B[2J)"},
      {"\u009D\u2028\u200F\u200B\uFEFF", R"(\x9D\u2028\u200F\u200B\uFEFF)"},
      {"\xF4\x90\x80\x80\xE9", R"(\xF4\x90\x80\x80\xE9)"}};
  for (const auto& [text, safe] : cases) EXPECT_EQ(safeLine(text), safe);
}

TEST(Clipboard, IsOneSequenceHoweverLong) {
  EXPECT_EQ(clipboardSequence("ab\r\n"), "\x1B]52;c;YWINCg==\a");
  const std::string sequence = clipboardSequence(std::string(1000, 'x'));
  EXPECT_EQ(sequence.find_first_of("\r\n"), std::string::npos);
  EXPECT_EQ(sequence.size(), 7U + 1336U + 1U);
}

TEST(DebuggerText, WrapsAndFollowsItsEnd) {
  DebuggerText text = textOf("ab\r\ncdef\r\nghijk");
  EXPECT_EQ(seen(text), "cdef|ghij|k^|") << "a line that just fits leaves no empty row";
  text.append("lm");
  text.append("n\r\n");
  EXPECT_EQ(seen(text), "ghij|klmn|^|");
  text.resize(1, 1);
  EXPECT_EQ(seen(text), "^|");
  text.resize(0, 0);
  text.append("x");
  EXPECT_EQ(seen(text), "^x|") << "past the edge the caret stands on the last cell";
  text.clear();
  EXPECT_EQ(seen(text) + text.text(), "^|");
  text.append(
      "\xE9"
      "\u00E9");
  EXPECT_EQ(text.text(), "\\xE9\u00E9");
}

TEST(DebuggerText, MovesCaretAndWindow) {
  const std::string lines = "a\nbcd\ne\nfgh\ni\njkl\nm";
  // clang-format off
  const std::pair<std::vector<Motion>, std::string> cases[] = {
      {{}, "i|jkl|m^|"}, {{Motion::Left, Motion::Left}, "i|jkl^|m|"},
      {{Motion::Up, Motion::Up, Motion::Up}, "f^gh|i|jkl|"},
      {{Motion::Left, Motion::Left, Motion::Up, Motion::Up}, "fgh^|i|jkl|"}, {{Motion::PageUp}, "e|fgh|i^|"},
      {{Motion::PageUp, Motion::PageUp, Motion::PageUp, Motion::PageUp}, "a^|bcd|e|"},
      {{Motion::Start, Motion::Left, Motion::Up}, "^a|bcd|e|"},
      {{Motion::Start, Motion::End, Motion::Right, Motion::Down}, "i|jkl|m^|"}};
  // clang-format on
  for (const auto& [motions, shown] : cases) {
    DebuggerText text = textOf(lines);
    for (const Motion motion : motions) text.move(motion);
    EXPECT_EQ(seen(text), shown);
    const bool following = text.atEnd();
    text.append("\nz");
    EXPECT_EQ(seen(text), following ? "jkl|m|z^|" : shown) << "the place is kept";
  }
}

TEST(DebuggerText, SelectsByKeysAndByMouse) {
  DebuggerText text = textOf("abcdef\ngh");
  EXPECT_EQ(text.selectedText(), "");
  text.move(Motion::Up, true);
  EXPECT_EQ(seen(text), "abcd|ef^|{gh}|");
  text.append("ij");
  EXPECT_EQ(text.selectedText(), "\ngh") << "a selection stays where it is";
  text.dropMark();
  text.move(Motion::Start);
  text.toggleMark();
  text.move(Motion::Right);
  text.move(Motion::Down);
  EXPECT_EQ(seen(text), "{abcd}|{e}^f|ghij|");
  EXPECT_EQ(text.selectedText(), "abcde");
  text.toggleMark();
  EXPECT_EQ(text.selectedText(), "");

  using Drag = std::tuple<std::size_t, std::size_t, std::size_t, std::size_t, const char*>;
  const Drag drags[] = {{0, 1, 0, 2, "bc"},     {0, 2, 0, 1, "bc"},     {1, 1, 1, 1, ""},
                        {0, 3, 2, 0, "def\ng"}, {2, 0, 0, 3, "def\ng"}, {2, 2, 9, 99, "ij"},
                        {1, 99, 2, 0, "\ng"}};
  for (const auto& [fromRow, fromColumn, toRow, toColumn, selected] : drags) {
    text.press(fromRow, fromColumn);
    text.release(toRow, toColumn);
    EXPECT_EQ(text.selectedText(), selected);
  }
}

TEST(DebuggerText, DropsTheOldestOfTooMuch) {
  DebuggerText text{1000};
  text.resize(10, 4);
  text.append("first line\n");
  text.move(Motion::Start, true);
  for (int i = 0; i < 1000; ++i) text.append("line " + std::to_string(i) + "\n");
  EXPECT_TRUE(text.text().size() >= 800 && text.text().size() <= 1000) << text.text().size();
  EXPECT_EQ(text.text().substr(0, 5), "line ") << "whole rows go";
}

}  // namespace
}  // namespace wristlog
