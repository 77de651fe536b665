#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "commands/many_recordings.h"
#include "session/options.h"

namespace wristlog {

struct DemoOptions {
  std::string Folder;
  bool OwnFolder = false;  ///< the demo's own folder: files of an earlier demo may be replaced
  bool Force = false;
};

struct SubjectOptions {
  std::string Identity, Initials, Gender, BirthDate, Guid;
  float Height = 0, Weight = 0;
};

struct ConfigureOptions {
  std::string Model;
  std::int32_t Mode = 0, EpochLength = 0;
  SubjectOptions Subject;
  std::string Zone;
  bool NoDaylight = false, Erase = false;
  std::string SetTime, Start, End;
  std::string DateFormat = "mmdd", TimeFormat = "24";
  std::int16_t Attempts = 1;
};

struct RetrieveOptions {
  std::string Model;
  std::string Folder;
  bool Force = false, IgnoreWarnings = false;
  std::int16_t Attempts = 1;
};

/// Who gets the logger of a dock, and how it is to record.
struct Participant {
  std::size_t Line = 0;            ///< of the list
  std::string SerialNumber, Dock;  ///< of the logger, or of its dock; both empty: the next dock
  ConfigureOptions Options;
};

struct HarvestOptions {
  std::string Folder;
  bool IgnoreWarnings = false;
  std::int16_t Attempts = 1;
  std::string ListFile;  ///< of participants; empty: nothing is configured
  std::vector<Participant> Participants;
};

/// The name that stands for standard output in the place of a folder.
inline constexpr const char* StandardOutput = "-";

struct DecodeOptions {
  RecordingPlaces Places;
  std::string Folder;  ///< empty: nothing is written
  std::string Now;
  bool Diagnostic = false, Force = false;
};

struct PlotOptions {
  RecordingPlaces Places;  ///< folders only
  std::string Folder;      ///< empty: each one's own
  std::int32_t RowHours = 48, StartHour = 0;
  std::int32_t Scale = 0;  ///< counts an epoch; 0: fits each recording
  std::string Zone;        ///< empty: each logger's
  bool Diagnostic = false, Force = false;
};

struct ConsoleOptions {
  std::string Model, Workflow = "status";
  std::string Folder;  ///< where a retrieved recording is kept; empty: nowhere
  bool Force = false, IgnoreWarnings = false;
  double Speed = 1;  ///< of simulated time
};

struct ReplayOptions {
  std::string File, Folder;
};

struct SimulateOptions {
  std::string Model;
  bool Terminal = false;                   ///< asked for by name; without `Listen` it is one anyway
  std::string Listen;                      ///< the address of a server of RFC 2217, or empty
  std::string Certificate, Key, ClientCa;  ///< of a server with TLS; empty: without it
  std::chrono::minutes Worn{};
  std::string SerialNumber;  ///< empty: the model's usual one
  std::uint32_t Seed = 1;
  double Speed = 1;
  std::string StateFile, DocksFile;  ///< may be empty
  std::int32_t ComPort = 0;
  std::vector<std::string> Faults;
};

/// Runs a command of the program with these arguments, "wristlog" before them; gives its exit status.
using CommandRunner = std::function<int(const std::vector<std::string>&)>;

int runDemo(const CommonOptions& common, const DemoOptions& options);
/// With `probe` each dock is asked for its logger.
int runDocks(const CommonOptions& common, bool probe);
int runHarvest(const CommonOptions& common, const HarvestOptions& options);
int runStatus(const CommonOptions& common, const std::string& model);
int runConfigure(const CommonOptions& common, const ConfigureOptions& options);
int runRetrieve(const CommonOptions& common, const RetrieveOptions& options);
int runDecode(const CommonOptions& common, const DecodeOptions& options);
int runPlot(const CommonOptions& common, const PlotOptions& options);
int runConsole(const CommonOptions& common, const ConsoleOptions& options);
int runReplay(const CommonOptions& common, const ReplayOptions& options, const CommandRunner& run);
int runSimulate(const CommonOptions& common, const SimulateOptions& options);
int runZones(const CommonOptions& common);

}  // namespace wristlog
