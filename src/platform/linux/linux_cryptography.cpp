#include "platform/linux/linux_cryptography.h"

#include <algorithm>
#include <cerrno>

#include <openssl/evp.h>
#include <openssl/rand.h>

#include "platform/linux/linux_key_container.h"
#include "platform/linux/openssl_support.h"
#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {
namespace {

class OpensslSha1 final : public Sha1Hash {
 public:
  OpensslSha1() : context_(EVP_MD_CTX_new()) {
    if (!context_) raiseSystemError(ENOMEM);
    const OpensslErrorsForgotten forgotten;
    if (EVP_DigestInit_ex(context_.get(), EVP_sha1(), nullptr) != 1) raiseSystemError(ENOTSUP);
  }
  void add(std::span<const std::uint8_t> bytes) override {
    const OpensslErrorsForgotten forgotten;
    if (EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) != 1) raiseSystemError(EIO);
  }
  Sha1Digest value() override {
    const OpensslErrorsForgotten forgotten;
    Sha1Digest digest{};
    if (EVP_DigestFinal_ex(context_.get(), digest.data(), nullptr) != 1) raiseSystemError(EIO);
    return digest;
  }

 private:
  OpensslHash context_;
};

}  // namespace

std::array<std::uint8_t, 16> LinuxCryptography::md5(std::span<const std::uint8_t> bytes) {
  const OpensslErrorsForgotten forgotten;
  std::array<std::uint8_t, 16> digest{};
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_md5(), nullptr) != 1)
    raiseSystemError(ENOTSUP);
  return digest;
}

void LinuxCryptography::randomBytes(std::span<std::uint8_t> into) {
  const OpensslErrorsForgotten forgotten;
  constexpr std::size_t Most = 1 << 20;
  while (!into.empty()) {
    const std::size_t size = std::min(into.size(), Most);
    if (RAND_bytes(into.data(), static_cast<int>(size)) != 1) raiseSystemError(EIO);
    into = into.subspan(size);
  }
}

std::unique_ptr<Sha1Hash> LinuxCryptography::createSha1() { return std::make_unique<OpensslSha1>(); }

std::unique_ptr<KeyContainer> LinuxCryptography::openContainer(const std::string& file) {
  return std::make_unique<LinuxKeyContainer>(file);
}

void LinuxCryptography::deleteContainer(const std::string& file) { LinuxKeyContainer::remove(file); }

void LinuxCryptography::deleteDamagedContainer(const std::string& file) {
  LinuxKeyContainer::removeDamaged(file);
}

}  // namespace hy_wristlog::platform
