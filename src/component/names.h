#pragma once

#include <cstdint>
#include <span>

#include "component/members.h"
#include "component/strings.h"

namespace hy_wristlog::component {

/// Finds the number of the member `names[0]` and the numbers of its arguments, the other names.
inline HyResult findNames(std::span<const Member> members, std::uint16_t** names, std::uint32_t count,
                          std::int32_t* ids) {
  if (names == nullptr || ids == nullptr) return HY_E_POINTER;
  if (count == 0) return HY_E_INVALIDARG;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (names[i] == nullptr) return HY_E_POINTER;
    ids[i] = HY_DISPID_UNKNOWN;
  }
  for (std::size_t m = 0; m < members.size(); ++m) {
    if (!isName(names[0], members[m].Name)) continue;
    ids[0] = static_cast<std::int32_t>(m) + 1;
    HyResult result = HY_S_OK;
    for (std::uint32_t i = 1; i < count; ++i) {
      const auto& parameters = members[m].Parameters;
      for (std::size_t p = 0; p < parameters.size(); ++p)
        if (isName(names[i], parameters[p].Name)) ids[i] = static_cast<std::int32_t>(p);
      if (ids[i] == HY_DISPID_UNKNOWN) result = HY_DISP_E_UNKNOWNNAME;
    }
    return result;
  }
  return HY_DISP_E_UNKNOWNNAME;
}

}  // namespace hy_wristlog::component
