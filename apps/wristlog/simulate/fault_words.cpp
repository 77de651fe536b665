#include "simulate/fault_words.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <stdexcept>
#include <string_view>

#include "simulator/named_faults.h"

namespace wristlog {

namespace sim = hy_wristlog::simulator;

namespace {

constexpr std::string_view Always = "always";

std::int32_t countIn(std::string_view text, const std::string& whole) {
  std::int32_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc{} || end != text.data() + text.size() || count < 0)
    throw std::invalid_argument("\"" + whole + "\": \"" + std::string(text) +
                                "\" is no count; write lose-echo@3x2 to lose the fourth and the fifth");
  return count;
}

sim::Fault occurrencesIn(std::string_view counts, const std::string& whole) {
  if (counts.empty()) return sim::once();
  counts.remove_prefix(1);
  const std::size_t x = counts.find('x');
  sim::Fault when = sim::once(countIn(counts.substr(0, x), whole));
  if (x == counts.npos) return when;
  const std::string_view times = counts.substr(x + 1);
  when.Times = times == Always ? sim::Fault::Always : countIn(times, whole);
  return when;
}

const sim::NamedFault* find(const std::string& name) {
  const auto faults = sim::namedFaults();
  const auto found = std::ranges::find(faults, name, &sim::NamedFault::Name);
  return found != faults.end() ? &*found : nullptr;
}

}  // namespace

void setFault(const sim::ModelBench& bench, const std::string& text) {
  const std::size_t equals = std::min(text.find('='), text.size()), at = std::min(text.find('@'), equals);
  std::string name = text.substr(0, at);
  std::ranges::replace(name, '-', ' ');
  const sim::NamedFault* const known = find(name);
  if (at < equals && known != nullptr && known->Counts.empty())
    throw std::invalid_argument("\"" + text +
                                "\": this fault counts nothing, so leave out what begins with @");
  sim::setNamedFault(bench, name, occurrencesIn(std::string_view(text).substr(at, equals - at), text),
                     std::string_view(text).substr(std::min(equals + 1, text.size())));
}

std::string faultList() {
  constexpr std::size_t Width = 26;
  std::string list;
  for (const sim::NamedFault& fault : sim::namedFaults()) {
    std::string name{fault.Name}, words{fault.Counts};
    std::ranges::replace(name, ' ', '-');
    if (!fault.Argument.empty()) name += "=" + std::string(fault.Argument);
    name.resize(std::max(Width, name.size() + 1), ' ');
    words += (words.empty() ? "" : " ") + std::string(fault.Words);
    words.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(words.front())));
    list.append("  ").append(name).append(words);
    if (!fault.ForVarden || !fault.ForPendrel) list += fault.ForVarden ? " (not Pendrel)" : " (Pendrel)";
    list += '\n';
  }
  return list;
}

}  // namespace wristlog
