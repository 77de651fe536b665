#pragma once

#include <string>
#include <vector>

#include <poll.h>

namespace wristlog {

/// The way by which clients of other processes reach a served logger's port.
class FarEnd {
 public:
  FarEnd() = default;
  FarEnd(const FarEnd&) = delete;
  FarEnd& operator=(const FarEnd&) = delete;
  virtual ~FarEnd() = default;

  /// What a client names as its device: "/dev/pts/4", "rfc2217://127.0.0.1:7000".
  virtual std::string device() const = 0;
  /// SHA-256 of the certificate that the client gets; empty without TLS.
  virtual std::string fingerprint() const { return {}; }
  /// Whether only clients on this machine can reach it.
  virtual bool isOnLoopback() const { return true; }
  /// Passes on what clients and the logger have said. Never waits.
  virtual void serve() = 0;
  /// Adds what wakes it.
  virtual void watch(std::vector<pollfd>& list) const = 0;
};

}  // namespace wristlog
