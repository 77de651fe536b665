#include "start_up/start_up.h"

#include <cstdint>
#include <string>
#include <variant>

#include "errors/GlobalState.h"
#include "errors/Procedure.h"
#include "signature/Class_Signature.h"
#include "start_up/error_files.h"
#include "tools/Class_Tools.h"
#include "tools/paths.h"

namespace hy_wristlog {

using namespace FailureNumber;
namespace {

constexpr std::int32_t DocumentsFolderCode = 5;
constexpr std::int32_t UserDataFolderCode = 26;
constexpr std::int32_t CommonDataFolderCode = 35;

TrapAnswer trapStartUp(const Failure& failure) {
  switch (failure.Number) {
    case ObjectUnloaded: {
      Class_ErrorAction action;
      action.ErrorNumber = ObjectUnloaded;
      action.ErrorModule = "BasMain";
      action.ErrorProcedure = "Main";
      action.ErrorAction = errResumeNext;
      action.ProcErrorCountLimit = 5;
      globals().ErrorActions.push_back(action);
      return TrapAnswer::Dispatch;
    }
    case ObjectNotSet:
      return TrapAnswer::Leave;
    case NoUserName:
      SignatureService().Let_LogonUserName("ERROR");
      return TrapAnswer::GoOn;
    case NoDomainName:
      SignatureService().Let_DomainName("ERROR");
      return TrapAnswer::GoOn;
    default:
      return TrapAnswer::Dispatch;
  }
}

[[maybe_unused]] const bool installed = (setStartUp(&subMain), true);

}  // namespace

void subMain() {
  GlobalState& state = globals();
  Procedure procedure{"basMain", "Main", ProcedureKind::Command};
  procedure.trap(trapStartUp);
  procedure.run([&] {
    const auto step = [&](auto&& body) { procedure.statement(body); };
    state.AppName = "HY_Wristlog";
    state.saveErrorRecords = &fncSaveXMLErrorRecords;
    step([&] { state.ShortDateFormat = Tools().fncGetLocaleShortDateFormat(); });
    step([&] { state.LongDateFormat = Tools().fncGetLocaleLongDateFormat(); });
    step([&] { state.TimeOfDayFormat = Tools().fncGetLocaleTimeFormat(true); });
    state.ShortDateTimeFormat = state.ShortDateFormat + " " + state.TimeOfDayFormat;
    state.LongDateTimeFormat = state.LongDateFormat + " " + state.TimeOfDayFormat;
    // Empty without a home folder: a relative path would depend on where the program runs.
    const auto ownFolderIn = [&](std::int32_t code) {
      const std::string folder = Tools().fncGetSpecialFolderLocation(0, code);
      return folder.empty() ? folder : joinPath(folder, state.AppName);
    };
    step([&] { state.UserDataFolder = ownFolderIn(UserDataFolderCode); });
    step([&] { state.DocumentsFolder = Tools().fncGetSpecialFolderLocation(0, DocumentsFolderCode); });
    step([&] { state.CommonDataFolder = ownFolderIn(CommonDataFolderCode); });
    state.VersionShort =
        std::to_string(WRISTLOG_VERSION_MAJOR) + "." + std::to_string(WRISTLOG_VERSION_MINOR);
    state.VersionFull = state.VersionShort + "." + std::to_string(WRISTLOG_VERSION_REVISION);
    step(
        [&] { state.DecimalSeparator = std::get<std::int16_t>(Tools().fncGetLocaleDecimalSeparator(true)); });
    state.emptyErrorStack();
    step([&] { fncLoadGlobalErrors(); });
    Class_Signature& signatures = SignatureService();
    step([&] { signatures.Get_LogonUserName(); });
    step([&] { signatures.Get_DomainName(); });
    // A missing key matters only to signing, which tells what is wrong with it.
    ignoringFailures([&] {
      signatures.fncCheckUserContainer("Somnaris_5.0_" + signatures.Get_LogonUserName() + "_" +
                                       signatures.Get_DomainName());
    });
  });
  // What failed here must not count as a failure of the first command.
  state.emptyErrorStack();
}

void openLibrary() { globals(); }

}  // namespace hy_wristlog
