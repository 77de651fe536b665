#include <optional>
#include <string>

#include "base/dates.h"
#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "platform/platform.h"
#include "workflows/docked_model.h"
#include "workflows/main_state.h"
#include "workflows/subject_of.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int16_t HighestPort = 64;
/// How many bytes the logger still writes after its last record when it finds its memory full.
constexpr std::int32_t FullMargin = 20;

struct StatusTexts {
  std::string Simple, Long;
};

StatusTexts same(const std::string& text) { return {text, text}; }

StatusTexts unknownStatus() {
  return {"Error: Unknown Status",
          "Status information in the logger is corrupted or has been lost. If this logger has data you "
          "need, click 'Retrieve' to recover data. Otherwise click 'Configure' to reset the logger's "
          "configuration."};
}

StatusTexts tooManyDocks(const std::string& model) {
  return {"Error: Too Many Docks",
          "More than one " + model +
              " communications dock detected. When using the PC software, please connect only one " + model +
              " communications docking station to the computer at a time. Remove all but one communications "
              "dock."};
}

StatusTexts noDock(const std::string& model) {
  return {"Dock Not Connected",
          "USB Communications Docking Station Not Found. Connect the " + model +
              " communications docking station to an available USB port on this computer."};
}

StatusTexts portTooHigh() {
  return {
      "Error: COM port greater than 64",
      "The virtual COM port assigned to the communications docking station is greater than 64. Use 'Device "
      "Manager' to correct this."};
}

StatusTexts noLogger(const std::string& model) {
  return {"Logger Not Found", "Insert the " + model +
                                  " into its communications docking station, face side up, aligning the "
                                  "logger with the picture on the "
                                  "dock. (Or the battery in the " +
                                  model + " may need to be replaced.)"};
}

StatusTexts portError(const std::string& model) {
  return {
      "Error: USB dock COM port error",
      "An error occurred when connecting to the " + model +
          " communications docking station. Please disconnect the communications dock from the USB port and "
          "reconnect it."};
}

StatusTexts readError() {
  return {"Error: Problem Reading Configuration",
          "Error reading logger configuration. Try getting status again. If this problem persists, your "
          "logger may "
          "be damaged or have incompatible firmware. Please contact Halcyra Product Support for assistance."};
}

StatusTexts corruptedFactoryValues() {
  return {
      "Error: Corrupted Logger Configuration",
      "Necessary factory value settings in this logger have become corrupted. Please contact Halcyra Product "
      "Support for assistance."};
}

StatusTexts incompatibleFirmware(const std::string& version) {
  return {"Error: Incompatible Firmware Version",
          "The firmware in the connected Kestrin (version " + version +
              ") is not compatible with this version of " + globals().AppName +
              ". Please contact Halcyra Product Support for assistance."};
}

StatusTexts waiting(const VardenRecord& record, const DockedModel& model) {
  const std::string start = formatDate(addTime(record.StartTimeGMT, record.GMToffset / MinutesPerDay),
                                       globals().ShortDateTimeFormat);
  if (model.DeviceType == KR_QUILLANDER) return {"Waiting for Delayed Start", "Start Time: " + start};
  return same("Waiting for Delayed Start (" + start + ")");
}

StatusTexts withData(const VardenLogger& logger) {
  const VardenRecord& record = logger.record;
  if (record.LowPowerShutdowns > 0)
    return {"Ready for Download (low battery)",
            "Ready for Download (data collection stopped due to low battery)"};
  const bool full = logger.fncHasMemoryFullFlag()
                        ? record.MemoryFull == MemFull_Yes
                        : std::int64_t{record.BytesUsed} + FullMargin >= logger.Get_MaxBytesAvailable();
  if (full) return same("Ready for Download (memory full)");
  if (!isBefore(record.StartTimeGMT, logger.Get_CurrentGMTtime())) return unknownStatus();
  if (isBefore(logger.Get_CurrentGMTtime(), record.EndTimeGMT)) return same("Collecting Data");
  return same("Ready for Download (data collection stopped)");
}

StatusTexts loggerState(const VardenLogger& logger, const DockedModel& model) {
  const VardenRecord& record = logger.record;
  switch (record.DataAvailable) {
    case DataAvail_No:
      if (isBefore(logger.Get_CurrentGMTtime(), record.StartTimeGMT) &&
          isBefore(logger.Get_CurrentGMTtime(), record.EndTimeGMT))
        return waiting(record, model);
      return same("Ready to Configure");
    case DataAvail_Yes:
      return withData(logger);
    case DataAvail_Unknown:
      break;
  }
  return unknownStatus();
}

StatusTexts abortedTexts() { return {"Aborted", "The inquiry was aborted; the logger is as it was."}; }

/// One inquiry, in one or two passes. A failure of the first pass stays noted in the second, which never
/// makes it good.
class Inquiry final : private platform::EventSource {
 public:
  Inquiry(Procedure& procedure, MainState& state)
      : procedure_(procedure), state_(state), logger_(state.logger()) {
    world_->addEventSource(*this);
  }
  ~Inquiry() { world_->removeEventSource(*this); }
  Inquiry(const Inquiry&) = delete;
  Inquiry& operator=(const Inquiry&) = delete;

