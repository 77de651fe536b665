#pragma once

#include <optional>
#include <string>

#include "platform/linux/openssl_support.h"
#include "platform/platform.h"

namespace hy_wristlog::platform {

/// A key pair in a file of its own: PKCS#8 in PEM (RFC 5958, RFC 7468), so that the openssl command can use
/// it. Only its owner may read the file (mode 0600) and enter its folder (0700); wider modes are narrowed,
/// except that of a folder that belongs to somebody else. The text of a private key is wiped from memory
/// after it was read or written. Links are not followed, and files beyond 64 KiB are refused (EFBIG). ENOKEY:
/// there is no pair; EBADMSG: an imported key is no RSA key; ENOTSUP: the machine's policy forbids SHA-1
/// signatures.
class LinuxKeyContainer final : public KeyContainer {
 public:
  explicit LinuxKeyContainer(std::string file);
  ~LinuxKeyContainer() override;
  LinuxKeyContainer(const LinuxKeyContainer&) = delete;
  LinuxKeyContainer& operator=(const LinuxKeyContainer&) = delete;

  /// Both delete under a lock on the folder and do nothing when the file is missing.
  static void remove(const std::string& file);
  static void removeDamaged(const std::string& file);

  KeyPairState keyPairState() override;
  void generateKeyPair() override;
  std::size_t publicKeySize() override;
  void exportPublicKey(std::span<std::uint8_t> into) override;
  std::size_t signatureSize() override;
  void sign(const Sha1Digest& digest, std::span<std::uint8_t> into) override;
  void importPublicKey(std::span<const std::uint8_t> key) override;
  bool verify(const Sha1Digest& digest, std::span<const std::uint8_t> signature) override;

 private:
  EVP_PKEY* pair();
  void forgetContent();

  std::string file_;
  std::optional<std::string> content_;
  OpensslKey pair_, imported_;
};

}  // namespace hy_wristlog::platform
