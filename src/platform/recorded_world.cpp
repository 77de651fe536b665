#include "platform/recorded_world.h"

#include <cerrno>
#include <utility>

#include "platform/wrapped_platform.h"

namespace hy_wristlog::platform {
namespace {

/// The record that the parts of a recorded world tell what they see.
class WireRecord {
 public:
  WireRecord(std::shared_ptr<Platform> world, std::shared_ptr<WireSink> sink, double began)
      : world_(std::move(world)), sink_(std::move(sink)), began_(began) {}

  Platform& world() { return *world_; }
  std::int32_t nextLink() { return ++links_; }
  double now() { return world_->clock().timer() - began_; }
  void tell(WireEvent event) {
    event.Time = now();
    sink_->take(event);
  }

 private:
  std::shared_ptr<Platform> world_;
  std::shared_ptr<WireSink> sink_;
  double began_;
  std::int32_t links_ = 0;
};

using SharedRecord = std::shared_ptr<WireRecord>;

bool isAny(const LineErrors& errors) {
  return (errors.Overrun | errors.Framing | errors.Parity | errors.Break | errors.BufferOverflow) != 0;
}

class RecordedPort : public SerialPort {
  template <class Operation>
  auto watched(const Operation& operation) {
    try {
      return operation();
    } catch (const Failure& failure) {
      if (!std::exchange(gone_, true)) tell({.Kind = WireKind::Gone, .Trouble = failure});
      throw;
    }
  }

 public:
  RecordedPort(SharedRecord record, std::unique_ptr<SerialPort> port, std::int32_t link)
      : record_(std::move(record)), port_(std::move(port)), link_(link) {}
  ~RecordedPort() override { tell({.Kind = WireKind::Close}); }
  RecordedPort(const RecordedPort&) = delete;
  RecordedPort& operator=(const RecordedPort&) = delete;

  void configure(const LineSettings& settings) override {
    tell({.Kind = WireKind::Configure, .Settings = settings});
    watched([&] { port_->configure(settings); });
  }
  std::size_t read(std::span<std::uint8_t> into) override {
    const std::size_t count = watched([&] { return port_->read(into); });
    const auto taken = into.first(count);
    if (count > 0)
      tell({.Kind = WireKind::Received, .Empty = empty_, .Bytes = {taken.begin(), taken.end()}});
    else
      empty_ = record_->now();
    return count;
  }
  std::size_t write(std::span<const std::uint8_t> bytes) override {
    const std::size_t count = watched([&] { return port_->write(bytes); });
    const auto sent = bytes.first(count);
    if (count > 0) tell({.Kind = WireKind::Sent, .Bytes = {sent.begin(), sent.end()}});
    return count;
  }
  std::size_t outstanding() override {
    return watched([&] { return port_->outstanding(); });
  }
  void discardInput() override {
    watched([&] { port_->discardInput(); });
    tell({.Kind = WireKind::Discard});
  }
  void setDtr(bool on) override {
    watched([&] { port_->setDtr(on); });
    tell({.Kind = WireKind::Dtr, .On = on});
  }
  void setRts(bool on) override {
    watched([&] { port_->setRts(on); });
    tell({.Kind = WireKind::Rts, .On = on});
  }
  ModemLines modemLines() override {
    const ModemLines lines = watched([&] { return port_->modemLines(); });
    if (lines_ != lines) tell({.Kind = WireKind::Lines, .Lines = lines});
    lines_ = lines;
    return lines;
  }
  std::chrono::microseconds delay() override { return port_->delay(); }
  LineErrors takeErrors() override {
    const LineErrors errors = watched([&] { return port_->takeErrors(); });
    if (isAny(errors)) tell({.Kind = WireKind::Errors, .Errors = errors});
    return errors;
  }
  void awaitInput(std::chrono::microseconds longest) override { port_->awaitInput(longest); }

 private:
  void tell(WireEvent event) {
    event.Link = link_;
    record_->tell(std::move(event));
  }

  SharedRecord record_;
  std::unique_ptr<SerialPort> port_;
  std::int32_t link_;
  std::optional<ModemLines> lines_;
  double empty_ = -1;
  bool gone_ = false;
};

class RecordedPorts : public SerialPorts {
 public:
  explicit RecordedPorts(SharedRecord record) : record_(std::move(record)) {}
  std::unique_ptr<SerialPort> open(std::int32_t number) override {
    WireEvent event{.Kind = WireKind::Open, .Link = record_->nextLink(), .Number = number};
    try {
      auto port = record_->world().serialPorts().open(number);
      event.Delay = port->delay();
      record_->tell(event);
      return std::make_unique<RecordedPort>(record_, std::move(port), event.Link);
    } catch (const Failure& failure) {
      event.Trouble = failure;
      record_->tell(event);
      throw;
    }
  }

