#pragma once

#include <set>
#include <span>
#include <string>
#include <vector>

#include "recording/codebook.h"
#include "recording/decoded_recording.h"
#include "recording/json.h"

/// The table of a study's recordings, a row for each. A row is a JSON object that has the table's columns in
/// their order, null where a cell is empty.
namespace wristlog {

std::span<const Field> studyFields();

/// The row of a decoded recording, which is in `folder`. To be called in its RecordingWorld.
Json rowOf(const std::string& folder, const DecodedRecording& recording);
/// The row of what could not be read or decoded.
Json rowOfTrouble(const std::string& folder, const std::string& words);

/// The table as CSV, with its heading.
std::string tableOf(const std::vector<Json>& rows);
/// The files of a study's two common tables, below its output folder.
struct StudyTables {
  std::set<std::string> Series, Events;
};
/// datapackage.json of a study: its table, series and events.
Json studyPackage(const StudyTables& tables);

}  // namespace wristlog
