#pragma once

#include <string>
#include <utility>

namespace hy_wristlog {

/// Who is working with the library.
class Class_Signature {
 public:
  /// The name given, or fncGetCurrentUser. Raises 10402.
  std::string Get_LogonUserName() const;
  void Let_LogonUserName(std::string name) { logonUserName_ = std::move(name); }
  /// The name given, or fncGetCurrentDomain. Raises 10403.
  std::string Get_DomainName() const;
  void Let_DomainName(std::string name) { domainName_ = std::move(name); }
  std::string Get_ComputerName() const;

  /// These three ask the system; each raises its error number.
  static std::string fncGetCurrentUser();
  static std::string fncGetCurrentDomain();
  static std::string fncGetCurrentComputer();

 private:
  std::string logonUserName_, domainName_;
};

/// The thread's one object.
Class_Signature& SignatureService();

}  // namespace hy_wristlog
