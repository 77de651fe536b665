#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "component/members.h"

namespace hy_wristlog::component {

/// The arguments of one call, in the order of the parameters.
class Arguments {
 public:
  static constexpr std::size_t Most = MostParameters;

  /// Takes the arguments of a method, or of reading a property. Refuses counts and names that the member does
  /// not have, and required arguments that are missing.
  void sort(const HyDispParams& params, const Member& member);
  /// Takes the new value of a property: the one argument of the call, which must be named
  /// HY_DISPID_PROPERTYPUT.
  void sortNewValue(const HyDispParams& params);

  /// Null when the argument is missing.
  HyVariant* at(std::size_t parameter) const { return arguments_[parameter]; }
  Way wayOf(std::size_t parameter) const { return parameters_[parameter].Direction; }

  /// If the call is refused after this, it is because of this argument.
  void blame(std::size_t parameter) { blamed_ = places_[parameter]; }
  /// The index of the blamed argument among those of the call; -1 when none is to blame.
  std::int64_t blamed() const { return blamed_; }

 private:
  void place(const HyDispParams& params, std::uint32_t index, std::size_t parameter);

  std::span<const Parameter> parameters_;
  std::array<HyVariant*, Most> arguments_{};
  std::array<std::int64_t, Most> places_{};
  std::int64_t blamed_ = -1;
};

}  // namespace hy_wristlog::component
