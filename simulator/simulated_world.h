#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "simulator/dock.h"
#include "simulator/fault.h"
#include "simulator/pendrel_logger.h"
#include "simulator/settings_store.h"
#include "simulator/simulated_logger.h"
#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

struct WorldOptions {
  /// The UTC time at which the world begins.
  std::chrono::sys_time<std::chrono::milliseconds> Begins =
      std::chrono::sys_days{std::chrono::year{2026} / 3 / 2} + std::chrono::hours{14};
  std::string Zone = "Eastern Standard Time";  ///< the machine's zone, by its catalogue key
  std::string ZoneAbbreviation = "EST";        ///< of that zone, as loggers that are set up in it keep it
  /// The folder that holds the world's folders; empty for a private temporary one that is removed with the
  /// world.
  std::string RootFolder;
  std::string User = "tester", FullName = "Terry Tester", Domain = "LAB", Computer = "BENCH";
  std::map<platform::LocaleItem, std::string> Locale{{platform::LocaleItem::DecimalSeparator, "."},
                                                     {platform::LocaleItem::LongDate, "dddd, MMMM dd, yyyy"},
                                                     {platform::LocaleItem::ShortDate, "M/d/yyyy"},
                                                     {platform::LocaleItem::Time, "h:mm:ss tt"}};
  std::map<std::string, std::string, std::less<>> Variables;
  /// The world that provides files, zones and cryptography; null for the machine.
  std::shared_ptr<platform::Platform> Inner;
};

/// An operation of the system that fails with `ErrorNumber` (errno).
struct SystemFault {
  std::int32_t ErrorNumber = 5;
  Fault When{};
};

/// A time in which the process is not scheduled: within one call of the clock time passes and the line goes
/// on.
struct PauseFault {
  nanoseconds For{};
  Fault When{};
};

struct WorldFaults {
  PauseFault Pause{};
  SystemFault FileRead{}, FileWrite{}, MakeFolder{};
  SystemFault ShareFolder{};  ///< the folder is made, but not opened to everyone
  SystemFault DevicesOfClass{}, HasInterface{}, ReadInfo{}, HardwareId{}, FriendlyName{};
  SystemFault Cryptography{};
};

/// A world for one thread in which time is simulated and docks and loggers are too. Files are real, under
/// the world's own root folder; zones and cryptography are the machine's. Handles on its ports may outlive
/// it; references to its docks and loggers may not.
class SimulatedWorld : public platform::Platform {
 public:
  explicit SimulatedWorld(const WorldOptions& options = {});
  ~SimulatedWorld() override;

  WorldFaults Faults;

  Timeline& timeline();
  /// Simulated seconds since the world began.
  double elapsed() const;
  void advance(nanoseconds duration);
  /// Runs `action` at a later moment of the simulated time, for instance to pull a logger out.
  void after(nanoseconds delay, std::function<void()> action);
  /// UTC seconds since 1970.
  std::int64_t now() const;
  /// The rule of the machine's zone.
  const platform::ZoneRule& zoneRule() const;
  const std::string& zoneAbbreviation() const;
  const std::string& rootFolder();
  MemorySettings& memorySettings();

  /// A world may have any number of docks. They should have different ports.
  SimulatedDock& addDock(const DockOptions& options);
  SimulatedLogger& addLogger(const LoggerOptions& options);
  SimulatedPendrel& addPendrel(const PendrelOptions& options);
  const std::vector<std::shared_ptr<SimulatedDock>>& docks() const;

  platform::Clock& clock() override;
  platform::SerialPorts& serialPorts() override;
  platform::DeviceTree& deviceTree() override;
  platform::SettingsStore& settings() override;
  platform::ZoneRecords& zones() override;
  platform::Environment& environment() override;
  platform::Files& files() override;
  platform::CryptographicProvider& cryptography() override;

 private:
  struct Services;
  std::unique_ptr<Services> services_;
};

}  // namespace hy_wristlog::simulator
