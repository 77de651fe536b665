#pragma once

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "recording/decoded_recording.h"
#include "recording/json.h"

/// The files of a study, below its output folder.
namespace wristlog {

inline constexpr const char *StudyTableName = "recordings.csv", *StudyManifestName = "study.json",
                            *StudyPackageName = "datapackage.json";

/// A place in the partitioned series and events: what one recording of one logger has.
struct Partition {
  std::string Logger, Start;

  /// Of a row of the study's table.
  static Partition of(const Json& row);
  /// "logger=V0012345/start=20260302T140200Z". Characters that folders or `key=value` names cannot hold are
  /// written as "%2F", which engines turn back.
  std::string path() const;
  bool operator<(const Partition& other) const {
    return std::tie(Logger, Start) < std::tie(other.Logger, other.Start);
  }
};

/// Where a partition's files are, below the output folder.
std::string seriesPath(const Partition& partition);
std::string eventsPath(const Partition& partition);

inline constexpr std::int64_t NoFile = -1;

/// The sizes of a partition's files, by which it is seen whether they are still there; NoFile for one that
/// is not, as the events of a Pendrel.
struct PartitionSizes {
  std::int64_t Series = 0, Events = 0;
  bool operator==(const PartitionSizes&) const = default;
};

/// Writes the files, each whole or not at all. Raises PathFileAccess. To be called in the recording's world.
PartitionSizes writePartition(const std::string& out, const Partition& partition,
                              const DecodedRecording& recording);
PartitionSizes sizesOf(const std::string& out, const Partition& partition);
/// Removes its files, and the folders that are empty then. False when there was none. Raises PathFileAccess.
bool removePartition(const std::string& out, const Partition& partition);
/// Removes what a killed study has left half-written, and names the files that belong to none of `known`.
std::vector<std::string> strangersIn(const std::string& out, const std::set<Partition>& known);

}  // namespace wristlog
