#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "component/members.h"

namespace hy_wristlog::component {

/// Who is connected to a connection point. Sinks may connect, disconnect and fail while they are told.
class SinkList {
 public:
  SinkList() = default;
  SinkList(const SinkList&) = delete;
  SinkList& operator=(const SinkList&) = delete;
  ~SinkList() { clear(); }

  /// Takes over the reference of `sink`.
  std::uint32_t connect(HyDispatch* sink);
  /// False when nothing is connected under that number.
  bool disconnect(std::uint32_t cookie);
  void clear();
  /// With a reference to each.
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

/// Tells sinks what a logger tells, and `hostSinks`, unless null, how far its downloads have come.
std::shared_ptr<LoggerEvents> makeListener(const std::shared_ptr<SinkList>& sinks,
                                           const std::shared_ptr<SinkList>& hostSinks);

}  // namespace hy_wristlog::component
