#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "commands/commands.h"
#include "commands/each_dock.h"
#include "commands/probe.h"
#include "engineering/docks.h"
#include "hy_wristlog/docks.h"
#include "recording/json_output.h"
#include "session/process.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

struct SeenDock {
  engineering::PortView Port;
  Probe Logger;
};

constexpr hw::enmLoggerPointer Models[] = {hw::LggrPntr_KRVivid, hw::LggrPntr_KRII};

std::ptrdiff_t numberOf(const std::vector<hw::Dock>& docks, hw::enmLoggerPointer model) {
  return std::count_if(docks.begin(), docks.end(), [&](const hw::Dock& dock) { return dock.Model == model; });
}

void tell(const hw::Dock& dock, const SeenDock& seen) {
  say() << dock.Name << ": " << engineering::modelWords(dock.Model);
  if (dock.Port > 0) say() << ", COM" << dock.Port;
  say() << ", " << engineering::portWords(seen.Port.State) << '\n';
  if (!seen.Port.Trouble.empty()) say() << "  " << seen.Port.Trouble << '\n';
  if (!seen.Logger.SerialNumber.empty()) {
    say() << "  Logger " << seen.Logger.SerialNumber;
    if (!seen.Logger.Identity.empty()) say() << ", worn by " << seen.Logger.Identity;
    say() << ": ";
  } else if (!seen.Logger.State.empty()) {
    say() << "  ";
  }
  if (!seen.Logger.State.empty()) say() << seen.Logger.State << '\n';
}

Json documentOf(const hw::Dock& dock, const SeenDock& seen, std::ptrdiff_t connected) {
  return {{"name", textOrNull(dock.Name)},
          {"other_names", dock.OtherNames},
          {"model", engineering::modelWords(dock.Model)},
          {"connected", connected},
          {"com_port", dock.Port > 0 ? Json(dock.Port) : Json()},
          {"port_state", dock.Name.empty() ? Json() : Json(engineering::portWords(seen.Port.State))},
          {"port_trouble", textOrNull(seen.Port.Trouble)},
          {"simple_status", textOrNull(seen.Logger.State)},
          {"serial_number", textOrNull(seen.Logger.SerialNumber)},
          {"identity", textOrNull(seen.Logger.Identity)}};
}

}  // namespace

int runDocks(const CommonOptions& common, bool probes) {
  CommonOptions all = common;
  all.UsesLink = false;
  const Session session(all);
  const std::vector<hw::Dock> docks = docksCalled(common.Dock);
  std::vector<SeenDock> seen(docks.size());
  catchInterrupts();
  forEachDock(docks, [&](std::size_t place) {
    const hw::Dock& dock = docks[place];
    const std::string trouble = troubleOf([&] { seen[place].Port = engineering::portView(dock.Port); });
    if (!trouble.empty()) seen[place].Port = {engineering::PortState::Unusable, trouble};
    const bool opens = seen[place].Port.State == engineering::PortState::Free;
    if (probes && opens && !interruptRequested()) seen[place].Logger = probe(common, dock);
  });
  requireNotStopped();
  Json list = Json::array();
  for (std::size_t place = 0; place < docks.size(); ++place)
    if (common.AsJson)
      list.push_back(documentOf(docks[place], seen[place], numberOf(docks, docks[place].Model)));
    else
      tell(docks[place], seen[place]);
  for (const hw::enmLoggerPointer model : Models) {
    if (numberOf(docks, model) > 0 || !common.Dock.empty()) continue;
    if (common.AsJson)
      list.push_back(documentOf({{}, {}, model, 0}, {}, 0));
    else
      say() << engineering::modelWords(model) << ": no dock\n";
  }
  const std::vector<std::string> troubles = engineering::declarationTroubles();
  if (common.AsJson) {
    print({{"docks", list}, {"troubles", troubles}});
    return Good;
  }
  for (const std::string& trouble : troubles) say() << trouble << '\n';
  if (docks.empty() && troubles.empty())
    say() << "Connect a dock by USB. A device that is no USB dock can be declared in "
          << engineering::declaredDocksFile() << ".\n";
  return Good;
}

}  // namespace wristlog
