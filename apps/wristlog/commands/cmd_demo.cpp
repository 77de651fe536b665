#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>
#include <vector>

#include "base/dates.h"
#include "commands/commands.h"
#include "engineering/dates.h"
#include "engineering/zones.h"
#include "hy_wristlog/Class_Main.h"
#include "recording/json_output.h"
#include "recording/recording_files.h"
#include "recording/retrieved_recording.h"
#include "session/process.h"
#include "session/session.h"
#include "words/meanings.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace sim = hy_wristlog::simulator;
namespace engineering = hy_wristlog::engineering;

namespace {

constexpr std::chrono::hours Week{7 * 24};
constexpr std::int32_t DemoEpoch = 60;
constexpr std::size_t ColumnsPerDay = 48;

hw::Class_Subject demoSubject() {
  hw::Class_Subject subject;
  subject.Let_Identity("Demo");
  subject.Let_Initials("DE");
  subject.Let_Gender("F");
  subject.Let_DOB(engineering::dateFromText("1990-06-15"));
  subject.Let_Height(170);
  subject.Let_Weight(65.5F);
  return subject;
}

/// Draws one line for each local day and one column for each half hour; the height of a block is the
/// logarithm of the activity.
void drawDays(const Speech& out, const hw::Class_VardenLogger& logger) {
  constexpr std::array Blocks{" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  struct Column {
    double Sum = 0;
    std::int32_t Count = 0;
  };
  std::vector<std::pair<std::int64_t, std::array<Column, ColumnsPerDay>>> days;
  double highest = 1;
  const auto& activity = logger.Get_ActivityArray();
  for (std::size_t i = 0; i < activity.size(); ++i) {
    if (activity[i] < 0) continue;
    const double local = engineering::localTime(
        logger,
        logger.Get_StartTimeGMT() + static_cast<double>(i) * logger.Get_EpochLength() / hw::SecondsPerDay);
    const auto day = static_cast<std::int64_t>(std::floor(local));
    if (days.empty() || days.back().first != day) days.emplace_back(day, std::array<Column, ColumnsPerDay>{});
    const auto at = static_cast<std::size_t>((local - std::floor(local)) * ColumnsPerDay);
    Column& column = days.back().second[std::min(at, ColumnsPerDay - 1)];
    column.Sum += activity[i];
    ++column.Count;
    highest = std::max(highest, column.Sum / column.Count);
  }
  out << "            0h          6h          12h         18h\n";
  for (const auto& [day, columns] : days) {
    out << engineering::isoDate(static_cast<double>(day)).substr(0, 10) << "  ";
    for (const Column& column : columns) {
      const double mean = column.Count > 0 ? column.Sum / column.Count : 0;
      const double share = std::log1p(mean) / std::log1p(highest);
      out << Blocks[static_cast<std::size_t>(std::lround(std::min(share, 1.0) * (Blocks.size() - 1)))];
    }
    out << '\n';
  }
}

class Demo {
 public:
  Demo(const CommonOptions& common, const DemoOptions& options)
      : bench_(sim::makeVividBench()),
        session_(common, bench_),
        files_(options.Folder, options.Force),
        folder_(options.Folder),
        ownFolder_(options.OwnFolder) {}

  int run() {
    ownFolder_ ? files_.prepareForDemo() : files_.prepare();
    say("A Kestrin Vivid sits in its dock. (Logger, dock and time are simulated.)");
    configure();
    status("Status");
    bench_.Logger->wear(Week);
    say("It was worn for a week.");
    status("Status");
    return retrieve();
  }

 private:
  void say(const std::string& text) {
    session_.endProgress();
    if (!session_.asJson()) wristlog::say() << text << '\n';
  }

  /// Raises a step's code other than 0, which ends the demo.
  void require(const std::string& step, std::int32_t code) {
    session_.endProgress();
    if (interruptRequested()) throw hw::Failure(hw::ReturnCode::Aborted, "Class_Main." + step, "Aborted");
    if (code != 0) throw hw::Failure(code, "Class_Main." + step, step + " failed: " + meaningOf(code));
  }

  void configure() {
    hw::Class_Subject subject = demoSubject();
    float battery = 0;
    std::string serialNumber;
    const std::int32_t code = session_.main().Configure(
        hw::LggrPntr_KRVivid, hw::VardenMode_ActivityAndSpecialLight, DemoEpoch, subject, "", true, 0, 0, 0,
        hw::DateFormat_MMDD, hw::TimeFormat_24hour, &battery, &serialNumber);
    require("Configure", code);
    say("Configured " + serialNumber + " for activity and light, a value a minute. Battery: about " +
        std::to_string(std::lround(battery)) + " days.");
  }

  void status(const std::string& title) {
    std::string simple;
    std::string words;
    std::shared_ptr<hw::Class_VardenLogger> logger;
    std::shared_ptr<hw::Class_Subject> subject;
    const std::int32_t code = session_.main().GetStatus(hw::LggrPntr_KRVivid, simple, words, logger, subject);
    require("GetStatus", code);
    say(title + ": " + simple);
  }

  int retrieve() {
    std::shared_ptr<hw::Class_VardenLogger> logger;
    auto subject = std::make_shared<hw::Class_Subject>();
    hw::enmDecodeResult result = hw::Decode_InputError;
    bool lowBattery = false;
    const double before = bench_.World->elapsed();
    const std::int32_t code =
        session_.main().Retrieve(hw::LggrPntr_KRVivid, logger, subject, result, &lowBattery);
    require("Retrieve", code);
    const double elapsed = bench_.World->elapsed() - before;
    RetrievedRecording recording(*logger, result, lowBattery);
    if (!recording.isSound()) require("Retrieve", NotWhole);
    const Json summary = recording.write(files_, MadeByDemo);
    files_.writePictures(recording.decode());
    if (session_.asJson()) {
      print(summary);
      return Good;
    }
    say("Retrieved " + std::to_string(recording.bytes()) + " bytes in " +
        std::to_string(std::lround(elapsed)) +
        " simulated seconds: " + std::to_string(logger->Get_Samples()) + " epochs, " +
        std::to_string(logger->Get_MarkerCount()) + " markers. " + hw::Class_Main::ResultMeaning(result));
    drawDays(wristlog::say(), *logger);
    say("Written:");
    for (const std::string& path : files_.existing()) say("  " + path);
    say("Look at it: " + folder_ + "/report.html in a browser, or " + folder_ + "/actogram.svg");
    say("Decode it again: wristlog decode --config " + folder_ + "/config.ini --raw " + folder_ + "/raw.bin");
    return Good;
  }

  sim::Bench bench_;
  Session session_;
  RecordingFiles files_;
  std::string folder_;
  bool ownFolder_;
};

}  // namespace

int runDemo(const CommonOptions& common, const DemoOptions& options) { return Demo(common, options).run(); }

}  // namespace wristlog
