#include "cli/cli.h"
#include "session/process.h"

int main(int argc, char** argv) {
  wristlog::prepareStandardStreams();
  wristlog::CommandLine cli;
  wristlog::addWorkflowCommands(cli);
  wristlog::addFileCommands(cli);
  wristlog::addPlotCommand(cli);
  wristlog::addConsoleCommand(cli);
  wristlog::addPendrelCommands(cli);
  return cli.run(argc, argv);
}
