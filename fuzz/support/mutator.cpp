// Mutates scripts by their lines, so that what comes out is a script again: lines of the grammar come in,
// lines go, move and come twice, numbers change. Every few times the bytes of a line are left to the fuzzer's
// own mutations.
#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/script.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace hy_wristlog::fuzz {
namespace {

using Random = std::minstd_rand;
using Lines = std::vector<std::string>;

std::size_t below(Random& random, std::size_t bound) { return bound == 0 ? 0 : random() % bound; }

Lines split(std::string_view script) {
  Lines lines;
  while (!script.empty()) {
    const auto end = std::min(script.find('\n'), script.size());
    lines.emplace_back(script.substr(0, end));
    script.remove_prefix(std::min(end + 1, script.size()));
  }
  return lines;
}

std::size_t put(const Lines& lines, std::uint8_t* data, std::size_t most) {
  std::string script;
  for (const std::string& line : lines) script.append(line).append("\n");
  const std::size_t size = std::min(script.size(), most);
  std::memcpy(data, script.data(), size);
  return size;
}

std::string anyNumber(Random& random) {
  static constexpr std::int64_t Telling[] = {
      0,    1,     2,     3,     8,     15,    16,     30,         60,          127,
      128,  250,   253,   254,   255,   256,   300,    1000,       3600,        4000,
      4096, 32767, 32768, 65535, 65536, 86400, 172800, 2147483647, -2147483648, -1};
  switch (random() % 4) {
    case 0:
      return std::to_string(Telling[below(random, std::size(Telling))]);
    case 1:
      return std::to_string(static_cast<std::int32_t>(random()));
    case 2:
      return std::to_string(below(random, 5000));
    default:
      return std::to_string(below(random, 256));
  }
}

std::string newLine(Random& random) {
  std::string line;
  for (const char c : Grammar[below(random, Grammar.size())])
    c == '#' ? line += anyNumber(random) : line += c;
  return line;
}

void changeNumber(std::string& line, Random& random) {
  constexpr std::string_view Digits = "-0123456789";
  const std::size_t from = line.find_first_of(Digits, below(random, line.size()));
  if (from == line.npos) return;
  const std::size_t end = std::min(line.find_first_not_of(Digits, from + 1), line.size());
  std::int64_t value = 0;
  std::from_chars(line.data() + from, line.data() + end, value);
  // Not beyond what a later change could still add to.
  value %= std::int64_t{1} << 60;
  const std::string changed[] = {std::to_string(value + 1), std::to_string(value - 1),
                                 std::to_string(value * 2), anyNumber(random)};
  line.replace(from, end - from, changed[below(random, std::size(changed))]);
}

void changeBytes(std::string& line, Random& random) {
  const std::size_t size = line.size();
  line.resize(size + 1 + below(random, 32));
  line.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(line.data()), size, line.size()));
}

void mutate(Lines& lines, Random& random) {
  const auto at = [&](std::size_t index) { return lines.begin() + static_cast<std::ptrdiff_t>(index); };
  const std::size_t where = below(random, lines.size());
  const std::uint32_t kind = random() % 12;
  if (lines.empty() || kind < 3) {
    lines.insert(at(below(random, lines.size() + 1)), newLine(random));
  } else if (kind < 7) {
    changeNumber(lines[where], random);
  } else if (kind == 7) {
    lines.erase(at(where));
  } else if (kind == 8) {
    std::swap(lines[where], lines[below(random, lines.size())]);
  } else if (kind == 9) {
    const std::size_t count = 1 + below(random, std::min<std::size_t>(8, lines.size() - where));
    const Lines again(at(where), at(where + count));
    lines.insert(at(below(random, lines.size() + 1)), again.begin(), again.end());
  } else if (kind == 10) {
    lines[where] = newLine(random);
  } else {
    changeBytes(lines[where], random);
  }
}

}  // namespace
}  // namespace hy_wristlog::fuzz

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed) {
  using namespace hy_wristlog::fuzz;
  Random random(seed);
  if (random() % 32 == 0) return LLVMFuzzerMutate(data, size, most);
  Lines lines = split({reinterpret_cast<const char*>(data), size});
  for (std::size_t i = 1 + below(random, 4); i > 0; --i) mutate(lines, random);
  return put(lines, data, most);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* first, std::size_t firstSize,
                                                 const std::uint8_t* second, std::size_t secondSize,
                                                 std::uint8_t* out, std::size_t most, unsigned seed) {
  using namespace hy_wristlog::fuzz;
  Random random(seed);
  Lines lines = split({reinterpret_cast<const char*>(first), firstSize});
  const Lines others = split({reinterpret_cast<const char*>(second), secondSize});
  lines.resize(below(random, lines.size() + 1));
  lines.insert(lines.end(), others.begin() + static_cast<std::ptrdiff_t>(below(random, others.size() + 1)),
               others.end());
  return put(lines, out, most);
}
