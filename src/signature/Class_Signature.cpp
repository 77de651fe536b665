#include "signature/Class_Signature.h"

#include <cstdint>

#include "base/ascii.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"

namespace hy_wristlog {
namespace {

constexpr std::int32_t NoUserName = 10402;
constexpr std::int32_t NoDomainName = 10403;

std::string askSystem(std::string (platform::Environment::*query)(), const char* operation,
                      const char* what) {
  try {
    return std::string(cutAtNul((platform::current().environment().*query)()));
  } catch (const platform::SystemError& error) {
    throw Failure(error.Number, std::string("Class_Signature.") + operation,
                  std::string("Unable to retrieve ") + what + " (" + std::to_string(error.Number) + ")");
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

std::string Class_Signature::fncGetCurrentUser() {
  return askSystem(&platform::Environment::userName, "fncGetCurrentUser", "current user name");
}

std::string Class_Signature::fncGetCurrentDomain() {
  return askSystem(&platform::Environment::domainName, "fncGetCurrentDomain", "domain name");
}

std::string Class_Signature::fncGetCurrentComputer() {
  return askSystem(&platform::Environment::computerName, "fncGetCurrentComputer", "current computer name");
}

std::string Class_Signature::Get_LogonUserName() const {
  if (!logonUserName_.empty()) return logonUserName_;
  return renumbered(NoUserName, "Get_LogonUserName", &fncGetCurrentUser);
}

std::string Class_Signature::Get_DomainName() const {
  if (!domainName_.empty()) return domainName_;
  return renumbered(NoDomainName, "Get_DomainName", &fncGetCurrentDomain);
}

std::string Class_Signature::Get_ComputerName() const { return fncGetCurrentComputer(); }

Class_Signature& SignatureService() { return platform::current().objects().get<Class_Signature>(); }

}  // namespace hy_wristlog
