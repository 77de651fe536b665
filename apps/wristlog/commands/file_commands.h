#pragma once

#include <string>

#include "commands/many_recordings.h"
#include "session/options.h"

namespace wristlog {

struct OutputOptions {
  std::string File;
  bool Force = false;
};

struct RecordingFileOptions {
  RecordingPlace Place;
  OutputOptions Output;
};

struct ReportOptions {
  RecordingPlaces Places;
  OutputOptions Output;  ///< no file: one in each recording's folder
};

struct RawLoadOptions {
  std::string DumpFile;
  OutputOptions Output;
};

struct ConfigOptions {
  RecordingPlace Place;
  std::string Model;  ///< of the docked logger to read when there is no place; empty: the one that is docked
  OutputOptions Output;
};

struct ConfigImportOptions {
  RecordingPlace Place;
  std::string IniFile;
  OutputOptions Output, Image;
};

int runRawDump(const CommonOptions& common, const RecordingFileOptions& options);
int runRawLoad(const CommonOptions& common, const RawLoadOptions& options);
int runReport(const CommonOptions& common, const ReportOptions& options);
int runLightTest(const CommonOptions& common, const RecordingFileOptions& options);
int runActivityOnly(const CommonOptions& common, const RecordingFileOptions& options);
int runConfigShow(const CommonOptions& common, const ConfigOptions& options);
int runConfigExport(const CommonOptions& common, const ConfigOptions& options);
int runConfigImport(const CommonOptions& common, const ConfigImportOptions& options);
int runConfigImage(const CommonOptions& common, const ConfigOptions& options);

}  // namespace wristlog
