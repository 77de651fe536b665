#pragma once

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>

#include "apps/sandbox.h"

/// The program in a pseudo-terminal of its own, with a user who reads and types.
class TerminalRun {
 public:
  static constexpr int Patience = 60;  ///< seconds until a test gives up

  TerminalRun(const Sandbox& box, const std::string& arguments,
              const std::string& terminal = "xterm-256color", winsize size = {24, 100, 0, 0}) {
    const std::string command = box.inSurroundings("LC_ALL=C.UTF-8 TERM=" + terminal) + arguments;
    if (::openpty(&user_, &program_, nullptr, nullptr, &size) != 0) std::abort();
    ::tcgetattr(program_, &before_);
    child_ = ::fork();
    if (child_ == 0) {
      ::close(user_);
      ::login_tty(::dup(program_));
      ::close(program_);
      // Who runs the tests may have them ignored.
      for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP}) ::signal(number, SIG_DFL);
      ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      ::_exit(127);
    }
  }
  ~TerminalRun() {
    if (child_ > 0) ::kill(child_, SIGKILL);
    finish();
    hangUp();
    ::close(program_);
  }
  TerminalRun(const TerminalRun&) = delete;
  TerminalRun& operator=(const TerminalRun&) = delete;

  void type(std::string_view keys) const {
    if (::write(user_, keys.data(), keys.size()) < 0) std::abort();
  }
  void signal(int number) const { ::kill(child_, number); }
  void resize(unsigned short rows, unsigned short columns) const {
    const winsize size{rows, columns, 0, 0};
    ::ioctl(user_, TIOCSWINSZ, &size);
  }
  void hangUp() {
    if (user_ >= 0) ::close(user_);
    user_ = -1;
  }

  /// Reads until the screen, painted anew again and again, shows the text.
  bool shows(const std::string& text) {
    return until([&] {
      Last.clear();
      type("\f");
      read(100);
      return Last.find(text) != std::string::npos;
    });
  }
  /// Reads until the program has written the text.
  bool writes(const std::string& text) {
    return until([&] {
      read(20);
      return All.find(text) != std::string::npos;
    });
  }
  /// The status of waitpid, when the program has ended.
  int finish() {
    if (child_ <= 0) return status_;
    until([&] {
      if (user_ >= 0) read(10);
      if (::waitpid(child_, &status_, WNOHANG) == 0) return false;
      child_ = -1;
      return true;
    });
    if (user_ >= 0) read(10);
    return status_;
  }
  /// The settings of the line are those from before the program.
  bool isRestored() const {
    termios now{};
    ::tcgetattr(program_, &now);
    return now.c_lflag == before_.c_lflag && now.c_iflag == before_.c_iflag &&
           now.c_oflag == before_.c_oflag && now.c_cc[VMIN] == before_.c_cc[VMIN];
  }

  std::string All, Last;  ///< what came, from the start and since the last painting

 private:
  template <class Condition>
  bool until(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(Patience);
    while (std::chrono::steady_clock::now() < end)
      if (condition()) return true;
    return false;
  }
  /// Takes what comes until nothing has come for so many milliseconds, or something for five times as many.
  void read(int milliseconds) {
    char bytes[4096];
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(5 * milliseconds);
    for (pollfd ready{user_, POLLIN, 0}; ::poll(&ready, 1, milliseconds) > 0;) {
      const ssize_t count = ::read(user_, bytes, sizeof bytes);
      if (count <= 0) return;
      All.append(bytes, static_cast<std::size_t>(count));
      Last.append(bytes, static_cast<std::size_t>(count));
      if (std::chrono::steady_clock::now() > end) return;
    }
  }

  int user_ = -1, program_ = -1;
  pid_t child_ = -1;
  int status_ = -1;
  termios before_{};
};
