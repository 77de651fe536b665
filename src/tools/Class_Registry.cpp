#include "tools/Class_Registry.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include "base/faults.h"
#include "base/formats.h"
#include "base/numbers.h"
#include "errors/Procedure.h"
#include "platform/platform.h"

namespace hy_wristlog {
namespace {

using platform::SettingValue;
using platform::SystemError;
using Bytes = std::vector<std::uint8_t>;

enum Type : std::int32_t {
  None = 0,
  Text = 1,
  ExpandableText = 2,
  Binary = 3,
  Number = 4,
  BigEndian = 5,
  Link = 6
};

platform::SettingsStore& store() { return platform::current().settings(); }

template <class Action>
bool succeeds(Action action) {
  try {
    return action();
  } catch (const SystemError&) {
    return false;
  }
}

std::string textOfData(const Bytes& data) {
  const bool closed = !data.empty() && data.back() == 0;
  return {data.begin(), data.end() - (closed ? 1 : 0)};
}

std::optional<std::int32_t> numberOfData(const Bytes& data) {
  if (data.size() < 4) return std::nullopt;
  return static_cast<std::int32_t>(data[0] | std::uint32_t{data[1]} << 8 | std::uint32_t{data[2]} << 16 |
                                   std::uint32_t{data[3]} << 24);
}

Bytes dataOfNumber(std::int32_t number) {
  const auto bits = static_cast<std::uint32_t>(number);
  return {static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8U),
          static_cast<std::uint8_t>(bits >> 16U), static_cast<std::uint8_t>(bits >> 24U)};
}

Bytes textData(const RegistryValue& value) {
  std::string text;
  if (const auto* own = std::get_if<std::string>(&value))
    text = *own;
  else if (const auto* number = std::get_if<std::int32_t>(&value))
    text = std::to_string(*number);
  else if (std::holds_alternative<Bytes>(value))
    fault::raise(fault::TypeMismatch);
  Bytes data(text.begin(), text.end());
  data.push_back(0);
  return data;
}

Bytes binaryData(const RegistryValue& value) {
  if (const auto* bytes = std::get_if<Bytes>(&value)) return *bytes;
  if (std::holds_alternative<std::monostate>(value)) return {};
  fault::raise(fault::TypeMismatch);
}

std::int32_t numberOf(const RegistryValue& value) {
  if (const auto* number = std::get_if<std::int32_t>(&value)) return *number;
  if (std::holds_alternative<std::monostate>(value)) return 0;
  if (const auto* text = std::get_if<std::string>(&value))
    if (const auto number = parseNumber(*text)) return roundToInt32(*number);
  fault::raise(fault::TypeMismatch);
}

Bytes dataOf(const RegistryValue& value, std::int32_t type) {
  switch (type) {
    case None:
    case Text:
    case ExpandableText:
    case Link:
      return textData(value);
    case Binary:
      return binaryData(value);
    case Number:
      return dataOfNumber(numberOf(value));
    case BigEndian:
      return dataOfNumber(Class_Registry::SwapEndian(numberOf(value)));
    default:
      fault::raise(fault::InvalidCall);
  }
}

[[noreturn]] void raiseRefusal(const SystemError& error, const std::string& otherwise) {
  const bool denied = error.Number == EACCES || error.Number == EPERM;
  throw Failure(error.Number, "Class_Registry.Let_Value",
                denied ? "Access denied when accessing Windows registry" : otherwise);
}

}  // namespace

bool Class_Registry::Get_KeyExists() const {
  return succeeds([&] { return store().keyExists(ClassKey, SectionKey); });
}

bool Class_Registry::CreateKey() const {
  return succeeds([&] {
    store().createKey(ClassKey, SectionKey);
    return true;
  });
}

bool Class_Registry::DeleteKey() const {
  return succeeds([&] { return store().deleteKey(ClassKey, SectionKey); });
}

bool Class_Registry::DeleteValue() const {
  return succeeds([&] { return store().deleteValue(ClassKey, SectionKey, ValueKey); });
}

