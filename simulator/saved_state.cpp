#include "simulator/saved_state.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>
#include <utility>

namespace hy_wristlog::simulator {
namespace {

constexpr std::string_view Title = "HY_Wristlog simulated logger, version ", Version = "1",
                           SumName = "checksum=";
constexpr int SumDigits = 16;

std::string hexOf(std::string_view bytes) {
  constexpr std::string_view Digits = "0123456789abcdef";
  std::string hex;
  hex.reserve(2 * bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<std::uint8_t>(c);
    hex += Digits[byte >> 4];
    hex += Digits[byte & 15U];
  }
  return hex;
}

std::optional<std::string> bytesOf(std::string_view hex) {
  if (hex.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(hex.size() / 2);
  for (std::size_t at = 0; at < hex.size(); at += 2) {
    std::uint8_t byte = 0;
    const auto [end, error] = std::from_chars(hex.data() + at, hex.data() + at + 2, byte, 16);
    if (error != std::errc{} || end != hex.data() + at + 2) return std::nullopt;
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

}  // namespace

SavedState::SavedState(std::string_view text) : loading_(true) {
  if (!text.starts_with(Title)) throw WrongState("is no saved state of a simulated logger");
  const std::string_view version = text.substr(Title.size(), text.find('\n') - Title.size());
  if (version != Version)
    throw WrongState("was saved by another version of this program, which wrote the format " +
                     std::string(version.substr(0, SumDigits)));
  const std::size_t sum = text.rfind(SumName);
  if (sum == text.npos || text.substr(sum + SumName.size()) != sumOf(text.substr(0, sum)) + "\n")
    throw WrongState("is damaged: its checksum is wrong");
  for (text = text.substr(0, sum); !text.empty();) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    if (const std::size_t equals = line.find('='); equals != line.npos)
      loaded_.emplace(line.substr(0, equals), line.substr(equals + 1));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

/// FNV-1a.
std::string SavedState::sumOf(std::string_view text) {
  std::uint64_t sum = 0xCBF29CE484222325ULL;
  for (const char c : text) sum = (sum ^ static_cast<std::uint8_t>(c)) * 0x100000001B3ULL;
  char digits[SumDigits + 1];
  std::snprintf(digits, sizeof digits, "%0*llx", SumDigits, static_cast<unsigned long long>(sum));
  return digits;
}

std::string SavedState::text() const {
  std::string whole = std::string(Title) + std::string(Version) + "\n";
  for (const auto& [name, value] : lines_) whole.append(name).append("=").append(value).append("\n");
  return whole + std::string(SumName) + sumOf(whole) + "\n";
}

void SavedState::require(bool good, const char* name) const {
  if (!good) throw WrongState("holds nothing usable as " + std::string(name));
}

const std::string& SavedState::found(const std::string& name) const {
  const auto value = loaded_.find(name);
  if (value == loaded_.end()) throw WrongState("lacks " + name);
  return value->second;
}

void SavedState::add(const std::string& name, std::string value) {
  lines_.emplace_back(name, std::move(value));
}

void SavedState::pass(const std::string& name, std::int64_t& value, std::int64_t least, std::int64_t most) {
  if (!loading_) return add(name, std::to_string(value));
  const std::string& digits = found(name);
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  require(error == std::errc{} && end == digits.data() + digits.size() && value >= least && value <= most,
          name.c_str());
}

void SavedState::real(const char* name, double& value, double least, double most) {
  if (!loading_) {
    char digits[32];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value);
    return add(name, {digits, end});
  }
  const std::string& digits = found(name);
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  require(error == std::errc{} && end == digits.data() + digits.size() && value >= least && value <= most,
          name);
}

void SavedState::moment(const char* name, Moment& value) {
  std::int64_t count = value.count();
  pass(name, count, -MostMoment.count(), MostMoment.count());
  value = Moment{count};
}

void SavedState::text(const char* name, std::string& value, std::size_t longest) {
  if (!loading_) return add(name, hexOf(value));
  const auto bytes = bytesOf(found(name));
  require(bytes && bytes->size() <= longest, name);
  value = *bytes;
}

void SavedState::bytes(const char* name, std::vector<std::uint8_t>& value, std::uint8_t blank) {
  if (!loading_) {
    std::size_t used = value.size();
    while (used > 0 && value[used - 1] == blank) --used;
    return add(name, hexOf({reinterpret_cast<const char*>(value.data()), used}));
  }
  const auto found = bytesOf(this->found(name));
  require(found && found->size() <= value.size(), name);
  std::fill(value.begin(), value.end(), blank);
  std::copy(found->begin(), found->end(), value.begin());
}

void SavedState::alarm(const char* name, Alarm& alarm) {
  Moment at = alarm.pending() ? alarm.at() : Moment{-1};
  moment(name, at);
  if (loading_ && at >= Moment{0}) alarm.set(at);
}

}  // namespace hy_wristlog::simulator
