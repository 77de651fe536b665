#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace hy_wristlog::platform {

/// Where a dock on another machine is reached: "rfc2217://host:port", with TLS "rfc2217s://host:port".
struct RemoteAddress {
  bool Encrypted = false;
  std::string Host;  ///< a name, or the digits of an address; of IPv6 without the brackets
  std::uint16_t Port = 0;

  std::string text() const;
  /// Whether what is sent there stays on this machine.
  bool isLoopback() const;
  /// What who sends there should know; empty for TLS and for this machine.
  std::string warning() const;
};

/// How the two ends of a connection with TLS know each other. Empty texts are not given.
struct TlsIdentity {
  std::string CA;           ///< file of the authorities that the server's certificate may come from, in PEM
  std::string Fingerprint;  ///< SHA-256 of the server's certificate, 64 upper-case hexadecimal digits
  std::string Certificate;  ///< file of the client's own certificate and its chain, in PEM
  std::string Key;          ///< file of its private key, in PEM

  bool isEmpty() const { return CA.empty() && Fingerprint.empty() && Certificate.empty() && Key.empty(); }
};

/// Whether a device is named by an address, well written or not, and not by a path.
bool isRemoteAddress(std::string_view device);

/// None for what is no such address. The port must be given, an IPv6 address stand in brackets.
std::optional<RemoteAddress> parseRemoteAddress(std::string_view text);

/// 64 upper-case digits of a fingerprint that may have colons between its bytes; empty for anything else.
std::string fingerprintDigits(std::string_view text);

}  // namespace hy_wristlog::platform
