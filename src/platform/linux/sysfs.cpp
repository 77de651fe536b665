#include "platform/linux/sysfs.h"

#include <algorithm>
#include <filesystem>

#include "base/ascii.h"
#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {
namespace {

/// Attribute files show the size of a memory page, which may be 64 KiB.
constexpr std::size_t LongestAttribute = 1 << 18;
constexpr std::size_t MostEntries = 16384;
constexpr int DeepestWalk = 64;

std::string canonical(const std::string& path) {
  std::error_code error;
  const auto real = std::filesystem::canonical(path, error);
  return error ? std::string{} : real.string();
}

/// Names in natural order: ttyUSB2 before ttyUSB10.
std::vector<std::string> entriesOf(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator entry{folder, error}, end; !error && entry != end;
       entry.increment(error)) {
    if (names.size() == MostEntries) break;
    names.push_back(entry->path().filename().string());
  }
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  return names;
}

std::string attribute(const std::string& path) {
  std::string text = readSmallFile(path, LongestAttribute).value_or("");
  text.resize(std::min(text.find('\n'), text.size()));
  return text;
}

/// Empty unless the attribute is four hexadecimal digits.
std::string identifier(const std::string& path) {
  const std::string text = asciiUpper(attribute(path));
  const bool good = text.size() == 4 && text.find_first_not_of("0123456789ABCDEF") == std::string::npos;
  return good ? text : std::string{};
}

}  // namespace

Sysfs::Sysfs(const std::string& root) : root_(canonical(root)) {}

bool Sysfs::isInside(const std::string& path) const {
  return root_ == "/" || (path.starts_with(root_) && path.size() > root_.size() && path[root_.size()] == '/');
}

std::optional<UsbDevice> Sysfs::deviceAt(const std::string& folder) const {
  UsbDevice device;
  device.Path = folder;
  device.Vendor = identifier(folder + "/idVendor");
  device.ProductId = identifier(folder + "/idProduct");
  if (device.Vendor.empty() || device.ProductId.empty()) return std::nullopt;
  device.Release = identifier(folder + "/bcdDevice");
  if (device.Release.empty()) device.Release = "0000";
  device.SerialNumber = printable(trimBlanks(cutAtNul(attribute(folder + "/serial"))));
  device.Product = printable(trimBlanks(cutAtNul(attribute(folder + "/product"))));
  if (device.Product.empty()) device.Product = "USB device";
  return device;
}

std::optional<UsbDevice> Sysfs::deviceAbove(const std::string& folder) const {
  std::string path = folder;
  for (int level = 0; level < DeepestWalk && isInside(path); ++level) {
    if (auto device = deviceAt(path)) return device;
    path.resize(path.rfind('/'));
  }
  return std::nullopt;
}

std::vector<UsbDevice> Sysfs::usbDevices() const {
  std::vector<UsbDevice> devices;
  if (root_.empty()) return devices;
  const std::string folder = root_ + "/bus/usb/devices/";
  for (const std::string& name : entriesOf(folder)) {
    const std::string path = canonical(folder + name);
    if (path.empty() || !isInside(path)) continue;
    if (auto device = deviceAt(path)) devices.push_back(std::move(*device));
  }
  return devices;
}

std::vector<UsbTerminal> Sysfs::usbTerminals() const {
  std::vector<UsbTerminal> terminals;
  if (root_.empty()) return terminals;
  const std::string folder = root_ + "/class/tty/";
  for (const std::string& name : entriesOf(folder)) {
    const std::string path = canonical(folder + name + "/device");
    if (path.empty()) continue;
    if (auto device = deviceAbove(path)) terminals.push_back({name, std::move(*device)});
  }
  return terminals;
}

}  // namespace hy_wristlog::platform
