#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "errors/Procedure.h"
#include "hy_wristlog/Class_Main.h"
#include "platform/platform.h"
#include "workflows/docked_model.h"
#include "workflows/main_state.h"

namespace hy_wristlog {

/// The attempts of Configure or Retrieve: what a failure does to the running attempt, whether another one
/// follows, and what an abort does. A workflow runs its steps through `step` and leaves its attempt when that
/// answers false.
class Attempts : private platform::EventSource {
 public:
  /// `abortCode` is what an abort returns; none leaves the code as it stands.
  Attempts(MainState& state, std::vector<std::int32_t> retrySet, std::int32_t abortCode);
  ~Attempts();
  Attempts(const Attempts&) = delete;
  Attempts& operator=(const Attempts&) = delete;

  static constexpr std::int32_t NoCode = -1;

  std::int32_t code = 0;

  /// Runs `attempt` until one ends without a failure that another attempt may mend. Nothing leaves it but
  /// what the thread itself cannot go on with.
  void run(const std::function<void()>& attempt);

  /// Before the attempts: the same failure handling, without another attempt.
  bool step(const std::function<void()>& body);

  /// Honours an abort request at a checkpoint; true when there was one.
  bool aborted();

  /// Ends the attempt with a code of the workflow's own. Always false, so that a step can be left with it.
  bool endWith(std::int32_t ownCode);

  /// The logger could be reached, but its configuration has a structure that is not known here.
  bool portFailed() const { return portFailed_; }

 private:
  void serveEvents() override;
  TrapAnswer trap(const Failure& failure);
  void abort();
  void tail();

  MainState& state_;
  std::shared_ptr<platform::Platform> world_ = platform::shareCurrent();
  std::vector<std::int32_t> retrySet_;
  std::int32_t abortCode_;
  Procedure procedure_{"Form_CommsConfigure", "subConfigureKestrin", ProcedureKind::Command};
  std::int32_t round_ = 0;
  bool commFailed_ = false, portFailed_ = false, ended_ = false;
};

/// Finds the model's one dock, wakes the logger in it and reads its set-up.
bool reachLogger(Attempts& attempts, MainState& state, const DockedModel& model);

/// Whether the set-up that was read is the model's, of a firmware known here, with its factory values.
bool checkLogger(Attempts& attempts, MainState& state, const DockedModel& model);

}  // namespace hy_wristlog
