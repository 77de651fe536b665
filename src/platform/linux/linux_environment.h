#pragma once

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// The user's and the machine's surroundings.
///
/// Folder 26 is $XDG_CONFIG_HOME, else ~/.config. Folder 5 is XDG_DOCUMENTS_DIR of user-dirs.dirs in it, else
/// the home. Folder 35 is /var/lib when its folder HY_Wristlog can be made or written to, else
/// $XDG_STATE_HOME, else ~/.local/state. Relative paths in these variables count as not set. A machine
/// without a network domain has its own name as domain name. A user's full name is the first field of the
/// comment in the password database.
class LinuxEnvironment final : public Environment {
 public:
  std::string specialFolder(std::int32_t code) override;
  std::string libraryFolder() override;
  std::string localeInfo(LocaleItem item) override;
  std::optional<std::string> variable(std::string_view name) override;
  std::string userName() override;
  std::string fullName() override;
  std::string domainName() override;
  std::string computerName() override;
  std::string errorText(std::int32_t number) override;
};

/// The system's words for an errno value; empty for an unknown one.
std::string systemErrorText(std::int32_t number);

/// The library's folder in folder 26; empty when the user has no home.
std::string userDataFolder(Environment& environment);

}  // namespace hy_wristlog::platform
