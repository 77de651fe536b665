#pragma once

#include <string>
#include <string_view>

#include "base/ascii.h"
#include "hy_wristlog/enumerations.h"
#include "platform/platform.h"

/// The docks of the Varden loggers, as they tell themselves by USB.
namespace hy_wristlog::dock_products {

inline constexpr const char* VendorID = "5245";

struct DockProduct {
  const char* ProductID;
  enmDeviceType Type;
  const char* Class;  ///< of the device interface
};
inline constexpr DockProduct Quillander{"4000", KR_QUILLANDER, platform::ComPortClass};
inline constexpr DockProduct TolkaFirst{"4001", KR_TOLKA, platform::UsbDeviceClass};
inline constexpr DockProduct TolkaSecond{"4002", KR_TOLKA, platform::ComPortClass};
inline constexpr DockProduct All[] = {Quillander, TolkaFirst, TolkaSecond};

inline bool isOf(const DockProduct& product, std::string_view hardwareId) {
  const std::string identifier = asciiUpper(std::string(cutAtNul(hardwareId)));
  return identifier.find(VendorID) != std::string::npos &&
         identifier.find(product.ProductID) != std::string::npos;
}

}  // namespace hy_wristlog::dock_products
