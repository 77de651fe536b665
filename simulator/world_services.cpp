#include "simulator/world_services.h"

#include <array>
#include <filesystem>
#include <random>
#include <system_error>

#include "hy_wristlog/failure.h"
#include "hy_wristlog/failure_numbers.h"
#include "simulator/calendar.h"

namespace hy_wristlog::simulator {

namespace fs = std::filesystem;

namespace {

constexpr std::array FolderNames{"Documents", "AppData", "CommonData", "Library"};
constexpr std::int32_t DocumentsCode = 5, AppDataCode = 26, CommonDataCode = 35;

void strike(SystemFault& fault) {
  if (fault.When.strikes()) throw platform::SystemError{fault.ErrorNumber};
}

std::string temporaryFolder() {
  std::random_device random;
  for (;;) {
    const std::string name = "wristlog-world-" + std::to_string(random()) + std::to_string(random());
    const fs::path path = fs::temp_directory_path() / name;
    if (!fs::create_directory(path)) continue;
    fs::permissions(path, fs::perms::owner_all);
    return path.string();
  }
}

/// A new file whose fault is asked at each piece, so that the disk can become full in the middle.
class FaultyNewFile : public platform::NewFile {
 public:
  FaultyNewFile(std::unique_ptr<platform::NewFile> inner, SystemFault& fault)
      : inner_(std::move(inner)), fault_(fault) {}

 protected:
  void write(std::string_view piece) override {
    strike(fault_);
    inner_->add(piece);
  }
  void takePlace() override { inner_->finish(); }

 private:
  std::unique_ptr<platform::NewFile> inner_;
  SystemFault& fault_;
};

class SimulatedDeviceList : public platform::DeviceList {
 public:
  SimulatedDeviceList(Docks docks, WorldFaults& faults) : docks_(std::move(docks)), faults_(faults) {}

  bool hasInterface(std::size_t index) override {
    strike(faults_.HasInterface);
    return index < docks_.size();
  }
  void readInfo(std::size_t index) override {
    strike(faults_.ReadInfo);
    at(index);
  }
  std::string hardwareId(std::size_t index) override {
    strike(faults_.HardwareId);
    return at(index).hardwareId();
  }
  std::string friendlyName(std::size_t index) override {
    strike(faults_.FriendlyName);
    return at(index).friendlyName();
  }
  std::vector<std::string> names(std::size_t index) override { return at(index).names(); }

 private:
  const SimulatedDock& at(std::size_t index) const {
    if (index >= docks_.size())
      throw platform::SystemError{static_cast<std::int32_t>(std::errc::no_such_device)};
    return *docks_[index];
  }

  Docks docks_;
  WorldFaults& faults_;
};

class FaultyHash : public platform::Sha1Hash {
 public:
  FaultyHash(std::unique_ptr<platform::Sha1Hash> inner, SystemFault& fault)
      : inner_(std::move(inner)), fault_(fault) {}
  void add(std::span<const std::uint8_t> bytes) override {
    strike(fault_);
    inner_->add(bytes);
  }
  platform::Sha1Digest value() override { return inner_->value(); }

 private:
  std::unique_ptr<platform::Sha1Hash> inner_;
  SystemFault& fault_;
};

class SimulatedContainer : public platform::KeyContainer {
 public:
  SimulatedContainer(std::string file, std::unique_ptr<platform::KeyContainer> inner, PromisedPairs& promised,
                     SystemFault& fault)
      : file_(std::move(file)), inner_(std::move(inner)), promised_(promised), fault_(fault) {}

  platform::KeyPairState keyPairState() override {
    strike(fault_);
    return promised_.contains(file_) ? platform::KeyPairState::Usable : inner_->keyPairState();
  }
  void generateKeyPair() override {
    strike(fault_);
    promised_.insert(file_);
  }
  std::size_t publicKeySize() override { return withPair().publicKeySize(); }
  void exportPublicKey(std::span<std::uint8_t> into) override { withPair().exportPublicKey(into); }
  std::size_t signatureSize() override { return withPair().signatureSize(); }
  void sign(const platform::Sha1Digest& digest, std::span<std::uint8_t> into) override {
    withPair().sign(digest, into);
  }
  void importPublicKey(std::span<const std::uint8_t> key) override {
    strike(fault_);
    inner_->importPublicKey(key);
  }
  bool verify(const platform::Sha1Digest& digest, std::span<const std::uint8_t> signature) override {
    strike(fault_);
    return inner_->verify(digest, signature);
  }

 private:
  platform::KeyContainer& withPair() {
    strike(fault_);
    if (promised_.contains(file_)) {
      inner_->generateKeyPair();
      promised_.erase(file_);
    }
    return *inner_;
  }

