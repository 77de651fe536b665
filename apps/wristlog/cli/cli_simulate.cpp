#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>

#include "cli/cli.h"
#include "cli/cli_checks.h"
#include "simulate/connection.h"
#include "simulate/fault_words.h"

namespace wristlog {
namespace {

namespace sim = hy_wristlog::simulator;

constexpr std::int32_t UsualComPort = 60;

/// What is wrong with an argument, as the action's exception tells it.
template <class Action>
std::string problemOf(const Action& action) {
  try {
    action();
    return {};
  } catch (const std::invalid_argument& wrong) {
    return wrong.what();
  }
}

std::string validAddress(const std::string& text) {
  return problemOf([&] { listenAddress(text); });
}

void checkFaults(const SimulateOptions& options) {
  const sim::ModelBench bench = sim::makeBench(sim::modelOptions(options.Model), {});
  for (const std::string& fault : options.Faults)
    if (const std::string problem = problemOf([&] { setFault(bench, fault); }); !problem.empty())
      throw CLI::ValidationError("--fault", problem);
}

void addServing(CLI::App* sub, SimulateOptions& options) {
  CLI::Option* listen =
      sub->add_option(
             "--listen", options.Listen,
             "Serve it by RFC 2217 at ADDRESS:PORT, one client at a time; a PORT alone: the loopback's")
          ->check(validAddress);
  CLI::Option* certificate =
      sub->add_option("--certificate", options.Certificate, "Serve it by TLS, with this certificate (PEM)")
          ->needs(listen)
          ->check(validFile);
  sub->add_option("--key", options.Key, "The certificate's key (PEM); else it is in the same file")
      ->needs(certificate)
      ->check(validFile);
  sub->add_option("--client-ca", options.ClientCa,
                  "Serve only clients with a certificate of this authority (PEM)")
      ->needs(certificate)
      ->check(validFile);
  sub->add_flag("--pty", options.Terminal,
                "Serve it on a pseudo-terminal, which it does anyway without --listen")
      ->excludes(listen);
  sub->add_option("--port", options.ComPort, "The dock's COM port in Docks.INI")
      ->check(CLI::Range(1, 64))
      ->capture_default_str();
  sub->add_option("--docks", options.DocksFile,
                  "Keep the section of Docks.INI in this file, as long as the logger is served")
      ->check(validFile);
}

void addLogger(CLI::App* sub, SimulateOptions& options, std::string& worn) {
  sub->add_option("--worn", worn,
                  "How long a new logger has been worn: 7d, 36h or 90m; 0 is one that comes from the factory")
      ->check([](const std::string& text) { return problemOf([&] { wornFor(text); }); })
      ->capture_default_str();
  sub->add_option("--serial-number", options.SerialNumber,
                  "Of a new logger; of a Pendrel the last four digits");
  sub->add_option("--seed", options.Seed, "Another number gives other days")->capture_default_str();
  sub->add_option("--speed", options.Speed,
                  "How many times faster its time goes, 1 to 3600; but it waits for a client as long as ever")
      ->check(validServingSpeed);
  sub->add_option(
         "--state", options.StateFile,
         "Keep the logger in this file. The next run goes on with it, and the time between has passed")
      ->check(validFile);
  sub->add_option("--fault", options.Faults, "A fault, see below; may be given again")
      ->allow_extra_args(false);
}

}  // namespace

void addSimulateCommand(CommandLine& cli) {
  auto options = std::make_shared<SimulateOptions>();
  options->ComPort = UsualComPort;
  auto worn = std::make_shared<std::string>("7d");
  CLI::App* sub = cli.add("simulate", "Serve a simulated logger to other programs, until Ctrl-C",
                          [&cli, options] { return runSimulate(cli.Common, *options); });
  sub->get_option("--json")->description("A JSON document a line for each event on standard output");
  sub->add_option("model", options->Model, "The logger's model")
      ->required()
      ->check(CLI::IsMember(std::vector<std::string>(sim::ModelNames.begin(), sim::ModelNames.end())));
  addServing(sub, *options);
  addLogger(sub, *options, *worn);
  sub->parse_complete_callback([options, worn] {
    options->Worn = wornFor(*worn);
    checkFaults(*options);
  });
  sub->footer(
      "Example: wristlog simulate vivid --state vivid.state --docks docks.ini\n"
      "The logger is worn while no program has its port open, and docked when one opens it.\n\n"
      "Faults: --fault NAME strikes once, NAME@3 lets three pass before, NAME@3x2 strikes twice then, and\n"
      "NAME@0xalways always. What they need to be told comes last: unheeded@1=C.\n" +
      faultList());
}

}  // namespace wristlog
