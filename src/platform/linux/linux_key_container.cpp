#include "platform/linux/linux_key_container.h"

#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <openssl/crypto.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/system_io.h"
#include "platform/linux/temporary_file.h"

namespace hy_wristlog::platform {
namespace {

constexpr std::size_t LongestKeyFile = 1 << 16;
constexpr std::size_t Bits = 2048;
constexpr mode_t OwnFile = 0600, OwnFolder = 0700, Others = 0077;

using Bio = std::unique_ptr<BIO, OpensslDeleter<BIO_free>>;

std::optional<std::string> readKeyFile(const std::string& file) {
  const Descriptor descriptor{
      ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
  if (!descriptor) {
    if (errno == ENOENT) return std::nullopt;
    raiseSystemError();
  }
  struct stat status {};
  if (::fstat(descriptor.get(), &status) != 0) raiseSystemError();
  if (S_ISDIR(status.st_mode)) raiseSystemError(EISDIR);
  if (!S_ISREG(status.st_mode)) raiseSystemError(EINVAL);
  if ((status.st_mode & Others) != 0 && ::fchmod(descriptor.get(), OwnFile) != 0) raiseSystemError();
  return readToEnd(descriptor.get(), LongestKeyFile);
}

std::string folderOf(const std::string& file) { return file.substr(0, file.rfind('/')); }

/// Not open when the folder cannot be read.
Descriptor openFolder(const std::string& folder) {
  return Descriptor{::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
}

void narrowOwnFolder(const std::string& folder) {
  const Descriptor descriptor = openFolder(folder);
  struct stat status {};
  if (!descriptor || ::fstat(descriptor.get(), &status) != 0 || status.st_uid != ::geteuid()) return;
  if ((status.st_mode & Others) != 0 && ::fchmod(descriptor.get(), OwnFolder) != 0) raiseSystemError();
}

/// Opens the folder and locks it as long as the descriptor lives. File systems without locks are used without
/// one.
Descriptor lockedFolder(const std::string& folder) {
  Descriptor descriptor = openFolder(folder);
  while (descriptor && ::flock(descriptor.get(), LOCK_EX) != 0 && errno == EINTR) continue;
  return descriptor;
}

void unlinkFile(const std::string& file) {
  if (::unlink(file.c_str()) != 0 && errno != ENOENT && errno != ENOTDIR) raiseSystemError();
}

/// Makes the folder and those above it that are missing.
Descriptor ownFolder(const std::string& folder) {
  struct stat status {};
  for (std::size_t end = 0; end != std::string::npos;) {
    end = folder.find('/', end + 1);
    const std::string prefix = folder.substr(0, end);
    if (::stat(prefix.c_str(), &status) != 0 && ::mkdir(prefix.c_str(), OwnFolder) != 0 && errno != EEXIST)
      raiseSystemError();
  }
  Descriptor descriptor = openFolder(folder);
  if (!descriptor || ::fstat(descriptor.get(), &status) != 0) raiseSystemError();
  if ((status.st_mode & Others) != 0 && ::fchmod(descriptor.get(), OwnFolder) != 0) raiseSystemError();
  return descriptor;
}

/// The key made ready for one operation with RSASSA-PKCS1-v1_5; null when the hash is not allowed.
OpensslKeyContext prepare(EVP_PKEY* key, int (*operation)(EVP_PKEY_CTX*), const EVP_MD* hash) {
  OpensslKeyContext context{EVP_PKEY_CTX_new(key, nullptr)};
  if (!context || operation(context.get()) != 1 ||
      EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) != 1 ||
      EVP_PKEY_CTX_set_signature_md(context.get(), hash) != 1)
    return nullptr;
  return context;
}

OpensslKeyContext prepareForSha1(EVP_PKEY* key, int (*operation)(EVP_PKEY_CTX*)) {
  auto context = prepare(key, operation, EVP_sha1());
  if (!context) raiseSystemError(ENOTSUP);
  return context;
}

/// A flipped bit in a file can still read as a key, but then its parts do not belong together.
bool signsAsItVerifies(EVP_PKEY* key) {
  const std::array<std::uint8_t, 32> digest{};
  const auto signer = prepare(key, EVP_PKEY_sign_init, EVP_sha256());
  const auto verifier = prepare(key, EVP_PKEY_verify_init, EVP_sha256());
  if (!signer || !verifier) return false;
  std::vector<std::uint8_t> signature(static_cast<std::size_t>(EVP_PKEY_get_size(key)));
  std::size_t size = signature.size();
  return EVP_PKEY_sign(signer.get(), signature.data(), &size, digest.data(), digest.size()) == 1 &&
         EVP_PKEY_verify(verifier.get(), signature.data(), size, digest.data(), digest.size()) == 1;
}

/// The pair in a PEM text; null for an unusable one. Never asks for a pass phrase.
OpensslKey pairFromText(const std::string& text) {
  const auto noPassPhrase = [](char*, int, int, void*) { return -1; };
  const Bio bio{BIO_new_mem_buf(text.data(), static_cast<int>(text.size()))};
  if (!bio) raiseSystemError(ENOMEM);
  OpensslKey key{PEM_read_bio_PrivateKey(bio.get(), nullptr, noPassPhrase, nullptr)};
  if (!key || EVP_PKEY_is_a(key.get(), "RSA") != 1 || !signsAsItVerifies(key.get())) return nullptr;
  return key;
}

void writePair(TemporaryFile& file, EVP_PKEY* key) {
  // A BIO wipes its memory when it is freed.
  const Bio bio{BIO_new(BIO_s_mem())};
  if (!bio || PEM_write_bio_PKCS8PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr) != 1)
    raiseSystemError(EIO);
  char* text = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &text);
  file.write({text, static_cast<std::size_t>(size)});
}

}  // namespace

