#include "platform/linux/locale_patterns.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include "base/ascii.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::string_view NoBreakSpace = "\u00A0", ArabicComma = "\u060C";

enum class PieceKind : std::uint8_t { Literal, Date, Time };

struct Piece {
  PieceKind Kind;
  std::string Text;
};

struct Directive {
  char Letter;
  PieceKind Kind;
  std::string_view Pattern;
};

constexpr std::array<Directive, 25> Directives{{
    {'d', PieceKind::Date, "dd"},         {'e', PieceKind::Date, "d"},
    {'m', PieceKind::Date, "MM"},         {'b', PieceKind::Date, "MMM"},
    {'h', PieceKind::Date, "MMM"},        {'B', PieceKind::Date, "MMMM"},
    {'y', PieceKind::Date, "yy"},         {'Y', PieceKind::Date, "yyyy"},
    {'a', PieceKind::Date, "ddd"},        {'A', PieceKind::Date, "dddd"},
    {'D', PieceKind::Date, "MM/dd/yy"},   {'F', PieceKind::Date, "yyyy-MM-dd"},
    {'H', PieceKind::Time, "Hh"},         {'k', PieceKind::Time, "H"},
    {'I', PieceKind::Time, "h"},          {'l', PieceKind::Time, "h"},
    {'M', PieceKind::Time, "Nn"},         {'S', PieceKind::Time, "Ss"},
    {'p', PieceKind::Time, "tt"},         {'P', PieceKind::Time, "tt"},
    {'r', PieceKind::Time, "h:Nn:Ss tt"}, {'T', PieceKind::Time, "Hh:Nn:Ss"},
    {'R', PieceKind::Time, "Hh:Nn"},      {'X', PieceKind::Time, "Hh:Nn:Ss"},
    {'Z', PieceKind::Time, ""},
}};

const Directive* findDirective(char letter) {
  for (const Directive& directive : Directives)
    if (directive.Letter == letter) return &directive;
  return nullptr;
}

bool isAsciiLetter(char c) { return asciiUpper(c) >= 'A' && asciiUpper(c) <= 'Z'; }

std::vector<Piece> piecesOf(std::string_view format) {
  std::vector<Piece> pieces;
  const auto literal = [&](char c) {
    if (pieces.empty() || pieces.back().Kind != PieceKind::Literal)
      pieces.push_back({PieceKind::Literal, {}});
    if (isAsciiLetter(c) || c == '\\' || c == '"' || c == '\'') pieces.back().Text += '\\';
    pieces.back().Text += c;
  };
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format.substr(i).starts_with(NoBreakSpace)) {
      literal(' ');
      i += NoBreakSpace.size() - 1;
      continue;
    }
    if (format[i] != '%') {
      literal(format[i]);
      continue;
    }
    bool padded = true;
    for (++i; i < format.size(); ++i) {
      if (format[i] == '-') padded = false;
      if (std::string_view{"-_0^#EO123456789"}.find(format[i]) == std::string_view::npos) break;
    }
    if (i == format.size()) break;
    if (format[i] == '%') literal('%');
    if (format[i] == 'n' || format[i] == 't') literal(' ');
    if (const Directive* directive = findDirective(format[i])) {
      std::string text{directive->Pattern};
      if (!padded && text.size() == 2 && format[i] != 'y' && format[i] != 'p') text.pop_back();
      pieces.push_back({directive->Kind, text});
    }
  }
  return pieces;
}

/// The pieces from the first to the last of `kind`, without those of the other kind between them, and
/// the text glued to the last one (the "日" after a day).
std::string joined(const std::vector<Piece>& pieces, PieceKind kind) {
  std::size_t first = 0, end = 0;
  for (std::size_t i = pieces.size(); i-- > 0;)
    if (pieces[i].Kind == kind && !pieces[i].Text.empty()) {
      first = i;
      if (end == 0) end = i + 1;
    }
  if (end == 0) return {};
  std::string result, between;
  for (std::size_t i = first; i < end; ++i) {
    if (pieces[i].Kind == PieceKind::Literal) {
      between = pieces[i].Text;
    } else if (pieces[i].Kind == kind && !pieces[i].Text.empty()) {
      if (i != first) result += between;
      between.clear();
      result += pieces[i].Text;
    }
  }
  if (end < pieces.size() && pieces[end].Kind == PieceKind::Literal) {
    const std::string& tail = pieces[end].Text;
    result += tail.substr(0, std::min(tail.find_first_of(" ,-"), tail.find(ArabicComma)));
  }
  return result;
}

std::string toUtf8(const std::string& text, const char* codeset) {
  if (std::string_view{codeset} == "UTF-8" || std::string_view{codeset} == "ANSI_X3.4-1968") return text;
  const iconv_t converter = ::iconv_open("UTF-8", codeset);
  if (reinterpret_cast<std::intptr_t>(converter) == -1) return {};
  std::string input = text, output(text.size() * 6 + 16, '\0');
  char* from = input.data();
  char* into = output.data();
  std::size_t left = input.size(), room = output.size();
  const bool failed = ::iconv(converter, &from, &left, &into, &room) == static_cast<std::size_t>(-1);
  ::iconv_close(converter);
  if (failed) return {};
  output.resize(output.size() - room);
  return output;
}

class UserLocale {
 public:
  explicit UserLocale(int category, int mask) : locale_(::newlocale(mask | LC_CTYPE_MASK, "", locale_t{})) {
    if (locale_ == locale_t{}) return;
    const std::string_view name = ::nl_langinfo_l(_NL_LOCALE_NAME(category), locale_);
    says_ = !name.empty() && name != "C" && name != "POSIX" && !name.starts_with("C.");
  }
  UserLocale(const UserLocale&) = delete;
  UserLocale& operator=(const UserLocale&) = delete;
  ~UserLocale() {
    if (locale_ != locale_t{}) ::freelocale(locale_);
  }

  std::string text(nl_item item) const {
    if (!says_) return {};
    return toUtf8(::nl_langinfo_l(item, locale_), ::nl_langinfo_l(CODESET, locale_));
  }

 private:
  locale_t locale_;
  bool says_ = false;
};

/// A format of the locale with the locale's own formats inside it written out.
std::string fullFormat(const UserLocale& locale, nl_item item) {
  std::string format = locale.text(item);
  for (const auto& [directive, inner] : {std::pair{"%x", D_FMT}, {"%X", T_FMT}, {"%r", T_FMT_AMPM}}) {
    const auto at = format.find(directive);
    const std::string text = at != std::string::npos ? locale.text(inner) : std::string{};
    if (!text.empty()) format.replace(at, 2, text);
  }
  return format;
}

}  // namespace

std::string datePatternFromStrftime(std::string_view format) {
  return joined(piecesOf(format), PieceKind::Date);
}

std::string timePatternFromStrftime(std::string_view format) {
  return joined(piecesOf(format), PieceKind::Time);
}

std::string localePattern(LocaleItem item) {
  const auto format = [](nl_item pattern) { return fullFormat(UserLocale{LC_TIME, LC_TIME_MASK}, pattern); };
  switch (item) {
    case LocaleItem::DecimalSeparator:
      return UserLocale{LC_NUMERIC, LC_NUMERIC_MASK}.text(RADIXCHAR);
    case LocaleItem::ShortDate:
      return datePatternFromStrftime(format(D_FMT));
    case LocaleItem::LongDate:
      return datePatternFromStrftime(format(D_T_FMT));
    case LocaleItem::Time:
      return timePatternFromStrftime(format(T_FMT));
  }
  return {};
}

}  // namespace hy_wristlog::platform
