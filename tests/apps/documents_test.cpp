#include <algorithm>
#include <filesystem>
#include <optional>
#include <sstream>
#include <thread>

#include "apps/desk.h"
#include "apps/served.h"
#include "support/surroundings.h"

namespace {

namespace fs = std::filesystem;
namespace sim = hy_wristlog::simulator;
using namespace std::chrono_literals;

struct Example {
  std::string File, Command;
  std::string Number;   ///< of the failure or return code that the document shows, or empty
  std::string Section;  ///< the heading above it, and the document
};

constexpr std::string_view Indent = "    ";

/// The command of a line, or nothing: "    $ wristlog status", or "wristlog status" of the man page.
std::string commandIn(std::string_view line, bool isManual) {
  if (!isManual && !line.starts_with(Indent)) return {};
  if (!isManual) line.remove_prefix(Indent.size());
  if (!isManual && line.starts_with("$ ")) line.remove_prefix(2);
  if (!line.starts_with("wristlog ")) return {};
  std::string command;
  for (const char c : line)
    if (!isManual || c != '\\') command += c;
  return command;
}

/// The number of "Code 10003" or "(failure 53)" in a line, or nothing.
std::string numberIn(std::string_view line) {
  constexpr std::string_view Digits = "0123456789";
  for (const std::string_view mark : {"Code ", "(failure "})
    if (const std::size_t at = line.find(mark); at != line.npos) {
      const std::string_view number = line.substr(at + mark.size());
      return std::string(number.substr(0, number.find_first_not_of(Digits)));
    }
  return {};
}

/// The commands of a document in their order: indented lines, or those of the man page's examples.
std::vector<Example> examplesIn(const fs::path& file) {
  const bool isManual = file.extension() == ".1";
  std::vector<Example> examples;
  std::istringstream lines(hy_wristlog::contentOf(file));
  bool shows = false, isExample = !isManual;
  std::string section;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(isManual ? ".SH" : "#")) section = file.string() + line;
    if (isManual && line.starts_with(".")) isExample = line == ".nf";
    const std::string command = isExample ? commandIn(line, isManual) : "";
    if (!command.empty()) examples.push_back({file.filename(), command, "", section});
    if (!command.empty() || !line.starts_with(Indent))
      shows = !command.empty();
    else if (const std::string number = numberIn(line); shows && !number.empty())
      examples.back().Number = number;
  }
  return examples;
}

std::vector<Example> allExamples() {
  const fs::path root = fs::path(TEST_DATA) / "../..";
  std::vector<fs::path> files{root / "README.md", root / "packaging/wristlog.1"}, documents;
  for (const auto& entry : fs::directory_iterator(root / "docs"))
    if (entry.path().extension() == ".md") documents.push_back(entry.path());
  std::sort(documents.begin(), documents.end());
  files.insert(files.end(), documents.begin(), documents.end());
  std::vector<Example> examples;
  for (const fs::path& file : files)
    for (const Example& example : examplesIn(file)) examples.push_back(example);
  return examples;
}

/// The options of a line that serves a logger, at a port that is free whichever one it names.
std::string servingOptions(const std::string& command) {
  std::string options = command.substr(command.find("simulate") + 8);
  const std::size_t listen = options.find("--listen ");
  if (listen == std::string::npos) return options;
  const std::size_t port = options.find(':', listen) + 1;
  return options.replace(port, options.find_first_not_of("0123456789", port) - port, "0");
}

/// A logger that a line of a document serves to the following ones of its section.
struct ServedDesk {
  ServedDesk(const fs::path& folder, const std::string& command, const std::string& section)
      : Section(section),
        sys_("HY_WRISTLOG_SYS", folder / "no-docks"),
        config_("XDG_CONFIG_HOME", folder / "config"),
        zone_("TZ", "America/New_York"),
        docks_("HY_WRISTLOG_DOCKS", folder / "docks.ini"),
        logger_("exec " WRISTLOG_PROGRAM " simulate --json " + servingOptions(command)) {
    EXPECT_FALSE(logger_.Ready.is_null());
  }
  /// Who configures it leaves it alone until it has recorded something.
  void rest() {
    EXPECT_FALSE(logger_.await("recording").is_null());
    std::this_thread::sleep_for(500ms);
  }