LinuxKeyContainer::LinuxKeyContainer(std::string file)
    : file_(std::move(file)), content_(readKeyFile(file_)) {
  if (content_) narrowOwnFolder(folderOf(file_));
}

LinuxKeyContainer::~LinuxKeyContainer() { forgetContent(); }

/// Wipes the text and leaves an empty one, which counts as a damaged pair.
void LinuxKeyContainer::forgetContent() {
  if (!content_) return;
  // NOLINTBEGIN(clang-analyzer-cplusplus.InnerPointer): its characters are not used afterwards
  OPENSSL_cleanse(content_->data(), content_->size());
  content_->clear();
  // NOLINTEND(clang-analyzer-cplusplus.InnerPointer)
}

void LinuxKeyContainer::remove(const std::string& file) {
  const Descriptor lock = lockedFolder(folderOf(file));
  unlinkFile(file);
}

void LinuxKeyContainer::removeDamaged(const std::string& file) {
  const Descriptor lock = lockedFolder(folderOf(file));
  if (LinuxKeyContainer(file).keyPairState() == KeyPairState::Damaged) unlinkFile(file);
}

KeyPairState LinuxKeyContainer::keyPairState() {
  if (pair_) return KeyPairState::Usable;
  if (!content_) return KeyPairState::Missing;
  const OpensslErrorsForgotten forgotten;
  pair_ = pairFromText(*content_);
  if (!pair_ && ERR_GET_REASON(ERR_peek_last_error()) == ERR_R_MALLOC_FAILURE) raiseSystemError(ENOMEM);
  forgetContent();
  return pair_ ? KeyPairState::Usable : KeyPairState::Damaged;
}

void LinuxKeyContainer::generateKeyPair() {
  const auto slash = file_.rfind('/');
  if (slash == std::string::npos) raiseSystemError(EINVAL);
  const Descriptor folder = ownFolder(file_.substr(0, slash));
  TemporaryFile file{folder.get(), OwnFile};
  const OpensslErrorsForgotten forgotten;
  OpensslKey made{EVP_RSA_gen(Bits)};
  if (!made) raiseSystemError(EIO);
  writePair(file, made.get());
  pair_.reset();
  if (file.renameUnlessTaken(file_.substr(slash + 1))) {
    pair_ = std::move(made);
    return;
  }
  forgetContent();
  content_ = readKeyFile(file_);
  if (keyPairState() != KeyPairState::Usable) raiseSystemError(EEXIST);
}

EVP_PKEY* LinuxKeyContainer::pair() {
  if (keyPairState() != KeyPairState::Usable) raiseSystemError(ENOKEY);
  return pair_.get();
}

std::size_t LinuxKeyContainer::publicKeySize() {
  const OpensslErrorsForgotten forgotten;
  const int size = i2d_PUBKEY(pair(), nullptr);
  if (size <= 0) raiseSystemError(EIO);
  return static_cast<std::size_t>(size);
}

void LinuxKeyContainer::exportPublicKey(std::span<std::uint8_t> into) {
  if (into.size() != publicKeySize()) raiseSystemError(EINVAL);
  const OpensslErrorsForgotten forgotten;
  unsigned char* position = into.data();
  if (i2d_PUBKEY(pair(), &position) <= 0) raiseSystemError(EIO);
}

std::size_t LinuxKeyContainer::signatureSize() {
  const OpensslErrorsForgotten forgotten;
  const auto context = prepareForSha1(pair(), EVP_PKEY_sign_init);
  const Sha1Digest digest{};
  std::size_t size = 0;
  if (EVP_PKEY_sign(context.get(), nullptr, &size, digest.data(), digest.size()) != 1) raiseSystemError(EIO);
  return size;
}

void LinuxKeyContainer::sign(const Sha1Digest& digest, std::span<std::uint8_t> into) {
  const OpensslErrorsForgotten forgotten;
  const auto context = prepareForSha1(pair(), EVP_PKEY_sign_init);
  std::size_t size = into.size();
  if (EVP_PKEY_sign(context.get(), into.data(), &size, digest.data(), digest.size()) != 1 ||
      size != into.size())
    raiseSystemError(EIO);
}

void LinuxKeyContainer::importPublicKey(std::span<const std::uint8_t> key) {
  const OpensslErrorsForgotten forgotten;
  const unsigned char* position = key.data();
  OpensslKey found{d2i_PUBKEY(nullptr, &position, static_cast<long>(key.size()))};
  if (!found || position != key.data() + key.size() || EVP_PKEY_is_a(found.get(), "RSA") != 1)
    raiseSystemError(EBADMSG);
  imported_ = std::move(found);
}

bool LinuxKeyContainer::verify(const Sha1Digest& digest, std::span<const std::uint8_t> signature) {
  if (!imported_) raiseSystemError(ENOKEY);
  const OpensslErrorsForgotten forgotten;
  const auto context = prepareForSha1(imported_.get(), EVP_PKEY_verify_init);
  const int answer =
      EVP_PKEY_verify(context.get(), signature.data(), signature.size(), digest.data(), digest.size());
  if (answer < 0) raiseSystemError(EIO);
  return answer == 1;
}

}  // namespace hy_wristlog::platform
