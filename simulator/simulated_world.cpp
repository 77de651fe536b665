#include "simulator/simulated_world.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "hy_wristlog/failure.h"
#include "platform/linux/linux_platform.h"
#include "simulator/calendar.h"
#include "simulator/world_services.h"

namespace hy_wristlog::simulator {
namespace {

platform::ZoneRule readRule(platform::Platform& inner, const std::string& zone) {
  const auto rule = inner.zones().read(zone).Rule;
  if (rule) return *rule;
  const auto known = inner.zones().keys();
  if (!known.empty() && std::find(known.begin(), known.end(), zone) == known.end())
    throw std::invalid_argument("no zone is called " + zone);
  throw Failure(FailureNumber::NoZones, "simulator",
                "The machine does not know the zone " + zone + ". Install the package tzdata.");
}

}  // namespace

struct SimulatedWorld::Services {
  Services(const WorldOptions& options, WorldFaults& faults)
      : Inner(options.Inner ? options.Inner : platform::makeLinuxPlatform()),
        Rule(readRule(*Inner, options.Zone)),
        ZoneAbbreviation(options.ZoneAbbreviation),
        Time(std::chrono::duration_cast<Moment>(options.Begins.time_since_epoch())),
        Root(options.RootFolder),
        Clock(Time, Rule, faults),
        Ports(Docks),
        Devices(Docks, faults),
        Zones(*Inner, options.Zone),
        Surroundings(*Inner, options, Root),
        FileSystem(*Inner, faults),
        Cryptography(*Inner, faults) {}

  template <class Logger, class Options>
  Logger& add(const Options& options) {
    auto made = std::make_unique<Logger>(Time, options);
    Logger& logger = *made;
    Loggers.push_back(std::move(made));
    return logger;
  }

  std::shared_ptr<platform::Platform> Inner;
  platform::ZoneRule Rule;
  std::string ZoneAbbreviation;
  Timeline Time;
  RootFolder Root;
  std::vector<std::unique_ptr<Dockable>> Loggers;
  std::vector<std::shared_ptr<SimulatedDock>> Docks;
  SimulatedClock Clock;
  SimulatedPorts Ports;
  SimulatedDevices Devices;
  MemorySettings Settings;
  SimulatedZones Zones;
  SimulatedEnvironment Surroundings;
  FaultyFiles FileSystem;
  FaultyCryptography Cryptography;
};

SimulatedWorld::SimulatedWorld(const WorldOptions& options)
    : services_(std::make_unique<Services>(options, Faults)) {}

/// Ends the library's objects first, since they may use the world while they end.
SimulatedWorld::~SimulatedWorld() { objects().clear(); }

Timeline& SimulatedWorld::timeline() { return services_->Time; }
double SimulatedWorld::elapsed() const {
  return std::chrono::duration<double>{services_->Time.elapsed()}.count();
}
void SimulatedWorld::advance(nanoseconds duration) { services_->Time.advance(duration); }
void SimulatedWorld::after(nanoseconds delay, std::function<void()> action) {
  services_->Time.after(delay, std::move(action));
}
std::int64_t SimulatedWorld::now() const {
  return std::chrono::floor<std::chrono::seconds>(services_->Time.now()).count();
}
const platform::ZoneRule& SimulatedWorld::zoneRule() const { return services_->Rule; }
const std::string& SimulatedWorld::zoneAbbreviation() const { return services_->ZoneAbbreviation; }
const std::string& SimulatedWorld::rootFolder() { return services_->Root.path(); }
MemorySettings& SimulatedWorld::memorySettings() { return services_->Settings; }

SimulatedDock& SimulatedWorld::addDock(const DockOptions& options) {
  DockOptions placed = options;
  if (placed.Place.empty())
    placed.Place = (options.Kind == DockKind::Pendreader ? "Dock " : "usb-1-") +
                   std::to_string(services_->Docks.size() + 1);
  return *services_->Docks.emplace_back(std::make_shared<SimulatedDock>(services_->Time, placed));
}

SimulatedLogger& SimulatedWorld::addLogger(const LoggerOptions& options) {
  return services_->add<SimulatedLogger>(options);
}

SimulatedPendrel& SimulatedWorld::addPendrel(const PendrelOptions& options) {
  return services_->add<SimulatedPendrel>(options);
}

const std::vector<std::shared_ptr<SimulatedDock>>& SimulatedWorld::docks() const { return services_->Docks; }

platform::Clock& SimulatedWorld::clock() { return services_->Clock; }
platform::SerialPorts& SimulatedWorld::serialPorts() { return services_->Ports; }
platform::DeviceTree& SimulatedWorld::deviceTree() { return services_->Devices; }
platform::SettingsStore& SimulatedWorld::settings() { return services_->Settings; }
platform::ZoneRecords& SimulatedWorld::zones() { return services_->Zones; }
platform::Environment& SimulatedWorld::environment() { return services_->Surroundings; }
platform::Files& SimulatedWorld::files() { return services_->FileSystem; }
platform::CryptographicProvider& SimulatedWorld::cryptography() { return services_->Cryptography; }

}  // namespace hy_wristlog::simulator
