#include "session/process.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

#include "recording/signals_held.h"
#include "words/say.h"

namespace wristlog {
namespace {

/// Threads ask it too.
std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal's handler may set it");

void onInterrupt(int) {
  interrupted = true;
  for (const int number : Interrupts) std::signal(number, SIG_DFL);
}

bool isPipe(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

}  // namespace

void prepareStandardStreams() {
  for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    // Opened read-only, so that printing fails and is noticed.
    if (::fcntl(file, F_GETFD) < 0) ::open("/dev/null", O_RDONLY);
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

bool standardOutputIsWhole() {
  if (flushStandardOutput()) return true;
  if (!isPipe(STDOUT_FILENO)) complain() << "Standard output could not be written to the end.\n";
  return false;
}

void catchInterrupts() {
  for (const int number : Interrupts)
    // A signal that the caller has set to be ignored (nohup) stays ignored.
    if (std::signal(number, onInterrupt) == SIG_IGN) std::signal(number, SIG_IGN);
}

bool interruptRequested() { return interrupted; }

void setInterruptRequested(bool requested) { interrupted = requested; }

}  // namespace wristlog
