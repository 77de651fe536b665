#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Inputs that are scripts: an instruction a line, words with blanks between them. Any text is a script; a
/// target passes over lines that it does not know.
namespace hy_wristlog::fuzz {

class Line {
 public:
  explicit Line(std::string_view text);
  /// Empty after the last word.
  std::string_view word(std::size_t index) const {
    return index < words_.size() ? words_[index] : std::string_view{};
  }
  std::size_t words() const { return words_.size(); }
  bool is(std::string_view name) const { return word(0) == name; }
  /// `otherwise` when there is no number.
  std::int64_t number(std::size_t index, std::int64_t otherwise = 0) const;
  /// The same within bounds.
  std::int64_t number(std::size_t index, std::int64_t least, std::int64_t most) const;
  double real(std::size_t index) const;
  /// All after the first word and the blank that ends it, "\r", "\n", "\\" and "\x1B" standing for bytes.
  std::string text() const;
  /// The bytes of the second word's pairs of hexadecimal digits.
  std::vector<std::uint8_t> bytes() const;

 private:
  std::string_view all_;
  std::vector<std::string_view> words_;
};

std::vector<Line> linesOf(std::string_view script);

/// The lines that the mutator of a target may put in: "#" in them stands for a number.
extern const std::span<const std::string_view> Grammar;

/// Numbers that look like those of a recording; the same for the same seed.
class Values {
 public:
  explicit Values(std::int64_t seed) : state_(static_cast<std::uint64_t>(seed) * 2654435769U + 1) {}
  std::uint32_t below(std::uint32_t bound) {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return static_cast<std::uint32_t>(state_ >> 33) % bound;
  }
  std::uint8_t byte() { return static_cast<std::uint8_t>(below(256)); }

 private:
  std::uint64_t state_;
};

}  // namespace hy_wristlog::fuzz
