#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/platform.h"
#include "platform/wrapped_platform.h"

namespace hy_wristlog::platform {

/// The device classes that loggers are reached by.
inline constexpr const char* DockClasses[] = {ComPortClass, UsbDeviceClass, PlainPortClass};

/// A view of another world, in which the device tree holds one dock and no port but its own can be opened.
/// All else is the other world's, its host and objects too: nothing that a thread has made there ends when
/// the thread takes up a view or leaves it.
class OneDockWorld final : public WrappedPlatform {
 public:
  /// The dock whose steadiest name is `name`. It is looked up at each question, so that a dock which is
  /// pulled out is missed, and found again at the same place.
  OneDockWorld(std::shared_ptr<Platform> world, std::string name);
  /// A device that the tree need not show, by its path or address. It is shown with `hardwareId` in the class
  /// `classGuid`, on a port of this view alone.
  OneDockWorld(std::shared_ptr<Platform> world, std::string device, std::string hardwareId,
               std::string classGuid);
  ~OneDockWorld() override;

  const std::string& dock() const { return name_; }
  DeviceTree& deviceTree() override;
  SerialPorts& serialPorts() override;

 private:
  class Tree;
  class Ports;

  std::string name_;
  std::unique_ptr<Tree> tree_;
  std::unique_ptr<Ports> ports_;
};

/// The COM port of a device in a OneDockWorld whose path gives none.
inline constexpr std::int32_t OwnPort = 64;

}  // namespace hy_wristlog::platform
