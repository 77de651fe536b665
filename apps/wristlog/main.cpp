#include "cli/cli.h"
#include "session/process.h"

int main(int argc, char** argv) {
  wristlog::prepareStandardStreams();
  wristlog::CommandLine cli;
  wristlog::addCommands(cli);
  return cli.run(argc, argv);
}
