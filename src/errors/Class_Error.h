#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "errors/Class_ErrorAction.h"
#include "errors/Class_ErrorRecord.h"
#include "hy_wristlog/failure.h"

namespace hy_wristlog {

/// The dispatcher: one object a call of a procedure, made at that call's first failure, which `CurrentError`
/// records. It decides what the procedure does about its failures.
class Class_Error {
 public:
  explicit Class_Error(const Failure& pending);

  Class_ErrorRecord CurrentError;
  Class_ErrorAction CurrentErrorAction;

  /// Records a failure of the procedure and returns an action code (errResume to errClose), or 0 when the
  /// dispatcher itself failed.
  std::int32_t fncErrorHandle(std::string_view ActiveMod, std::string_view ActiveProc);

 private:
  void handle(std::string_view ActiveMod, std::string_view ActiveProc);
  bool isSilencedAlready() const;
  bool followsLastCommandsFailure() const;
  void countInStack();
  bool lookUp(bool (*matches)(const Class_ErrorAction&, const Class_ErrorRecord&));
  void lookUpAction();
  void decideMessage();
  void endStorm();
  void pushOnStack();

  std::int16_t failures_ = 0;
  std::vector<std::string> shownMessages_;
};

/// Replaces each "VBCRLF", in any case, by CR LF.
std::string fncAddVbCrLf(std::string_view text);

}  // namespace hy_wristlog
