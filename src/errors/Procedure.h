#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "errors/Class_Error.h"
#include "hy_wristlog/failure.h"

namespace hy_wristlog {

/// What a procedure's own trap answers to a failure.
enum class TrapAnswer : std::uint8_t {
  Dispatch,  ///< ask the dispatcher
  Repeat,    ///< repeat the failed statement
  GoOn,      ///< go on after it
  Leave,     ///< leave the procedure quietly
  Raise,     ///< leave it and raise the failure, which the trap may have changed, past the dispatcher
};

enum class ProcedureKind : std::uint8_t {
  Ordinary,
  Command,  ///< a public entry: ends the error stack and does not pass on failures that it was told to raise
};

/// Marks the duration of a command (a public workflow, or a command of a program) on its thread. A failure in
/// that time that the dispatcher silences as the echo of an earlier command's still counts as a failure.
class CommandUnderWay {
 public:
  CommandUnderWay();
  CommandUnderWay(const CommandUnderWay&) = delete;
  CommandUnderWay& operator=(const CommandUnderWay&) = delete;
  ~CommandUnderWay();

  static bool any();
};

/// The failure handling of one call of a procedure.
///
///     Procedure procedure{"Class_Example", "fncRead"};
///     procedure.passesOn(NoCharacters, NoFinalCharacter);
///     return procedure.run([&] {
///       procedure.statement([&] { link.subSendChars("show ver", 2, 1, 1, 0, 1000, 0); });
///       return procedure.statement([&] { return link.fncGetCharLine('\r', 1000); });
///     });
///
/// A Failure that leaves a `statement` goes to the trap, if there is one, and then to the dispatcher, whose
/// answer repeats the statement, goes on after it (with an empty value when it returns one), or ends the
/// procedure. What fails in `run` outside a statement counts as one statement, the whole body. Without
/// failures nothing is allocated or formatted.
class Procedure {
 public:
  Procedure(const char* module, const char* name, ProcedureKind kind = ProcedureKind::Ordinary)
      : module_(module), name_(name), kind_(kind) {}
  Procedure(const Procedure&) = delete;
  Procedure& operator=(const Procedure&) = delete;

  /// Failures that are normal here: raised again to the caller unless the site has an action for them.
  template <class... Numbers>
  void passesOn(Numbers... numbers) {
    static_assert(sizeof...(Numbers) <= MostPassedOn);
    passedOn_ = {static_cast<std::int32_t>(numbers)...};
  }

  /// Sees every failure before the dispatcher.
  template <class Trap>
  void trap(Trap trap) {
    static_assert(KeptWithoutAllocation<Trap>);
    trap_ = trap;
  }

  /// Runs before the procedure is left, on every way out; its failures are ignored.
  template <class CleanUp>
  void cleanUp(CleanUp cleanUp) {
    static_assert(KeptWithoutAllocation<CleanUp>);
    cleanUp_ = cleanUp;
  }

  template <class Step>
  auto statement(Step&& step) -> std::invoke_result_t<Step&> {
    using Result = std::invoke_result_t<Step&>;
    for (;;) {
      try {
        return step();
      } catch (const Leave&) {
        throw;
      } catch (...) {
        if (answer() == Next::GoOn) break;
      }
    }
    if constexpr (!std::is_void_v<Result>) return Result{};
  }

  template <class Body>
  auto run(Body&& body) -> std::invoke_result_t<Body&> {
    using Result = std::invoke_result_t<Body&>;
    begin();
    try {
      if constexpr (std::is_void_v<Result>) {
        statement(body);
        end();
        return;
      } else {
        Result result = statement(body);
        end();
        return result;
      }
    } catch (const Leave&) {
    }
    end();
    raiseAgain();
    if constexpr (!std::is_void_v<Result>) return Result{};
  }

 private:
  struct Leave {};
  enum class Next : std::uint8_t { Repeat, GoOn };
  static constexpr std::size_t MostPassedOn = 24;
  /// Whether a std::function holds the captures without allocating: two pointers fit.
  template <class Function>
  static constexpr bool KeptWithoutAllocation =
      sizeof(Function) <= 2 * sizeof(void*) && std::is_trivially_copyable_v<Function>;

  void begin();
  /// Decides about the exception being handled; throws Leave to end the procedure.
  Next answer();
  Next dispatch(const Failure& failure);
  void end();
  void raiseAgain() const;

  const char* module_;
  const char* name_;
  ProcedureKind kind_;
  std::array<std::int32_t, MostPassedOn> passedOn_{};
  std::function<TrapAnswer(Failure&)> trap_;
  std::function<void()> cleanUp_;
  std::optional<CommandUnderWay> underWay_;
  std::unique_ptr<Class_Error> error_;
  std::unique_ptr<Failure> raised_;
};

/// Restores the error stack of a command at its end, whatever has failed in between.
class ErrorStackKept {
 public:
  ErrorStackKept();
  ErrorStackKept(const ErrorStackKept&) = delete;
  ErrorStackKept& operator=(const ErrorStackKept&) = delete;
  ~ErrorStackKept();

 private:
  std::optional<std::vector<std::optional<Class_ErrorRecord>>> stack_;
  std::string logPath_;
};

/// Runs `step` and ignores its failures. Within a command they leave no trace in the error stack either.
template <class Step>
void ignoringFailures(Step&& step) {
  const ErrorStackKept kept;
  try {
    step();
  } catch (const Failure&) {  // NOLINT(bugprone-empty-catch)
  }
}

/// The exception being handled, as a Failure: memory that ran out is OutOfMemory, a foreign exception
/// Internal.
Failure currentFailure();

}  // namespace hy_wristlog
