#include "support/fuzz.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace hy_wristlog::fuzz {
namespace {

constexpr std::array NamedNumbers{
#define HY_FAILURE_NUMBER(name, number) number,
#include "hy_wristlog/failure_numbers.inc"
};

struct Reach {
  std::int64_t Inputs = 0, Most = 0, Sum = 0;
};

struct Reaches {
  Reaches() = default;
  Reaches(const Reaches&) = delete;
  Reaches& operator=(const Reaches&) = delete;
  ~Reaches() {
    for (const auto& [what, reach] : Of)
      std::fprintf(stderr, "reached %s: %lld at most, %lld in %lld inputs\n", what.c_str(),
                   static_cast<long long>(reach.Most), static_cast<long long>(reach.Sum),
                   static_cast<long long>(reach.Inputs));
  }
  std::map<std::string, Reach> Of;
};

}  // namespace

void finding(const std::string& what) {
  std::fprintf(stderr, "finding: %s\n", what.c_str());
  std::abort();
}

bool isNamed(std::int32_t number) {
  return std::find(NamedNumbers.begin(), NamedNumbers.end(), number) != NamedNumbers.end();
}

void reached(const char* what, std::int64_t count) {
  static Reaches reaches;
  if (count == 0) return;
  Reach& reach = reaches.Of[what];
  ++reach.Inputs;
  reach.Sum += count;
  reach.Most = std::max(reach.Most, count);
}

}  // namespace hy_wristlog::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  hy_wristlog::fuzz::run({reinterpret_cast<const char*>(data), size});
  return 0;
}