 private:
  SharedRecord record_;
};

template <class Operation>
std::int32_t errorOf(const Operation& operation) {
  try {
    operation();
    return 0;
  } catch (const SystemError& error) {
    return error.Number;
  }
}

ListedDevices listed(DeviceTree& tree, std::string_view classGuid) {
  ListedDevices answer;
  std::unique_ptr<DeviceList> list;
  answer.Error = errorOf([&] { list = tree.devicesOfClass(classGuid); });
  bool more = list != nullptr;
  for (std::size_t i = 0; more; ++i) {
    answer.EndError = errorOf([&] { more = list->hasInterface(i); });
    if (!more || answer.EndError != 0) break;
    ListedDevice& device = answer.Devices.emplace_back();
    device.InfoError = errorOf([&] { list->readInfo(i); });
    device.IdError = errorOf([&] { device.HardwareId = list->hardwareId(i); });
    device.NameError = errorOf([&] { device.FriendlyName = list->friendlyName(i); });
    errorOf([&] { device.Names = list->names(i); });
  }
  return answer;
}

class AnsweredList : public DeviceList {
 public:
  explicit AnsweredList(ListedDevices listed) : listed_(std::move(listed)) {}
  bool hasInterface(std::size_t index) override {
    if (index < listed_.Devices.size()) return true;
    refuse(listed_.EndError);
    return false;
  }
  void readInfo(std::size_t index) override { refuse(at(index).InfoError); }
  std::string hardwareId(std::size_t index) override {
    refuse(at(index).IdError);
    return at(index).HardwareId;
  }
  std::string friendlyName(std::size_t index) override {
    refuse(at(index).NameError);
    return at(index).FriendlyName;
  }
  std::vector<std::string> names(std::size_t index) override { return at(index).Names; }

 private:
  static void refuse(std::int32_t error) {
    if (error != 0) throw SystemError{error};
  }
  const ListedDevice& at(std::size_t index) const {
    if (index >= listed_.Devices.size()) throw SystemError{ENODEV};
    return listed_.Devices[index];
  }

  ListedDevices listed_;
};

/// Asks for everything at once, so that the record is whole whatever the program then looks at.
class RecordedDevices : public DeviceTree {
 public:
  explicit RecordedDevices(SharedRecord record) : record_(std::move(record)) {}
  std::unique_ptr<DeviceList> devicesOfClass(std::string_view classGuid) override {
    WireEvent event{.Kind = WireKind::Devices, .Text = std::string(classGuid)};
    event.Devices = listed(record_->world().deviceTree(), classGuid);
    record_->tell(event);
    return deviceListOf(event.Devices);
  }
  std::vector<std::string> troubles() override { return record_->world().deviceTree().troubles(); }

 private:
  SharedRecord record_;
};

/// Identifiers are drawn, and sent to loggers.
class RecordedCryptography : public CryptographicProvider {
 public:
  explicit RecordedCryptography(SharedRecord record) : record_(std::move(record)) {}
  std::array<std::uint8_t, 16> md5(std::span<const std::uint8_t> bytes) override {
    return inner().md5(bytes);
  }
  void randomBytes(std::span<std::uint8_t> into) override {
    inner().randomBytes(into);
    record_->tell({.Kind = WireKind::Random, .Bytes = {into.begin(), into.end()}});
  }
  std::unique_ptr<Sha1Hash> createSha1() override { return inner().createSha1(); }
  std::unique_ptr<KeyContainer> openContainer(const std::string& file) override {
    return inner().openContainer(file);
  }
  void deleteContainer(const std::string& file) override { inner().deleteContainer(file); }
  void deleteDamagedContainer(const std::string& file) override { inner().deleteDamagedContainer(file); }

 private:
  CryptographicProvider& inner() { return record_->world().cryptography(); }

  SharedRecord record_;
};

class RecordedWorld : public WrappedPlatform {
 public:
  RecordedWorld(const std::shared_ptr<Platform>& world, const std::shared_ptr<WireSink>& sink, double began)
      : WrappedPlatform(world),
        record_(std::make_shared<WireRecord>(world, sink, began)),
        ports_(record_),
        devices_(record_),
        cryptography_(record_) {}
  /// The objects that the library keeps in a world may still use it while they end.
  ~RecordedWorld() override { objects().clear(); }
  RecordedWorld(const RecordedWorld&) = delete;
  RecordedWorld& operator=(const RecordedWorld&) = delete;

  SerialPorts& serialPorts() override { return ports_; }
  DeviceTree& deviceTree() override { return devices_; }
  CryptographicProvider& cryptography() override { return cryptography_; }

 private:
  SharedRecord record_;
  RecordedPorts ports_;
  RecordedDevices devices_;
  RecordedCryptography cryptography_;
};

}  // namespace

std::unique_ptr<DeviceList> deviceListOf(const ListedDevices& listed) {
  if (listed.Error != 0) throw SystemError{listed.Error};
  return std::make_unique<AnsweredList>(listed);
}

std::shared_ptr<Platform> makeRecordedWorld(const std::shared_ptr<Platform>& world,
                                            const std::shared_ptr<WireSink>& sink, double began) {
  return std::make_shared<RecordedWorld>(world, sink, began);
}

}  // namespace hy_wristlog::platform
