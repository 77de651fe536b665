#include "words/broken_retrieval.h"

#include "base/numbers.h"
#include "engineering/docks.h"
#include "hy_wristlog/failure.h"
#include "words/meanings.h"

namespace wristlog {
namespace {

namespace hw = hy_wristlog;
using namespace hw::FailureNumber;
namespace ReturnCode = hw::ReturnCode;

/// "12 of 30 KB", or bytes where those are few.
std::string amount(std::int64_t came, std::int64_t all) {
  constexpr std::int64_t Kilobyte = 1000, Few = 10 * Kilobyte;
  if (all < Few) return std::to_string(came) + " of " + std::to_string(all) + " bytes";
  return std::to_string(came / Kilobyte) + " of " + std::to_string((all + Kilobyte / 2) / Kilobyte) + " KB";
}

/// What may have happened to the dock, with a comma where the sentence needs one.
std::string lossOfDock(hw::enmLoggerPointer model) {
  try {
    for (const auto& dock : hw::engineering::docks())
      if (dock.Model == model && dock.Connected > 0)
        return hw::engineering::isOnOtherMachine(dock.Port)
                   ? "The network to the dock failed, or the dock was disconnected there,"
                   : "The dock was disconnected, or its port locked up,";
  } catch (const hw::Failure&) {
    // The search for docks fails where the dock is gone.
  }
  return "The dock was disconnected";
}

/// When it broke off, after a verb: " during the download, after 12 of 30 KB."
std::string moment(const BrokenRetrieval& broken) {
  if (broken.Step < hw::RetrieveStep_Downloading) return " before the download.";
  if (broken.Step > hw::RetrieveStep_Downloading) return " after the download.";
  return " during the download, after " + amount(broken.Came, broken.InLogger) + ".";
}

/// What was lost of the link; empty for other failures.
std::string lossOf(const BrokenRetrieval& broken) {
  if (broken.Step == hw::RetrieveStep_None ||
      !hw::isOneOf(broken.Code, {ReturnCode::NotFound, PortStateFailure, ClosedWhileInUse, InvalidPort,
                                 PortNotAvailable, DockPortFailure}))
    return {};
  const std::string loss = lossOfDock(broken.Model);
  const bool isThere = loss.ends_with(',');
  return isThere && broken.Code == ReturnCode::NotFound
             ? "The logger was taken out of its dock, or lost contact,"
             : loss;
}

std::string cause(const BrokenRetrieval& broken) {
  if (broken.Code == ReturnCode::Aborted)
    return broken.Step < hw::RetrieveStep_Downloading ? "Aborted." : "Aborted" + moment(broken);
  if (const std::string loss = lossOf(broken); !loss.empty()) return loss + moment(broken);
  if (broken.Code == Subscript && broken.Came > broken.InLogger)
    return std::to_string(broken.Came) + " bytes came, though the logger holds " +
           std::to_string(broken.InLogger) + ".";
  if (broken.Code == Subscript && broken.Came < broken.InLogger)
    return "Only " + std::to_string(broken.Came) + " of the recording's " + std::to_string(broken.InLogger) +
           " bytes came: the transfer ended early.";
  const bool brokeOff = broken.Step == hw::RetrieveStep_Downloading;
  return explanationOf(broken.Code, broken.Model) +
         (brokeOff ? " The download broke off after " + amount(broken.Came, broken.InLogger) + "." : "");
}

const char* state(hw::enmRetrieveStep step) {
  switch (step) {
    case hw::RetrieveStep_None:
      return "The logger was not stopped, and what it holds is still there.";
    case hw::RetrieveStep_Reached:
      return "The recording is still in the logger, which was not stopped: if it was recording, it still is.";
    case hw::RetrieveStep_Stopping:
      return "The recording is still in the logger, which may have been stopped, or still record.";
    default:
      return "The recording is still in the logger, which was stopped and records no more.";
  }
}

std::string nextStep(const BrokenRetrieval& broken) {
  if (hw::isOneOf(broken.Code,
                  {ReturnCode::SubjectUnusable, ReturnCode::LoggerReset, ReturnCode::ZoneDiffers}))
    return {};  // the warning tells it
  if (!lossOf(broken).empty()) return " Connect the dock, seat the logger in it, and retrieve again.";
  const bool wordsTellIt = broken.Step == hw::RetrieveStep_None && broken.Code != ReturnCode::Aborted;
  return wordsTellIt ? "" : " Retrieve it again.";
}

}  // namespace

std::string wordsFor(const BrokenRetrieval& broken) {
  const bool isNoBreak =
      hw::isOneOf(broken.Code, {ReturnCode::Success, ReturnCode::NoData, ReturnCode::NoSamples,
                                ReturnCode::StillWaiting, ReturnCode::DecodeProblem}) ||
      broken.Step == hw::RetrieveStep_Done;
  if (isNoBreak) return explanationOf(broken.Code, broken.Model);
  if (broken.Step != hw::RetrieveStep_Decoded)
    return cause(broken) + " " + state(broken.Step) + nextStep(broken);
  const std::string loss = lossOf(broken);
  const std::string why = broken.Code == ReturnCode::Aborted ? "the retrieval was aborted"
                          : loss.empty()                     ? "it did not answer any more"
                                                             : "the dock or the logger was gone";
  return "The recording was read whole. Only the logger could not be told so: " + why + ". " +
         state(broken.Step) +
         " Its status may go on to say that it has data. It can be configured for the next recording.";
}

}  // namespace wristlog
