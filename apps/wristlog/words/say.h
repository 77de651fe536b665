#pragma once

#include <concepts>
#include <iosfwd>
#include <string_view>

namespace wristlog {

/// Words for people on a standard stream. String literals are the program's own: they go out as they stand,
/// with their line ends. Every other text may come from a logger, a file or a name: it stays in its line, and
/// nothing in it commands the terminal.
class Speech {
 public:
  explicit Speech(std::ostream& out) : out_(&out) {}

  template <std::size_t Size>
  const Speech& operator<<(const char (&own)[Size]) const {
    return put({own, Size - 1});
  }
  template <std::size_t Size>
  const Speech& operator<<(char (&buffer)[Size]) const = delete;
  const Speech& operator<<(std::string_view foreign) const;
  template <std::integral Number>
  const Speech& operator<<(Number number) const {
    if constexpr (std::same_as<Number, char>)
      return put({&number, 1});
    else
      return putNumber(static_cast<long long>(number));
  }
  /// A text with lines of its own, and a line end behind it; each line after the first begins with `margin`,
  /// so that none passes for a line of the program.
  const Speech& lines(std::string_view foreign, std::string_view margin) const;
  /// What `safeText` makes of it, with its line ends.
  const Speech& traffic(std::string_view foreign) const;
  void flush() const;

 private:
  const Speech& put(std::string_view text) const;
  const Speech& putNumber(long long number) const;

  std::ostream* out_;
};

/// On standard output, and on standard error.
Speech say();
Speech complain();

/// A document for programs on standard output, as it is.
void printDocument(std::string_view document);

/// False when something did not go out.
bool flushStandardOutput();

}  // namespace wristlog

// What is printed goes through the functions above: nothing else can be forgotten to be made safe.
#include <iostream>
#pragma GCC poison cout cerr clog
