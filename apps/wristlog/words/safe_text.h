#pragma once

#include <string>
#include <string_view>

namespace wristlog {

/// UTF-8 as characters that each take one cell of a terminal and cannot command it. Line ends (CR LF, CR, LF)
/// become "\n". A control character, or a byte that belongs to no character, is shown as "\x1B"; other
/// characters without a plain shape (direction marks, invisible blanks, wide characters) as "\u200F".
std::u16string visibleCharacters(std::string_view utf8);

std::string utf8Of(std::u16string_view characters);

/// The same as UTF-8.
inline std::string safeText(std::string_view utf8) { return utf8Of(visibleCharacters(utf8)); }

/// Text of any script for use inside a line. Whatever could command a terminal, begin a line or turn the
/// writing direction is shown as above; so are line ends.
std::string safeLine(std::string_view utf8);

}  // namespace wristlog
