#pragma once

#include <csignal>
#include <initializer_list>

namespace wristlog {

/// The signals that ask the program to end.
inline constexpr std::initializer_list<int> Interrupts{SIGINT, SIGTERM, SIGHUP};

/// Blocks them, so that no half-written file is left over.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t held;
    sigemptyset(&held);
    for (const int number : Interrupts) sigaddset(&held, number);
    ::pthread_sigmask(SIG_BLOCK, &held, &former_);
  }
  ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t former_{};
};

}  // namespace wristlog
