#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/timeline.h"

namespace hy_wristlog::simulator {

/// Thrown for a text that is no saved state, or one that is damaged; `what` says which.
struct WrongState : std::runtime_error {
  using runtime_error::runtime_error;
};

/// The state of a simulated logger as text, to be kept in a file: a first line with the version of the
/// format, a line a value, and a checksum. Each part goes through its values once, with the same calls for
/// saving and for loading. Loading raises WrongState for a value that is missing or out of its range.
class SavedState {
 public:
  static constexpr Moment MostMoment{4'600'000'000'000'000'000};  ///< in the year 2115

  /// A state that is to be filled.
  SavedState() = default;
  /// A state that is to be loaded. Raises WrongState.
  explicit SavedState(std::string_view text);

  bool loading() const { return loading_; }
  std::string text() const;

  template <class Number>
  requires std::integral<Number> || std::is_enum_v<Number>
  void number(const char* name, Number& value, std::int64_t least, std::int64_t most) {
    auto wide = static_cast<std::int64_t>(value);
    pass(name, wide, least, most);
    value = static_cast<Number>(wide);
  }
  template <std::integral Number>
  void number(const char* name, Number& value) {
    number(name, value, std::int64_t{std::numeric_limits<Number>::min()},
           std::int64_t{std::numeric_limits<Number>::max()});
  }
  void flag(const char* name, bool& value) { number(name, value, 0, 1); }
  /// A number from `least` to `most` that need not be whole.
  void real(const char* name, double& value, double least, double most);
  void moment(const char* name, Moment& value);
  void text(const char* name, std::string& value, std::size_t longest);
  /// Exactly as many bytes as `value` has. Those at the end that are all `blank` take no room.
  void bytes(const char* name, std::vector<std::uint8_t>& value, std::uint8_t blank);
  /// Whether an alarm runs and when; loading sets it.
  void alarm(const char* name, Alarm& alarm);
  /// The checksum of a text up to its own line.
  static std::string sumOf(std::string_view text);
  /// Raises WrongState unless what was loaded fits together.
  void require(bool good, const char* name) const;

 private:
  void pass(const std::string& name, std::int64_t& value, std::int64_t least, std::int64_t most);
  const std::string& found(const std::string& name) const;
  void add(const std::string& name, std::string value);

  bool loading_ = false;
  std::vector<std::pair<std::string, std::string>> lines_;
  std::map<std::string, std::string, std::less<>> loaded_;
};

}  // namespace hy_wristlog::simulator
