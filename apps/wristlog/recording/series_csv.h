#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "hy_wristlog/Class_Pendrel.h"
#include "hy_wristlog/Class_VardenLogger.h"
#include "recording/decoded_recording.h"

namespace wristlog {

/// Where the text of a table goes, in pieces.
using TextSink = std::function<void(std::string_view)>;

enum class SeriesPart : std::uint8_t { Everything, Rows };

/// Writes a heading, the same for every logger and mode, and one row an epoch. The cell of an epoch without a
/// value is empty, and so is a column that the logger or its mode does not record.
void addSeriesCsv(const TextSink& sink, const hy_wristlog::Class_VardenLogger& logger,
                  SeriesPart part = SeriesPart::Everything);
void addSeriesCsv(const TextSink& sink, const hy_wristlog::Class_Pendrel& logger,
                  SeriesPart part = SeriesPart::Everything);
void addSeriesCsv(const TextSink& sink, const DecodedRecording& recording,
                  SeriesPart part = SeriesPart::Everything);

}  // namespace wristlog
