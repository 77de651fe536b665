#include "debugger/taken_terminal.h"

#define NCURSES_NOMACROS
#include <curses.h>
#include <langinfo.h>
#include <poll.h>
#include <term.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

namespace wristlog {
namespace {

constexpr int EscapeDelay = 25;  ///< milliseconds

constexpr std::array Requests{SIGINT, SIGTERM, SIGHUP};
constexpr std::array Endings{SIGQUIT, SIGABRT,   SIGSEGV, SIGBUS,  SIGFPE,  SIGILL,
                             SIGSYS,  SIGTRAP,   SIGUSR1, SIGUSR2, SIGALRM, SIGPROF,
                             SIGXCPU, SIGVTALRM, SIGXFSZ, SIGPIPE, SIGPOLL, SIGPWR};

/// What a signal handler needs to give the terminal back.
struct Former {
  termios Settings{};
  std::array<char, 512> Sequence{};
  std::size_t Length = 0;
};

Former former;
volatile std::sig_atomic_t interrupts = 0;
volatile std::sig_atomic_t endings = 0;

/// Gives the terminal back from a signal handler, so it does only what a handler may do.
void giveBackAtOnce() {
  // In a background process, changing the terminal would stop the program.
  ::signal(SIGTTOU, SIG_IGN);
  for (std::size_t sent = 0; sent < former.Length;) {
    const ssize_t written = ::write(STDOUT_FILENO, former.Sequence.data() + sent, former.Length - sent);
    if (written <= 0) break;
    sent += static_cast<std::size_t>(written);
  }
  ::tcsetattr(STDIN_FILENO, TCSANOW, &former.Settings);
}

void onEnding(int number) {
  giveBackAtOnce();
  ::signal(number, SIG_DFL);
  ::raise(number);
}

void onRequest(int number) {
  if (interrupts != 0 || endings != 0) return onEnding(number);
  (number == SIGINT ? interrupts : endings) = 1;
}

/// Empty when the terminal has no such capability.
std::string_view capability(const char* name) {
  constexpr std::intptr_t NoText = -1;
  const char* found = ::tigetstr(name);
  return found == nullptr || reinterpret_cast<std::intptr_t>(found) == NoText ? std::string_view() : found;
}

void addCapability(const char* name) {
  const std::string_view text = capability(name);
  for (std::size_t at = 0; at < text.size() && former.Length < former.Sequence.size(); ++at) {
    // "$<5>" asks for a pause.
    if (text.substr(at).starts_with("$<") && text.find('>', at) != text.npos)
      at = text.find('>', at);
    else
      former.Sequence[former.Length++] = text[at];
  }
}

void addText(std::string_view text) {
  for (const char c : text)
    if (former.Length < former.Sequence.size()) former.Sequence[former.Length++] = c;
}

void rememberSequences() {
  former.Length = 0;
  // Ends a clipboard sequence that was cut off, which would swallow what follows.
  addText("\x1B\\");
  if (!capability("kmous").empty()) addText("\x1B[?1000l\x1B[?1006l");
  for (const char* name : {"sgr0", "rmkx", "cnorm", "rmcup"}) addCapability(name);
}

/// Whether the terminal can show a screen. If so, notes the bytes that leave the screen.
bool learnTerminal() {
  int answer = 0;
  if (::setupterm(nullptr, STDOUT_FILENO, &answer) == ERR) return false;
  const bool canAddress = !capability("cup").empty();
  if (canAddress) rememberSequences();
  ::del_curterm(cur_term);
  return canAddress;
}

/// Makes ordinary keys of those that the line discipline would take (stop, start, literal next), since a
/// stopped terminal would stop the session with the logger too.
void freeKeys() {
  termios settings{};
  if (::tcgetattr(STDIN_FILENO, &settings) != 0) return;
  settings.c_iflag &= ~static_cast<tcflag_t>(IXON);
  settings.c_lflag &= ~static_cast<tcflag_t>(IEXTEN);
  ::tcsetattr(STDIN_FILENO, TCSANOW, &settings);
  ::def_prog_mode();
}

/// The signal handlers are set as long as this lives. They run on a stack of their own, in case the thread's
/// is used up.
class SignalsTaken {
 public:
  SignalsTaken() {
    stack_t own{};
    own.ss_sp = Stack.data();
    own.ss_size = Stack.size();
    ::sigaltstack(nullptr, &formerStack_);
    ownStack_ = (formerStack_.ss_flags & SS_DISABLE) != 0 && ::sigaltstack(&own, nullptr) == 0;
    take(Requests, onRequest, requestHandlers_);
    take(Endings, onEnding, endingHandlers_);
  }
  ~SignalsTaken() {
    giveBack(Requests, requestHandlers_);
    giveBack(Endings, endingHandlers_);
    if (ownStack_) ::sigaltstack(&formerStack_, nullptr);
  }
  SignalsTaken(const SignalsTaken&) = delete;
  SignalsTaken& operator=(const SignalsTaken&) = delete;

