#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/platform.h"
#include "workflows/docked_model.h"
#include "workflows/workflow_run.h"

namespace hy_wristlog {

/// The attempts of Configure or Retrieve: after a failure of the retry set the logger is left in peace, its
/// port closed, and another attempt made, as often as the host allows.
class Attempts final : public WorkflowRun, private platform::EventSource {
 public:
  Attempts(MainState& state, std::vector<std::int32_t> retrySet,
           std::optional<std::int32_t> abortCode = std::nullopt);
  ~Attempts() override;

  /// Whether the logger could be reached, but its configuration has a structure that is not known here.
  bool hasUnknownStructure() const { return unknownStructure_; }

 private:
  void serveEvents() override;
  TrapAnswer trap(const Failure& failure) override;
  TrapAnswer mend() override;
  void breakOff() override;
  void close() override;

  std::shared_ptr<platform::Platform> world_ = platform::shareCurrent();
  std::int32_t round_ = 0;
  bool unknownStructure_ = false;
};

/// Finds the model's one dock, wakes the logger in it and reads its set-up.
bool reachLogger(Attempts& attempts, MainState& state, const DockedModel& model);

/// Whether the set-up that was read is the model's, of a firmware known here, with its factory values.
bool checkLogger(Attempts& attempts, MainState& state, const DockedModel& model);

}  // namespace hy_wristlog
