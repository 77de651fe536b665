#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "commands/commands.h"
#include "commands/each_dock.h"
#include "hy_wristlog/docks.h"

namespace wristlog {

enum class HarvestEnd : std::uint8_t { Retrieved, RetrievedBefore, NoData, NoLogger, Failed, Stopped };

/// What came of one dock.
struct HarvestOutcome {
  HarvestEnd End = HarvestEnd::Failed;
  std::string SerialNumber, Identity;  ///< of the logger that sits in it; empty when none was read
  std::int32_t Code = 0;               ///< of the retrieval, or of the inquiry that came before it
  std::string Words;                   ///< why it failed, or more than `End` says; may be empty
  std::string Folder;                  ///< where its recording is; empty when it is nowhere
  bool Drawn = true;                   ///< false when the pictures of a recording could not be written
  std::string Remarks;                 ///< what the library and the program told meanwhile, a line each

  bool Waits = false;  ///< the logger is configured and waits for its start

  const Participant* Given = nullptr;  ///< who gets the logger; null when nobody does
  bool Configured = false;
  std::string ConfigureWords;  ///< why it was not configured

  bool isGood() const;
};

/// "retrieved", "retrieved before", "no data", "no logger", "failed", "stopped".
std::string wordsFor(HarvestEnd end);

/// Hears how the harvest goes on. Its members are called by the threads of several docks at the same time.
class HarvestWatch {
 public:
  HarvestWatch() = default;
  HarvestWatch(const HarvestWatch&) = delete;
  HarvestWatch& operator=(const HarvestWatch&) = delete;
  virtual ~HarvestWatch() = default;
  virtual void progress(std::size_t /*place*/, const std::string& /*text*/) {}
  virtual void ended(std::size_t /*place*/, const HarvestOutcome& /*outcome*/) {}
};

/// Retrieves from all docks at the same time what was not retrieved before, each recording into a folder of
/// its own in `options.Folder`, and then configures those loggers that somebody gets. What fails with one
/// dock changes nothing for the others. Raises what `Allotment` raises, before any logger is asked.
std::vector<HarvestOutcome> harvest(const CommonOptions& common, const HarvestOptions& options,
                                    const std::vector<hy_wristlog::Dock>& docks, HarvestWatch& watch,
                                    const WorldOfDock& world = {});

}  // namespace wristlog
