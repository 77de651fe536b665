#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "tools/growing_array.h"

namespace hy_wristlog {

/// Who is working with the library, and signatures over what they sign.
///
/// A container is a name for one RSA key pair of 2048 bits. Its file is NAME.pem in the folder "Keys" of the
/// user's data folder: an unencrypted PKCS#8 key in PEM that only its user may read. What is signed is the
/// text in UTF-16, little-endian, without byte order mark. Signatures are RSASSA-PKCS1-v1_5 with SHA-1 (RFC
/// 8017), public keys SubjectPublicKeyInfo in DER (RFC 5280), both as upper-case hexadecimal text; the
/// openssl command reads and makes the same. What the system refuses is raised with the system's number,
/// which also ends the description. Wrong arguments raise InvalidCall.
class Class_Signature {
 public:
  std::int16_t Get_SignatureGMTOffset() const { return gmtOffset_; }  ///< minutes from UTC to local time
  void Let_SignatureGMTOffset(std::int16_t minutes) { gmtOffset_ = minutes; }
  double Get_SignatureDateGMT() const { return dateGMT_; }
  void Let_SignatureDateGMT(double date) { dateGMT_ = date; }
  /// SignatureDateGMT moved by the offset.
  double Get_SignatureLocalTime() const;
  std::int32_t Get_SignatureCount() const { return count_; }
  void Let_SignatureCount(std::int32_t count) { count_ = count; }
  /// Raises Overflow at the end of the 32-bit range.
  void fncIncrementSigCount();
  const std::string& Get_SignatureMeaningText() const { return meaningText_; }
  void Let_SignatureMeaningText(std::string text) { meaningText_ = std::move(text); }
  bool Get_Authenticated() const { return authenticated_; }
  void Let_Authenticated(bool authenticated) { authenticated_ = authenticated; }
  const std::string& Get_Comments() const { return comments_; }
  void Let_Comments(std::string text) { comments_ = std::move(text); }

  /// The name that was set, or else fncGetCurrentUser. Raises NoUserName.
  std::string Get_LogonUserName() const;
  void Let_LogonUserName(std::string name) { logonUserName_ = std::move(name); }
  /// The name that was set, or else fncGetFullName.
  std::string Get_LogonFullName() const;
  void Let_LogonFullName(std::string name) { logonFullName_ = std::move(name); }
  /// The name that was set, or else fncGetCurrentDomain. Raises NoDomainName.
  std::string Get_DomainName() const;
  void Let_DomainName(std::string name) { domainName_ = std::move(name); }
  /// The name that was set, or else fncGetCurrentComputer.
  std::string Get_ComputerName() const;
  void Let_ComputerName(std::string name) { computerName_ = std::move(name); }

  /// These five ask the system, and raise its error number when it refuses.
  static std::string fncGetCurrentUser();
  static std::string fncGetCurrentDomain();
  static std::string fncGetCurrentComputer();
  /// Empty when the system knows the user's login name only.
  static std::string fncGetFullName();
  /// "\\" and the name of the machine that vouches for its users: this one, which keeps or caches its own
  /// list of accounts.
  static std::string fncGetDomainController();

  /// Makes sure that the container has a usable key pair: a missing one is made, a damaged one is replaced by
  /// a new one. False when the new pair cannot be made or stored, as where a home is missing or cannot be
  /// written to. Keys that may not be read are never replaced.
  static bool fncCheckUserContainer(std::string_view containerName);
  /// The signature of the data with the container's key. Raises InvalidCall when it has no usable pair, or
  /// the data are not UTF-8.
  static std::string fncGenerateSignature(std::string_view containerName, std::string_view data);
  /// The container's public key. Raises InvalidCall when it has no usable pair.
  static std::string fncGetPublicKey(std::string_view containerName);
  /// Whether the holder of the key has signed these data. False also for a text that is no signature. Raises
  /// InvalidCall for a public key that is no hexadecimal text, and for data that are not UTF-8.
  static bool fncVerifySignature(std::string_view publicKey, std::string_view data,
                                 std::string_view signature);
  /// Deletes the container with its key pair, if there is one.
  static void fncDeleteContainer(std::string_view containerName);

  /// As Class_Tools::fncConvertByteArrayToHexString and fncConvertHexStringToByteArray.
  static std::string fncByteArrayToHexString(const GrowingArray<std::uint8_t>& bytes);
  static GrowingArray<std::uint8_t> fncHexStringToByteArray(std::string_view text);

 private:
  std::int16_t gmtOffset_ = 0;
  std::int32_t count_ = 0;
  double dateGMT_ = 0;
  bool authenticated_ = false;
  std::string meaningText_, comments_;
  std::string logonUserName_, logonFullName_, domainName_, computerName_;
};

/// The thread's one object.
Class_Signature& SignatureService();

}  // namespace hy_wristlog
