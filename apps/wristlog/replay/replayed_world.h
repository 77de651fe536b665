#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "replay/session_record.h"

namespace wristlog {

/// Where a program first says something else than it did in a record.
struct Difference {
  std::int64_t Byte = 0;  ///< of all that the program sent, counted from 0
  double Time = 0;        ///< seconds since the start
  std::string Recorded, Now;
};

class ReplayedLine;

/// A world in simulated time whose ports answer what was recorded when they hear what was recorded, with the
/// recorded delays. Once the program says something else they stay silent. Devices, random bytes, zone and
/// locale are the record's; what is read or written in files lies in a folder of the world's own, but what
/// the command writes lies in another.
class ReplayedWorld {
 public:
  /// `onStop` is called where the user asked to stop. Raises InvalidCall when this machine does not know the
  /// record's zone.
  ReplayedWorld(const SessionRecord& record, const std::string& folder, std::function<void()> onStop);
  ~ReplayedWorld();
  ReplayedWorld(const ReplayedWorld&) = delete;
  ReplayedWorld& operator=(const ReplayedWorld&) = delete;

  const std::shared_ptr<hy_wristlog::platform::Platform>& platform() const { return platform_; }
  /// Once the command has ended: what it said otherwise, or left unsaid.
  std::optional<Difference> difference() const;

 private:
  std::shared_ptr<ReplayedLine> line_;
  std::shared_ptr<hy_wristlog::platform::Platform> platform_;
};

}  // namespace wristlog
