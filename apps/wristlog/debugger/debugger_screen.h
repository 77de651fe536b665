#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "debugger/debugger_text.h"
#include "debugger/taken_terminal.h"
#include "platform/platform.h"

namespace wristlog {

/// The "Communications Debugger": the console's text over the whole terminal, with its buttons, its "Last
/// error:" and its "Chars in RX buffer:" below. It is watch-only: nothing that is typed reaches the logger.
class DebuggerScreen {
 public:
  /// What the buttons of the link's console do. Copying is done by the screen itself.
  struct Buttons {
    std::function<void()> Clear, DataOverrun;
  };

  /// `machine` paces the painting. Raises what TakenTerminal raises.
  DebuggerScreen(std::string title, hy_wristlog::platform::Clock& machine);

  DebuggerText Text;
  Buttons Pressed;

  void showLastError(std::string_view text);
  void showReceiveCount(std::int32_t count);
  /// Shows a text above the buttons, in as many lines as it needs and the terminal has room for.
  void showState(std::string_view text);
  /// To be called after `Text` was changed.
  void textChanged() { changed_ = true; }

  /// Reads keys and paints, at most as often as a person can see. Cheap to call at any rate.
  void attend();
  /// Shows how the workflow has ended.
  void finish(std::string_view result);
  void stayUntilLeft();

  /// True once the user wants the workflow to stop.
  bool stopRequested() const { return stopRequested_; }

  /// False when the text could not be sent to the terminal. Whether the terminal keeps it cannot be known.
  static bool copyToClipboard(std::string_view text);

 private:
  struct Span {
    int From, To;
    int Key;
  };

  void takeKeys();
  void takeSignals();
  void onKey(int key);
  void onMouse();
  void leave();
  void escape();
  void copy(const std::string& text, const char* what);
  void paint();
  void paintText(int top, int height, int width);
  void paintHelp(int top, int height, int width);
  void paintState(int row, int width);
  void paintLine(int row, int width, std::string_view text, bool reverse);
  std::string buttonLine(int width);
  void layOut();
  /// The rows that are not the text's.
  int panelRows() const;

  TakenTerminal terminal_;
  hy_wristlog::platform::Clock& machine_;
  std::string title_, state_, note_, lastError_, receiveCount_;
  std::vector<Span> buttons_;
  int textTop_ = 0, buttonRow_ = -1, stateRows_ = 1;
  double nextLook_ = 0, nextPaint_ = 0;
  bool changed_ = true;
  bool helping_ = false;  ///< the keys are listed in the place of the text
  bool running_ = true, leaving_ = false, stopRequested_ = false;
};

}  // namespace wristlog
