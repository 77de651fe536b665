#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/dates.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "platform/recorded_world.h"

namespace wristlog {

/// What a command's session was: what it ran as, and all that crossed the seam at its ports. As a file it is
/// lines of JSON: this header, an event a line, and how it ended.
struct SessionRecord {
  std::string Program;                 ///< version of the program that wrote it
  std::vector<std::string> Arguments;  ///< the command's, without those that concern the record or the dock
  std::string Model;                   ///< vivid, kestrin2 or pendrel; empty for a command that takes any
  std::string Simulated;               ///< whom --simulate named
  std::string Zone;                    ///< the catalogue's key of the machine's zone; empty when it has none
  hy_wristlog::CivilTime Start;        ///< UTC
  double Timer = 0;                    ///< what the world's timer said then: sums of it round as they did
  std::map<hy_wristlog::platform::LocaleItem, std::string> Locale;
  bool Redacted = false;
  std::string DocksFile;  ///< where docks are declared, for the command that names the file; else empty

  std::vector<hy_wristlog::platform::WireEvent> Events;

  std::optional<int> ExitStatus;               ///< none when the session did not come to its end
  std::string Words;                           ///< how it ended, for people
  std::optional<hy_wristlog::Failure> Failed;  ///< what the command raised
};

/// A session of `arguments` that begins now in `world`.
SessionRecord sessionIn(hy_wristlog::platform::Platform& world, const std::vector<std::string>& arguments,
                        const std::string& simulated);

/// Lines of the file, each with its line end.
std::string headerLine(const SessionRecord& record);
/// `latest` counts the ports opened before, and this one: an event of another port names it.
std::string eventLine(const hy_wristlog::platform::WireEvent& event, std::int32_t& latest);
std::string endLine(int exitStatus, const std::string& words,
                    const std::optional<hy_wristlog::Failure>& failed = {});
/// All of them.
std::string textOf(const SessionRecord& record);

/// Raises InvalidCall, with the line, for a text that is no session record or a damaged one. A last line
/// that is not whole is left out: a session may have ended while it was written.
SessionRecord recordOf(std::string_view text);

/// Whether something was said on a port.
bool usesPort(const SessionRecord& record);

/// The value of an option ("--out DIR" or "--out=DIR") among arguments; empty when it is not there. What
/// stands after "--" is no option, here and in the following.
std::string valueOf(const std::vector<std::string>& arguments, std::string_view option);
/// The arguments without an option and, when it takes one, its value.
std::vector<std::string> withoutOption(const std::vector<std::string>& arguments, std::string_view option,
                                       bool takesValue);
/// The arguments without those that the world of a record tells, or that would leave it.
std::vector<std::string> withoutOwnWorld(std::vector<std::string> arguments);

/// Adds an option, with its value.
void addOption(std::vector<std::string>& arguments, const std::vector<std::string>& option);

}  // namespace wristlog
