#include "platform/linux/declared_docks.h"

#include <algorithm>
#include <cerrno>
#include <charconv>

#include "base/ascii.h"
#include "platform/linux/linux_environment.h"
#include "platform/linux/port_numbers.h"
#include "platform/linux/system_io.h"
#include "platform/platform.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::size_t LongestFile = 1 << 20;
constexpr std::size_t MostDocks = 256;
constexpr std::int32_t HighestDeclaredPort = 64;
/// Numbers up to this one stand for built-in ports, of which machines have few.
constexpr std::int32_t HighestBuiltInPort = 32;

std::string_view trim(std::string_view text) {
  constexpr std::string_view Blank = " \t\r";
  const auto first = text.find_first_not_of(Blank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(Blank) - first + 1);
}

std::string_view withoutQuotes(std::string_view text) {
  if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.front() == text.back())
    return text.substr(1, text.size() - 2);
  return text;
}

bool isDockSection(std::string_view name) {
  constexpr std::string_view Prefix = "dock ";
  if (name.size() <= Prefix.size() || !equalsIgnoringCase(name.substr(0, Prefix.size()), Prefix))
    return false;
  name.remove_prefix(Prefix.size());
  return std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string identifier(std::string_view text) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (text.size() > 4 || error != std::errc{} || end != text.data() + text.size()) return {};
  return std::string(4 - text.size(), '0') + asciiUpper(std::string{text});
}

std::int32_t comPort(std::string_view text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = error == std::errc{} && end == text.data() + text.size();
  return whole && value >= 1 && value <= HighestDeclaredPort ? value : 0;
}

std::string_view fileName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

/// The docks that the models served here are connected by.
struct KnownDock {
  std::string_view VendorID, ProductID;
  const char* Class;
};

constexpr KnownDock KnownDocks[] = {
    {"5245", "4000", ComPortClass},
    {"5245", "4001", UsbDeviceClass},
    {"5245", "4002", ComPortClass},
};

const KnownDock* knownDock(const DeclaredDock& dock) {
  const auto found = std::find_if(std::begin(KnownDocks), std::end(KnownDocks), [&](const KnownDock& known) {
    return known.VendorID == dock.VendorID && known.ProductID == dock.ProductID;
  });
  return found != std::end(KnownDocks) ? found : nullptr;
}

class DeclarationReader {
 public:
  DeclaredDocks read(std::string_view ini) {
    if (ini.starts_with("\xFF\xFE") || ini.starts_with("\xFE\xFF")) {
      found_.Troubles.push_back("It is written in UTF-16. Save it in UTF-8.");
      return std::move(found_);
    }
    if (ini.starts_with("\xEF\xBB\xBF")) ini.remove_prefix(3);
    while (!ini.empty()) {
      const std::size_t end = std::min(ini.find('\n'), ini.size());
      ++line_;
      readLine(trim(ini.substr(0, end)));
      ini.remove_prefix(std::min(end + 1, ini.size()));
    }
    for (DeclaredDock& dock : found_.Docks) complete(dock);
    for (DeclaredDock& dock : found_.Docks)
      if (dock.ComPort == 0 && isRemoteAddress(dock.Device)) giveNumber(dock);
    if (found_.Docks.empty())
      found_.Troubles.push_back("It declares no dock. The section of one is [Dock 1].");
    return std::move(found_);
  }

 private:
  void readLine(std::string_view line) {
    if (line.empty() || line.front() == ';' || line.front() == '#') return;
    if (line.front() == '[') return beginSection(line);
    const auto equals = line.find('=');
    if (equals == std::string_view::npos) return blame("is no section, no entry and no comment");
    if (dock_ != nullptr) return store(trim(line.substr(0, equals)), trim(line.substr(equals + 1)));
    if (!inSection_) blame("stands in front of the first section");
  }

