#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace hy_wristlog {

/// UTF-8 text without a limit to what is appended. Beyond `most` bytes only its beginning and its end are
/// kept, and a line between them says how much was left out.
class KeptText {
 public:
  explicit KeptText(std::size_t most) : most_(most) {}

  void append(std::string_view text);
  void clear();
  const std::string& text() const { return text_; }

 private:
  /// The first place from `at` on where a character begins.
  std::size_t characterAt(std::size_t at) const;

  std::size_t most_;
  std::string text_;
  std::size_t head_ = 0, word_ = 0, leftOut_ = 0;  ///< the line on what was left out follows the head
};

}  // namespace hy_wristlog
