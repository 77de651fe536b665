#include "commands/harvest_board.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "engineering/docks.h"
#include "recording/json_output.h"
#include "session/process.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

/// The first characters of a text, whole ones.
std::string cut(const std::string& text, std::size_t width) {
  std::size_t characters = 0;
  for (std::size_t at = 0; at < text.size(); ++at)
    if ((static_cast<unsigned char>(text[at]) & 0xC0U) != 0x80U && ++characters > width)
      return text.substr(0, at);
  return text;
}

struct TerminalSize {
  std::size_t Rows = 24, Columns = 80;
};

TerminalSize terminalSize() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col < 2 || size.ws_row < 2) return {};
  return {size.ws_row, size.ws_col};
}

class TerminalBoard final : public HarvestWatch {
 public:
  explicit TerminalBoard(const std::vector<hw::Dock>& docks) : lines_(docks.size()), out_(complain()) {
    for (const hw::Dock& dock : docks) {
      names_.push_back(dock.Name);
      longest_ = std::max(longest_, dock.Name.size());
    }
  }
  void progress(std::size_t place, const std::string& text) override { show(place, text); }
  void ended(std::size_t place, const HarvestOutcome& outcome) override {
    show(place, wordsFor(outcome.End) + (outcome.Configured ? ", configured" : ""));
  }

 private:
  void show(std::size_t place, const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (lines_[place] == text) return;
    lines_[place] = text;
    const TerminalSize size = terminalSize();
    const auto tell = [&](std::size_t line) {
      std::string words = names_[line];
      words.append(longest_ - words.size() + 2, ' ');
      out_ << "\r\033[K" << cut(words + lines_[line], size.Columns - 1) << "\n";
    };
    const bool fits = lines_.size() < size.Rows;
    if (fits && std::exchange(shown_, true))
      for (std::size_t line = 0; line < lines_.size(); ++line) out_ << "\033[A";
    if (interruptRequested() && !std::exchange(announced_, true))
      out_ << "\r\033[KStopping, and leaving the loggers in order. Ctrl-C again ends at once.\n";
    // A board that scrolls cannot be painted over.
    for (std::size_t line = 0; line < lines_.size(); ++line)
      if (fits || line == place) tell(line);
    out_.flush();
  }

  std::vector<std::string> lines_, names_;
  std::size_t longest_ = 0;
  Speech out_;
  std::mutex mutex_;
  bool shown_ = false, announced_ = false;
};

class JsonEvents final : public HarvestWatch {
 public:
  explicit JsonEvents(const std::vector<hw::Dock>& docks) : docks_(docks) {}
  void progress(std::size_t place, const std::string& text) override {
    put({{"event", "progress"}, {"dock", docks_[place].Name}, {"text", text}});
  }
  void ended(std::size_t place, const HarvestOutcome& outcome) override {
    Json event{{"event", "dock"}};
    event.update(outcomeJson(docks_[place], outcome));
    put(event);
  }

 private:
  void put(const Json& event) {
    const std::lock_guard lock(mutex_);
    printLine(event);
  }

  const std::vector<hw::Dock>& docks_;
  std::mutex mutex_;
};

}  // namespace

std::unique_ptr<HarvestWatch> makeHarvestWatch(bool asJson, const std::vector<hw::Dock>& docks) {
  if (asJson) return std::make_unique<JsonEvents>(docks);
  if (::isatty(STDERR_FILENO) == 1) return std::make_unique<TerminalBoard>(docks);
  return std::make_unique<HarvestWatch>();
}

Json outcomeJson(const hw::Dock& dock, const HarvestOutcome& outcome) {
  Json document{{"dock", dock.Name},
                {"model", hw::engineering::modelWords(dock.Model)},
                {"outcome", wordsFor(outcome.End)},
                {"return_code", outcome.Code},
                {"words", textOrNull(outcome.Words)},
                {"serial_number", textOrNull(outcome.SerialNumber)},
                {"identity", textOrNull(outcome.Identity)},
                {"folder", textOrNull(outcome.Folder)},
                {"remarks", textOrNull(outcome.Remarks)},
                {"configured", Json()}};
  if (outcome.Given != nullptr)
    document["configured"] = {{"good", outcome.Configured},
                              {"identity", outcome.Given->Options.Subject.Identity},
                              {"line", outcome.Given->Line},
                              {"words", textOrNull(outcome.ConfigureWords)}};
  return document;
}

void printLine(const Json& document) {
  printDocument(document.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace wristlog
