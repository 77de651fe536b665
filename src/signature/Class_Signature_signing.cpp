#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/code_page.h"
#include "base/faults.h"
#include "errors/Procedure.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "signature/Class_Signature.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

using platform::KeyContainer;
using platform::KeyPairState;

constexpr std::string_view ScratchContainer = "Somnaris5.0_Temp";
constexpr std::string_view SecondScratchContainer = "Somnaris-CT_4.0_Temp";
constexpr std::int32_t UserDataFolderCode = 26;

platform::CryptographicProvider& cryptography() { return platform::current().cryptography(); }

/// The name as a file name. ASCII letters, digits, "_", "-" and dots inside stay; every other byte becomes
/// "%" and two digits. Different names give different files, and none lies outside the folder.
std::string fileName(std::string_view containerName) {
  std::string name;
  for (const char c : containerName) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '_' || c == '-' || (c == '.' && !name.empty());
    if (plain)
      name += c;
    else
      name += "%" + Class_Tools::fncConvertByteToHexString(static_cast<std::uint8_t>(c));
  }
  return name + ".pem";
}

std::string keyFile(std::string_view containerName) {
  const std::string folder = platform::current().environment().specialFolder(UserDataFolderCode);
  if (folder.empty()) throw platform::SystemError{ENOENT};
  return folder + "/HY_Wristlog/Keys/" + fileName(containerName);
}

/// One operation with its failures.
class Operation {
 public:
  explicit Operation(const char* name) : name_(name) {}

  template <class Body>
  auto run(Body&& body) const {
    Procedure procedure{"Class_Signature", name_};
    return procedure.run(std::forward<Body>(body));
  }

  /// Runs a step of the provider. A failure's description is `problem` followed by the system's number.
  template <class Step>
  auto step(const char* problem, Step&& step) const {
    try {
      return step();
    } catch (const platform::SystemError& error) {
      throw Failure(error.Number, source(), problem + std::to_string(error.Number) + ")");
    }
  }

  void check(bool good, const char* problem) const {
    if (!good) throw Failure(fault::InvalidCall, source(), problem);
  }

  std::unique_ptr<KeyContainer> acquire(std::string_view containerName) const {
    check(!containerName.empty(), "Invalid Crypto Container Name");
    auto container = step("Error Acquiring Provider Context (",
                          [&] { return cryptography().openContainer(keyFile(containerName)); });
    check(container != nullptr, "Invalid Crypto Provider Handle Input");
    return container;
  }

  std::unique_ptr<KeyContainer> acquireWithPair(std::string_view containerName) const {
    auto container = acquire(containerName);
    check(stateOf(*container) == KeyPairState::Usable, "Invalid Crypto Signature Key Handle Input");
    return container;
  }

  std::unique_ptr<KeyContainer> acquireScratch() const {
    try {
      return acquire(ScratchContainer);
    } catch (const Failure&) {
      return acquire(SecondScratchContainer);
    }
  }

  KeyPairState stateOf(KeyContainer& container) const {
    return step("Error Verifying Container (", [&] { return container.keyPairState(); });
  }

  platform::Sha1Digest digestOf(std::string_view data) const {
    const auto units = utf16FromUtf8(data);
    if (!units) fault::raise(fault::InvalidCall, "the data are not UTF-8");
    std::vector<std::uint8_t> bytes;
    bytes.reserve(units->size() * 2);
    for (const char16_t unit : *units) {
      bytes.push_back(static_cast<std::uint8_t>(unit & 0xFFU));
      bytes.push_back(static_cast<std::uint8_t>(unit >> 8U));
    }
    const auto hash = step("Error Acquiring Hash Handle (", [] { return cryptography().createSha1(); });
    return step("Error Hashing Data (", [&] {
      hash->add(bytes);
      return hash->value();
    });
  }

 private:
  std::string source() const { return std::string("Class_Signature.") + name_; }

  const char* name_;
};

/// The bytes of a hexadecimal text; none for other text.
std::optional<GrowingArray<std::uint8_t>> bytesOf(std::string_view hexText) {
  if (hexText.empty()) return std::nullopt;
  auto bytes = Class_Signature::fncHexStringToByteArray(hexText);
  if (bytes.LBound() != 0) return std::nullopt;
  return bytes;
}

}  // namespace

bool Class_Signature::fncCheckUserContainer(std::string_view containerName) {
  const Operation operation{"fncCheckUserContainer"};
  return operation.run([&] {
    auto container = operation.acquire(containerName);
    const KeyPairState state = operation.stateOf(*container);
    if (state == KeyPairState::Damaged) {
      const std::string file = keyFile(containerName);
      operation.step("Error Deleting Corrupted Container (",
                     [&] { cryptography().deleteDamagedContainer(file); });
      container = operation.step("Error Re-creating Corrupted Container (",
                                 [&] { return cryptography().openContainer(file); });
      operation.check(container != nullptr, "Invalid Crypto Provider Handle Input");
    }
    try {
      if (state != KeyPairState::Usable) container->generateKeyPair();
      return true;
    } catch (const platform::SystemError&) {
      return false;
    }
  });
}

std::string Class_Signature::fncGenerateSignature(std::string_view containerName, std::string_view data) {
  const Operation operation{"fncGenerateSignature"};
  return operation.run([&] {
    const auto container = operation.acquireWithPair(containerName);
    const auto digest = operation.digestOf(data);
    std::vector<std::uint8_t> signature(
        operation.step("Error Getting Size of Signature (", [&] { return container->signatureSize(); }));
    operation.step("Error Getting Signature (", [&] { container->sign(digest, signature); });
    return Class_Tools::fncConvertByteArrayToHexString(signature);
  });
}

std::string Class_Signature::fncGetPublicKey(std::string_view containerName) {
  const Operation operation{"fncGetPublicKey"};
  return operation.run([&] {
    const auto container = operation.acquireWithPair(containerName);
    std::vector<std::uint8_t> key(
        operation.step("Error Getting Size of Public Key (", [&] { return container->publicKeySize(); }));
    operation.step("Error Getting Public Key (", [&] { container->exportPublicKey(key); });
    return Class_Tools::fncConvertByteArrayToHexString(key);
  });
}

bool Class_Signature::fncVerifySignature(std::string_view publicKey, std::string_view data,
                                         std::string_view signature) {
  const Operation operation{"fncVerifySignature"};
  return operation.run([&] {
    const auto key = bytesOf(publicKey);
    operation.check(key.has_value(), "Invalid Crypto Public Key Input");
    const auto container = operation.acquireScratch();
    operation.step("Error Importing Public Key (", [&] { container->importPublicKey(*key); });
    const auto digest = operation.digestOf(data);
    const auto given = bytesOf(signature);
    return given &&
           operation.step("Error Verifying Signature (", [&] { return container->verify(digest, *given); });
  });
}

void Class_Signature::fncDeleteContainer(std::string_view containerName) {
  const Operation operation{"fncDeleteContainer"};
  operation.run([&] {
    operation.check(!containerName.empty(), "Invalid Crypto Container Name");
    operation.step("Error Acquiring Provider Context (",
                   [&] { cryptography().deleteContainer(keyFile(containerName)); });
  });
}

}  // namespace hy_wristlog
