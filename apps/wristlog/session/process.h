#pragma once

#include <csignal>

namespace wristlog {

/// Before anything is opened: standard streams that the caller has closed must not become the place of a file
/// or a port; and a reader who has left, or a limit on the size of files, must not end a session with a
/// logger in the middle.
void prepareStandardStreams();

/// True when all that was printed went out. Says so on standard error when it did not, unless the reader of a
/// pipe simply had enough.
bool standardOutputIsWhole();

/// From now on Ctrl-C (or a request to terminate) only sets a mark; a second one ends the program at once.
void catchInterrupts();
bool interruptRequested();

/// Holds signals back, so that nothing half-written is left lying about.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t former_{};
};

}  // namespace wristlog
