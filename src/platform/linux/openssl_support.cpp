#include "platform/linux/openssl_support.h"

#include <array>

#include "base/formats.h"

namespace hy_wristlog::platform {

std::string fingerprintOf(const X509* certificate) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  if (certificate == nullptr || ::X509_digest(certificate, ::EVP_sha256(), digest.data(), &size) != 1)
    return {};
  std::string digits;
  for (unsigned int place = 0; place < size; ++place) digits += upperHex(digest[place], 2);
  return digits;
}

}  // namespace hy_wristlog::platform
