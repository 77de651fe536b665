#include "support/script.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace hy_wristlog::fuzz {
namespace {

int digitOf(char c) {
  int value = 16;
  std::from_chars(&c, &c + 1, value, 16);
  return value;
}

}  // namespace

Line::Line(std::string_view text) : all_(text) {
  while (!text.empty()) {
    const auto end = std::min(text.find(' '), text.size());
    if (end > 0) words_.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

std::int64_t Line::number(std::size_t index, std::int64_t otherwise) const {
  const std::string_view digits = word(index);
  std::int64_t value = otherwise;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return value;
}

std::int64_t Line::number(std::size_t index, std::int64_t least, std::int64_t most) const {
  return std::clamp(number(index, least), least, most);
}

double Line::real(std::size_t index) const { return std::strtod(std::string(word(index)).c_str(), nullptr); }

std::string Line::text() const {
  std::string_view rest = all_.substr(std::min(all_.find(' ', all_.find_first_not_of(' ')), all_.size()));
  if (!rest.empty()) rest.remove_prefix(1);
  std::string result;
  for (; !rest.empty(); rest.remove_prefix(1)) {
    const char escape = rest.size() > 1 && rest[0] == '\\' ? rest[1] : '\0';
    const bool isByte = escape == 'x' && rest.size() > 3 && digitOf(rest[2]) < 16 && digitOf(rest[3]) < 16;
    if (isByte)
      result += static_cast<char>(digitOf(rest[2]) * 16 + digitOf(rest[3]));
    else
      result += escape == 'r' ? '\r' : escape == 'n' ? '\n' : rest[0];
    if (isByte)
      rest.remove_prefix(3);
    else if (escape == 'r' || escape == 'n' || escape == '\\')
      rest.remove_prefix(1);
  }
  return result;
}

std::vector<std::uint8_t> Line::bytes() const {
  const std::string_view digits = word(1);
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i + 1 < digits.size() && digitOf(digits[i]) < 16 && digitOf(digits[i + 1]) < 16;
       i += 2)
    bytes.push_back(static_cast<std::uint8_t>(digitOf(digits[i]) * 16 + digitOf(digits[i + 1])));
  return bytes;
}

std::vector<Line> linesOf(std::string_view script) {
  std::vector<Line> lines;
  while (!script.empty()) {
    const auto end = std::min(script.find('\n'), script.size());
    lines.emplace_back(script.substr(0, end));
    script.remove_prefix(std::min(end + 1, script.size()));
  }
  return lines;
}

}  // namespace hy_wristlog::fuzz
