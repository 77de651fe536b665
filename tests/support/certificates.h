#pragma once

#include <cstdlib>
#include <string>

#include "support/surroundings.h"

namespace hy_wristlog {

/// Certificates in PEM, made by the `openssl` command: "ca.pem" is the authority of the others, which have
/// their private key in the same file. "rsa.key" is a key of none of them, and of another kind.
class Certificates {
 public:
  Certificates() {
    run("ecparam -name prime256v1 -out curve");
    run("req -x509 -newkey ec:curve -nodes -keyout ca.key -out ca.pem -subj /CN=authority");
    add("good", 2, "localhost");
    run("genrsa -out rsa.key 2048");
  }

  void add(const std::string& name, int days, const std::string& host) const {
    run("req -new -newkey ec:curve -nodes -keyout " + name + ".pem -subj /CN=" + name +
        " -addext subjectAltName=DNS:" + host + " 2>log | openssl x509 -req -CA ca.pem -CAkey ca.key -days " +
        std::to_string(days) + " -copy_extensions copy -out " + name + ".crt 2>log && cat " + name +
        ".crt >>" + name + ".pem");
  }
  /// With colons, as openssl writes it.
  std::string fingerprint(const std::string& name) const {
    run("x509 -in " + name + ".pem -noout -fingerprint -sha256 >digits");
    const std::string text = contentOf(folder_ / "digits");
    return text.substr(text.find('=') + 1, 95);
  }
  std::string operator/(const std::string& name) const { return folder_ / name; }

 private:
  void run(const std::string& command) const {
    const std::string line = "cd " + folder_.path() + " && openssl " + command + " 2>log";
    if (std::system(line.c_str()) != 0) std::abort();
  }

  TemporaryFolder folder_;
};

}  // namespace hy_wristlog
