#include "engineering/docks.h"

#include <algorithm>
#include <optional>

#include "hy_wristlog/failure.h"
#include "platform/listed_docks.h"
#include "platform/one_dock_world.h"
#include "platform/platform.h"
#include "platform/remote_address.h"
#include "start_up/start_up.h"
#include "varden/VardenLogger.h"
#include "workflows/docked_model.h"

namespace hy_wristlog::engineering {

namespace {

std::optional<Failure> openingFailure(std::int32_t port) {
  try {
    platform::current().serialPorts().open(port);
    return std::nullopt;
  } catch (const Failure& failure) {
    return failure;
  }
}

}  // namespace

std::string modelWords(enmLoggerPointer model) {
  const DockedModel* docked = dockedModel(model);
  if (docked != nullptr) return docked->Words;
  return model == LggrPntr_Pendreader ? "Pendreader" : "";
}

std::string modelWords(enmDeviceType type) { return deviceText(type); }

std::vector<DockView> docks() {
  openLibrary();
  std::vector<DockView> views;
  for (const auto pointer : {LggrPntr_KRVivid, LggrPntr_KRII}) {
    const DockedModel& model = *dockedModel(pointer);
    VardenLogger logger;
    std::int16_t connected = 0;
    const std::int16_t port = model.findDock(logger, connected);
    views.push_back({pointer, model.Words, connected, connected == 1 ? port : 0});
  }
  return views;
}

std::int16_t readerPort() {
  const auto readers = platform::devicesOf(platform::current().deviceTree(), platform::PlainPortClass);
  return readers.size() == 1 ? static_cast<std::int16_t>(readers.front().Port) : std::int16_t{0};
}

PortView portView(std::int32_t port) {
  if (port < 1) return {};
  const auto failure = openingFailure(port);
  if (!failure) return {PortState::Free, {}};
  const bool denied = failure->Description.starts_with(platform::NoPermission);
  const PortState state = failure->Number == FailureNumber::PortNotAvailable
                              ? (denied ? PortState::NoPermission : PortState::InUse)
                          : failure->Number == FailureNumber::InvalidPort ? PortState::Missing
                                                                          : PortState::Unusable;
  return {state, failure->Description};
}

std::string portWords(PortState state) {
  switch (state) {
    case PortState::Free:
      return "free";
    case PortState::InUse:
      return "in use";
    case PortState::NoPermission:
      return "no permission";
    case PortState::Missing:
      return "missing";
    case PortState::Unusable:
      return "unusable";
    case PortState::None:
      break;
  }
  return "no port";
}

std::string declaredDocksFile() {
  constexpr std::int32_t UserApplicationData = 26;
  platform::Environment& environment = platform::current().environment();
  const std::string named = environment.variable("HY_WRISTLOG_DOCKS").value_or("");
  return named.empty() ? environment.specialFolder(UserApplicationData) + "/HY_Wristlog/Docks.INI" : named;
}

std::vector<std::string> declarationTroubles() { return platform::current().deviceTree().troubles(); }

bool isOnOtherMachine(std::int32_t port) try {
  for (const char* const classGuid : platform::DockClasses)
    for (const auto& dock : platform::devicesOf(platform::current().deviceTree(), classGuid))
      if (dock.Port == port && std::any_of(dock.Names.begin(), dock.Names.end(), platform::isRemoteAddress))
        return true;
  return false;
} catch (const platform::SystemError&) {
  return false;
}

std::string portTrouble(std::int32_t port) { return portView(port).Trouble; }

std::vector<std::string> portsOutOfReach() {
  constexpr std::int32_t LastPort = 64;
  std::vector<std::string> troubles;
  for (std::int32_t port = 1; port <= LastPort; ++port)
    if (const auto failure = openingFailure(port);
        failure && failure->Number == FailureNumber::PortNotAvailable)
      troubles.push_back(failure->Description);
  return troubles;
}

}  // namespace hy_wristlog::engineering
