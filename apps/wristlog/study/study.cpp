#include "study/study.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <map>
#include <mutex>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>
#include <thread>

#include "hy_wristlog/Class_Main.h"
#include "platform/platform.h"
#include "recording/opened_recording.h"
#include "recording/signals_held.h"
#include "study/recording_folders.h"
#include "study/shared_places.h"
#include "study/study_files.h"
#include "study/study_manifest.h"
#include "study/study_table.h"
#include "words/meanings.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace fs = std::filesystem;
namespace platform = hy_wristlog::platform;

namespace {

/// The manifest is kept after so many recordings, so that a study that is killed loses at most these. In
/// large studies it is written at most this often.
constexpr std::size_t FewestBetweenManifests = 64, MostManifests = 16;

hw::Failure failureUnderWay() {
  try {
    throw;
  } catch (const hw::Failure& failure) {
    return failure;
  } catch (const platform::SystemError& error) {
    return {hw::FailureNumber::PathFileAccess, "wristlog",
            platform::current().environment().errorText(error.Number)};
  } catch (const std::bad_alloc&) {
    return {hw::FailureNumber::OutOfMemory, "wristlog", "There is not enough memory"};
  } catch (const std::exception& problem) {
    return {hw::FailureNumber::InvalidCall, "wristlog", problem.what()};
  }
}

/// A recording of the input, in this study.
struct Item {
  std::string Folder;
  const StudiedRecording* Former = nullptr;
  std::optional<StudiedRecording> Now;  ///< none as long as it is not done, and of one that failed
  bool IsDone = false;
  std::string Trouble;  ///< why it failed, or why it cannot be looked at now
};

/// Whether a failure is the machine's, not the recording's.
bool isOfTheMachine(const hw::Failure& failure) {
  return failure.Number == hw::FailureNumber::NoZones || failure.Number == hw::FailureNumber::OutOfMemory;
}

/// The folder's own path, also of one that does not exist yet.
fs::path canonical(const std::string& folder) {
  std::error_code none;
  const fs::path path = fs::weakly_canonical(fs::absolute(folder, none), none);
  return path.has_filename() ? path : path.parent_path();
}

std::string withoutSlash(const std::string& folder) {
  const auto last = folder.find_last_not_of('/');
  return last == std::string::npos ? "/" : folder.substr(0, last + 1);
}

bool isInside(const fs::path& path, const fs::path& folder) {
  return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

bool holds(const UnreadableFolder& unreadable, const std::string& recording) {
  return unreadable.Folder == "." || isInside(recording, unreadable.Folder);
}

class Study {
 public:
  Study(const StudyOptions& options, const StudyEvents& events)
      : options_{withoutSlash(options.Folder), withoutSlash(options.Out), options.Jobs, options.Force},
        events_(events),
        version_(hw::Class_Main().Get_Version()),
        files_(options_.Out, true, {StudyManifestName, StudyTableName, StudyPackageName}) {}

  StudyResult run() {
    const FoundRecordings found = search();
    openOutput(found);
    decodeAll();
    if (writeFailure_) std::rethrow_exception(writeFailure_);
    result_.Stopped = stopped_;
    if (!stopped_) finish(found);
    return std::move(result_);
  }

 private:
  FoundRecordings search() {
    const fs::path in = canonical(options_.Folder), out = canonical(options_.Out);
    if (isInside(in, out))
      throw hw::Failure(hw::FailureNumber::InvalidCall, "wristlog",
                        "The output folder " + options_.Out + " is the input folder, or above it");
    input_ = in.lexically_relative(out).string();
    FoundRecordings found = recordingsBelow(options_.Folder, options_.Out);
    if (found.Folders.empty())
      throw hw::Failure(
          hw::FailureNumber::FileNotFound, "wristlog",
          "No recording is found below " + options_.Folder +
              (found.Unreadable.empty() ? ""
                                        : ", where " + found.Unreadable.front().Folder +
                                              " cannot be read: " + found.Unreadable.front().Words));
    return found;
  }

  std::optional<StudyManifest> formerManifest() const {
    try {
      return StudyManifest::from(platform::current().files().read(options_.Out + "/" + StudyManifestName));
    } catch (const platform::SystemError&) {
      return std::nullopt;
    }
  }

  /// Locks the output folder, and takes over what an earlier study has left there.
  void openOutput(const FoundRecordings& found) {
    files_.prepare();
    const auto former = formerManifest();
    const auto refuse = [&](const std::string& words) {
      if (!options_.Force)
        throw hw::Failure(hw::FailureNumber::FileExists, "wristlog",
                          options_.Out + words + ". Choose another folder, or use --force.");
    };
    std::error_code none;
    const bool isEmpty = fs::directory_iterator(options_.Out, none) == fs::directory_iterator();
    if (!former && !isEmpty) refuse(" exists and holds no study of this program");
    if (former && former->Input != input_)
      refuse(" holds the study of " + (fs::path(options_.Out) / former->Input).lexically_normal().string());
    // The first file that is written locks the folder.
    if (former)
      files_.writeFile(StudyManifestName, former->text());
    else
      writeManifest();
    former_ = formerManifest().value_or(StudyManifest{});
    partitions_ = former_.Partitions;
    for (const std::string& folder : found.Folders) {
      const auto known = former_.Recordings.find(folder);
      items_.push_back({folder, known != former_.Recordings.end() ? &known->second : nullptr, {}, false, {}});
      if (items_.back().Former != nullptr && items_.back().Former->Written)
        owners_.try_emplace(items_.back().Former->partition(), items_.size() - 1);
    }
    keepBelowUnreadable(found);
    result_.Found = items_.size();
  }

  /// Recordings in folders that cannot be read now stay as they were.
  void keepBelowUnreadable(const FoundRecordings& found) {
    for (const auto& known : former_.Recordings) {
      const auto& [folder, recording] = known;
      const auto holdsIt = [&](const UnreadableFolder& each) { return holds(each, known.first); };
      if (std::none_of(found.Unreadable.begin(), found.Unreadable.end(), holdsIt) ||
          std::binary_search(found.Folders.begin(), found.Folders.end(), folder))
        continue;
      items_.push_back({folder, &recording, recording, true, {}});
      if (recording.Written) owners_.try_emplace(recording.partition(), items_.size() - 1);
      ++result_.Unchanged;
      ++done_;
    }
  }

  /// The calling thread works too: it alone learns that the user wants to stop.
  void decodeAll() {
    std::vector<std::jthread> helpers;
    {
      // Signals go to the calling thread.
      const SignalsHeld held;
      const std::size_t most = std::min(options_.Jobs, items_.size());
      try {
        while (helpers.size() + 1 < most) helpers.emplace_back([this] { work([] { return false; }); });
      } catch (const std::system_error&) {
        // The system gives no more threads; fewer do the same work.
      }
    }
    work(events_.IsStopped);
    helpers.clear();
    writeManifest();
  }

  void work(const std::function<bool()>& isStopped) {
    for (std::size_t index = next_++; index < items_.size(); index = next_++) {
      if (isStopped()) stopped_ = true;
      if (stopped_) return;
      if (items_[index].IsDone) continue;
      Item done = items_[index];
      const bool isUnchanged = tryItem(done, index);
      const std::lock_guard lock(mutex_);
      items_[index] = std::move(done);
      if (items_[index].Now) ++(isUnchanged ? result_.Unchanged : result_.Decoded);
      ++done_;
      events_.Progress(done_, items_.size());
      keepManifest();
    }
  }

  /// Does an item, and tells whether it is as it was. A failure of the output ends the study.
  bool tryItem(Item& item, std::size_t index) {
    item.IsDone = true;
    try {
      StudiedRecording now;
      now.Version = version_;
      const std::string folder = pathOf(item);
      now.Files = inputFilesOf(
          folder, item.Former != nullptr && !options_.Force ? item.Former->Files : std::vector<InputFile>{});
      if (isAsBefore(item, now)) {
        item.Now = *item.Former;
        item.Now->Files = std::move(now.Files);
        return true;
      }
      const OpenedRecording opened({folder, {}, {}}, false, {}, Family::Every);
      now.Row = rowOf(item.Folder, opened.decoded());
      if (mayWrite(now.partition(), index)) now.Written = write(now.partition(), opened.decoded());
      item.Now = std::move(now);
    } catch (...) {
      const hw::Failure failure = failureUnderWay();
      if (isOfTheMachine(failure)) {
        item.IsDone = false;
        const std::lock_guard lock(mutex_);
        stopBecauseOf(std::make_exception_ptr(failure));
        return false;
      }
      item.Trouble = wordsFor(failure);
      const bool isUnreadable = failure.Number == hw::FailureNumber::PathFileAccess;
      if (!isUnreadable || item.Former == nullptr) return false;
      item.Now = *item.Former;
      return true;
    }
    return false;
  }

  bool isAsBefore(const Item& item, const StudiedRecording& now) const {
    if (options_.Force || item.Former == nullptr) return false;
    const StudiedRecording& former = *item.Former;
    return former.Version == version_ && haveSameBytes(former.Files, now.Files) &&
           (!former.Written || sizesOf(options_.Out, former.partition()) == *former.Written);
  }

  /// Whether no other recording has this place. Recordings that share one are looked at later.
  bool mayWrite(const Partition& partition, std::size_t index) {
    const std::lock_guard lock(mutex_);
    return owners_.try_emplace(partition, index).first->second == index;
  }

  std::optional<PartitionSizes> write(const Partition& partition, const DecodedRecording& recording) {
    {
      const std::lock_guard lock(mutex_);
      partitions_.insert(partition);
    }
    try {
      return writePartition(options_.Out, partition, recording);
    } catch (const hw::Failure& failure) {
      // Any other one is the recording's.
      if (failure.Number != hw::FailureNumber::PathFileAccess) throw;
      const std::lock_guard lock(mutex_);
      stopBecauseOf(std::current_exception());
      return std::nullopt;
    }
  }

  /// The first failure to write ends the study.
  void stopBecauseOf(const std::exception_ptr& failure) {
    if (!writeFailure_) writeFailure_ = failure;
    stopped_ = true;
  }

  void keepManifest() {
    const std::size_t between = std::max(FewestBetweenManifests, items_.size() / MostManifests);
    if (++sinceManifest_ < between) return;
    sinceManifest_ = 0;
    try {
      writeManifest();
    } catch (const hw::Failure&) {
      stopBecauseOf(std::current_exception());
    }
  }

  /// What is known of all recordings, done or not.
  void writeManifest() const {
    StudyManifest manifest{input_, partitions_, former_.Recordings};
    for (const Item& item : items_) {
      if (!item.IsDone) continue;
      manifest.Recordings.erase(item.Folder);
      if (item.Now) manifest.Recordings.emplace(item.Folder, *item.Now);
    }
    files_.writeFile(StudyManifestName, manifest.text());
  }

  std::string pathOf(const Item& item) const {
    return item.Folder == "." ? options_.Folder : options_.Folder + "/" + item.Folder;
  }

  /// Settles what recordings of one place are to each other, and writes what tells of the study as a whole.
  void finish(const FoundRecordings& found) {
    std::vector<Json> rows;
    rows.reserve(items_.size() + found.Unreadable.size());
    for (const Item& item : items_)
      rows.push_back(item.Now ? item.Now->Row : rowOfTrouble(item.Folder, item.Trouble));
    std::map<Partition, std::vector<std::size_t>> places;
    for (std::size_t i = 0; i < items_.size(); ++i)
      if (items_[i].Now) places[items_[i].Now->partition()].push_back(i);
    std::set<Partition> wanted;
    for (const auto& [partition, indexes] : places)
      if (settle(indexes, rows)) wanted.insert(partition);
    if (writeFailure_) std::rethrow_exception(writeFailure_);
    removeAllBut(wanted);
    for (const Item& item : items_)
      if (item.Now && !item.Trouble.empty()) result_.Unreadable.push_back({item.Folder, item.Trouble});
    for (const UnreadableFolder& folder : found.Unreadable) {
      const bool isKnown = std::any_of(items_.begin(), items_.end(),
                                       [&](const Item& item) { return holds(folder, item.Folder); });
      if (isKnown)
        result_.Unreadable.push_back(folder);
      else
        rows.push_back(rowOfTrouble(folder.Folder, "The folder cannot be read: " + folder.Words));
    }
    std::erase_if(rows, [](const Json& row) { return row.is_null(); });
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Json& row, const Json& other) { return row["folder"] < other["folder"]; });
    result_.Rows = std::move(rows);
    result_.Failed = static_cast<std::size_t>(std::count_if(
        result_.Rows.begin(), result_.Rows.end(), [](const Json& row) { return !row["error"].is_null(); }));
    files_.writeFile(StudyTableName, tableOf(result_.Rows));
    files_.writeFile(StudyPackageName, studyPackage(tables()).dump(2) + "\n");
    former_.Recordings.clear();
    writeManifest();
    result_.Strangers = strangersIn(options_.Out, partitions_);
  }

