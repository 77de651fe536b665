#include "platform/linux/port_numbers.h"

#include <charconv>

namespace hy_wristlog::platform {
namespace {

constexpr std::int32_t UsbBase = 33, AcmBase = 49, LaterBase = 65, PerGroup = 16, SerialCount = 32;

/// The number after `prefix`; -1 for other names and for leading zeros.
std::int32_t indexBehind(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix)) return -1;
  name.remove_prefix(prefix.size());
  if (name.empty() || name.front() < '0' || name.front() > '9' || (name.size() > 1 && name.front() == '0'))
    return -1;
  std::int32_t index = -1;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), index);
  if (error != std::errc{} || end != name.data() + name.size() || index > HighestPortNumber) return -1;
  return index;
}

std::int32_t groupNumber(std::int32_t index, std::int32_t base, std::int32_t laterBase) {
  const std::int32_t number = index < PerGroup ? base + index : laterBase + 2 * (index - PerGroup);
  return number <= HighestPortNumber ? number : 0;
}

}  // namespace

std::int32_t portNumberOfTty(std::string_view name) {
  if (const auto index = indexBehind(name, "ttyUSB"); index >= 0)
    return groupNumber(index, UsbBase, LaterBase);
  if (const auto index = indexBehind(name, "ttyACM"); index >= 0)
    return groupNumber(index, AcmBase, LaterBase + 1);
  const auto index = indexBehind(name, "ttyS");
  return index >= 0 && index < SerialCount ? index + 1 : 0;
}

std::string ttyOfPortNumber(std::int32_t number) {
  if (number < 1 || number > HighestPortNumber) return {};
  if (number < UsbBase) return "ttyS" + std::to_string(number - 1);
  if (number < AcmBase) return "ttyUSB" + std::to_string(number - UsbBase);
  if (number < LaterBase) return "ttyACM" + std::to_string(number - AcmBase);
  const std::int32_t index = PerGroup + (number - LaterBase) / 2;
  return (number % 2 != 0 ? "ttyUSB" : "ttyACM") + std::to_string(index);
}

}  // namespace hy_wristlog::platform
