#pragma once

#include <memory>
#include <string>

#include "simulate/connection.h"

struct ssl_ctx_st;

namespace wristlog {

/// The files of a server with TLS, in PEM.
struct TlsFiles {
  std::string Certificate, Key;
  std::string ClientCa;  ///< empty: clients need no certificate
};

/// Makes connections that are encrypted by TLS 1.2 or newer.
class TlsConnections : public Connections {
 public:
  /// Raises Failure InvalidCall for files that cannot be used.
  explicit TlsConnections(const TlsFiles& files);
  ~TlsConnections() override;

  std::string scheme() const override { return "rfc2217s"; }
  std::string fingerprint() const override;
  std::unique_ptr<Connection> make(hy_wristlog::platform::Descriptor socket) const override;

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

}  // namespace wristlog
