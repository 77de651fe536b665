#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

using Json = nlohmann::ordered_json;

struct Outcome {
  int Status = -1;
  std::string Out, Err;
};

/// A folder in which the program runs as a user of its own, on a machine without docks, in a zone with
/// daylight time and, where it is installed, a locale with a decimal comma.
class Sandbox {
 public:
  Sandbox() {
    std::string pattern = (std::filesystem::temp_directory_path() / "wristlog-apps-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    Folder = pattern;
    std::filesystem::create_directories(Folder / "sys");
  }
  ~Sandbox() {
    std::error_code ignored;
    std::filesystem::remove_all(Folder, ignored);
  }
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;

  /// `arguments` as a shell takes them; `behind` may redirect, `before` set variables or limits.
  Outcome run(const std::string& arguments, const std::string& behind = "",
              const std::string& before = "") const {
    const std::string home = Folder.string();
    const std::string command = "cd " + home + " && " + before + " env -i HOME=" + home +
                                " XDG_CONFIG_HOME=" + home + "/config XDG_STATE_HOME=" + home +
                                "/state HY_WRISTLOG_SYS=" + home + "/sys HY_WRISTLOG_DOCKS=" + home +
                                "/Docks.INI TZ=America/New_York LC_ALL=de_DE.UTF-8 " + Environment +
                                " " WRISTLOG_PROGRAM " " + arguments + " </dev/null >.out 2>.err " + behind;
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, content(".out"), content(".err")};
  }

  std::string content(const std::string& name) const {
    std::ifstream file(Folder / name, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }
  void write(const std::string& name, const std::string& text) const {
    std::ofstream(Folder / name, std::ios::binary) << text;
  }

  bool has(const std::string& name) const { return std::filesystem::exists(Folder / name); }

  std::filesystem::path Folder;
  std::string Environment;  ///< more variables, in the place of the usual ones
};

/// The keys in their order, a blank after each.
inline std::string keysOf(const Json& object) {
  std::string keys;
  for (const auto& [key, value] : object.items()) keys += key + " ";
  return keys;
}
