#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <vector>

#include "errors/Procedure.h"
#include "workflows/main_state.h"

namespace hy_wristlog {

/// The frame of one call of a workflow: the code it ends with, what a failed step and an abort request do to
/// it, and its end. What differs between the families is in Attempts and PendrelRun.
class WorkflowRun {
 public:
  WorkflowRun(const WorkflowRun&) = delete;
  WorkflowRun& operator=(const WorkflowRun&) = delete;

  std::int32_t code = 0;

  enum class Checkpoints : std::uint8_t { None, BeforeEach };

  /// Makes attempts until one ends without a failure that another attempt may mend, and returns the code.
  /// Nothing leaves it but what the thread itself cannot go on with.
  template <class Attempt>
  std::int32_t run(Attempt&& attempt) {
    procedure_.run([&] {
      do {
        attemptFailed_ = false;
        attempt();
      } while (attemptFailed_ && !ended_);
    });
    return code;
  }

  /// Runs one step that can fail. A body without a result answers whether the attempt goes on. A result is
  /// handed on; it is an empty value when the step failed.
  template <class Body>
  auto step(Body&& body) {
    using Result = std::invoke_result_t<Body&>;
    if constexpr (std::is_void_v<Result>) {
      if (goesOn()) procedure_.statement(body);
      return goesOn();
    } else {
      return goesOn() ? procedure_.statement(body) : Result{};
    }
  }

  /// Takes the steps of a workflow, members of it, in their order. It stops, and answers false, at the first
  /// that answers false and at an abort request that a checkpoint finds.
  template <class Workflow, std::size_t Count>
  bool take(Workflow& workflow, bool (Workflow::*const (&steps)[Count])(),
            Checkpoints checkpoints = Checkpoints::BeforeEach) {
    for (const auto next : steps)
      if ((checkpoints == Checkpoints::BeforeEach && aborted()) || !(workflow.*next)()) return false;
    return true;
  }

  /// A checkpoint: honours an abort request; true when there was one.
  virtual bool aborted();

  /// Ends the workflow with a code of its own. Always false, so that a step can be left with it.
  bool endWith(std::int32_t ownCode);

 protected:
  /// `foreseen` are the failures that the workflow deals with itself. An abort returns `abortCode`; without
  /// one it leaves the code as it is.
  WorkflowRun(MainState& state, const char* module, const char* procedure, std::vector<std::int32_t> foreseen,
              std::optional<std::int32_t> abortCode);
  virtual ~WorkflowRun() = default;

  /// The first answer to any failure.
  virtual TrapAnswer trap(const Failure& failure);

  MainState& state_;
  bool attemptFailed_ = false;  ///< the rest of the attempt is left out, and another one follows

 private:
  /// The answer to a foreseen failure that no abort has caused.
  virtual TrapAnswer mend() { return TrapAnswer::Leave; }
  /// Breaks off what the logger is doing.
  virtual void breakOff() {}
  /// Leaves the port closed, on every way out.
  virtual void close() = 0;

  void abort();
  bool goesOn() const { return !attemptFailed_ && !ended_; }

  std::vector<std::int32_t> foreseen_;
  std::optional<std::int32_t> abortCode_;
  Procedure procedure_;
  bool ended_ = false;
};

}  // namespace hy_wristlog
