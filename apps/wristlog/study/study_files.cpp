#include "study/study_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "hy_wristlog/failure.h"
#include "recording/events_csv.h"
#include "recording/recording_files.h"
#include "recording/series_csv.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace fs = std::filesystem;
namespace platform = hy_wristlog::platform;

namespace {

/// A tree of the output and the file in each of its partitions.
struct Tree {
  const char *Folder, *File;
};
constexpr Tree Series{"series", "series.csv"}, Events{"events", "events.csv"};
constexpr std::array Trees{Series, Events};

constexpr const char* NoValue = "__HIVE_DEFAULT_PARTITION__";
constexpr const char* HalfWritten = ".wristlog-";

/// Bytes from 128 on are parts of characters, which engines take as they are.
std::string escaped(const std::string& value) {
  constexpr std::string_view Digits = "0123456789ABCDEF", Plain = "._-";
  if (value.empty()) return NoValue;
  std::string text;
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPlain = byte >= 0x80 || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                         (c >= 'a' && c <= 'z') || Plain.find(c) != std::string_view::npos;
    if (isPlain)
      text += c;
    else
      text.append({'%', Digits[byte >> 4U], Digits[byte & 15U]});
  }
  return text;
}

std::string pathOf(const Tree& tree, const Partition& partition) {
  return std::string(tree.Folder) + "/" + partition.path() + "/" + tree.File;
}

fs::path folderOf(const std::string& out, const Tree& tree, const Partition& partition) {
  return fs::path(out) / tree.Folder / partition.path();
}

template <class AddRows>
std::int64_t writeTable(const std::string& out, const Tree& tree, const Partition& partition,
                        const AddRows& addRows) {
  std::int64_t size = 0;
  const RecordingFiles files(folderOf(out, tree, partition), true, {tree.File});
  files.writeFile(tree.File, [&](platform::NewFile& file) {
    addRows([&](std::string_view text) {
      size += std::ssize(text);
      file.add(text);
    });
  });
  return size;
}

std::int64_t sizeOf(const fs::path& file) {
  std::error_code error;
  const auto size = fs::is_regular_file(fs::symlink_status(file, error)) ? fs::file_size(file, error) : 0;
  return error || size == 0 ? NoFile : static_cast<std::int64_t>(size);
}

}  // namespace

Partition Partition::of(const Json& row) {
  const auto text = [&](const char* name) {
    const Json& value = row.at(name);
    return value.is_string() ? value.get<std::string>() : std::string();
  };
  Partition partition{text("logger"), text("start_utc")};
  std::erase_if(partition.Start, [](char c) { return c == '-' || c == ':'; });
  return partition;
}

std::string Partition::path() const { return "logger=" + escaped(Logger) + "/start=" + escaped(Start); }

std::string seriesPath(const Partition& partition) { return pathOf(Series, partition); }
std::string eventsPath(const Partition& partition) { return pathOf(Events, partition); }

PartitionSizes writePartition(const std::string& out, const Partition& partition,
                              const DecodedRecording& recording) {
  const auto addSeries = [&](const TextSink& sink) { addSeriesCsv(sink, recording); };
  const auto addEvents = [&](const TextSink& sink) { addEventsCsv(sink, *recording.Logger); };
  return {writeTable(out, Series, partition, addSeries),
          recording.Logger ? writeTable(out, Events, partition, addEvents) : NoFile};
}

PartitionSizes sizesOf(const std::string& out, const Partition& partition) {
  const auto size = [&](const Tree& tree) { return sizeOf(folderOf(out, tree, partition) / tree.File); };
  return {size(Series), size(Events)};
}

bool removePartition(const std::string& out, const Partition& partition) {
  bool removed = false;
  for (const Tree& tree : Trees) {
    const fs::path folder = folderOf(out, tree, partition);
    std::error_code error, none;
    removed = fs::remove(folder / tree.File, error) || removed;
    if (error && error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory)
      throw hw::Failure(hw::FailureNumber::PathFileAccess, "wristlog",
                        (folder / tree.File).string() + ": " + error.message());
    for (const fs::path& emptied : {folder, folder.parent_path()}) fs::remove(emptied, none);
  }
  return removed;
}

std::vector<std::string> strangersIn(const std::string& out, const std::set<Partition>& known) {
  std::set<fs::path> own;
  for (const Partition& partition : known)
    for (const Tree& tree : Trees) own.insert(folderOf(out, tree, partition) / tree.File);
  std::vector<std::string> strangers;
  for (const Tree& tree : Trees) {
    std::error_code error, none;
    fs::recursive_directory_iterator entry(fs::path(out) / tree.Folder, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
      if (entry->is_directory(none) || own.contains(entry->path())) continue;
      if (entry->path().filename().string().starts_with(HalfWritten))
        fs::remove(entry->path(), none);
      else
        strangers.push_back(entry->path());
    }
  }
  std::sort(strangers.begin(), strangers.end());
  return strangers;
}

}  // namespace wristlog
