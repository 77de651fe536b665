#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "component/members.h"

namespace hy_wristlog::component {

/// The sinks that are connected to a connection point. While a sink is being told an event, it may connect
/// and disconnect sinks, and may fail.
class SinkList {
 public:
  SinkList() = default;
  SinkList(const SinkList&) = delete;
  SinkList& operator=(const SinkList&) = delete;
  ~SinkList() { clear(); }

  /// Takes over the caller's reference to `sink`. Returns the cookie of the connection.
  std::uint32_t connect(HyDispatch* sink);
  /// False when no connection has that cookie.
  bool disconnect(std::uint32_t cookie);
  void clear();
  /// Each with a reference for the caller.
  std::vector<HyConnectData> connections() const;

  /// Calls an event on every sink; `arguments` stand last one first.
  void tell(std::int32_t event, HyVariant* arguments, std::uint32_t count);

 private:
  struct Connection {
    std::uint32_t Cookie;
    HyDispatch* Sink;
  };
  bool isConnected(std::uint32_t cookie) const;

  std::vector<Connection> connections_;
  std::uint32_t lastCookie_ = 0;
};

/// A listener that passes the events of a logger on to `sinks`, and the progress of its downloads to
/// `hostSinks` unless that is null.
std::shared_ptr<LoggerEvents> makeListener(const std::shared_ptr<SinkList>& sinks,
                                           const std::shared_ptr<SinkList>& hostSinks);

}  // namespace hy_wristlog::component
