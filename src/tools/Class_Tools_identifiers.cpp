#include <array>

#include "base/code_page.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"
#include "tools/guarded.h"

namespace hy_wristlog {

std::string Class_Tools::fncCreateGUID() {
  return guarded("fncCreateGUID", [] {
    std::array<std::uint8_t, 16> bytes{};
    platform::current().cryptography().randomBytes(bytes);
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0FU) | 0x40U);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3FU) | 0x80U);
    return fncConvertByteArrayToHexString(bytes);
  });
}

std::string Class_Tools::fncGenerateMD5hash(std::string_view text) {
  return guarded("fncGenerateMD5hash", [&] {
    try {
      return fncConvertByteArrayToHexString(platform::current().cryptography().md5(ansiFromUtf8(text)));
    } catch (const platform::SystemError& error) {
      throw Failure(error.Number, "Class_Tools.fncGenerateMD5hash", "Error Getting Hash");
    }
  });
}

}  // namespace hy_wristlog
