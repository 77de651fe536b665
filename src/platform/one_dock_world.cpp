#include "platform/one_dock_world.h"

#include <cerrno>
#include <optional>
#include <utility>

#include "base/ascii.h"
#include "platform/listed_docks.h"

namespace hy_wristlog::platform {
namespace {

struct UndeclaredDevice {
  std::string Device, HardwareId, Class;
};

/// Those of a list that have a name.
class DevicesOfName final : public DeviceList {
 public:
  DevicesOfName(std::unique_ptr<DeviceList> all, std::string name)
      : all_(std::move(all)), name_(std::move(name)) {}

  bool hasInterface(std::size_t index) override {
    for (; kept_.size() <= index && all_->hasInterface(next_); ++next_)
      if (const auto names = namesOf(*all_, next_); !names.empty() && names.front() == name_)
        kept_.push_back(next_);
    return index < kept_.size();
  }
  void readInfo(std::size_t index) override { all_->readInfo(place(index)); }
  std::string hardwareId(std::size_t index) override { return all_->hardwareId(place(index)); }
  std::string friendlyName(std::size_t index) override { return all_->friendlyName(place(index)); }
  std::vector<std::string> names(std::size_t index) override { return all_->names(place(index)); }

 private:
  std::size_t place(std::size_t index) {
    if (!hasInterface(index)) throw SystemError{ENODEV};
    return kept_[index];
  }

  std::unique_ptr<DeviceList> all_;
  std::string name_;
  std::vector<std::size_t> kept_;
  std::size_t next_ = 0;
};

class OneDevice final : public DeviceList {
 public:
  explicit OneDevice(std::optional<UndeclaredDevice> device) : device_(std::move(device)) {}

  bool hasInterface(std::size_t index) override { return device_ && index == 0; }
  void readInfo(std::size_t index) override { require(index); }
  std::string hardwareId(std::size_t index) override {
    require(index);
    return device_->HardwareId;
  }
  std::string friendlyName(std::size_t index) override {
    require(index);
    return "Dock (COM" + std::to_string(OwnPort) + ")";
  }
  std::vector<std::string> names(std::size_t index) override {
    require(index);
    return {device_->Device};
  }

 private:
  void require(std::size_t index) {
    if (!hasInterface(index)) throw SystemError{ENODEV};
  }

  std::optional<UndeclaredDevice> device_;
};

}  // namespace

class OneDockWorld::Tree final : public DeviceTree {
 public:
  Tree(DeviceTree& all, std::string name, std::optional<UndeclaredDevice> own)
      : all_(all), name_(std::move(name)), own_(std::move(own)) {}

  std::unique_ptr<DeviceList> devicesOfClass(std::string_view classGuid) override {
    if (own_)
      return std::make_unique<OneDevice>(equalsIgnoringCase(own_->Class, classGuid) ? own_ : std::nullopt);
    auto devices = all_.devicesOfClass(classGuid);
    if (!devices) return devices;
    return std::make_unique<DevicesOfName>(std::move(devices), name_);
  }
  std::vector<std::string> troubles() override { return all_.troubles(); }

  /// 0 while there is none.
  std::int32_t port() {
    for (const char* const classGuid : DockClasses)
      for (const ListedDock& dock : devicesOf(*this, classGuid))
        if (dock.Port > 0) return dock.Port;
    return 0;
  }
  const std::optional<UndeclaredDevice>& own() const { return own_; }

 private:
  DeviceTree& all_;
  std::string name_;
  std::optional<UndeclaredDevice> own_;
};

class OneDockWorld::Ports final : public SerialPorts {
 public:
  Ports(SerialPorts& all, Tree& tree, const std::string& name) : all_(all), tree_(tree), name_(name) {}

  std::unique_ptr<SerialPort> open(std::int32_t number) override {
    if (number != port())
      throw Failure(
          FailureNumber::InvalidPort, "SerialPorts",
          "COM" + std::to_string(number) + " is not the port of the dock " + name_ + ", which was chosen");
    return tree_.own() ? all_.openDevice(tree_.own()->Device) : all_.open(number);
  }
  std::unique_ptr<SerialPort> openDevice(const std::string& device) override {
    return all_.openDevice(device);
  }

 private:
  std::int32_t port() {
    try {
      return tree_.port();
    } catch (const SystemError&) {
      return 0;
    }
  }

  SerialPorts& all_;
  Tree& tree_;
  const std::string& name_;
};

OneDockWorld::OneDockWorld(std::shared_ptr<Platform> world, std::string name)
    : WrappedPlatform(View{}, std::move(world)),
      name_(std::move(name)),
      tree_(std::make_unique<Tree>(inner()->deviceTree(), name_, std::nullopt)),
      ports_(std::make_unique<Ports>(inner()->serialPorts(), *tree_, name_)) {}

OneDockWorld::OneDockWorld(std::shared_ptr<Platform> world, std::string device, std::string hardwareId,
                           std::string classGuid)
    : WrappedPlatform(View{}, std::move(world)),
      name_(std::move(device)),
      tree_(std::make_unique<Tree>(inner()->deviceTree(), name_,
                                   UndeclaredDevice{name_, std::move(hardwareId), std::move(classGuid)})),
      ports_(std::make_unique<Ports>(inner()->serialPorts(), *tree_, name_)) {}

OneDockWorld::~OneDockWorld() = default;

DeviceTree& OneDockWorld::deviceTree() { return *tree_; }
SerialPorts& OneDockWorld::serialPorts() { return *ports_; }

}  // namespace hy_wristlog::platform
