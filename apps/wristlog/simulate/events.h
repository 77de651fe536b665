#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "recording/json.h"
#include "simulator/timeline.h"

namespace wristlog {

/// Tells what happens to a served logger: a line each, or a JSON document each.
class ServedEvents {
 public:
  explicit ServedEvents(bool asJson) : asJson_(asJson) {}

  bool asJson() const { return asJson_; }
  /// `event` is its name for programs, `words` a sentence for people, `facts` an object of what else programs
  /// may want. `now` is the logger's time.
  void tell(hy_wristlog::simulator::Moment now, std::string_view event, const Json& facts,
            const std::string& words) const;

 private:
  bool asJson_;
};

/// A moment of the simulated time in UTC, as ISO 8601 with "Z" behind it.
std::string isoUtc(hy_wristlog::simulator::Moment moment);

}  // namespace wristlog
