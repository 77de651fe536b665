#include "signature/Class_Signature.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <limits>

#include "base/dates.h"
#include "signature/key_world.h"
#include "support/failures.h"

namespace hy_wristlog {
namespace {

using simulator::once;
using Signature = Class_Signature;

const char* const Name = "Somnaris_5.0_tester_LAB";
const char* const Data = "Lena Zürich, 17 €, \U0001F600";

/// On P-256.
const char* const EllipticCurveKey =
    "3059301306072A8648CE3D020106082A8648CE3D030107034200046B17D1F2E12C4247F8BCE6E563A440F277037D"
    "812DEB33A0F4A13945D898C2964FE342E2FE1A7F9B8EE7EB4A7C0F9E162BCE33576B315ECECBB6406837BF51F5";

TEST(Signatures, HoldForTheirDataAndTheirKeyAlone) {
  const InWorld<simulator::SimulatedWorld> world;
  ASSERT_TRUE(Signature::fncCheckUserContainer(Name) && Signature::fncCheckUserContainer("other"));
  const std::string key = Signature::fncGetPublicKey(Name);
  EXPECT_NE(key, Signature::fncGetPublicKey("other"));
  for (const std::string& data :
       {std::string(), std::string("a\0b", 3), std::string(Data), std::string(100000, 'x')}) {
    const std::string signature = Signature::fncGenerateSignature(Name, data);
    EXPECT_EQ(signature.size(), 2 * 2048U / 8);
    EXPECT_EQ(signature, Signature::fncGenerateSignature(Name, data));
    EXPECT_TRUE(Signature::fncVerifySignature(key, data, signature));
    EXPECT_FALSE(Signature::fncVerifySignature(key, data + " ", signature));
    EXPECT_FALSE(Signature::fncVerifySignature(Signature::fncGetPublicKey("other"), data, signature));
    std::string altered = signature;
    altered[100] = altered[100] == '0' ? '1' : '0';
    for (const std::string& wrong : {altered, signature + "00", signature.substr(1), std::string()})
      EXPECT_FALSE(Signature::fncVerifySignature(key, data, wrong)) << wrong;
  }
  Signature::fncDeleteContainer(Name);
  EXPECT_TRUE(Signature::fncCheckUserContainer(Name));
  EXPECT_NE(Signature::fncGetPublicKey(Name), key);
}

TEST(Signatures, WrongArgumentsAreNamed) {
  const InWorld<simulator::SimulatedWorld> world;
  const std::string noName = "Invalid Crypto Container Name";
  const std::string noPair = "Invalid Crypto Signature Key Handle Input";
  const std::string noKey = "Invalid Crypto Public Key Input";
  const std::string noText = "Invalid procedure call or argument: the data are not UTF-8";
  Signature::fncCheckUserContainer(Name);
  const std::string key = Signature::fncGetPublicKey(Name);
  // clang-format off
  const std::pair<std::function<void()>, std::string> cases[] = {
      {[] { Signature::fncCheckUserContainer(""); }, noName}, {[] { Signature::fncDeleteContainer(""); }, noName},
      {[] { Signature::fncGenerateSignature("nobody's", Data); }, noPair},
      {[] { Signature::fncGetPublicKey("nobody's"); }, noPair},
      {[] { Signature::fncVerifySignature("", Data, "00"); }, noKey},
      {[] { Signature::fncVerifySignature("no key", Data, "00"); }, noKey},
      {[] { Signature::fncGenerateSignature(Name, "\xC0\xAF"); }, noText},
      {[&] { Signature::fncVerifySignature(key, "\xED\xA0\x80", "00"); }, noText}};
  // clang-format on
  for (const auto& [action, text] : cases) EXPECT_EQ(failureOf(action), std::pair(5, text));
  const std::string keysWithoutMeaning[] = {"3082", key + "00", key.substr(0, key.size() - 2),
                                            std::string(key.size(), '0'), EllipticCurveKey};
  for (const std::string& wrong : keysWithoutMeaning)
    EXPECT_EQ(failureOf([&] { Signature::fncVerifySignature(wrong, Data, "00"); }),
              std::pair(EBADMSG, "Error Importing Public Key (" + std::to_string(EBADMSG) + ")"));
}

TEST(Signatures, EachStepOfTheProviderFailsWithItsText) {
  std::string key, signature;
  const std::string acquire = "Acquiring Provider Context", exists = "Verifying Container",
                    hash = "Acquiring Hash Handle", add = "Hashing Data";
  const auto check = [] { EXPECT_TRUE(Signature::fncCheckUserContainer(Name)); };
  const auto sign = [] { EXPECT_NE(Signature::fncGenerateSignature(Name, Data), ""); };
  const auto publish = [] { EXPECT_NE(Signature::fncGetPublicKey(Name), ""); };
  const auto verify = [&] { EXPECT_TRUE(Signature::fncVerifySignature(key, Data, signature)); };
  const auto remove = [] { Signature::fncDeleteContainer(Name); };
  // Whether the pair is damaged before; the steps that fail one after another.
  const std::tuple<std::function<void()>, bool, std::vector<std::string>> cases[] = {
      {check, true, {acquire, exists, "Deleting Corrupted Container", "Re-creating Corrupted Container"}},
      {sign, false, {acquire, exists, hash, add, "Getting Size of Signature", "Getting Signature"}},
      {publish, false, {acquire, exists, "Getting Size of Public Key", "Getting Public Key"}},
      // A scratch container that cannot be had is replaced by the second one.
      {verify, false, {"", "Importing Public Key", hash, add, "Verifying Signature"}},
      {remove, false, {acquire}}};
  const InWorld<simulator::SimulatedWorld> world;
  const std::string file = world->rootFolder() + "/AppData/HY_Wristlog/Keys/" + Name + ".pem";
  Signature::fncCheckUserContainer(Name);
  key = Signature::fncGetPublicKey(Name);
  signature = Signature::fncGenerateSignature(Name, Data);
  const std::string pair = contentOf(file);
  for (const auto& [operation, damaged, steps] : cases)
    for (std::size_t i = 0; i < steps.size(); ++i) {
      Signature::fncDeleteContainer(Name);
      putFile(file, damaged ? "damaged" : pair);
      world->Faults.Cryptography = {EACCES, once(static_cast<std::int32_t>(i))};
      const std::string text = "Error " + steps[i] + " (13)";
      EXPECT_EQ(failureOf(operation), steps[i].empty() ? std::pair(0, std::string()) : std::pair(13, text));
      EXPECT_EQ(numberOf(operation), 0) << "after " << text;
    }
  world->Faults.Cryptography = {EACCES, {0, 2}};
  EXPECT_EQ(failureOf(verify), std::pair(13, "Error " + acquire + " (13)"));
}

TEST(SignatureProperties, TellWhoAndWhen) {
  const InWorld<simulator::SimulatedWorld> world;
  Class_Signature service;
  const auto names = [&] {
    return service.Get_LogonUserName() + "|" + service.Get_LogonFullName() + "|" + service.Get_DomainName() +
           "|" + service.Get_ComputerName();
  };
  EXPECT_EQ(names(), "tester|Terry Tester|LAB|BENCH");
  EXPECT_EQ(Signature::fncGetDomainController(), R"(\\BENCH)");
  service.Let_LogonFullName("T");
  service.Let_ComputerName("C");
  EXPECT_EQ(names(), "tester|T|LAB|C");
  const std::tuple<double, std::int16_t, double> times[] = {
      {dateSerial(2026, 3, 1) + 0.75, 330, dateSerial(2026, 3, 1) + 0.75 + 330 / 1440.0},
      {dateSerial(2026, 3, 1), -300, dateSerial(2026, 2, 28) + 19 / 24.0},
      {-1.25, -360, -1.0}};
  for (const auto& [gmt, offset, local] : times) {
    service.Let_SignatureDateGMT(gmt);
    service.Let_SignatureGMTOffset(offset);
    EXPECT_NEAR(service.Get_SignatureLocalTime(), local, 1e-9);
  }
  service.Let_SignatureCount(std::numeric_limits<std::int32_t>::max() - 1);
  service.fncIncrementSigCount();
  EXPECT_EQ(numberOf([&] { service.fncIncrementSigCount(); }), 6);
  EXPECT_EQ(service.Get_SignatureCount(), std::numeric_limits<std::int32_t>::max());
}

}  // namespace
}  // namespace hy_wristlog
