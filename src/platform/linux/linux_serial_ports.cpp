#include "platform/linux/linux_serial_ports.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include "hy_wristlog/failure.h"
#include "platform/linux/declared_docks.h"
#include "platform/linux/line_control.h"
#include "platform/linux/linux_environment.h"
#include "platform/linux/linux_serial_port.h"
#include "platform/linux/remote/remote_ports.h"
#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {

using namespace FailureNumber;
namespace {

[[noreturn]] void raise(std::int32_t number, const std::string& description) {
  throw Failure(number, "MSComm", description);
}

std::string groupName(gid_t id) {
  std::array<char, 4096> buffer{};
  group entry{};
  group* found = nullptr;
  if (::getgrgid_r(id, &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) return {};
  return found->gr_name;
}

[[noreturn]] void raiseDenied(const std::string& name, const struct stat& device) {
  const std::string group = groupName(device.st_gid);
  const bool groupHelps = (device.st_mode & (S_IRGRP | S_IWGRP)) == (S_IRGRP | S_IWGRP) && device.st_gid != 0;
  std::string advice = "Ask the administrator for access to the device.";
  if (groupHelps && !group.empty())
    advice = "The user must be in the group \"" + group + "\" (sudo usermod -aG " + group +
             " <user>, then log in again).";
  raise(PortNotAvailable, std::string(NoPermission) + " to use " + name + ". " + advice);
}

[[noreturn]] void raiseBusy(const std::string& name) {
  raise(PortNotAvailable, name + " is in use by another program. Close that program and try again.");
}

[[noreturn]] void raiseMissing(const std::string& name) {
  raise(InvalidPort, "There is no " + name + ". Plug the dock in, or declare its device in Docks.INI.");
}

[[noreturn]] void raiseNoTerminal(const std::string& name) {
  raise(InvalidPort, name + " is not a serial port. Correct its entry in Docks.INI.");
}

[[noreturn]] void raiseForErrno(int error, const std::string& name, const struct stat& device) {
  switch (error) {
    case EBUSY:
      raiseBusy(name);
    case EACCES:
    case EPERM:
      raiseDenied(name, device);
    case ENOENT:
    case ENOTDIR:
    case ENXIO:
    case ENODEV:
    case ELOOP:
    case ENAMETOOLONG:
    case EIO:
      raiseMissing(name);
    default:
      raise(PortStateFailure, name + " cannot be opened: " + systemErrorText(error));
  }
}

std::unique_ptr<SerialPort> openTerminal(const std::string& path, const std::string& name) {
  struct stat device {};
  if (::stat(path.c_str(), &device) != 0) raiseForErrno(errno, name, device);
  if (!S_ISCHR(device.st_mode)) raiseNoTerminal(name);
  Descriptor fd{::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)};
  if (!fd) raiseForErrno(errno, name, device);
  if (!isTerminal(fd.get())) {
    // The driver's device file exists, but not the built-in port.
    if (errno == EIO) raiseMissing(name);
    raiseNoTerminal(name);
  }
  // Exclusive mode does not stop the superuser, so it is read back; the lock keeps out all who take it.
  if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) raiseBusy(name);
    raiseForErrno(errno, name, device);
  }
  int exclusive = 0;
  if (::ioctl(fd.get(), TIOCGEXCL, &exclusive) == 0 && exclusive != 0) raiseBusy(name);
  return std::make_unique<LinuxSerialPort>(std::move(fd), name);
}

}  // namespace

std::unique_ptr<SerialPort> openSerialDevice(const std::string& device, const std::string& name,
                                             const TlsIdentity& identity) {
  if (const auto address = parseRemoteAddress(device)) return openRemotePort(*address, identity, name);
  if (isRemoteAddress(device))
    raise(InvalidPort, name + " is no whole address, such as rfc2217s://host:4001");
  return openTerminal(device, name);
}

std::unique_ptr<SerialPort> LinuxSerialPorts::open(std::int32_t number) {
  const auto docks = readDeclaredDocks(userDataFolder(environment_)).Docks;
  const std::string path = devicePathOfPort(number, docks);
  if (path.empty()) raise(InvalidPort, "COM" + std::to_string(number) + " is not a port number");
  const std::string name = "COM" + std::to_string(number) + " (" + printable(path) + ")";
  const DeclaredDock* const dock = declaredDockOfPort(number, docks);
  return openSerialDevice(path, name, dock != nullptr ? dock->Identity : TlsIdentity{});
}

std::unique_ptr<SerialPort> LinuxSerialPorts::openDevice(const std::string& device) {
  TlsIdentity identity;
  if (const auto address = parseRemoteAddress(device))
    for (const DeclaredDock& dock : readDeclaredDocks(userDataFolder(environment_)).Docks)
      if (dock.Device == address->text()) identity = dock.Identity;
  return openSerialDevice(device, printable(device), identity);
}

}  // namespace hy_wristlog::platform
