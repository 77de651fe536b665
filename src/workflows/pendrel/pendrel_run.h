#pragma once

#include <cstdint>
#include <vector>

#include "errors/Procedure.h"
#include "workflows/main_state.h"
#include "workflows/pendrel/PendrelWorkflows.h"

namespace hy_wristlog {

/// One call of a workflow with the Pendreader: its steps, what a failure and an abort request do to it, and
/// its end, which closes the port. An abort sends the logger nothing, since its commands know no way back:
/// the port is closed, which takes the reader's power from the logger.
class PendrelRun {
 public:
  /// `foreseen` are the failures that end the workflow with their number and leave no trace.
  PendrelRun(MainState& state, const char* procedure, std::vector<std::int32_t> foreseen);

  std::int32_t code = 0;

  /// Runs the workflow and returns its code.
  template <class Steps>
  std::int32_t run(Steps&& steps) {
    procedure_.run(steps);
    return code;
  }

  /// One step that can fail.
  template <class Body>
  auto step(Body&& body) {
    return procedure_.statement(body);
  }

  /// Opens the reader's port and lets the logger wake up; else ends with NotOpened.
  bool open(Pendrel& logger, std::int16_t port);

  /// Honours an abort request; true when there was one.
  bool aborted();

  /// Ends with a code of the workflow's own. Always false, so that a step can be left with it.
  bool endWith(std::int32_t ownCode);

 private:
  TrapAnswer trap(const Failure& failure);
  void abort();

  MainState& state_;
  std::vector<std::int32_t> foreseen_;
  Procedure procedure_;
};

/// Clears a former abort request, finds the port (by searching, or from Settings.INI), opens it and reads
/// the set-up of the logger in the reader. False when the workflow is at its end.
bool reachPendrelLogger(PendrelRun& run, PendrelWorkflows& workflows, MainState& state, bool searchPort);

/// A procedure of Class_Main that answers with a code: the body's own, or the number of the failure that
/// ended it.
template <class Body>
std::int32_t codeOf(const char* name, Body&& body) {
  std::int32_t code = 0;
  Procedure procedure{"Class_Main", name, ProcedureKind::Command};
  procedure.trap([&code](Failure& failure) {
    code = failure.Number;
    return TrapAnswer::Dispatch;
  });
  procedure.run([&] { code = body(); });
  return code;
}

}  // namespace hy_wristlog
