#pragma once

#include <optional>
#include <string>

#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_Subject.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "hy_wristlog/failure.h"
#include "recording/decoded_recording.h"
#include "recording/json.h"

namespace wristlog {

/// The record's properties by their names in snake_case; the series are left out. A date is given as ISO 8601
/// in UTC, null when unknown, and as a day count under the same name with "_date".
Json loggerJson(hy_wristlog::Class_VardenLogger& logger);
/// The same of a Pendrel's record, with dates in the logger's local time: "2026-03-02", "09:01:00".
Json loggerJson(hy_wristlog::Class_Pendrel& logger);
/// Null for an empty text.
Json textOrNull(const std::string& text);
Json subjectJson(const hy_wristlog::Class_Subject& subject);
/// The decoded recording: verdict, start, counts and series. `result` is none when nothing was decoded.
Json recordingJson(hy_wristlog::Class_VardenLogger& logger,
                   std::optional<hy_wristlog::enmDecodeResult> result, bool lowBattery);
Json recordingJson(const hy_wristlog::Class_Pendrel& logger);
/// What tells that it is a part: how many bytes of how many, and until when they reach.
Json partJson(const RecordingPart& part);
/// Days rounded to one decimal, as they are shown.
double roundedDays(double days);
Json failureJson(const hy_wristlog::Failure& failure);

/// Prints the one JSON document on standard output.
void print(const Json& document);

}  // namespace wristlog