  /// Lets one of the recordings of a place have it, and makes the rows of the others null. False when none
  /// may.
  bool settle(const std::vector<std::size_t>& indexes, std::vector<Json>& rows) {
    std::vector<SharingRecording> sharing;
    sharing.reserve(indexes.size());
    for (const std::size_t i : indexes) sharing.push_back({pathOf(items_[i]), &*items_[i].Now});
    const SharedPlace place = sharedPlace(sharing);
    const std::size_t chosen = indexes[place.Chosen];
    std::string copies;
    for (const std::size_t i : indexes) {
      if (i == chosen && place.Conflict.empty()) continue;
      items_[i].Now->Written.reset();
      if (!place.Conflict.empty()) {
        rows[i]["error"] = place.Conflict;
        continue;
      }
      copies += (copies.empty() ? "" : "; ") + items_[i].Folder;
      rows[i] = nullptr;
    }
    if (!place.Conflict.empty()) return false;
    if (!copies.empty()) rows[chosen]["copies"] = copies;
    if (!items_[chosen].Now->Written) writeLate(items_[chosen]);
    return true;
  }

  /// Writes the series of a recording whose place another one had.
  void writeLate(Item& item) {
    const OpenedRecording opened({pathOf(item), {}, {}}, false, {}, Family::Every);
    item.Now->Written = write(item.Now->partition(), opened.decoded());
  }

