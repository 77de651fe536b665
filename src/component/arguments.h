#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "component/members.h"

namespace hy_wristlog::component {

/// What a call brings, in the order of the parameters.
class Arguments {
 public:
  static constexpr std::size_t Most = MostParameters;

  /// Refuses counts and names that the member does not have, and required arguments that are missing.
  void sort(const HyDispParams& params, const Member& member);
  /// For a property's new value, the call's one argument, under its name.
  void sortNewValue(const HyDispParams& params);

  /// Null when the argument is missing. What is refused from here on is refused for its sake.
  HyVariant* take(std::size_t parameter) {
    inHand_ = places_[parameter];
    return arguments_[parameter];
  }

  Way wayOf(std::size_t parameter) const { return parameters_[parameter].Direction; }

  /// Where the refused argument stands among those of the call; -1 when none is to blame.
  std::int64_t atFault() const { return inHand_; }

 private:
  void place(const HyDispParams& params, std::uint32_t index, std::size_t parameter);

  std::span<const Parameter> parameters_;
  std::array<HyVariant*, Most> arguments_{};
  std::array<std::int64_t, Most> places_{};
  std::int64_t inHand_ = -1;
};

}  // namespace hy_wristlog::component
