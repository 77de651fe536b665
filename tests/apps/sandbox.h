#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "support/surroundings.h"

using Json = nlohmann::ordered_json;

struct Outcome {
  int Status = -1;
  std::string Out, Err;
};

/// A folder in which the program runs as a user of its own, on a machine without docks, in a zone with
/// daylight time and, where it is installed, a locale with a decimal comma.
class Sandbox {
 public:
  Sandbox() { std::filesystem::create_directories(Folder / "sys"); }

  /// `arguments` as a shell takes them; `behind` may redirect or be a pipe to another program, `before` set
  /// variables or limits.
  Outcome run(const std::string& arguments, const std::string& behind = "",
              const std::string& before = "") const {
    const bool isPiped = behind.starts_with("|");
    const int status =
        std::system((before + inSurroundings("TZ=America/New_York LC_ALL=de_DE.UTF-8 " + Environment) +
                     arguments + " </dev/null 2>.err " + (isPiped ? behind + " >.out" : ">.out " + behind))
                        .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, content(".out"), content(".err")};
  }
  /// A shell's words up to the program's arguments, with more variables than those of every run.
  std::string inSurroundings(const std::string& variables) const {
    const std::string home = Folder.string();
    return "cd " + home + " && exec env -i HOME=" + home + " XDG_CONFIG_HOME=" + home +
           "/config XDG_STATE_HOME=" + home + "/state HY_WRISTLOG_SYS=" + home + "/sys " +
           (has("Docks.INI") ? "HY_WRISTLOG_DOCKS=" + home + "/Docks.INI " : "") + variables +
           " " WRISTLOG_PROGRAM " ";
  }

  std::string content(const std::string& name) const { return hy_wristlog::contentOf(Folder / name); }
  void write(const std::string& name, const std::string& text) const {
    hy_wristlog::putFile(Folder / name, text);
  }
  bool has(const std::string& name) const { return std::filesystem::exists(Folder / name); }

 private:
  hy_wristlog::TemporaryFolder folder_;

 public:
  std::filesystem::path Folder = folder_.path();
  std::string Environment;  ///< more variables, in the place of the usual ones
};

/// The keys in their order, a blank after each.
inline std::string keysOf(const Json& object) {
  std::string keys;
  for (const auto& [key, value] : object.items()) keys += key + " ";
  return keys;
}