  std::string Section;

 private:
  hy_wristlog::Variable sys_, config_, zone_, docks_;
  Served logger_;
  hy_wristlog::platform::WorldScope machine_{nullptr};
};

/// A machine with a new Kestrin Vivid in its dock and a new Pendrel in its reader. Who configures one wears
/// it for some hours and docks it again. Each document has a folder, in which the recordings that it names
/// are already there unless it makes them. After a line that serves a logger, the others of its section run
/// on the machine itself.
class DocumentedDesk {
 public:
  DocumentedDesk() : former_(fs::current_path()) {
    desk_.bench.World->addDock(sim::PendrelBenchOptions{}.Dock).insert(pendrel_);
  }
  ~DocumentedDesk() { fs::current_path(former_); }
  DocumentedDesk(const DocumentedDesk&) = delete;
  DocumentedDesk& operator=(const DocumentedDesk&) = delete;

  Told run(const Example& example) {
    const fs::path here = fs::path(folder_.path()) / example.File;
    fs::create_directories(here);
    fs::current_path(here);
    std::vector<std::string> words = shellWords(example.Command);
    words.erase(words.begin());
    if (served_ && (served_->Section != example.Section || words[0] == "simulate")) served_.reset();
    if (words[0] == "simulate" && words.back() != "--help") {
      served_.emplace(here, example.Command, example.Section);
      return {0, "", ""};
    }
    for (std::size_t i = 1; i < words.size(); ++i)
      if (words[i - 1] != "--out") provide(words[i]);
    Told told = runHere(words);
    if (served_) {
      if (words[0] == "configure") served_->rest();
      return told;
    }
    const bool done = told.Status == 0 && example.Command.find("--simulate") == std::string::npos;
    const bool configured =
        words[0] == "configure" || example.Command.find("--configure") != std::string::npos;
    if (done && configured) desk_.bench.Logger->wear(5h);
    if (done && words[0] == "legacy" && words[1] == "configure") pendrel_.wear(5h);
    return told;
  }

 private:
  static void provide(const std::string& name) {
    if (fs::exists(name)) return;
    const std::string folder = name.substr(0, name.find('/'));
    if (folder == "monday" && !fs::exists(folder)) make("vivid", folder);
    if (folder == "recordings") make("vivid", "recordings/site-a/monday");
    if (name == "tuesday" || name == "bench") make("kestrin2", name);
    if (name == "friday") make("pendrel27", name);
    if (name == "list.csv")
      hy_wristlog::putFile(fs::current_path() / name, "identity,mode,epoch\nSubject 31,1,60\n");
    if (name == "cut.bin")
      hy_wristlog::putFile(fs::current_path() / name,
                           hy_wristlog::contentOf("monday/raw.bin").substr(0, 100));
  }
  static void make(const std::string& model, const std::string& folder) {
    const std::string command = model == "pendrel27" ? "legacy retrieve" : "retrieve --model " + model,
                      options = command + " --simulate " + model + " --out " + folder;
    EXPECT_EQ(runHere(options).Status, 0);
  }

  hy_wristlog::TemporaryFolder folder_;
  fs::path former_;
  Desk<sim::Bench> desk_{sim::makeVividBench()};
  sim::SimulatedPendrel& pendrel_ = desk_.bench.World->addPendrel({});
  std::optional<ServedDesk> served_;
};

TEST(Documents, EveryCommandInThemDoesWhatTheyShow) {
  const std::vector<Example> examples = allExamples();
  EXPECT_GT(examples.size(), 30U);
  DocumentedDesk desk;
  for (const Example& example : examples) {
    SCOPED_TRACE(example.File + ": " + example.Command);
    const Told told = desk.run(example);
    if (example.Command.starts_with("wristlog console")) {
      EXPECT_NE(told.Err.find("terminal"), std::string::npos) << told.Err;
      continue;
    }
    EXPECT_EQ(told.Status, example.Number.empty() ? 0 : 1) << told.all();
    EXPECT_NE(told.all().find(example.Number), std::string::npos) << told.all();
  }
}

}  // namespace