  TrapAnswer trap(const Failure& failure) {
    if (state_.AbortFlag) return TrapAnswer::Leave;
    if (isOneOf(failure.Number, {NoCharacters, NoFinalCharacter, WrongCharacters, RetriesExceeded, NoPacket,
                                 UnknownStructure, DamagedConfig, DamagedAnswer}))
      readFailed_ = true;
    else if (isOneOf(failure.Number,
                     {PortStateFailure, ClosedWhileInUse, ControlBlockFailure, DockPortFailure}))
      portProblem_ = true;
    else
      return TrapAnswer::Dispatch;
    return TrapAnswer::GoOn;
  }

  /// False when there are several docks, so that it is open which logger is meant.
  bool ask(const DockedModel& asked, StatusTexts& texts) {
    const DockedModel* model = &asked;
    for (;;) {
      const Pass pass = tryModel(*model, texts);
      if (pass != Pass::Again) return pass == Pass::Done;
      retried_ = true;
      // The second pass looks for the logger in a Kestrin Vivid's dock, whichever model was asked for.
      model = dockedModel(LggrPntr_KRVivid);
    }
  }

 private:
  enum class Pass : std::uint8_t { Done, TooManyDocks, Again };

  /// An abort cancels a running transfer; to end any other waiting the port is closed.
  void serveEvents() override {
    if (!state_.AbortFlag || !logger_.link().Get_PortReady()) return;
    if (logger_.link().Get_DoingXMODEM()) return logger_.link().subAbortProcess();
    ignoringFailures([&] { logger_.subAbortLoggerComms(); });
    ignoringFailures([&] { logger_.subCloseDevicePort(); });
  }

  Pass tryModel(const DockedModel& model, StatusTexts& texts) {
    std::int16_t docks = 0;
    std::int16_t port = 0;
    procedure_.statement([&] { port = model.findDock(logger_, docks); });
    if (docks > 1) {
      texts = tooManyDocks(model.Words);
      return Pass::TooManyDocks;
    }
    if (docks == 0) return done(texts, noDock(model.Words));
    if (port > HighestPort) return done(texts, portTooHigh());
    if (port < 1) return done(texts, noDock(model.Words));

    // Only a dock that answered "no logger" ends here; a dock that could not be opened is told below.
    std::optional<bool> connected;
    procedure_.statement([&] { connected = model.connect(logger_); });
    if (connected == false) return done(texts, noLogger(model.Words));
    if (portProblem_) {
      if (!retried_) return Pass::Again;
      retried_ = false;
      return done(texts, portError(model.Words));
    }

    procedure_.statement([&] { logger_.fncReadVardenSetup(); });
    if (retried_)
      retried_ = false;
    else if (readFailed_ || portProblem_)
      return Pass::Again;
    if (readFailed_ || portProblem_) return done(texts, readError());

    if (!hasFactoryValues(logger_.record, model))
      texts = corruptedFactoryValues();
    else if (!logger_.fncIsValidFirmware())
      texts = incompatibleFirmware(logger_.record.FirmwareVersion);
    if (readFailed_) return Pass::Done;
    // The logger's own state replaces what was said of its factory values or firmware.
    procedure_.statement([&] { texts = loggerState(logger_, model); });
    return Pass::Done;
  }

  static Pass done(StatusTexts& texts, StatusTexts found) {
    texts = std::move(found);
    return Pass::Done;
  }

  Procedure& procedure_;
  MainState& state_;
  VardenLogger& logger_;
  std::shared_ptr<platform::Platform> world_ = platform::shareCurrent();
  bool readFailed_ = false, portProblem_ = false, retried_ = false;
};

}  // namespace

std::int32_t Class_Main::GetStatus(enmLoggerPointer LoggerType, std::string& SimpleStatus,
                                   std::string& LongStatus, std::shared_ptr<Class_VardenLogger>& KestrinData,
                                   std::shared_ptr<Class_Subject>& Subject, float* BatteryLifeRemaining) {
  const WorkMark mark(*inside_);
  if (!mark.mayBegin()) return fault::InvalidCall;
  std::int32_t code = ReturnCode::Success;
  Procedure procedure{"Class_Main", "GetStatus", ProcedureKind::Command};
  std::optional<Inquiry> inquiry;
  procedure.trap([&](Failure& failure) {
    const TrapAnswer answer = inquiry ? inquiry->trap(failure) : TrapAnswer::Dispatch;
    if (answer == TrapAnswer::Dispatch) code = failure.Number;
    return answer;
  });
  procedure.cleanUp([&] { inside_->logger().subCloseDevicePort(); });
  procedure.run([&] {
    inside_->makeActiveLogger();
    const DockedModel* model = dockedModel(LoggerType);
    if (model == nullptr) {
      code = ReturnCode::WrongLogger;
      return;
    }
    inside_->AbortFlag = false;
    VardenLogger& logger = inside_->logger();
    inquiry.emplace(procedure, *inside_);
    StatusTexts texts;
    const bool oneLogger = inquiry->ask(*model, texts);
    SimpleStatus = texts.Simple;
    LongStatus = texts.Long;
    if (!oneLogger || inside_->AbortFlag) return;
    KestrinData = inside_->ActiveLogger;
    if (BatteryLifeRemaining != nullptr && logger.Get_CTcompliant())
      *BatteryLifeRemaining = logger.Get_BattLifeRemaining();
    Subject = std::make_shared<Class_Subject>(subjectOf(logger.record));
    code = ReturnCode::Success;
  });
  if (inside_->AbortFlag) {
    inside_->AbortFlag = false;
    globals().emptyErrorStack();
    const StatusTexts texts = abortedTexts();
    SimpleStatus = texts.Simple;
    LongStatus = texts.Long;
    code = ReturnCode::Aborted;
  }
  return code;
}

}  // namespace hy_wristlog
