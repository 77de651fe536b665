#include "debugger/debugger_screen.h"

#define NCURSES_NOMACROS
#include <curses.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <optional>
#include <utility>

#include "debugger/clipboard.h"
#include "words/safe_text.h"

namespace wristlog {
namespace {

using Motion = DebuggerText::Motion;

constexpr double LookInterval = 0.02, PaintInterval = 0.05;  ///< seconds
constexpr int LongestWait = 200;                             ///< milliseconds
constexpr int Escape = 27, Redraw = 'L' - '@';
constexpr std::ptrdiff_t WheelRows = 3;
constexpr std::size_t UsuallyTaken = 75'000;  ///< bytes that most terminals' clipboards take

constexpr struct {
  int Key;
  const char* Label;
} Labels[] = {{'q', "q Quit"},
              {KEY_F(1), "F1 ?"},
              {KEY_F(2), "F2 Clear"},
              {KEY_F(3), "F3 Copy Selection"},
              {KEY_F(4), "F4 Copy All Text"},
              {KEY_F(5), "F5 Generate Data Overrun"}};

constexpr std::string_view Help[] = {
    "q, Esc        Quit. While the workflow runs, it is stopped first.",
    "Ctrl-C        Stop the workflow and stay; pressed again before it has stopped,",
    "              end at once. When no workflow runs: quit.",
    "F2            Clear: empty the text.",
    "F3, F4        Copy Selection, Copy All Text: put it on the terminal's clipboard.",
    "F5            Generate Data Overrun: a running stream fails as if the port had",
    "              lost data.",
    "arrows, PgUp, PgDn, Home, End, wheel",
    "              Move. At the end the screen follows what comes.",
    "Space         Mark where a selection begins; again, or Esc, gives it up.",
    "Shift+motion, dragging",
    "              Select.",
    "Ctrl-L        Paint the screen anew.",
    "",
    "Nothing that is typed reaches the logger. Any key closes this list.",
};
constexpr std::size_t NarrowTerminal = 80;
static_assert(std::all_of(std::begin(Help), std::end(Help),
                          [](std::string_view line) { return line.size() <= NarrowTerminal; }));

constexpr struct {
  int Key;
  Motion Step;
  bool Select;
} Motions[] = {{KEY_LEFT, Motion::Left, false},
               {KEY_RIGHT, Motion::Right, false},
               {KEY_UP, Motion::Up, false},
               {KEY_DOWN, Motion::Down, false},
               {KEY_PPAGE, Motion::PageUp, false},
               {KEY_NPAGE, Motion::PageDown, false},
               {KEY_HOME, Motion::Start, false},
               {KEY_END, Motion::End, false},
               {KEY_SLEFT, Motion::Left, true},
               {KEY_SRIGHT, Motion::Right, true},
               {KEY_SR, Motion::Up, true},
               {KEY_SF, Motion::Down, true},
               {KEY_SPREVIOUS, Motion::PageUp, true},
               {KEY_SNEXT, Motion::PageDown, true},
               {KEY_SHOME, Motion::Start, true},
               {KEY_SEND, Motion::End, true}};

/// Rows of the screen at most: title, state, buttons, last event; a longer state has more while the text
/// keeps `LeastText`.
constexpr int FullPanel = 4, LeastText = 8;

/// A text in lines of at most `width` characters, broken at blanks where it has them.
std::vector<std::string> folded(std::string_view text, std::size_t width) {
  std::u16string rest = visibleCharacters(text);
  std::replace(rest.begin(), rest.end(), u'\n', u' ');
  std::vector<std::string> lines;
  while (rest.size() > width) {
    const std::size_t blank = rest.rfind(u' ', width);
    const bool breaks = blank != rest.npos && blank > 0;
    lines.push_back(utf8Of(rest.substr(0, breaks ? blank : width)));
    rest.erase(0, breaks ? blank + 1 : width);
  }
  lines.push_back(utf8Of(rest));
  return lines;
}

std::wstring wide(std::u16string_view text, bool allCharacters) {
  std::wstring characters(text.begin(), text.end());
  if (!allCharacters)
    std::replace_if(
        characters.begin(), characters.end(), [](wchar_t c) { return c > 0x7E; }, L'?');
  return characters;
}

}  // namespace

DebuggerScreen::DebuggerScreen(std::string title, hy_wristlog::platform::Clock& machine)
    : machine_(machine), title_(std::move(title)) {
  layOut();
  paint();
}

void DebuggerScreen::showLastError(std::string_view text) {
  lastError_ = text;
  changed_ = true;
}

void DebuggerScreen::showReceiveCount(std::int32_t count) {
  receiveCount_ = std::to_string(count);
  changed_ = true;
}

void DebuggerScreen::showState(std::string_view text) {
  if (stopRequested_ && running_) return;
  state_ = text;
  note_.clear();
  layOut();
}

void DebuggerScreen::attend() {
  const double now = machine_.timer();
  if (now < nextLook_) return;
  nextLook_ = now + LookInterval;
  takeSignals();
  takeKeys();
  if (!changed_ || now < nextPaint_) return;
  nextPaint_ = now + PaintInterval;
  paint();
}

void DebuggerScreen::finish(std::string_view result) {
  running_ = false;
  // The Ctrl-C that stopped the workflow must not close the screen too; a request to terminate does.
  if (!TakenTerminal::askedToEnd()) TakenTerminal::forgetSignals();
  showState(result);
}

void DebuggerScreen::stayUntilLeft() {
  while (!leaving_) {
    takeSignals();
    takeKeys();
    if (changed_) paint();
    if (!leaving_) TakenTerminal::awaitKey(LongestWait);
  }
}

void DebuggerScreen::takeSignals() {
  if (TakenTerminal::askedToEnd() || TakenTerminal::gone()) leaving_ = true;
  if (TakenTerminal::interrupted() && !running_) leaving_ = true;
  if (!running_ || stopRequested_ || !(leaving_ || TakenTerminal::interrupted())) return;
  showState("Stopping, and leaving the logger in order. Ctrl-C " +
            std::string(TakenTerminal::interrupted() ? "again ends" : "twice ends") + " at once.");
  stopRequested_ = true;
}

void DebuggerScreen::takeKeys() {
  for (int key = ::getch(); key != ERR && !(leaving_ && !running_); key = ::getch()) onKey(key);
}

void DebuggerScreen::onKey(int key) {
  if (key != Redraw && !note_.empty()) {
    note_.clear();
    changed_ = true;
  }
  if (helping_ && key != KEY_RESIZE && key != Redraw) {
    helping_ = false;
    changed_ = true;
    return;
  }
  for (const auto& motion : Motions)
    if (motion.Key == key) {
      Text.move(motion.Step, motion.Select);
      changed_ = true;
      return;
    }
  switch (key) {
    case KEY_RESIZE:
      layOut();
      break;
    case KEY_MOUSE:
      onMouse();
      break;
    case KEY_F(1):
    case '?':
      helping_ = changed_ = true;
      break;
    case KEY_F(2):
      Pressed.Clear ? Pressed.Clear() : Text.clear();
      changed_ = true;
      break;
    case KEY_F(3):
      copy(Text.selectedText(), "the selection");
      break;
    case KEY_F(4):
      copy(Text.text(), "all text");
      break;
    case KEY_F(5):
      if (running_ && Pressed.DataOverrun) Pressed.DataOverrun();
      break;
    case Redraw:
      ::clearok(stdscr, TRUE);
      changed_ = true;
      break;
    case ' ':
      Text.toggleMark();
      changed_ = true;
      break;
    case Escape:
      escape();
      break;
    case 'q':
    case 'Q':
      leave();
      break;
    default:
      break;
  }
}

/// An Esc alone gives up the selection, or leaves. Followed at once by other characters it begins an unknown
/// key.
void DebuggerScreen::escape() {
  bool alone = true;
  while (::getch() != ERR) alone = false;
  if (!alone) return;
  if (!Text.hasMark()) return leave();
  Text.dropMark();
  changed_ = true;
}

void DebuggerScreen::leave() {
  leaving_ = true;
  takeSignals();
}

void DebuggerScreen::onMouse() {
  MEVENT event{};
  if (::getmouse(&event) != OK) return;
  changed_ = true;
  const auto row = static_cast<std::size_t>(std::max(event.y - textTop_, 0));
  const auto column = static_cast<std::size_t>(std::max(event.x, 0));
  if ((event.bstate & BUTTON4_PRESSED) != 0) Text.scroll(-WheelRows);
  if ((event.bstate & BUTTON5_PRESSED) != 0) Text.scroll(WheelRows);
  if ((event.bstate & BUTTON1_PRESSED) != 0) {
    if (event.y != buttonRow_) return Text.press(row, column);
    const std::vector<Span> buttons = buttons_;
    for (const Span& button : buttons)
      if (event.x >= button.From && event.x < button.To) onKey(button.Key);
  }
  if ((event.bstate & BUTTON1_RELEASED) != 0) Text.release(row, column);
}

void DebuggerScreen::copy(const std::string& text, const char* what) {
  if (text.empty()) return;
  if (!copyToClipboard(text))
    note_ = "Could not send " + std::string(what) + " to the terminal's clipboard.";
  else if (text.size() > UsuallyTaken)
    note_ = "Sent " + std::string(what) + " to the terminal's clipboard. Many drop more than 75 KB.";
  else
    note_ = "Sent " + std::string(what) + " to the terminal's clipboard.";
  changed_ = true;
}

bool DebuggerScreen::copyToClipboard(std::string_view text) {
  return writeWhole(STDOUT_FILENO, clipboardSequence(text));
}

/// Shares the rows. In a small terminal the title and the buttons are dropped first, and the text keeps a
/// row.
void DebuggerScreen::layOut() {
  const int height = std::max(::getmaxy(stdscr), 1);
  const int width = std::max(::getmaxx(stdscr), 1);
  const int needed = static_cast<int>(folded(state_, static_cast<std::size_t>(width)).size());
  stateRows_ = std::clamp(needed, 1, std::max(height - FullPanel - LeastText + 1, 1));
  const int panel = panelRows();
  textTop_ = panel >= FullPanel ? 1 : 0;
  buttonRow_ = panel >= 3 ? height - 2 : -1;
  Text.resize(static_cast<std::size_t>(width), static_cast<std::size_t>(height - panel));
  changed_ = true;
}

int DebuggerScreen::panelRows() const {
  return std::min(std::max(::getmaxy(stdscr), 1) - 1, FullPanel + stateRows_ - 1);
}

void DebuggerScreen::paint() {
  changed_ = false;
  const int height = ::getmaxy(stdscr);
  const int width = ::getmaxx(stdscr);
  const int panel = panelRows();
  ::erase();
  if (panel >= FullPanel) paintLine(0, width, title_, true);
  if (helping_)
    paintHelp(textTop_, height - panel, width);
  else
    paintText(textTop_, height - panel, width);
  if (panel >= 2) paintState(height - panel + textTop_, width);
  if (panel >= 3) paintLine(buttonRow_, width, buttonLine(width), false);
  if (panel >= 1)
    paintLine(height - 1, width, "Last error: " + lastError_ + "   Chars in RX buffer: " + receiveCount_,
              false);
  const auto caret = helping_ ? std::nullopt : Text.caret();
  ::curs_set(caret ? 1 : 0);
  if (caret) ::move(textTop_ + static_cast<int>(caret->Row), static_cast<int>(caret->Column));
  ::refresh();
}

void DebuggerScreen::paintText(int top, int height, int width) {
  int row = top;
  for (const DebuggerText::Row& shown : Text.window()) {
    if (row >= top + height) return;
    ::mvaddnwstr(row, 0, wide(shown.Text, terminal_.showsAllCharacters()).c_str(), width);
    if (shown.SelectedTo > shown.SelectedFrom)
      ::mvchgat(row, static_cast<int>(shown.SelectedFrom),
                static_cast<int>(shown.SelectedTo - shown.SelectedFrom), A_REVERSE, 0, nullptr);
    ++row;
  }
}

void DebuggerScreen::paintHelp(int top, int height, int width) {
  const int rows = std::min(height, static_cast<int>(std::size(Help)));
  for (int row = 0; row < rows; ++row) paintLine(top + row, width, Help[row], false);
}

void DebuggerScreen::paintState(int row, int width) {
  const auto lines = folded(note_.empty() ? state_ : note_, static_cast<std::size_t>(std::max(width, 1)));
  for (int i = 0; i < stateRows_; ++i)
    paintLine(row + i, width, i < std::ssize(lines) ? lines[static_cast<std::size_t>(i)] : "", true);
}

void DebuggerScreen::paintLine(int row, int width, std::string_view text, bool reverse) {
  std::u16string shown = visibleCharacters(text);
  std::replace(shown.begin(), shown.end(), u'\n', u' ');
  ::mvaddnwstr(row, 0, wide(shown, terminal_.showsAllCharacters()).c_str(), width);
  if (reverse) ::mvchgat(row, 0, -1, A_REVERSE, 0, nullptr);
}

/// All labels are to be seen in a terminal of 80 columns.
std::string DebuggerScreen::buttonLine(int width) {
  constexpr std::string_view Wide = "  ", Narrow = " ";
  const std::size_t labels = std::accumulate(
      std::begin(Labels), std::end(Labels), std::size_t{0},
      [](std::size_t sum, const auto& label) { return sum + std::string_view(label.Label).size(); });
  const bool roomy = labels + (std::size(Labels) - 1) * Wide.size() <= static_cast<std::size_t>(width);
  std::string line;
  buttons_.clear();
  for (const auto& label : Labels) {
    const int from = static_cast<int>(line.size());
    line += label.Label;
    buttons_.push_back({from, static_cast<int>(line.size()), label.Key});
    line += roomy ? Wide : Narrow;
  }
  return line;
}

}  // namespace wristlog
