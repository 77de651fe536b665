#include "commands/harvest.h"

#include <mutex>
#include <set>
#include <sstream>

#include "base/ascii.h"
#include "commands/allotment.h"
#include "commands/configuration.h"
#include "commands/docked_retrieval.h"
#include "commands/held_recording.h"
#include "commands/inquiry.h"
#include "commands/pendrel_retrieval.h"
#include "commands/probe.h"
#include "hy_wristlog/failure.h"
#include "session/process.h"
#include "words/broken_retrieval.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;

namespace {

constexpr bool KeepRecord = true;

/// The folders of one harvest. No two docks of it get the same one.
class HarvestFolders {
 public:
  explicit HarvestFolders(const std::string& folder)
      : folder_(folder.substr(0, folder.find_last_not_of('/') + 1)) {}

  /// Files in the folder of a recording, which may have been begun by an earlier harvest. Raises
  /// PathFileAccess when it cannot be written to.
  RecordingFiles filesFor(const HeldRecording& held) {
    const std::lock_guard lock(mutex_);
    const std::string name = folder_ + "/" + nameOf(held);
    std::string free = name;
    for (int number = 2; taken_.contains(free); ++number) free = name + "-" + std::to_string(number);
    taken_.insert(free);
    RecordingFiles files(free, false);
    files.replacePart();
    try {
      files.prepare();
    } catch (const hw::Failure& failure) {
      if (failure.Number != hw::FailureNumber::FileExists) throw;
    }
    if (files.holdAny()) {
      // What is no more of the same will be written beside it.
      const RecordingFiles beside = files.beside();
      beside.prepare();
      taken_.insert(beside.folder());
    }
    return files;
  }

 private:
  /// "V0012345-2026-03-02T0901", in characters that every file system has.
  static std::string nameOf(const HeldRecording& held) {
    constexpr std::size_t Minute = 16;
    std::string name = held.SerialNumber.empty() ? "unknown" : held.SerialNumber;
    name += "-" + (held.StartLocal.size() < Minute ? "unknown" : held.StartLocal.substr(0, Minute));
    std::erase(name, ':');
    for (char& c : name) {
      const bool isPlain =
          (c >= '0' && c <= '9') || (hw::asciiLower(c) >= 'a' && hw::asciiLower(c) <= 'z') || c == '-';
      if (!isPlain) c = '_';
    }
    return name;
  }

  std::string folder_;
  std::mutex mutex_;
  std::set<std::string> taken_;
};

/// The work with one dock, on its own thread.
class DockHarvest {
 public:
  DockHarvest(CommonOptions common, const HarvestOptions& options, const hw::Dock& dock,
              HarvestFolders& folders)
      : common_(std::move(common)), options_(options), dock_(dock), folders_(folders) {}

  HarvestOutcome retrieve() {
    std::ostringstream told;
    const SpeechCaught caught(told);
    const std::string trouble = troubleOf([this] { isPendrel() ? retrievePendrel() : retrieveVarden(); });
    if (!trouble.empty()) fail(trouble);
    outcome_.Remarks = told.str();
    return outcome_;
  }

  void configure(const Participant& participant, HarvestOutcome& outcome) const {
    outcome.Given = &participant;
    if (isPendrel())
      outcome.ConfigureWords =
          "A Pendrel logger is not configured from a list: 'wristlog legacy configure' configures it.";
    else if (interruptRequested())
      outcome.ConfigureWords = "Stopped before it was configured.";
    if (!outcome.ConfigureWords.empty()) return;
    std::ostringstream told;
    const SpeechCaught caught(told);
    std::string meaning;
    const std::string trouble = troubleOf([&] {
      Session session(common_);
      const Configured result = wristlog::configure(session, dock_.Model, participant.Options);
      outcome.Configured = result.Code == 0;
      if (!outcome.Configured) meaning = result.Meaning;
    });
    outcome.ConfigureWords = trouble.empty() ? meaning : trouble;
    outcome.Remarks += told.str();
  }

 private:
  bool isPendrel() const { return dock_.Model == hw::LggrPntr_Pendreader; }

  void end(HarvestEnd end, const std::string& words = {}) {
    outcome_.End = end;
    outcome_.Words = words;
  }
  void fail(const std::string& words) {
    end(interruptRequested() ? HarvestEnd::Stopped : HarvestEnd::Failed, words);
  }

  /// The options of a retrieval by itself, so that its record can be replayed.
  CommonOptions retrieving(const std::string& folder) const {
    CommonOptions own = common_;
    own.Arguments = {"retrieve", "--out", folder};
    if (isPendrel())
      own.Arguments.insert(own.Arguments.begin(), "legacy");
    else
      own.Arguments.insert(own.Arguments.end(),
                           {"--model", dock_.Model == hw::LggrPntr_KRVivid ? "vivid" : "kestrin2"});
    return own;
  }

  /// Whether there is something to retrieve.
  bool isWanted(const HeldRecording& held) {
    outcome_.SerialNumber = held.SerialNumber;
    outcome_.Identity = held.Identity;
    if (!held.isThere()) {
      end(HarvestEnd::NoData, outcome_.Waits ? "It is configured, and waits for its start." : "");
      return false;
    }
    const auto note = noteOf(held);
    if (!note) return true;
    end(HarvestEnd::RetrievedBefore, retrievalWords(held));
    outcome_.Folder = note->Place;
    return false;
  }

