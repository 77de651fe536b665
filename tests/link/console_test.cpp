#include <gtest/gtest.h>

#include "link/link_fixture.h"

namespace hy_wristlog {
namespace {

/// Sends `text` to the console of a link as something that passed.
struct ShownLink : OpenLink {
  explicit ShownLink(std::string_view text) : OpenLink(true, true) { link->subShowCOM(text); }
};

TEST(DiagnosticConsole, CopiesWhatIsSelectedInWholeCharacters) {
  constexpr std::size_t Far = SIZE_MAX;
  const struct {
    std::size_t Start, Length;
    const char* Selected;
  } cases[] = {{1, 0, ""}, {3, 2, "\u00E9c"}, {1, 2, "b\u00E9"}, {4, Far, "c\r\n"}, {Far, Far, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.Start) + '+' + std::to_string(c.Length));
    ShownLink o{
        "ab\xE9"
        "c\r\n"};
    o.host->Clipboard = "before";
    o.link->select(c.Start, c.Length);
    EXPECT_EQ(o.link->selectedText(), c.Selected);
    o.link->cmdCopySelection();
    EXPECT_EQ(o.host->Clipboard, *c.Selected == '\0' ? "before" : c.Selected);
    o.link->subShowCOM("\r");
    EXPECT_EQ(o.link->selectedText(), "") << "the caret has gone to the end";
    EXPECT_TRUE(o.host->TheConsole.Text.ends_with("c\r\n\r\n"));
  }
}

TEST(DiagnosticConsole, KeepsTheBeginningAndTheEndOfEndlessText) {
  ShownLink o{"first\r\n"};
  std::size_t shown = o.link->consoleText().size();
  const std::string part(1 << 20, '\xE9');
  for (int i = 0; i < 12; ++i, shown += 2 * part.size()) o.link->subShowCOM(part);
  o.link->subShowCOM("last");
  const std::string& text = o.link->consoleText();
  EXPECT_LE(text.size(), 16U << 20);
  EXPECT_TRUE(text.starts_with("first\r\n\u00E9") && text.ends_with("\u00E9last"));
  const std::size_t word = text.find("\n-- "), end = text.find(" bytes of this text were left out here --\n");
  ASSERT_NE(end, std::string::npos);
  const std::string count = text.substr(word + 4, end - word - 4);
  EXPECT_EQ(std::stoul(count) + text.size() -
                std::string("\n--  bytes of this text were left out here --\n").size() - count.size(),
            shown + 4);
  EXPECT_EQ(static_cast<unsigned char>(text[word - 1]), 0xA9U) << "cut between characters";
}

TEST(DiagnosticConsole, ClearReachesTheSinkAndNothingElse) {
  ShownLink o{"passed"};
  Form_Comm second;
  second.subShowCOM(" and more");
  o.link->select(0, 3);
  o.link->cmdClear();
  EXPECT_EQ(o.host->TheConsole.Text, "") << "a sink that several links share is emptied whole";
  EXPECT_EQ(o.link->consoleText() + std::string(o.link->selectedText()), "");
  o.link->cmdClear();
  o.link->cmdCopyAll();
  o.link->cmdCopySelection();
  EXPECT_EQ(o.host->Clipboard, "");
  o.link->subShowCOM("again");
  EXPECT_EQ(o.host->TheConsole.Text, "again");
}

TEST(DiagnosticConsole, ShowsFaultsAndTheOverrunOfItsButton) {
  ShownLink o{""};
  o.link->cmdDataOverrun();
  EXPECT_EQ(o.link->Get_LastCOMerrorNum(), 1006);
  EXPECT_EQ(o.host->TheConsole.LastError, "") << "the button tells nobody";
  o.world->Errors.Framing = 1;
  o.world->serveEvents();
  EXPECT_EQ(o.link->Get_LastCOMerrorNum(), 1004) << "the next event overwrites it";
  EXPECT_EQ(o.host->TheConsole.LastError, "1004  Framing Error  12:34:56.000");

  o.link->hide();
  o.world->Errors.Parity = 1;
  o.world->serveEvents();
  EXPECT_EQ(o.host->TheConsole.LastError.substr(0, 4), "1004");
  EXPECT_EQ(o.told.Events, "event 1004 Framing Error event 1009 Parity Error");

  std::int32_t count = 3;
  o.link->RaiseEventOnChar = true;
  o.link->cmdDataOverrun();
  o.world->deliver("xyz", 5);
  EXPECT_EQ(numberOf([&] { o.link->fncGetBinaryStream(count, 0, 0, 0, 0, 50, 0, false, 0); }), 3006)
      << "an idle mark is consumed by the next stream";
  EXPECT_EQ(o.host->TheConsole.ReceiveCount, 3);
}

}  // namespace
}  // namespace hy_wristlog
