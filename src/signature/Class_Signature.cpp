#include "signature/Class_Signature.h"

#include <cstdint>
#include <limits>

#include "base/ascii.h"
#include "base/dates.h"
#include "base/faults.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

constexpr const char* UserNameProblem = "Unable to retrieve current user name (";
constexpr const char* DomainNameProblem = "Unable to retrieve domain name (";
constexpr const char* ComputerNameProblem = "Unable to retrieve current computer name (";

std::string askSystem(std::string (platform::Environment::*query)(), const char* operation,
                      const char* problem) {
  try {
    return std::string(cutAtNul((platform::current().environment().*query)()));
  } catch (const platform::SystemError& error) {
    throw Failure(error.Number, std::string("Class_Signature.") + operation,
                  problem + std::to_string(error.Number) + ")");
  }
}

std::string renumbered(std::int32_t number, const char* property, std::string (*query)()) {
  try {
    return query();
  } catch (const Failure& failure) {
    throw Failure(number, std::string("Class_Signature.") + property, failure.Description);
  }
}

}  // namespace

double Class_Signature::Get_SignatureLocalTime() const {
  return addTime(dateGMT_, timeSerial(0, gmtOffset_, 0));
}

void Class_Signature::fncIncrementSigCount() {
  if (count_ == std::numeric_limits<std::int32_t>::max()) fault::raise(fault::Overflow);
  ++count_;
}

std::string Class_Signature::fncGetCurrentUser() {
  return askSystem(&platform::Environment::userName, "fncGetCurrentUser", UserNameProblem);
}

std::string Class_Signature::fncGetCurrentDomain() {
  return askSystem(&platform::Environment::domainName, "fncGetCurrentDomain", DomainNameProblem);
}

std::string Class_Signature::fncGetCurrentComputer() {
  return askSystem(&platform::Environment::computerName, "fncGetCurrentComputer", ComputerNameProblem);
}

std::string Class_Signature::fncGetFullName() {
  return askSystem(&platform::Environment::fullName, "fncGetFullName", UserNameProblem);
}

std::string Class_Signature::fncGetDomainController() {
  return R"(\\)" +
         askSystem(&platform::Environment::computerName, "fncGetDomainController", DomainNameProblem);
}

std::string Class_Signature::Get_LogonUserName() const {
  if (!logonUserName_.empty()) return logonUserName_;
  return renumbered(FailureNumber::NoUserName, "Get_LogonUserName", &fncGetCurrentUser);
}

std::string Class_Signature::Get_LogonFullName() const {
  return logonFullName_.empty() ? fncGetFullName() : logonFullName_;
}

std::string Class_Signature::Get_DomainName() const {
  if (!domainName_.empty()) return domainName_;
  return renumbered(FailureNumber::NoDomainName, "Get_DomainName", &fncGetCurrentDomain);
}

std::string Class_Signature::Get_ComputerName() const {
  return computerName_.empty() ? fncGetCurrentComputer() : computerName_;
}

std::string Class_Signature::fncByteArrayToHexString(const GrowingArray<std::uint8_t>& bytes) {
  return Class_Tools::fncConvertByteArrayToHexString(bytes);
}

GrowingArray<std::uint8_t> Class_Signature::fncHexStringToByteArray(std::string_view text) {
  return Class_Tools::fncConvertHexStringToByteArray(text);
}

Class_Signature& SignatureService() { return platform::current().objects().get<Class_Signature>(); }

}  // namespace hy_wristlog
