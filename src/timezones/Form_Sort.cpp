#include "timezones/Form_Sort.h"

#include <algorithm>
#include <numeric>

namespace hy_wristlog {

std::vector<std::size_t> Form_Sort::subDisplay(const std::vector<std::string>& keys) const {
  std::vector<std::size_t> order(keys.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  return order;
}

}  // namespace hy_wristlog