  void beginSection(std::string_view line) {
    dock_ = nullptr;
    inSection_ = true;
    const std::size_t end = line.find(']');
    if (end == std::string_view::npos) return blame("has no closing bracket");
    const std::string_view name = trim(line.substr(1, end - 1));
    if (!isDockSection(name)) return blame("is not the section of a dock, such as [Dock 1]");
    auto found = std::find_if(found_.Docks.begin(), found_.Docks.end(),
                              [&](const DeclaredDock& dock) { return equalsIgnoringCase(dock.Name, name); });
    if (found == found_.Docks.end()) {
      if (found_.Docks.size() == MostDocks) return blame("is one dock too many");
      found = found_.Docks.insert(found, DeclaredDock{});
      found->Name = name;
    }
    dock_ = &*found;
  }

  void store(std::string_view key, std::string_view quoted) {
    const std::string_view value = withoutQuotes(quoted);
    if (value == quoted &&
        (value.find(" ;") != std::string_view::npos || value.find(" #") != std::string_view::npos))
      blame("has a comment, which must stand on a line of its own");
    else if (equalsIgnoringCase(key, "VendorID"))
      keep(dock_->VendorID, identifier(value), "is no hexadecimal number of up to four digits, such as 5245");
    else if (equalsIgnoringCase(key, "ProductID"))
      keep(dock_->ProductID, identifier(value),
           "is no hexadecimal number of up to four digits, such as 4000");
    else if (equalsIgnoringCase(key, "Class"))
      keep(dock_->Class, asciiLower(std::string{value}), "is empty");
    else if (equalsIgnoringCase(key, "Device"))
      storeDevice(value);
    else if (equalsIgnoringCase(key, "COMport"))
      keep(dock_->ComPort, comPort(value), "is no number from 1 to 64");
    else if (equalsIgnoringCase(key, "CA"))
      storeFile(dock_->Identity.CA, value);
    else if (equalsIgnoringCase(key, "Certificate"))
      storeFile(dock_->Identity.Certificate, value);
    else if (equalsIgnoringCase(key, "Key"))
      storeFile(dock_->Identity.Key, value);
    else if (equalsIgnoringCase(key, "Fingerprint"))
      keep(dock_->Identity.Fingerprint, fingerprintDigits(value),
           "is no SHA-256 fingerprint, which are 64 hexadecimal digits");
    else
      blame(
          "is no entry of a dock, which are VendorID, ProductID, Class, COMport, Device, CA, Fingerprint, "
          "Certificate and Key");
  }

  void storeDevice(std::string_view value) {
    if (!isRemoteAddress(value)) return storeFile(dock_->Device, value);
    const auto address = parseRemoteAddress(value);
    keep(dock_->Device, address ? address->text() : "",
         "is no whole address, such as rfc2217s://host:4001 or rfc2217s://[fd00::2]:4001");
  }

  void storeFile(std::string& field, std::string_view value) {
    keep(field, isPath(value) ? std::string{value} : "", "is no whole path, such as /dev/ttyS4");
  }

  static bool isPath(std::string_view value) {
    return value.starts_with('/') && value.find('\0') == std::string_view::npos;
  }

  /// The first of equal entries counts.
  template <class Value>
  void keep(Value& field, Value value, const char* trouble) {
    if (value == Value{}) return blame(trouble);
    if (field == Value{}) field = std::move(value);
  }

