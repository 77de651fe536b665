#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace hy_wristlog {

/// Remembers the texts of numbers. The values of a recording come again and again, and looking a text up
/// takes a tenth of the time of making it.
class TextMemo {
 public:
  /// Appends the text of a number of four bytes. `make` appends it when it is not remembered.
  template <class Number, class Make>
  void append(std::string& text, Number number, const Make& make) {
    const auto key = std::bit_cast<std::uint32_t>(number);
    Entry& entry = entries_[key * Scatter >> (32 - Bits)];
    if (entry.Length > 0 && entry.Key == key) {
      text.append(entry.Text.data(), entry.Length);
      return;
    }
    const std::size_t start = text.size();
    make(text, number);
    const std::size_t length = text.size() - start;
    if (length > entry.Text.size()) return;
    entry.Key = key;
    entry.Length = static_cast<std::uint8_t>(length);
    std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(start), length, entry.Text.begin());
  }

 private:
  static constexpr int Bits = 11;
  static constexpr std::uint32_t Scatter = 2654435769U;

  struct Entry {
    std::uint32_t Key = 0;
    std::uint8_t Length = 0;
    std::array<char, 43> Text{};  ///< room for the longest text of a single with one decimal
  };

  std::vector<Entry> entries_ = std::vector<Entry>(std::size_t{1} << Bits);
};

}  // namespace hy_wristlog
