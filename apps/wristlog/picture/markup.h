#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Text for SVG and HTML.
namespace wristlog::picture {

/// Any UTF-8 as character data or an attribute's value of XML 1.0 and HTML: `& < > " '` as references, what
/// XML cannot hold (control characters, surrogates, U+FFFE, U+FFFF, malformed sequences) as U+FFFD.
std::string escaped(std::string_view text);

/// A number with at most `decimals` decimals and no trailing zeros; the point is "." whatever the locale.
std::string number(double value, int decimals = 1);
/// Words that begin with a small letter of ASCII, with a capital.
std::string capital(std::string words);
/// Appends tenths as a number: 125 gives "12.5".
void appendTenths(std::string& text, std::int64_t tenths);

}  // namespace wristlog::picture
