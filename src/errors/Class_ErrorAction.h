#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "errors/Class_ErrorRecord.h"

namespace hy_wristlog {

/// Stands for any module, procedure or number in an action.
inline constexpr std::string_view Generic = "Generic";

/// The answer to a failure of one number in one procedure.
struct Class_ErrorAction {
  std::string CustomMessageText;
  std::int16_t ProcErrorCountLimit = -1;  ///< -1 means 2
  std::string ErrorModule;
  std::string ErrorProcedure;
  std::variant<std::int32_t, std::string> ErrorNumber;  ///< a number or "Generic"
  std::int32_t ErrorAction = 0;
  bool ShowMessageBox = false;
  bool LogError = false;

  bool hasNumber(std::int32_t number) const {
    const auto* own = std::get_if<std::int32_t>(&ErrorNumber);
    return own != nullptr && *own == number;
  }
  bool hasGenericNumber() const {
    const auto* own = std::get_if<std::string>(&ErrorNumber);
    return own != nullptr && *own == Generic;
  }
};

}  // namespace hy_wristlog
