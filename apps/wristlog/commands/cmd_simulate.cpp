#include <chrono>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "commands/commands.h"
#include "engineering/docks.h"
#include "hy_wristlog/failure.h"
#include "platform/linux/descriptor_wait.h"
#include "recording/json_output.h"
#include "session/process.h"
#include "simulate/docks_file.h"
#include "simulate/events.h"
#include "simulate/fault_words.h"
#include "simulate/network_end.h"
#include "simulate/served_bench.h"
#include "simulate/served_logger.h"
#include "simulate/state_file.h"
#include "simulate/terminal_end.h"
#include "simulate/tls_connection.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace sim = hy_wristlog::simulator;
namespace platform = hy_wristlog::platform;

namespace {

const char* modelWords(const std::string& model) {
  return model == "vivid"       ? "Kestrin Vivid"
         : model == "kestrin2"  ? "Kestrin 2"
         : model == "pendrel27" ? "Pendrel Steps"
                                : "Pendrel";
}

std::string serialNumber(const sim::ModelBench& bench) {
  return bench.Logger != nullptr ? bench.Logger->block().text(sim::block::SerialNumber)
                                 : bench.Pendrel->parts().SerialDigits;
}

/// One run of the command.
class Server {
 public:
  Server(const CommonOptions& common, const SimulateOptions& options)
      : options_(options), events_(common.AsJson) {
    if (!options.StateFile.empty()) state_.emplace(options.StateFile);
    if (!options.DocksFile.empty()) docks_.emplace(options.DocksFile);
    bench_ = makeBench();
    for (const std::string& fault : options.Faults) setFault(bench_, fault);
    logger_.emplace(bench_, options.Speed, events_);
    if (options.Listen.empty())
      end_ = std::make_unique<TerminalEnd>(*logger_);
    else
      end_ = std::make_unique<NetworkEnd>(*logger_, listenAddress(options.Listen), connections());
  }

  int run() {
    save();
    announce();
    std::vector<pollfd> list;
    while (!interruptRequested()) {
      logger_->catchUp();
      end_->serve();
      if (end_->device() != section_.Device) announce();
      if (logger_->takeChanged()) saveIfPossible();
      list.clear();
      end_->watch(list);
      platform::awaitReady(list, logger_->untilNext());
    }
    return finish();
  }

 private:
  std::unique_ptr<Connections> connections() const {
    if (options_.Certificate.empty()) return std::make_unique<Connections>();
    return std::make_unique<TlsConnections>(TlsFiles{options_.Certificate, options_.Key, options_.ClientCa});
  }

  sim::ModelBench makeBench() {
    const auto saved = state_ ? state_->read() : std::nullopt;
    if (!saved) return makeNewBench({options_.Model, options_.Worn, options_.SerialNumber, options_.Seed});
    goesOn_ = true;
    try {
      sim::SavedState state(*saved);
      return loadBench(state, options_.Model);
    } catch (const sim::WrongState& wrong) {
      throw hw::Failure(hw::FailureNumber::InvalidCall, "wristlog",
                        options_.StateFile + " " + wrong.what() +
                            ". Name another file, or delete it to begin with a new logger");
    }
  }

  void save() {
    if (!state_) return;
    sim::SavedState state;
    saveBench(state, options_.Model, bench_);
    state_->write(state.text());
  }

  /// A full disk must not cost the logger: whoever serves it can make room before the next change.
  void saveIfPossible() {
    try {
      save();
    } catch (const hw::Failure& failure) {
      logger_->tell(
          "not_saved", {{"reason", failure.Description}, {"number", failure.Number}},
          "The logger could not be saved, which the next change tries again: " + failure.Description + ".");
    }
  }

  /// Tells where the logger is served, and how a program gets there.
  void announce() {
    section_ = {bench_.Dock->kind(), options_.ComPort, end_->device(), end_->fingerprint()};
    if (docks_) docks_->put(section_);
    if (events_.asJson())
      events_.tell(bench_.World->timeline().now(), "ready",
                   {{"model", options_.Model},
                    {"serial_number", serialNumber(bench_)},
                    {"device", section_.Device},
                    {"com_port", section_.ComPort},
                    {"docks_section", section_.text()},
                    {"on_loopback", end_->isOnLoopback()},
                    {"goes_on", goesOn_}},
                   "");
    else
      explain();
  }

  void explain() const {
    say() << "A simulated " << std::string(modelWords(options_.Model)) << " (" << serialNumber(bench_)
          << ") is served on " << section_.Device << ". Ctrl-C ends it.\n";
    if (!end_->isOnLoopback())
      say() << "Everybody on that network can reach it. Other machines use this one's name or address.\n";
    if (goesOn_) say() << "It goes on as " << options_.StateFile << " tells.\n";
    if (docks_) {
      say() << "Another terminal finds its dock after this:\n\n    export HY_WRISTLOG_DOCKS=\""
            << std::filesystem::absolute(docks_->file()).string() << "\"\n\n";
    } else {
      say() << "It is a dock for who has this section in " << hw::engineering::declaredDocksFile()
            << ",\nor in the file that HY_WRISTLOG_DOCKS names:\n\n";
      say().lines(section_.text(), "");
      say() << "\n";
    }
    say().flush();
  }

  int finish() {
    logger_->end();
    save();
    docks_.reset();
    logger_->tell("ended", {{"saved", state_.has_value()}},
                  state_ ? "Ended; the logger is kept in " + state_->path() + "."
                         : "Ended; the logger is gone (--state FILE keeps it).");
    return Good;
  }

  const SimulateOptions& options_;
  ServedEvents events_;
  std::optional<StateFile> state_;
  std::optional<KeptSection> docks_;
  bool goesOn_ = false;
  sim::ModelBench bench_;
  std::optional<ServedLogger> logger_;
  std::unique_ptr<FarEnd> end_;
  DockSection section_;
};

}  // namespace

int runSimulate(const CommonOptions& common, const SimulateOptions& options) {
  catchInterrupts();
  try {
    return Server(common, options).run();
  } catch (const hw::Failure& failure) {
    if (!common.AsJson) throw;
    Json document = failureJson(failure);
    document["event"] = "failed";
    printDocument(document.dump(-1, ' ', false, Json::error_handler_t::replace));
    return Unsuccessful;
  }
}

}  // namespace wristlog
