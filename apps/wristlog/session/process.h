#pragma once

namespace wristlog {

/// To be called before anything is opened. Opens closed standard streams, so that no file or port gets their
/// numbers, and ignores SIGPIPE and SIGXFSZ, so that they do not end a session with a logger.
void prepareStandardStreams();

/// True when all that was printed went out. Says so on standard error when it did not, unless the reader of a
/// pipe had closed it.
bool standardOutputIsWhole();

/// From now on Ctrl-C (or a request to terminate) only sets a mark; a second one ends the program at once.
void catchInterrupts();
bool interruptRequested();
/// As if it had been pressed, or not.
void setInterruptRequested(bool requested);

}  // namespace wristlog
