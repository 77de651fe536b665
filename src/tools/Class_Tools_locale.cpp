#include <algorithm>

#include "base/ascii.h"
#include "base/code_page.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/paths.h"

namespace hy_wristlog {
namespace {

using platform::LocaleItem;

constexpr std::int32_t DecimalSeparatorItem = 14;
constexpr std::int32_t ShortDateItem = 31;
constexpr std::int32_t LongDateItem = 32;
constexpr std::int32_t TimeItem = 4099;

std::string infoOr(LocaleItem item, std::string_view whenNothing) {
  std::string info = platform::current().environment().localeInfo(item);
  return info.empty() ? std::string(whenNothing) : info;
}

/// Removes the seconds and the separator before them from a time pattern.
void removeSeconds(std::string& pattern) {
  const std::string upper = asciiUpper(pattern);
  for (const std::string_view seconds : {"SS", "S"}) {
    const auto found = upper.find(seconds);
    if (found == std::string::npos) continue;
    std::size_t start = found > 0 ? found - 1 : 0;
    while (start > 0 && (static_cast<unsigned char>(pattern[start]) & 0xC0U) == 0x80) --start;
    pattern.erase(start, found + seconds.size() - start);
    return;
  }
}

}  // namespace

std::string Class_Tools::fncGetSpecialFolderLocation(std::int64_t /*windowHandle*/, std::int32_t folderCode) {
  return fncTrimNull(platform::current().environment().specialFolder(folderCode));
}

std::string Class_Tools::fncGetUserLocaleInfo(std::int32_t /*locale*/, std::int32_t item) {
  platform::Environment& environment = platform::current().environment();
  switch (item) {
    case DecimalSeparatorItem:
      return environment.localeInfo(LocaleItem::DecimalSeparator);
    case ShortDateItem:
      return environment.localeInfo(LocaleItem::ShortDate);
    case LongDateItem:
      return environment.localeInfo(LocaleItem::LongDate);
    case TimeItem:
      return environment.localeInfo(LocaleItem::Time);
    default:
      return {};
  }
}

std::variant<std::string, std::int16_t> Class_Tools::fncGetLocaleDecimalSeparator(bool asCode) {
  std::string separator = infoOr(LocaleItem::DecimalSeparator, ".");
  if (!asCode) return separator;
  return static_cast<std::int16_t>(ansiFromUtf8(separator).front());
}

std::string Class_Tools::fncGetLocaleLongDateFormat() {
  std::string pattern = infoOr(LocaleItem::LongDate, "dddd, MMMM dd, yyyy");
  std::erase(pattern, '\'');
  return pattern;
}

std::string Class_Tools::fncGetLocaleShortDateFormat() { return infoOr(LocaleItem::ShortDate, "M/d/yyyy"); }

std::string Class_Tools::fncGetLocaleTimeFormat(bool ampm) {
  std::string pattern = infoOr(LocaleItem::Time, "Hh:Nn:Ss");
  if (const auto mark = pattern.find("tt"); ampm && mark != std::string::npos)
    pattern.replace(mark, 2, "AMPM");
  return pattern;
}

std::string Class_Tools::fncGetLocaleMediumTimeFormat() {
  std::string pattern = fncGetLocaleTimeFormat(true);
  removeSeconds(pattern);
  return pattern;
}

}  // namespace hy_wristlog