 private:
  template <std::size_t Count>
  using Handlers = std::array<struct sigaction, Count>;

  template <std::size_t Count>
  static void take(const std::array<int, Count>& numbers, void (*handler)(int), Handlers<Count>& formerly) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_ONSTACK;
    for (std::size_t i = 0; i < Count; ++i) {
      ::sigaction(numbers[i], nullptr, &formerly[i]);
      // Ignored signals stay ignored, and handlers of others (a sanitizer, a profiler) are kept.
      const bool set = formerly[i].sa_handler != SIG_DFL;
      if (formerly[i].sa_handler == SIG_IGN || (set && handler == onEnding)) continue;
      ::sigaction(numbers[i], &action, nullptr);
    }
  }
  template <std::size_t Count>
  static void giveBack(const std::array<int, Count>& numbers, const Handlers<Count>& formerly) {
    for (std::size_t i = 0; i < Count; ++i) ::sigaction(numbers[i], &formerly[i], nullptr);
  }

  static inline std::array<char, 1 << 16> Stack;

  stack_t formerStack_{};
  bool ownStack_ = false;
  Handlers<Requests.size()> requestHandlers_{};
  Handlers<Endings.size()> endingHandlers_{};
};

}  // namespace

struct TakenTerminal::Screen {
  SCREEN* Handle = nullptr;
  std::optional<SignalsTaken> Signals;
};

TakenTerminal::TakenTerminal() : screen_(std::make_unique<Screen>()) {
  if (::isatty(STDIN_FILENO) != 1 || ::isatty(STDOUT_FILENO) != 1)
    throw NoTerminal{"The console needs a terminal for its screen and its keys"};
  std::setlocale(LC_CTYPE, "");
  utf8_ = std::strcmp(::nl_langinfo(CODESET), "UTF-8") == 0;
  ::tcgetattr(STDIN_FILENO, &former.Settings);
  if (learnTerminal()) {
    forgetSignals();
    // Set before the screen begins, since curses does not change signals that have a handler.
    screen_->Signals.emplace();
    screen_->Handle = ::newterm(nullptr, stdout, stdin);
  }
  if (screen_->Handle == nullptr)
    throw NoTerminal{"This terminal cannot show a screen (TERM is not set, unknown, or too plain)"};
  ::cbreak();
  ::noecho();
  ::nonl();
  ::intrflush(stdscr, FALSE);
  ::keypad(stdscr, TRUE);
  ::nodelay(stdscr, TRUE);
  ::set_escdelay(EscapeDelay);
  ::mousemask(BUTTON1_PRESSED | BUTTON1_RELEASED | BUTTON4_PRESSED | BUTTON5_PRESSED, nullptr);
  ::mouseinterval(0);
  freeKeys();
}

TakenTerminal::~TakenTerminal() {
  ::endwin();
  ::delscreen(screen_->Handle);
}

bool TakenTerminal::interrupted() { return interrupts != 0; }
bool TakenTerminal::askedToEnd() { return endings != 0; }
void TakenTerminal::forgetSignals() {
  interrupts = 0;
  endings = 0;
}

void TakenTerminal::awaitKey(int milliseconds) {
  pollfd keyboard{STDIN_FILENO, POLLIN, 0};
  ::poll(&keyboard, 1, milliseconds);
}

bool TakenTerminal::gone() {
  pollfd keyboard{STDIN_FILENO, POLLIN, 0};
  return ::poll(&keyboard, 1, 0) > 0 && (keyboard.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

}  // namespace wristlog
