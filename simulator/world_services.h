#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "simulator/dock.h"
#include "simulator/simulated_world.h"
#include "simulator/timeline.h"

/// What a simulated world offers through the seam, one class for each interface.
namespace hy_wristlog::simulator {

class SimulatedClock : public platform::Clock {
 public:
  SimulatedClock(Timeline& timeline, const platform::ZoneRule& rule, WorldFaults& faults)
      : timeline_(timeline), rule_(rule), faults_(faults) {}
  CivilTime utc() override;
  CivilTime local() override;
  double timer() override;
  void sleep(std::chrono::milliseconds duration) override;
  void idle() override;

 private:
  void pauseWhenDue();

  Timeline& timeline_;
  const platform::ZoneRule& rule_;
  WorldFaults& faults_;
};

using Docks = std::vector<std::shared_ptr<SimulatedDock>>;

class SimulatedPorts : public platform::SerialPorts {
 public:
  explicit SimulatedPorts(const Docks& docks) : docks_(docks) {}
  std::unique_ptr<platform::SerialPort> open(std::int32_t number) override;

 private:
  const Docks& docks_;
};

/// Lists the docks that are plugged in at the moment of the question.
class SimulatedDevices : public platform::DeviceTree {
 public:
  SimulatedDevices(const Docks& docks, WorldFaults& faults) : docks_(docks), faults_(faults) {}
  std::unique_ptr<platform::DeviceList> devicesOfClass(std::string_view classGuid) override;

 private:
  const Docks& docks_;
  WorldFaults& faults_;
};

/// The machine's zones, of which the world's own is the local one.
class SimulatedZones : public platform::ZoneRecords {
 public:
  SimulatedZones(platform::Platform& inner, std::string zone) : inner_(inner), zone_(std::move(zone)) {}
  std::vector<std::string> keys() override { return inner_.zones().keys(); }
  platform::ZoneRecord read(std::string_view key) override { return inner_.zones().read(key); }
  std::string localStandardName() override { return inner_.zones().read(zone_).Standard; }
  std::optional<platform::NamedZone> named(std::string_view name) override {
    return inner_.zones().named(name);
  }

 private:
  platform::Platform& inner_;
  std::string zone_;
};

/// The folder that holds the world's folders. It is made on first use; a temporary one is removed at the end.
class RootFolder {
 public:
  explicit RootFolder(std::string path) : path_(std::move(path)), temporary_(path_.empty()) {}
  RootFolder(const RootFolder&) = delete;
  RootFolder& operator=(const RootFolder&) = delete;
  ~RootFolder();
  const std::string& path();

 private:
  std::string path_;
  bool temporary_;
  bool made_ = false;
};

class SimulatedEnvironment : public platform::Environment {
 public:
  SimulatedEnvironment(platform::Platform& inner, const WorldOptions& options, RootFolder& root)
      : inner_(inner), options_(options), root_(root) {}
  std::string specialFolder(std::int32_t code) override;
  std::string libraryFolder() override;
  std::string localeInfo(platform::LocaleItem item) override;
  std::optional<std::string> variable(std::string_view name) override;
  std::string userName() override { return options_.User; }
  std::string fullName() override { return options_.FullName; }
  std::string domainName() override { return options_.Domain; }
  std::string computerName() override { return options_.Computer; }
  std::string errorText(std::int32_t number) override { return inner_.environment().errorText(number); }

 private:
  platform::Platform& inner_;
  WorldOptions options_;
  RootFolder& root_;
};

class FaultyFiles : public platform::Files {
 public:
  FaultyFiles(platform::Platform& inner, WorldFaults& faults) : files_(inner.files()), faults_(faults) {}
  platform::FileState state(const std::string& path) override { return files_.state(path); }
  std::string readUpTo(std::size_t most, const std::string& path) override;
  std::unique_ptr<platform::NewFile> create(const std::string& path) override;
  bool remove(const std::string& path) override { return files_.remove(path); }
  void makeFolder(const std::string& path, bool forEveryone) override;

 private:
  platform::Files& files_;
  WorldFaults& faults_;
};

/// Key files whose pair is made when it is first used. Making one takes a tenth of a second, and few worlds
/// ever sign.
using PromisedPairs = std::set<std::string>;

/// The machine's cryptography, except that a key pair is made when it is first used.
class FaultyCryptography : public platform::CryptographicProvider {
 public:
  FaultyCryptography(platform::Platform& inner, WorldFaults& faults)
      : inner_(inner.cryptography()), faults_(faults) {}
  std::array<std::uint8_t, 16> md5(std::span<const std::uint8_t> bytes) override;
  void randomBytes(std::span<std::uint8_t> into) override;
  std::unique_ptr<platform::Sha1Hash> createSha1() override;
  std::unique_ptr<platform::KeyContainer> openContainer(const std::string& file) override;
  void deleteContainer(const std::string& file) override;
  void deleteDamagedContainer(const std::string& file) override;

 private:
  platform::CryptographicProvider& inner_;
  WorldFaults& faults_;
  PromisedPairs promised_;
};

}  // namespace hy_wristlog::simulator
