#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>

#include "apps/sandbox.h"

/// 'wristlog simulate' in a process of its own, whose events are read as they come.
class Served {
 public:
  static constexpr std::chrono::seconds Patience{60};

  /// Starts it and waits until it is ready; `Ready` is what it tells then. `arguments` as a shell takes them.
  Served(const Sandbox& box, const std::string& arguments)
      : Served(box.inSurroundings("TZ=America/New_York LC_ALL=C.UTF-8 ") + "simulate --json " + arguments) {}
  /// `command` begins with exec, so that no shell stands between.
  explicit Served(const std::string& command) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
    child_ = ::fork();
    if (child_ == 0) {
      // Nothing that the test leaves behind goes on.
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      ::dup2(ends[1], STDOUT_FILENO);
      for (const int number : {SIGINT, SIGTERM, SIGHUP}) ::signal(number, SIG_DFL);
      ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      ::_exit(127);
    }
    ::close(ends[1]);
    told_ = ends[0];
    Ready = await("ready");
  }
  ~Served() {
    stop(SIGKILL);
    ::close(told_);
  }
  Served(const Served&) = delete;
  Served& operator=(const Served&) = delete;

  std::string device() const { return Ready.value("device", ""); }
  /// The next event of that name; null when none comes.
  Json await(const std::string& name) {
    for (Json event = next(); event.is_object(); event = next())
      if (event.value("event", "") == name) return event;
    return {};
  }
  /// Ends it; its exit status, or -1 when the signal killed it.
  int stop(int signal = SIGTERM) {
    if (child_ <= 0) return status_;
    ::kill(child_, signal);
    int status = 0;
    ::waitpid(child_, &status, 0);
    child_ = -1;
    return status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  Json Ready;

 private:
  Json next() {
    const auto end = std::chrono::steady_clock::now() + Patience;
    for (std::size_t line = 0; std::chrono::steady_clock::now() < end;) {
      if (line = unread_.find('\n'); line != std::string::npos) {
        const std::string text = unread_.substr(0, line);
        unread_.erase(0, line + 1);
        return Json::parse(text, nullptr, false);
      }
      char bytes[4096];
      pollfd ready{told_, POLLIN, 0};
      if (::poll(&ready, 1, 100) <= 0) continue;
      const ssize_t count = ::read(told_, bytes, sizeof bytes);
      if (count <= 0) return {};
      unread_.append(bytes, static_cast<std::size_t>(count));
    }
    return {};
  }

  pid_t child_ = -1;
  int told_ = -1, status_ = -1;
  std::string unread_;
};
