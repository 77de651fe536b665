#include <nlohmann/json.hpp>

#include "commands/commands.h"
#include "commands/zone_option.h"
#include "picture/findings.h"
#include "recording/opened_recording.h"
#include "recording/plotted_logger.h"
#include "recording/required_files.h"
#include "words/say.h"

namespace wristlog {

namespace {

constexpr std::int32_t HoursADay = 24;

Json tell(const CommonOptions& common, const RecordingFiles& files, const picture::PlottedRecording& plot) {
  const auto findings = picture::findingsOf(plot, picture::daysOf(plot));
  if (common.AsJson) {
    Json facts = Json::array();
    for (const picture::Fact& fact : plot.Facts)
      facts.push_back({{"label", fact.Label}, {"value", fact.Value}});
    return {{"written", files.paths()}, {"facts", facts}, {"findings", findings}};
  }
  for (const std::string& finding : findings) say() << finding << '\n';
  say() << "Written:\n";
  for (const std::string& path : files.paths()) say() << "  " << path << '\n';
  return Json::object();
}

}  // namespace

int runPlot(const CommonOptions& common, const PlotOptions& options) {
  const auto places = options.Places.all();
  const picture::Layout layout{options.RowHours / HoursADay, options.StartHour,
                               static_cast<double>(options.Scale)};
  const DrawnZone zone = drawnZone(options.Zone);
  const bool ownFolders = options.Folder.empty();
  const auto outputs = ownFolders ? options.Places.Folders : outputFolders(places, options.Folder);
  return forEachRecording(common, places, [&](const RecordingPlace& place, std::size_t index) {
    requireFiles(place);
    const RecordingFiles files(outputs[index], options.Force, RecordingFiles::Part::Pictures);
    files.prepare();
    const OpenedRecording opened(place, options.Diagnostic, {}, Family::Every);
    files.requireEpochs(opened.decoded());
    picture::PlottedRecording plot = plottedRecording(opened.decoded());
    plot.Layout = layout;
    if (!zone.Name.empty()) drawIn(plot, zone);
    files.writePictures(plot);
    return tell(common, files, plot);
  });
}

}  // namespace wristlog
