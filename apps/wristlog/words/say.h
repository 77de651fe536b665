#pragma once

#include <concepts>
#include <iosfwd>
#include <string_view>

namespace wristlog {

/// Words for people on a standard stream. String literals are the program's own and are written as they are,
/// with their line ends. Every other text may come from a logger, a file or a name: it is kept inside its
/// line and cannot command the terminal.
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
  /// Writes a text of several lines and a line end after it. Each line after the first begins with `margin`,
  /// so that it cannot be taken for a line of the program.
  const Speech& lines(std::string_view foreign, std::string_view margin) const;
  /// Writes what `safeText` makes of it, with its line ends.
  const Speech& traffic(std::string_view foreign) const;
  void flush() const;

 private:
  const Speech& put(std::string_view text) const;
  const Speech& putNumber(long long number) const;

  std::ostream* out_;
};

/// Standard output, and standard error.
Speech say();
Speech complain();

/// As long as it lives, what the calling thread says and complains goes there instead.
class SpeechCaught {
 public:
  explicit SpeechCaught(std::ostream& into);
  ~SpeechCaught();
  SpeechCaught(const SpeechCaught&) = delete;
  SpeechCaught& operator=(const SpeechCaught&) = delete;

 private:
  std::ostream* former_;
};

/// Writes a document for programs to standard output, as it is, with a line end.
void printDocument(std::string_view document);
/// Writes a piece of a text for programs there, as it is.
void printText(std::string_view text);

/// False when something could not be written.
bool flushStandardOutput();

}  // namespace wristlog

// Everything must be printed through the functions above, which make it safe.
#include <iostream>
#pragma GCC poison cout cerr clog