  StudyTables tables() const {
    StudyTables tables;
    for (const Item& item : items_) {
      if (!item.Now || !item.Now->Written) continue;
      const Partition partition = item.Now->partition();
      tables.Series.insert(seriesPath(partition));
      if (item.Now->Written->Events != NoFile) tables.Events.insert(eventsPath(partition));
    }
    return tables;
  }

  void removeAllBut(const std::set<Partition>& wanted) {
    for (auto partition = partitions_.begin(); partition != partitions_.end();) {
      if (wanted.contains(*partition)) {
        ++partition;
        continue;
      }
      const bool wasThere = removePartition(options_.Out, *partition);
      if (wasThere && former_.Partitions.contains(*partition)) result_.Removed.push_back(partition->path());
      partition = partitions_.erase(partition);
    }
  }

  const StudyOptions options_;
  const StudyEvents& events_;
  const std::string version_;
  RecordingFiles files_;
  std::string input_;
  StudyManifest former_;
  StudyResult result_;

  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> stopped_ = false;
  std::mutex mutex_;  ///< guards, while recordings are decoded, what follows and `result_`
  std::vector<Item> items_;
  std::set<Partition> partitions_;
  std::map<Partition, std::size_t> owners_;  ///< whose data a place holds, or will hold
  std::exception_ptr writeFailure_;
  std::size_t done_ = 0, sinceManifest_ = 0;
};

}  // namespace

StudyResult study(const StudyOptions& options, const StudyEvents& events) {
  return Study(options, events).run();
}

}  // namespace wristlog
