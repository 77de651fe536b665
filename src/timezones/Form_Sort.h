#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hy_wristlog {

/// Puts texts in order. In spite of its name it has no window.
class Form_Sort {
 public:
  /// The indices of `keys` in the ascending order of their bytes; equal keys keep their order.
  std::vector<std::size_t> subDisplay(const std::vector<std::string>& keys) const;
};

}  // namespace hy_wristlog