  std::string file_;
  std::unique_ptr<platform::KeyContainer> inner_;
  PromisedPairs& promised_;
  SystemFault& fault_;
};

}  // namespace

CivilTime SimulatedClock::utc() { return civilTime(timeline_.now()); }
CivilTime SimulatedClock::local() { return civilTime(timeline_.now(), zoneOffset(rule_, timeline_.now())); }
double SimulatedClock::timer() {
  pauseWhenDue();
  return std::chrono::duration<double>{timeline_.elapsed()}.count();
}
void SimulatedClock::sleep(std::chrono::milliseconds duration) {
  pauseWhenDue();
  if (duration.count() > 0) timeline_.advance(duration);
}
void SimulatedClock::idle() {
  pauseWhenDue();
  timeline_.advance(std::chrono::milliseconds{1});
}
void SimulatedClock::pauseWhenDue() {
  if (faults_.Pause.When.strikes()) timeline_.advance(faults_.Pause.For);
}

std::unique_ptr<platform::SerialPort> SimulatedPorts::open(std::int32_t number) {
  for (const auto& dock : docks_)
    if (dock->plugged() && dock->comPort() == number) return dock->open();
  throw Failure{FailureNumber::InvalidPort, "SerialPorts", "There is no port COM" + std::to_string(number)};
}

std::unique_ptr<platform::DeviceList> SimulatedDevices::devicesOfClass(std::string_view classGuid) {
  strike(faults_.DevicesOfClass);
  Docks found;
  for (const auto& dock : docks_)
    if (dock->plugged() && dock->hasClass(classGuid)) found.push_back(dock);
  return std::make_unique<SimulatedDeviceList>(std::move(found), faults_);
}

const std::string& RootFolder::path() {
  if (!made_) {
    if (temporary_) path_ = temporaryFolder();
    for (const char* name : FolderNames) fs::create_directories(fs::path{path_} / name);
    made_ = true;
  }
  return path_;
}

RootFolder::~RootFolder() {
  std::error_code ignored;
  if (temporary_ && made_) fs::remove_all(path_, ignored);
}

std::string SimulatedEnvironment::specialFolder(std::int32_t code) {
  switch (code) {
    case DocumentsCode:
      return root_.path() + "/" + FolderNames[0];
    case AppDataCode:
      return root_.path() + "/" + FolderNames[1];
    case CommonDataCode:
      return root_.path() + "/" + FolderNames[2];
    default:
      return {};
  }
}

std::string SimulatedEnvironment::libraryFolder() { return root_.path() + "/" + FolderNames[3]; }

std::string SimulatedEnvironment::localeInfo(platform::LocaleItem item) {
  const auto found = options_.Locale.find(item);
  return found == options_.Locale.end() ? std::string{} : found->second;
}

std::optional<std::string> SimulatedEnvironment::variable(std::string_view name) {
  const auto found = options_.Variables.find(name);
  if (found == options_.Variables.end()) return std::nullopt;
  return found->second;
}

std::string FaultyFiles::readUpTo(std::size_t most, const std::string& path) {
  strike(faults_.FileRead);
  return files_.readUpTo(most, path);
}

std::unique_ptr<platform::NewFile> FaultyFiles::create(const std::string& path) {
  return std::make_unique<FaultyNewFile>(files_.create(path), faults_.FileWrite);
}

void FaultyFiles::makeFolder(const std::string& path, bool forEveryone) {
  strike(faults_.MakeFolder);
  files_.makeFolder(path, forEveryone);
  if (forEveryone) strike(faults_.ShareFolder);
}

std::array<std::uint8_t, 16> FaultyCryptography::md5(std::span<const std::uint8_t> bytes) {
  strike(faults_.Cryptography);
  return inner_.md5(bytes);
}

void FaultyCryptography::randomBytes(std::span<std::uint8_t> into) {
  strike(faults_.Cryptography);
  inner_.randomBytes(into);
}

std::unique_ptr<platform::Sha1Hash> FaultyCryptography::createSha1() {
  strike(faults_.Cryptography);
  return std::make_unique<FaultyHash>(inner_.createSha1(), faults_.Cryptography);
}

std::unique_ptr<platform::KeyContainer> FaultyCryptography::openContainer(const std::string& file) {
  strike(faults_.Cryptography);
  return std::make_unique<SimulatedContainer>(file, inner_.openContainer(file), promised_,
                                              faults_.Cryptography);
}

void FaultyCryptography::deleteContainer(const std::string& file) {
  strike(faults_.Cryptography);
  inner_.deleteContainer(file);
  promised_.erase(file);
}

void FaultyCryptography::deleteDamagedContainer(const std::string& file) {
  strike(faults_.Cryptography);
  inner_.deleteDamagedContainer(file);
}

}  // namespace hy_wristlog::simulator
