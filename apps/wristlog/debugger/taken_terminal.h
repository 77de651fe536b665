#pragma once

#include <memory>
#include <string>

namespace wristlog {

/// Thrown when there is no terminal to take; says why.
struct NoTerminal {
  const char* Words;
};

/// The terminal, taken over for a full-screen program and given back however the program ends: in the
/// ordinary way, by an exception, by a signal or by abort.
///
/// The first Ctrl-C (SIGINT) or request to terminate (SIGTERM, SIGHUP) only sets a mark; the second one ends
/// the program at once. Signals that were ignored stay ignored, and so do others' handlers of signals that
/// end a program. After a stack overflow it is given back only if the overflow is in the object's thread. One
/// object at a time.
class TakenTerminal {
 public:
  /// Raises NoTerminal when standard input and output are not a terminal that can show a screen.
  TakenTerminal();
  ~TakenTerminal();
  TakenTerminal(const TakenTerminal&) = delete;
  TakenTerminal& operator=(const TakenTerminal&) = delete;

  static bool interrupted();
  static bool askedToEnd();
  /// Clears the marks, so that the next signal is a first one again.
  static void forgetSignals();

  /// Waits until a key is pressed, a signal comes, or so many milliseconds have passed.
  static void awaitKey(int milliseconds);
  /// True after the terminal was closed or its connection broke.
  static bool gone();

  /// Whether its locale can show more than ASCII.
  bool showsAllCharacters() const { return utf8_; }

 private:
  struct Screen;
  std::unique_ptr<Screen> screen_;
  bool utf8_ = false;
};

}  // namespace wristlog
