#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulate/connection.h"
#include "simulate/far_end.h"
#include "simulate/port_server.h"
#include "simulate/served_logger.h"

namespace wristlog {

/// Serves a logger to one client at a time by RFC 2217. Others are told that the port is in use.
class NetworkEnd : public FarEnd {
 public:
  /// Raises Failure PortNotAvailable when it cannot listen there.
  NetworkEnd(ServedLogger& logger, const ListenAddress& address, std::unique_ptr<Connections> connections);

  std::string device() const override;
  std::string fingerprint() const override { return connections_->fingerprint(); }
  bool isOnLoopback() const override { return wristlog::isOnLoopback(listener_); }
  void serve() override;
  void watch(std::vector<pollfd>& list) const override;

 private:
  /// A client that is sent away, with what it has yet to hear.
  struct SentAway {
    std::unique_ptr<Connection> Client;
    std::string Words;
    double Until;
  };

  void accept();
  void sendAway(std::unique_ptr<Connection> client, const std::string& words);
  void serveSentAway();
  void serveClient();
  void send();

  ServedLogger& logger_;
  std::unique_ptr<Connections> connections_;
  hy_wristlog::platform::Descriptor listener_;
  std::unique_ptr<Connection> client_;
  std::optional<PortServer> server_;
  std::vector<SentAway> sentAway_;
};

}  // namespace wristlog
