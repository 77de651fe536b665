#pragma once

#include <cstdint>
#include <vector>

#include "workflows/pendrel/PendrelWorkflows.h"
#include "workflows/workflow_run.h"

namespace hy_wristlog {

/// One call of a workflow with the Pendreader. There is one attempt: a foreseen failure ends it and leaves no
/// trace. An abort sends the logger nothing, since its commands know no way back: the port is closed, which
/// takes the reader's power from the logger.
class PendrelRun final : public WorkflowRun {
 public:
  PendrelRun(MainState& state, const char* procedure, std::vector<std::int32_t> foreseen);

  /// Opens the reader's port and lets the logger wake up; ends with NotOpened when it cannot be opened.
  bool open(Pendrel& logger, std::int16_t port);

  bool aborted() override;

 private:
  void close() override;

  WaitsOf waits_{state_};
};

/// Clears an earlier abort request, finds the port (by searching, or from Settings.INI), opens it and reads
/// the set-up of the logger in the reader. False when the workflow has ended.
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
