#include "commands/probe.h"

#include <exception>
#include <sstream>

#include "base/ascii.h"
#include "commands/inquiry.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "session/pendrel_session.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace platform = hy_wristlog::platform;

namespace {

Probe probePendrel(const CommonOptions& common) {
  PendrelSession session(common, {});
  const std::int32_t code = session.workflows().ReadPendrelSetup(false);
  const hw::PendrelDetails details = session.workflows().Details();
  if (details.SetupText.empty())
    return {code == hw::FailureNumber::NoCharacters ? "Logger Not Found" : session.meaningOf(code), {}, {}};
  return {code == 0
              ? details.DeviceText + " with " + std::to_string(session.logger().Get_BytesUsed()) + " bytes"
              : session.meaningOf(code),
          session.logger().Get_SerialNumber(),
          std::string(hw::trimBlanks(session.logger().Get_SubjectIdentity()))};
}

Probe probeVarden(const CommonOptions& common, hw::enmLoggerPointer model) {
  Session session(common);
  const Status status = askStatus(session, model);
  Probe found{status.Code == 0 ? status.Simple : explanationOf(status.Code, model), {}, {}};
  if (!status.wasRead()) return found;
  found.SerialNumber = status.Logger->Get_SerialNumber();
  found.Identity = status.Subject->Get_Identity();
  return found;
}

}  // namespace

std::vector<hw::Dock> docksCalled(const std::string& name) {
  std::vector<hw::Dock> docks = hw::docks();
  if (name.empty()) return docks;
  const platform::WorldScope scope(platform::shareCurrent());
  hw::useDock(name);
  std::erase_if(docks, [chosen = hw::dockInUse()](const hw::Dock& dock) { return dock.Name != chosen; });
  return docks;
}

CommonOptions forDock(const CommonOptions& common, const hw::Dock& dock) {
  CommonOptions own = common;
  own.UsesLink = true;
  own.Dock = dock.Name;
  own.Model = dock.Model;
  own.Simulate.clear();
  own.Record.clear();
  own.Recorder.reset();
  if (!own.Progress) own.Progress = [](const std::string&) {};
  return own;
}

std::string troubleOf(const std::function<void()>& work) {
  try {
    work();
    return {};
  } catch (const hw::Failure& failure) {
    return wordsFor(failure);
  } catch (const platform::SystemError& error) {
    return platform::current().environment().errorText(error.Number);
  } catch (const std::exception& problem) {
    return problem.what();
  }
}

Probe probe(const CommonOptions& common, const hw::Dock& dock) {
  std::ostringstream unheard;
  const SpeechCaught caught(unheard);
  Probe found;
  const std::string trouble = troubleOf([&] {
    const CommonOptions own = forDock(common, dock);
    found = dock.Model == hw::LggrPntr_Pendreader ? probePendrel(own) : probeVarden(own, dock.Model);
  });
  if (!trouble.empty()) found.State = trouble;
  return found;
}

}  // namespace wristlog