  void complete(DeclaredDock& dock) {
    const KnownDock* const known = knownDock(dock);
    if (dock.Class.empty()) dock.Class = known != nullptr ? known->Class : ComPortClass;
    if (dock.Device.empty() && dock.ComPort != 0) dock.Device = "/dev/" + ttyOfPortNumber(dock.ComPort);
    if (dock.ComPort == 0 && dock.Device.starts_with("/dev/tty"))
      dock.ComPort = portNumberOfTty(fileName(dock.Device));
    const auto trouble = [&](const std::string& words) {
      found_.Troubles.push_back("[" + dock.Name + "] " + words);
    };
    if (dock.Device.empty()) trouble("names no device.");
    const TlsIdentity& identity = dock.Identity;
    const auto address = parseRemoteAddress(dock.Device);
    if (const std::string warning = address ? address->warning() : ""; !warning.empty()) trouble(warning);
    if (!identity.isEmpty() && !(address && address->Encrypted))
      trouble(
          "has entries for TLS, which its Device does not use. Its address would begin with rfc2217s://.");
    if (!identity.CA.empty() && !identity.Fingerprint.empty())
      trouble("has a CA and a Fingerprint. The Fingerprint alone counts.");
    if (identity.Certificate.empty() && !identity.Key.empty()) trouble("has a Key without a Certificate.");
    if (dock.VendorID.empty() && dock.ProductID.empty()) return;
    if (known == nullptr)
      trouble(
          "is no dock known here: its VendorID is 5245, its ProductID 4000 (Kestrin Vivid), 4001 or 4002 "
          "(Kestrin 2).");
  }

  /// A number that another declaration does not have. The device that has it by rule is without one.
  void giveNumber(DeclaredDock& dock) {
    const auto isFree = [&](std::int32_t number) {
      return declaredDockOfPort(number, found_.Docks) == nullptr;
    };
    for (std::int32_t number = HighestBuiltInPort; number > 0 && dock.ComPort == 0; --number)
      if (isFree(number)) dock.ComPort = number;
    for (std::int32_t number = HighestDeclaredPort; number > HighestBuiltInPort && dock.ComPort == 0;
         --number)
      if (isFree(number)) dock.ComPort = number;
    if (dock.ComPort == 0)
      found_.Troubles.push_back("[" + dock.Name + "] has no port, since all 64 are declared.");
  }

  void blame(const char* words) {
    found_.Troubles.push_back("Line " + std::to_string(line_) + " " + words + ".");
  }

  DeclaredDocks found_;
  DeclaredDock* dock_ = nullptr;
  bool inSection_ = false;
  int line_ = 0;
};

}  // namespace

DeclaredDocks parseDeclaredDocks(std::string_view ini) { return DeclarationReader().read(ini); }

DeclaredDocks readDeclaredDocks(const std::string& dataFolder) {
  const auto named = environmentVariable("HY_WRISTLOG_DOCKS");
  const bool isNamed = named && !named->empty();
  if (!isNamed && dataFolder.empty()) return {};
  const std::string path = isNamed ? *named : dataFolder + "/Docks.INI";
  DeclaredDocks declared;
  try {
    declared = parseDeclaredDocks(readFile(path, LongestFile));
  } catch (const SystemError& error) {
    if (error.Number != ENOENT || isNamed)
      declared.Troubles.push_back("It cannot be read: " + systemErrorText(error.Number) + ".");
  }
  for (const DeclaredDock& dock : declared.Docks)
    for (const std::string& path :
         {dock.isThere() ? "" : dock.Device, dock.Identity.CA, dock.Identity.Certificate, dock.Identity.Key})
      if (!path.empty() && !fileExists(path))
        declared.Troubles.push_back("[" + dock.Name + "] names " + path + ", which is not there.");
  for (std::string& trouble : declared.Troubles) trouble.insert(0, path + ": ");
  return declared;
}

bool DeclaredDock::isThere() const { return isRemoteAddress(Device) || fileExists(Device); }

const DeclaredDock* declaredDockOfPort(std::int32_t number, const std::vector<DeclaredDock>& docks) {
  for (const DeclaredDock& dock : docks)
    if (dock.ComPort == number && number != 0 && !dock.Device.empty()) return &dock;
  return nullptr;
}

std::string devicePathOfPort(std::int32_t number, const std::vector<DeclaredDock>& docks) {
  if (const DeclaredDock* dock = declaredDockOfPort(number, docks)) return dock->Device;
  const std::string tty = ttyOfPortNumber(number);
  return tty.empty() ? tty : "/dev/" + tty;
}

}  // namespace hy_wristlog::platform
