#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace hy_wristlog::simulator {

enum class LoggerModel : std::uint8_t { Kestrin2 = 1, Vivid = 2 };

/// What a logger's firmware can do, by its version "MM.mm.bbbb".
class Firmware {
 public:
  explicit Firmware(std::string_view version);

  const std::string& version() const { return version_; }
  /// The eight characters that the config block holds.
  std::string digits() const;
  /// Structure version of the config block that this firmware keeps.
  std::uint8_t blockVersion() const { return hasSleepMode() ? 2 : 1; }
  bool hasSleepMode() const { return major_ > 0 || minor_ == 2; }
  bool hasMemoryFullFlag() const { return major_ > 0 || (minor_ == 2 && build_ >= 2); }
  bool showsLoadedVoltage() const { return hasMemoryFullFlag(); }
  /// True when events and status records tell changes and present states apart.
  bool hasNewEvents() const { return hasSleepMode() || (minor_ == 1 && build_ == 29); }
  /// True when colour light is stored on the finer scale.
  bool hasFineLightScale(LoggerModel model) const {
    return model == LoggerModel::Vivid && major_ >= 1 && minor_ >= 1;
  }

 private:
  std::string version_;
  std::int32_t major_ = 0, minor_ = 0, build_ = 0;
};

}  // namespace hy_wristlog::simulator