  void keep(const WrittenRecording& written, const RecordingFiles& files,
            const RetrievedRecording& recording) {
    outcome_.Drawn = written.Drawn;
    if (recording.isThere()) outcome_.Folder = written.Place.value_or(files).folder();
  }

  void retrieveVarden() {
    HeldRecording held;
    {
      Session session(common_);
      const Status status = askStatus(session, dock_.Model);
      outcome_.Code = status.Code;
      if (status.Code != 0) return fail(explanationOf(status.Code, dock_.Model));
      if (!status.wasRead() && status.Simple == "Logger Not Found") return end(HarvestEnd::NoLogger);
      if (!status.wasRead()) {
        const std::string trouble = dockTroubleOf(dock_.Model);
        return fail(trouble.empty() ? status.Long : trouble);
      }
      held = heldBy(*status.Logger);
      outcome_.Waits = status.Simple.starts_with("Waiting");
    }
    if (!isWanted(held)) return;
    const RecordingFiles files = folders_.filesFor(held);
    Session session(retrieving(files.folder()), KeepRecord);
    const RetrieveOptions options{{}, {}, false, options_.IgnoreWarnings, options_.Attempts};
    const DockedRetrieval retrieved(session, dock_.Model, options, files);
    outcome_.Code = retrieved.Result.Code;
    keep(retrieved.Written, files, retrieved.Recording);
    if (!retrieved.Result.isGood()) return fail(retrieved.Meaning);
    std::string words = retrieved.Result.Verdict ? verdictWords(retrieved.Result) : "";
    for (const std::string& warning : ignoredWarnings(retrieved.Result))
      words += (words.empty() ? "" : " ") + ("Ignored: " + warning);
    end(HarvestEnd::Retrieved, words);
  }

  void retrievePendrel() {
    HeldRecording held;
    {
      PendrelSession session(common_, {});
      outcome_.Code = session.workflows().ReadPendrelSetup(false);
      if (outcome_.Code == hw::FailureNumber::NoCharacters) return end(HarvestEnd::NoLogger);
      if (outcome_.Code != 0) return fail(session.meaningOf(outcome_.Code));
      held = heldBy(session.logger());
    }
    if (!isWanted(held)) return;
    const RecordingFiles files = folders_.filesFor(held);
    PendrelSession session(retrieving(files.folder()), {}, KeepRecord);
    constexpr bool Searches = false, Repairs = false;
    const DockedPendrelRetrieval retrieved(session, Searches, Repairs, files);
    outcome_.Code = retrieved.Result.Code;
    keep(retrieved.Written, files, retrieved.Recording);
    if (outcome_.Code == 0) return end(HarvestEnd::Retrieved);
    session.writeRecord(retrieved.Written.Place.value_or(files), outcome_.Code);
    fail(session.meaningOf(outcome_.Code));
  }

  CommonOptions common_;
  const HarvestOptions& options_;
  const hw::Dock& dock_;
  HarvestFolders& folders_;
  HarvestOutcome outcome_;
};

/// A logger that waits for its start has been given to somebody; only a row that names it takes it away.
bool mayConfigure(const HarvestOutcome& outcome, const Participant& participant) {
  const bool isNamed = !participant.SerialNumber.empty() || !participant.Dock.empty();
  if (outcome.Waits && !isNamed) return false;
  return outcome.End == HarvestEnd::Retrieved || outcome.End == HarvestEnd::RetrievedBefore ||
         outcome.End == HarvestEnd::NoData;
}

}  // namespace

bool HarvestOutcome::isGood() const {
  return End != HarvestEnd::Failed && End != HarvestEnd::Stopped && Drawn && (Given == nullptr || Configured);
}

std::string wordsFor(HarvestEnd end) {
  switch (end) {
    case HarvestEnd::Retrieved:
      return "retrieved";
    case HarvestEnd::RetrievedBefore:
      return "retrieved before";
    case HarvestEnd::NoData:
      return "no data";
    case HarvestEnd::NoLogger:
      return "no logger";
    case HarvestEnd::Stopped:
      return "stopped";
    case HarvestEnd::Failed:
      break;
  }
  return "failed";
}

std::vector<HarvestOutcome> harvest(const CommonOptions& common, const HarvestOptions& options,
                                    const std::vector<hw::Dock>& docks, HarvestWatch& watch,
                                    const WorldOfDock& world) {
  Allotment allotment(options, docks);
  std::vector<HarvestOutcome> outcomes(docks.size());
  HarvestFolders folders(options.Folder);
  forEachDock(
      docks,
      [&](std::size_t place) {
        CommonOptions own = common;
        own.Progress = [&watch, place](const std::string& text) { watch.progress(place, text); };
        HarvestOutcome& outcome = outcomes[place];
        DockHarvest work(forDock(own, docks[place]), options, docks[place], folders);
        watch.progress(place, "Asking who sits in it");
        outcome = work.retrieve();
        const Participant* const participant = allotment.find(place, outcome.SerialNumber);
        if (participant != nullptr && mayConfigure(outcome, *participant) && allotment.take(*participant)) {
          watch.progress(place, "Configuring it");
          work.configure(*participant, outcome);
        }
        watch.ended(place, outcome);
      },
      world);
  return outcomes;
}

}  // namespace wristlog
