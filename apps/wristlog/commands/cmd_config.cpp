#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

#include "commands/file_commands.h"
#include "engineering/files.h"
#include "engineering/recording.h"
#include "recording/json_output.h"
#include "recording/signals_held.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

std::shared_ptr<hw::Class_VardenLogger> readDocked(Session& session, const std::string& modelName) {
  const hw::enmLoggerPointer model = modelFromName(modelName);
  std::shared_ptr<hw::Class_VardenLogger> logger;
  std::shared_ptr<hw::Class_Subject> subject;
  std::string simple, full;
  const std::int32_t code = session.main().GetStatus(model, simple, full, logger, subject, nullptr);
  session.endProgress();
  requireNotStopped();
  if (code != 0) throw hw::Failure(code, "wristlog", explanationOf(code, model));
  if (!logger || logger->Get_ConfigBlock().empty())
    throw hw::Failure(hw::ReturnCode::NotFound, "wristlog", full);
  return logger;
}

bool isSaved(const ConfigOptions& options) { return !options.Place.files().empty(); }

std::shared_ptr<hw::Class_VardenLogger> openConfig(Session& session, const ConfigOptions& options) {
  return isSaved(options) ? engineering::loggerFromIni(options.Place.config())
                          : readDocked(session, options.Model);
}

Json itemsJson(const hw::Class_VardenLogger& logger) {
  Json items = Json::object();
  for (const auto& [label, value] : engineering::configItems(logger)) items[label] = value;
  return items;
}

void tellWritten(bool asJson, const std::string& file, const hw::Class_VardenLogger& logger) {
  if (asJson)
    print({{"file", file}, {"device_serial_number", logger.Get_SerialNumber()}});
  else
    say() << "The configuration of logger " << logger.Get_SerialNumber() << ". Written to " << file << ".\n";
}

/// The values that were edited, with label, former and new value. The checksum is left out: it follows from
/// the rest.
Json changes(const hw::Class_VardenLogger& before, const hw::Class_VardenLogger& after) {
  Json list = Json::array();
  const auto former = engineering::configItems(before), present = engineering::configItems(after);
  for (std::size_t i = 0; i < std::min(former.size(), present.size()); ++i)
    if (former[i].first != "CRC" && former[i].second != present[i].second)
      list.push_back({{"item", former[i].first}, {"from", former[i].second}, {"to", present[i].second}});
  return list;
}

template <class Check, class Save>
int saveConfig(const CommonOptions& common, const ConfigOptions& options, const Check& check,
               const Save& save) {
  Session session(common);
  check(options.Output.File, options.Output.Force, options.Place.files());
  const auto logger = openConfig(session, options);
  {
    const SignalsHeld held;
    save(*logger, options.Output.File);
  }
  tellWritten(session.asJson(), options.Output.File, *logger);
  return Good;
}

}  // namespace

int runConfigShow(const CommonOptions& common, const ConfigOptions& options) {
  Session session(common);
  const auto logger = openConfig(session, options);
  if (session.asJson()) {
    print({{"config", itemsJson(*logger)}});
    return Good;
  }
  for (const auto& [label, value] : engineering::configItems(*logger))
    say() << label << ": " << value << '\n';
  return Good;
}

int runConfigExport(const CommonOptions& common, const ConfigOptions& options) {
  const std::string recordingIni = isSaved(options) ? options.Place.config() : "";
  return saveConfig(common, options, engineering::checkIniOutput,
                    [&](hw::Class_VardenLogger& logger, const std::string& file) {
                      engineering::saveConfigIni(logger, file, recordingIni);
                    });
}

int runConfigImage(const CommonOptions& common, const ConfigOptions& options) {
  return saveConfig(common, options, engineering::checkOutput, engineering::saveConfigImage);
}

int runConfigImport(const CommonOptions& common, const ConfigImportOptions& options) {
  const Session session(common);
  std::vector<std::string> others = options.Place.files();
  others.push_back(options.IniFile);
  engineering::checkIniOutput(options.Output.File, options.Output.Force, others);
  others.push_back(options.Output.File);
  if (!options.Image.File.empty()) engineering::checkOutput(options.Image.File, options.Output.Force, others);
  const auto logger = engineering::loggerFromIni(options.Place.config());
  const auto edited = engineering::withEditedConfig(*logger, options.IniFile);
  {
    const SignalsHeld held;
    if (options.Image.File.empty())
      engineering::saveConfigIni(*edited, options.Output.File, options.Place.config());
    else
      engineering::saveConfigIniAndImage(*edited, options.Output.File, options.Image.File,
                                         options.Place.config());
  }
  const Json list = changes(*logger, *edited);
  if (session.asJson()) {
    print({{"file", options.Output.File},
           {"image", options.Image.File.empty() ? Json() : Json(options.Image.File)},
           {"changes", list}});
    return Good;
  }
  for (const Json& change : list)
    say() << change.at("item").get<std::string>() << ": " << change.at("from").get<std::string>() << " -> "
          << change.at("to").get<std::string>() << '\n';
  if (list.empty()) say() << "Nothing differs from the recording's own configuration.\n";
  say() << "Written to " << options.Output.File;
  if (!options.Image.File.empty()) say() << " and " << options.Image.File;
  say() << "; no logger was changed.\n";
  return Good;
}

}  // namespace wristlog
