#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace hy_wristlog::platform {

/// Zone records made from the rules in the system's tz database (/usr/share/zoneinfo, or the folder that
/// TZDIR names). Every year has the rule of the database's last years, whatever the clock says.
///
/// The machine's own zone is what TZ says, else /etc/localtime, else /etc/timezone. It is found under its
/// name, under another name of the same zone, then by a rule that is the same. A machine that runs on UTC
/// counts as Greenwich, and so does one with none of these files. The zone is not known when TZ or
/// /etc/localtime is there and cannot be read.
class LinuxZones final : public ZoneRecords {
 public:
  /// `etc` is the folder of "localtime" and "timezone".
  explicit LinuxZones(std::string etc = "/etc");

  std::vector<std::string> keys() override;
  /// An unknown key gives an empty record.
  ZoneRecord read(std::string_view key) override;
  std::string localStandardName() override;
  std::optional<NamedZone> named(std::string_view name) override;
  std::string localName() override;
  std::string trouble() override;

 private:
  struct MachineZone {
    std::string Name;  ///< in the tz database; may be empty
    std::string File;  ///< content of its TZif file; may be empty
    std::optional<ZoneRule> Rule;
    std::string Trouble;  ///< why it is not known
  };

  static std::string keyOf(const MachineZone& zone);
  MachineZone machineZone() const;
  MachineZone zoneOfVariable(std::string value) const;
  MachineZone zoneOfName(std::string name) const;

  std::string etc_;
};

}  // namespace hy_wristlog::platform
