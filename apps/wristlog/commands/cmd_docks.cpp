#include <nlohmann/json.hpp>

#include "commands/commands.h"
#include "commands/inquiry.h"
#include "engineering/docks.h"
#include "recording/json_output.h"
#include "session/process.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace engineering = hy_wristlog::engineering;

namespace {

void printDock(const engineering::DockView& dock, const std::string& state) {
  say() << dock.Words << ": ";
  if (dock.Connected == 0)
    say() << "no dock\n";
  else if (dock.Connected > 1)
    say() << dock.Connected << " docks; leave one connected\n";
  else if (dock.Port == 0)
    say() << "a dock without a COM port\n";
  else
    say() << "dock on COM" << dock.Port << ", " << state << '\n';
  const std::string trouble = dock.Port > 0 ? engineering::portTrouble(dock.Port) : "";
  if (!trouble.empty()) say() << "  " << trouble << '\n';
}

}  // namespace

int runDocks(const CommonOptions& common) {
  Session session(common);
  Json list = Json::array();
  bool anyDock = false;
  for (const engineering::DockView& dock : engineering::docks()) {
    std::string state;
    anyDock = anyDock || dock.Connected > 0;
    if (dock.Connected == 1 && dock.Port > 0) state = askStatus(session, dock.Model).Simple;
    requireNotStopped();
    if (session.asJson())
      list.push_back({{"model", dock.Words},
                      {"connected", dock.Connected},
                      {"com_port", dock.Port > 0 ? Json(dock.Port) : Json()},
                      {"simple_status", state.empty() ? Json() : Json(state)}});
    else
      printDock(dock, state);
  }
  const std::vector<std::string> troubles = engineering::declarationTroubles();
  if (session.asJson()) {
    print({{"docks", list}, {"troubles", troubles}});
    return Good;
  }
  for (const std::string& trouble : troubles) say() << trouble << '\n';
  if (!anyDock && troubles.empty())
    say() << "Connect a dock by USB. A device that is no USB dock can be declared in "
          << engineering::declaredDocksFile() << ".\n";
  return Good;
}

}  // namespace wristlog
