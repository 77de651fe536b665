#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>
#include <type_traits>

#include "commands/file_commands.h"
#include "engineering/files.h"
#include "engineering/pendrel_files.h"
#include "engineering/saved_pendrel.h"
#include "hy_wristlog/Class_Main.h"
#include "recording/decoded_recording.h"
#include "recording/json_output.h"
#include "recording/recording_files.h"
#include "recording/recording_world.h"
#include "recording/signals_held.h"
#include "session/session.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

bool isThere(const std::string& file) {
  std::error_code none;
  return std::filesystem::exists(file, none);
}

/// Lets `save` write the file of the recording. A command whose `save` takes no Pendrel refuses one.
template <class Save>
std::string savedBy(const Save& save, const engineering::SavedRecording& recording, Json& document) {
  const auto saved = [&](auto& logger) {
    document["device_serial_number"] = logger.Get_SerialNumber();
    return save(logger, document);
  };
  if constexpr (std::is_invocable_v<Save, hw::Class_Pendrel&, Json&>)
    if (recording.isPendrel()) return saved(*engineering::openPendrel(recording));
  return saved(*engineering::openRecording(recording));
}

/// Reads the recording and lets `save` write its file. Returns the JSON document, which begins with the name
/// of the file and the size of the recording; without --json the words are said.
template <class Save>
Json writtenFile(const CommonOptions& common, const RecordingFileOptions& options, const Save& save,
                 Parts parts) {
  engineering::checkOutput(options.Output.File, options.Output.Force, options.Place.files());
  const bool stoodBefore = isThere(options.Output.File);
  const auto recording = readRecording(options.Place, parts);
  const RecordingWorld world(momentOf(recording), RecordingWorld::Texts::Users);
  const Session session(common);
  Json document{{"file", options.Output.File}, {"recorded_bytes", recording.Raw.size()}};
  std::string words;
  {
    const SignalsHeld held;
    try {
      engineering::naming(options.Place.raw(), [&] { words = savedBy(save, recording, document); });
    } catch (const hw::Failure&) {
      if (!stoodBefore && isThere(options.Output.File))
        complain() << options.Output.File << " is not whole: it ends where the failure came.\n";
      throw;
    }
  }
  if (!session.asJson()) say() << words << "Written to " << options.Output.File << ".\n";
  return document;
}

template <class Save>
int writeFile(const CommonOptions& common, const RecordingFileOptions& options, const Save& save,
              Parts parts = Parts::Refused) {
  const Json document = writtenFile(common, options, save, parts);
  if (common.AsJson) print(document);
  return Good;
}

std::string bytesWords(const Json& document) {
  return document.at("recorded_bytes").dump() + " bytes of logger " +
         document.at("device_serial_number").get<std::string>() + ". ";
}

struct SaveReport {
  std::string File;

  std::string operator()(hw::Class_VardenLogger& logger, Json& document) const {
    const hw::enmDecodeResult result = engineering::saveReport(logger, File);
    document["decode_result"] = static_cast<std::int32_t>(result);
    document["decode_result_name"] = hw::Class_Main::ResultName(result);
    document["part"] = logger.Get_RawDataIsPart();
    document["samples"] = logger.Get_Samples();
    std::optional<RecordingPart> part;
    if (logger.Get_RawDataIsPart())
      part = RecordingPart{std::ssize(logger.Get_RawData()), logger.Get_BytesInLogger(), {}};
    return verdictOf(result, part) + ' ' + std::to_string(logger.Get_Samples()) + " epochs. ";
  }
  std::string operator()(hw::Class_Pendrel& logger, Json& document) const {
    const bool isWhole = engineering::saveReport(logger, File);
    document["part"] = !isWhole;
    document["samples"] = logger.Get_Samples();
    return (isWhole ? "" : "Only the beginning of a recording. ") + std::to_string(logger.Get_Samples()) +
           " epochs. ";
  }
};

}  // namespace

int runRawDump(const CommonOptions& common, const RecordingFileOptions& options) {
  const auto save = [&](auto& logger, Json& document) {
    engineering::saveRawDump(logger, options.Output.File);
    return bytesWords(document);
  };
  return writeFile(common, options, save, Parts::Accepted);
}

int runRawLoad(const CommonOptions& common, const RawLoadOptions& options) {
  const Session session(common);
  engineering::checkOutput(options.Output.File, options.Output.Force, {options.DumpFile});
  const auto raw = engineering::rawFromDump(options.DumpFile);
  {
    const SignalsHeld held;
    engineering::saveRawBytes(raw, options.Output.File);
  }
  if (session.asJson())
    print({{"file", options.Output.File}, {"recorded_bytes", raw.size()}});
  else
    say() << raw.size() << " bytes. Written to " << options.Output.File
          << ". Decoding them needs the configuration too: 'wristlog decode --config CONFIG.ini --raw "
          << options.Output.File << "'.\n";
  return Good;
}

int runReport(const CommonOptions& common, const ReportOptions& options) {
  return forEachRecording(common, options.Places.all(), [&](const RecordingPlace& place, std::size_t) {
    const bool ownFolder = options.Output.File.empty();
    // The report itself does not tell that it is of a part, but its name can.
    const bool isPart = ownFolder && place.raw().ends_with(PartRaw);
    const std::string file =
        ownFolder ? place.Folder + "/" + (isPart ? PartReportName : ReportName) : options.Output.File;
    return writtenFile(common, {place, {file, options.Output.Force}}, SaveReport{file},
                       isPart ? Parts::Accepted : Parts::Refused);
  });
}

int runLightTest(const CommonOptions& common, const RecordingFileOptions& options) {
  return writeFile(common, options, [&](hw::Class_VardenLogger& logger, Json& document) {
    engineering::saveLightTest(logger, options.Output.File);
    const bool kestrin2 = logger.Get_DeviceType() == hw::KR_TOLKA;
    document["kestrin2"] = kestrin2;
    if (!kestrin2)
      complain() << "The logger is no Kestrin 2, whose light test this is; the readings mean nothing.\n";
    return bytesWords(document);
  });
}

int runActivityOnly(const CommonOptions& common, const RecordingFileOptions& options) {
  return writeFile(common, options, [&](hw::Class_VardenLogger& logger, Json& document) {
    engineering::saveActivityOnly(logger, options.Output.File);
    const bool activityOnly = logger.Get_AcquisitionMode() == hw::VardenMode_ActivityOnly;
    document["activity_only"] = activityOnly;
    if (!activityOnly)
      complain()
          << "The recording holds more than activity; the file counts every byte of it as activity. Its "
             "start may be a false one found among the samples: what stands before it is missing.\n";
    return bytesWords(document);
  });
}

}  // namespace wristlog