RegistryValue Class_Registry::Get_Value() const {
  std::optional<SettingValue> stored;
  succeeds([&] {
    stored = store().read(ClassKey, SectionKey, ValueKey);
    return true;
  });
  if (!stored) return Default;
  const auto number = numberOfData(stored->Data);
  switch (stored->Type) {
    case None:
    case Text:
    case Link:
      return textOfData(stored->Data);
    case ExpandableText:
      return ExpandEnvStr(textOfData(stored->Data));
    case Binary:
      return stored->Data;
    case Number:
      return number ? RegistryValue(*number) : Default;
    case BigEndian:
      return number ? RegistryValue(SwapEndian(*number)) : Default;
    default:
      return Default;
  }
}

void Class_Registry::Let_Value(const RegistryValue& value) const {
  Procedure procedure{"Class_Registry", "Let_Value"};
  procedure.run([&] {
    const SettingValue setting{ValueType, dataOf(value, ValueType)};
    try {
      store().createKey(ClassKey, SectionKey);
    } catch (const SystemError& error) {
      raiseRefusal(error,
                   "Call to RegCreateKeyEx failed, returning error number: " + std::to_string(error.Number));
    }
    try {
      store().write(ClassKey, SectionKey, ValueKey, setting);
    } catch (const SystemError& error) {
      raiseRefusal(error, platform::current().environment().errorText(error.Number));
    }
  });
}

bool Class_Registry::EnumerateValues(std::vector<std::string>& names, std::int32_t& count) const {
  names.clear();
  const bool done = succeeds([&] {
    names = store().valueNames(ClassKey, SectionKey);
    return true;
  });
  count = fault::narrow<std::int32_t>(names.size());
  return done;
}

bool Class_Registry::EnumerateSections1(std::vector<std::string>& names, std::int32_t& count) const {
  names.clear();
  const bool done = succeeds([&] {
    names = store().subkeys(ClassKey, SectionKey);
    return true;
  });
  count = fault::narrow<std::int32_t>(names.size());
  return done;
}

void Class_Registry::CreateEXEAssociation(const std::string& programPath, const std::string& className,
                                          const std::string& description, const std::string& extension) {
  const std::string dotted = extension.starts_with('.') ? extension : "." + extension;
  SetRegistrySetting(ClassesRoot, dotted, "", className, Text);
  SetRegistrySetting(ClassesRoot, className, "", description, Text);
  SetRegistrySetting(ClassesRoot, className + "\\shell\\open\\command", "", programPath + " \"%1\"", Text);
}

std::int32_t Class_Registry::SwapEndian(std::int32_t value) {
  const auto bits = static_cast<std::uint32_t>(value);
  return static_cast<std::int32_t>(bits << 24U | (bits & 0xFF00U) << 8U | (bits >> 8U & 0xFF00U) |
                                   bits >> 24U);
}

std::string Class_Registry::ExpandEnvStr(std::string_view text) {
  std::string expanded;
  while (!text.empty()) {
    const auto start = std::min(text.find('%'), text.size());
    expanded += text.substr(0, start);
    text.remove_prefix(start);
    const auto end = text.find('%', 1);
    if (end == std::string_view::npos) break;
    const auto value = platform::current().environment().variable(text.substr(1, end - 1));
    // The "%" after an unknown name may be the one before the next name.
    expanded += value ? *value : std::string(text.substr(0, end));
    text.remove_prefix(value ? end + 1 : end);
  }
  return expanded.append(text);
}

RegistryValue Class_Registry::GetRegistrySetting(std::int32_t root, const std::string& key,
                                                 const std::string& valueName, std::int32_t valueType,
                                                 const RegistryValue& defaultValue) {
  ClassKey = root;
  SectionKey = key;
  ValueKey = valueName;
  Default = defaultValue;
  ValueType = valueType;
  return Get_Value();
}

void Class_Registry::SetRegistrySetting(std::int32_t root, const std::string& key,
                                        const std::string& valueName, const RegistryValue& value,
                                        std::int32_t valueType) {
  ClassKey = root;
  SectionKey = key;
  ValueKey = valueName;
  ValueType = valueType;
  Let_Value(value);
}

}  // namespace hy_wristlog
