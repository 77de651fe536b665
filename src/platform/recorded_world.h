#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hy_wristlog/api.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"

namespace hy_wristlog::platform {

/// A device of a list as it answered; errors are those of SystemError, 0 for none.
struct ListedDevice {
  std::int32_t InfoError = 0, IdError = 0, NameError = 0;
  std::string HardwareId, FriendlyName;
  std::vector<std::string> Names;
};

struct ListedDevices {
  std::int32_t Error = 0;  ///< of asking for the list
  std::vector<ListedDevice> Devices;
  std::int32_t EndError = 0;  ///< of asking past the last device
};

/// A list that answers as `listed`. Raises SystemError when the list itself was refused.
std::unique_ptr<DeviceList> deviceListOf(const ListedDevices& listed);

/// What the program does at a port stands before `Received`; what comes to it, from there on.
enum class WireKind : std::uint8_t {
  Open,       ///< `Number`, `Delay`; a refusal in `Trouble`
  Configure,  ///< `Settings`
  Sent,       ///< `Bytes` that the port has accepted
  Dtr,        ///< `On`
  Rts,        ///< `On`
  Discard,
  Close,
  Received,  ///< `Bytes` as the program took them
  Lines,     ///< `Lines`, as seen first and whenever they had changed
  Errors,    ///< `Errors` that were taken, not all 0
  Gone,      ///< the port raised `Trouble`, and does so from now on
  Stop,      ///< the user asked to stop
  Devices,   ///< the device class `Text` listed `Devices`
  Random     ///< `Bytes` that the world drew
};

constexpr bool isSaid(WireKind kind) { return kind < WireKind::Received; }

struct WireEvent {
  WireKind Kind = WireKind::Open;
  double Time = 0;        ///< seconds since the record began
  double Empty = -1;      ///< of what was received: when the program had last found nothing there; -1: never
  std::int32_t Link = 0;  ///< which opening of a port it belongs to, counted from 1; 0 for none
  std::int32_t Number = 0;
  std::chrono::microseconds
      Delay{};  ///< by which answers are longer under way than at a port of this machine
  LineSettings Settings{};
  ModemLines Lines{};
  LineErrors Errors{};
  bool On = false;
  std::vector<std::uint8_t> Bytes{};
  std::string Text{};
  ListedDevices Devices{};
  std::optional<Failure> Trouble{};
};

class WireSink {
 public:
  WireSink() = default;
  WireSink(const WireSink&) = delete;
  WireSink& operator=(const WireSink&) = delete;
  virtual ~WireSink() = default;
  /// Must not raise anything: a session goes on without its record.
  virtual void take(const WireEvent& event) noexcept = 0;
};

/// A world that is `world`, but tells `sink` what crosses the seam at its ports. Times count from `began` on
/// the world's timer. A port may outlive it.
std::shared_ptr<Platform> makeRecordedWorld(const std::shared_ptr<Platform>& world,
                                            const std::shared_ptr<WireSink>& sink, double began);

}  // namespace hy_wristlog::platform
