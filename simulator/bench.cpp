#include "simulator/bench.h"

#include <algorithm>
#include <stdexcept>

#include "simulator/calendar.h"
#include "simulator/pendrel_subject.h"

namespace hy_wristlog::simulator {

double DockBench::lineShare() const {
  const Traffic& traffic = Dock->line().traffic();
  const auto busy = std::chrono::duration<double>{std::max(traffic.BusyToLogger, traffic.BusyToPc)}.count();
  return World->elapsed() > 0 ? busy / World->elapsed() : 0.0;
}

BenchOptions vividBenchOptions() { return {}; }

BenchOptions kestrin2BenchOptions() {
  BenchOptions options;
  options.Logger = kestrin2Options();
  options.Dock.Kind = DockKind::TolkaSecond;
  return options;
}

Bench makeBench(const BenchOptions& options) {
  Bench bench;
  bench.World = std::make_shared<SimulatedWorld>(options.World);
  bench.Dock = &bench.World->addDock(options.Dock);
  bench.Logger = &bench.World->addLogger(options.Logger);
  if (options.LoggerInDock) bench.Dock->insert(*bench.Logger);
  return bench;
}

ModelOptions modelOptions(std::string_view model) {
  const auto pendrel = [](PendrelModel which) {
    PendrelOptions options;
    options.Model = which;
    return ModelOptions{PendrelBenchOptions{}.Dock, options};
  };
  if (model == "vivid") return {vividBenchOptions().Dock, vividBenchOptions().Logger};
  if (model == "kestrin2") return {kestrin2BenchOptions().Dock, kestrin2BenchOptions().Logger};
  if (model == "pendrel13") return pendrel(PendrelModel::Plain);
  if (model == "pendrel14") return pendrel(PendrelModel::Checksums);
  if (model == "pendrel27") return pendrel(PendrelModel::Steps);
  throw std::invalid_argument("the models are vivid, kestrin2, pendrel13, pendrel14 and pendrel27");
}

ModelBench makeBench(const ModelOptions& options, const WorldOptions& world, bool loggerInDock) {
  ModelBench made;
  made.Options = options;
  if (const auto* logger = std::get_if<LoggerOptions>(&options.Logger)) {
    const Bench bench = makeBench(BenchOptions{world, *logger, options.Dock, loggerInDock});
    static_cast<DockBench&>(made) = bench;
    made.Logger = bench.Logger;
  } else {
    auto& pendrel = std::get<PendrelOptions>(made.Options.Logger);
    const PendrelBench bench = makePendrelBench({world, pendrel, options.Dock, loggerInDock});
    static_cast<DockBench&>(made) = bench;
    made.Pendrel = bench.Logger;
    if (!pendrel.Zone) pendrel.Zone = zoneOffset(bench.World->zoneRule(), bench.World->timeline().now());
  }
  return made;
}

void setUpForWearing(const ModelBench& bench, std::int32_t epochLength) {
  if (bench.Pendrel != nullptr)
    return bench.Pendrel->setUp(
        ordinaryPendrelSetup(*bench.World, epochLength, bench.Pendrel->model() == PendrelModel::Steps));
  const bool vivid = bench.Logger->model() == LoggerModel::Vivid;
  bench.Logger->setUp(ordinarySetup(
      *bench.World, vivid ? Mode::ActivityAndSpecialLight : Mode::ActivityAndStandardLight, epochLength));
}

PendrelBench makePendrelBench(const PendrelBenchOptions& options) {
  PendrelBench bench;
  bench.World = std::make_shared<SimulatedWorld>(options.World);
  bench.Dock = &bench.World->addDock(options.Dock);
  PendrelOptions logger = options.Logger;
  if (!logger.Zone) logger.Zone = zoneOffset(bench.World->zoneRule(), bench.World->timeline().now());
  bench.Logger = &bench.World->addPendrel(logger);
  if (options.LoggerInDock) bench.Dock->insert(*bench.Logger);
  return bench;
}

PendrelSetup ordinaryPendrelSetup(const SimulatedWorld& world, std::int32_t epochLength, bool countsSteps) {
  PendrelSetup setup;
  setup.EpochLength = epochLength;
  setup.StartTime = (world.now() / 60 + 1) * 60;
  setup.CountsSteps = countsSteps;
  const auto offset = zoneOffset(world.zoneRule(), momentOf(setup.StartTime));
  setup.Subject =
      encode({"Subject 17", "AB", 'F', true, world.zoneAbbreviation(), "0123456789ABCDEF0123456789ABCDEF",
              30808, static_cast<std::int16_t>(offset.count()), 1685, 723});
  return setup;
}

RecordingSetup ordinarySetup(const SimulatedWorld& world, Mode mode, std::int32_t epochLength) {
  const platform::ZoneRule& rule = world.zoneRule();
  const std::int64_t now = world.now();
  RecordingSetup setup;
  setup.RecordingMode = mode;
  setup.EpochLength = epochLength;
  setup.StartTime = (now / 60 + 1) * 60;
  setup.ZoneName = world.zoneAbbreviation();
  setup.ZoneBias = rule.Bias;
  setup.ZoneStandardBias = rule.StandardBias;
  setup.ZoneDaylightBias = rule.DaylightBias;
  const std::int32_t year = civilTime(momentOf(now)).Year;
  const auto nextOf = [&](auto change) {
    return change(rule, year) >= now ? change(rule, year) : change(rule, year + 1);
  };
  if (daylightStart(rule, year) != 0) {
    setup.DaylightStart = nextOf(daylightStart);
    setup.DaylightEnd = nextOf(daylightEnd);
  }
  setup.Subject = {"Subject 17", "AB", "0123456789ABCDEF0123456789ABCDEF", 'F', 1984, 5, 6, 723, 1685};
  return setup;
}

}  // namespace hy_wristlog::simulator
