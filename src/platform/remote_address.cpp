#include "platform/remote_address.h"

#include <algorithm>
#include <charconv>

#include "base/ascii.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::string_view PlainScheme = "rfc2217://", EncryptedScheme = "rfc2217s://";
constexpr std::size_t LongestHost = 253;

bool begins(std::string_view text, std::string_view scheme) {
  return equalsIgnoringCase(text.substr(0, scheme.size()), scheme);
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isHexadecimal(char c) { return isDigit(c) || (asciiLower(c) >= 'a' && asciiLower(c) <= 'f'); }
bool isOfName(char c) {
  return isDigit(c) || (asciiLower(c) >= 'a' && asciiLower(c) <= 'z') || c == '-' || c == '.' || c == '_';
}

bool isName(std::string_view host) {
  return !host.empty() && host.size() <= LongestHost && host.front() != '-' && host.front() != '.' &&
         std::all_of(host.begin(), host.end(), isOfName);
}

/// The digits are judged by the resolver; the interface after "%" is a name.
bool isIpv6(std::string_view host) {
  const std::size_t zone = std::min(host.find('%'), host.size());
  const std::string_view digits = host.substr(0, zone);
  return digits.find(':') != std::string_view::npos && digits.size() <= LongestHost &&
         std::all_of(digits.begin(), digits.end(),
                     [](char c) { return isHexadecimal(c) || c == ':' || c == '.'; }) &&
         (zone == host.size() || isName(host.substr(zone + 1)));
}

}  // namespace

std::string RemoteAddress::text() const {
  const bool needsBrackets = Host.find(':') != std::string::npos;
  return std::string(Encrypted ? EncryptedScheme : PlainScheme) + (needsBrackets ? "[" + Host + "]" : Host) +
         ":" + std::to_string(Port);
}

bool RemoteAddress::isLoopback() const {
  return equalsIgnoringCase(Host, "localhost") || Host == "::1" ||
         (Host.starts_with("127.") && std::count(Host.begin(), Host.end(), '.') == 3 &&
          std::all_of(Host.begin(), Host.end(), [](char c) { return isDigit(c) || c == '.'; }));
}

std::string RemoteAddress::warning() const {
  if (Encrypted || isLoopback()) return {};
  return "is reached without TLS: names and data travel readable to " + Host + ".";
}

bool isRemoteAddress(std::string_view device) {
  return begins(device, PlainScheme) || begins(device, EncryptedScheme);
}

std::optional<RemoteAddress> parseRemoteAddress(std::string_view text) {
  if (!isRemoteAddress(text)) return std::nullopt;
  RemoteAddress address;
  address.Encrypted = begins(text, EncryptedScheme);
  text.remove_prefix(address.Encrypted ? EncryptedScheme.size() : PlainScheme.size());
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  std::string_view host = text.substr(0, colon);
  const std::string_view port = text.substr(colon + 1);
  const bool hasBrackets = host.size() > 2 && host.front() == '[' && host.back() == ']';
  if (hasBrackets) host = host.substr(1, host.size() - 2);
  if (hasBrackets ? !isIpv6(host) : !isName(host)) return std::nullopt;
  address.Host = host;
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), address.Port);
  if (error != std::errc{} || end != port.data() + port.size() || address.Port == 0) return std::nullopt;
  return address;
}

std::string fingerprintDigits(std::string_view text) {
  constexpr std::size_t Digits = 64;
  std::string digits;
  for (const char c : text)
    if (c != ':') digits += asciiUpper(c);
  if (digits.size() != Digits || !std::all_of(digits.begin(), digits.end(), isHexadecimal)) return {};
  return digits;
}

}  // namespace hy_wristlog::platform
