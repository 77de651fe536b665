#pragma once

#include <cstdint>
#include <string>

#include "commands/commands.h"
#include "session/options.h"

namespace wristlog {

struct PendrelConfigureOptions {
  std::int32_t Mode = 0, EpochLength = 0;
  SubjectOptions Subject;
  std::string Zone, Start;
  bool NoDaylight = false, KeepMemory = false, Erase = false;
};

struct PendrelRetrieveOptions {
  std::string Folder;
  bool Force = false, Repair = false;
};

struct PendrelExportOptions {
  std::string File;
  bool Force = false, Repair = false;
};

int runPendrelFindPort(const CommonOptions& common);
int runPendrelStatus(const CommonOptions& common, const ReaderOptions& reader);
int runPendrelConfigure(const CommonOptions& common, const ReaderOptions& reader,
                        const PendrelConfigureOptions& options);
int runPendrelRetrieve(const CommonOptions& common, const ReaderOptions& reader,
                       const PendrelRetrieveOptions& options);
/// `date` is yyyy-mm-dd; empty: today.
int runPendrelBatteryDate(const CommonOptions& common, const ReaderOptions& reader, const std::string& date);
int runPendrelExport(const CommonOptions& common, const ReaderOptions& reader,
                     const PendrelExportOptions& options);

}  // namespace wristlog
