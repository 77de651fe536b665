#pragma once

#include <cstdint>
#include <string>

#include "commands/commands.h"

namespace wristlog {

/// Where the Pendreader is.
struct ReaderOptions {
  std::int16_t Port = 0;  ///< 0: the remembered one
  bool Search = false;
};

struct LegacyConfigureOptions {
  std::int32_t Mode = 0, EpochLength = 0;
  SubjectOptions Subject;
  std::string Zone, Start;
  bool NoDaylight = false, KeepMemory = false;
};

struct LegacyRetrieveOptions {
  std::string Folder;
  bool Force = false, Repair = false;
};

struct LegacyExportOptions {
  std::string File;
  bool Force = false, Repair = false;
};

int runLegacyFindPort(const CommonOptions& common);
int runLegacyStatus(const CommonOptions& common, const ReaderOptions& reader);
int runLegacyConfigure(const CommonOptions& common, const ReaderOptions& reader,
                       const LegacyConfigureOptions& options);
int runLegacyRetrieve(const CommonOptions& common, const ReaderOptions& reader,
                      const LegacyRetrieveOptions& options);
/// `date` is yyyy-mm-dd; empty: today.
int runLegacyBatteryDate(const CommonOptions& common, const ReaderOptions& reader, const std::string& date);
int runLegacyExport(const CommonOptions& common, const ReaderOptions& reader,
                    const LegacyExportOptions& options);

}  // namespace wristlog
