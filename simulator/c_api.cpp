#include "simulator/c_api.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hy_wristlog/failure.h"
#include "platform/work_under_way.h"
#include "simulator/bench.h"

namespace hy_wristlog::simulator {
namespace {

constexpr double MostSeconds = 10 * 366 * 86400.0;
constexpr std::int64_t FirstBeginning = 31536000, LastBeginning = 2145916800;  // 1971 and 2038

/// Thrown to end a call with this result.
struct Refusal {
  HySimulatorResult Result;
  std::string Why;
};

[[noreturn]] void refuse(HySimulatorResult result, std::string why) { throw Refusal{result, std::move(why)}; }

void require(bool good, const char* why) {
  if (!good) refuse(HY_SIMULATOR_ARGUMENT, why);
}

/// A bench with its logger, which is of one of the two families.
struct OpenBench {
  std::int32_t Number = 0;
  DockBench Bench;
  SimulatedLogger* Logger = nullptr;
  SimulatedPendrel* Pendrel = nullptr;

  Dockable& dockable() const {
    return Logger != nullptr ? static_cast<Dockable&>(*Logger) : static_cast<Dockable&>(*Pendrel);
  }
};

/// The benches of one thread, the one in use last.
struct Desk {
  std::vector<OpenBench> Open;
  std::shared_ptr<platform::Platform> Former;  ///< the thread's world before the first one
  std::int32_t LastNumber = 0;
  std::string LastError;
};

Desk& desk() {
  thread_local Desk own;
  return own;
}

template <class Action>
HySimulatorResult resultOf(Action&& action) noexcept {
  HySimulatorResult result = HY_SIMULATOR_REFUSED;
  try {
    try {
      action();
      return HY_SIMULATOR_OK;
    } catch (const Refusal& refusal) {
      result = refusal.Result;
      desk().LastError = refusal.Why;
    } catch (const std::invalid_argument& wrong) {
      result = HY_SIMULATOR_ARGUMENT;
      desk().LastError = wrong.what();
    } catch (const std::exception& failure) {
      desk().LastError = failure.what();
    } catch (const platform::SystemError& error) {
      desk().LastError = "the system refused: error " + std::to_string(error.Number);
    } catch (...) {
      desk().LastError = "something unknown went wrong";
    }
  } catch (...) {
    // There is no memory for the text; the result alone tells of the failure.
  }
  return result;
}

OpenBench& find(std::int32_t number) {
  for (OpenBench& open : desk().Open)
    if (open.Number == number) return open;
  refuse(HY_SIMULATOR_NO_BENCH, "this thread has no open bench of that number");
}

template <class Action>
HySimulatorResult withBench(std::int32_t number, Action&& action) noexcept {
  return resultOf([&] { action(find(number)); });
}

std::string_view textOf(const char* text) {
  require(text != nullptr, "a text is missing");
  return text;
}

nanoseconds durationOf(double seconds) {
  require(seconds >= 0 && seconds <= MostSeconds, "a duration is from 0 seconds to ten years");
  return std::chrono::duration_cast<nanoseconds>(std::chrono::duration<double>(seconds));
}

WorldOptions worldOptions(const char* zone, std::int64_t begins) {
  require(begins == 0 || (begins >= FirstBeginning && begins < LastBeginning),
          "a bench begins in the years 1971 to 2037");
  WorldOptions options;
  if (zone != nullptr) options.Zone = zone;
  if (begins != 0)
    options.Begins = std::chrono::sys_time<std::chrono::milliseconds>{std::chrono::seconds{begins}};
  return options;
}

OpenBench makeVarden(BenchOptions options, WorldOptions world) {
  options.World = std::move(world);
  const Bench bench = makeBench(options);
  return {0, bench, bench.Logger, nullptr};
}

OpenBench makePendrel(PendrelModel model, WorldOptions world) {
  PendrelBenchOptions options;
  options.World = std::move(world);
  options.Logger.Model = model;
  const PendrelBench bench = makePendrelBench(options);
  return {0, bench, nullptr, bench.Logger};
}

OpenBench make(std::string_view model, WorldOptions world) {
  if (model == "vivid") return makeVarden(vividBenchOptions(), std::move(world));
  if (model == "kestrin2") return makeVarden(kestrin2BenchOptions(), std::move(world));
  if (model == "pendrel13") return makePendrel(PendrelModel::Plain, std::move(world));
  if (model == "pendrel14") return makePendrel(PendrelModel::Checksums, std::move(world));
  if (model == "pendrel27") return makePendrel(PendrelModel::Steps, std::move(world));
  refuse(HY_SIMULATOR_ARGUMENT, "the models are vivid, kestrin2, pendrel13, pendrel14 and pendrel27");
}

Mode modeOf(std::int32_t mode) {
  for (const Mode known :
       {Mode::Off, Mode::Activity, Mode::StandardLight, Mode::ActivityAndStandardLight, Mode::SpecialLight,
        Mode::ActivityAndSpecialLight, Mode::OffWristFrequency, Mode::LightCalibration, Mode::Activity32Hz})
    if (static_cast<std::int32_t>(known) == mode) return known;
  refuse(HY_SIMULATOR_ARGUMENT, "the logger has no such mode");
}

void setUp(OpenBench& open, std::int32_t mode, std::int32_t epoch) {
  const SimulatedWorld& world = *open.Bench.World;
  if (open.Pendrel != nullptr) {
    open.Pendrel->setUp(ordinaryPendrelSetup(world, epoch, mode != 1));
    return;
  }
  const Mode known = modeOf(mode);
  require(epoch >= 1 && epoch <= 3600, "an epoch is from 1 to 3600 seconds");
  require(known == Mode::Off || recordLength(open.Logger->model(), known) > 0, "the logger has no such mode");
  open.Logger->setUp(ordinarySetup(world, known, epoch));
}

void act(OpenBench& open, std::string_view deed) {
  SimulatedDock& dock = *open.Bench.Dock;
  if (deed == "pull out")
    dock.pullOut();
  else if (deed == "insert")
    dock.insert(open.dockable());
  else if (deed == "unplug")
    dock.unplug();
  else if (deed == "plug")
    dock.plug();
  else if (deed == "power reset")
    open.Logger != nullptr ? open.Logger->powerReset() : open.Pendrel->powerReset();
  else if (deed == "hold port" || deed == "free port")
    dock.Faults.Held = deed == "hold port";
  else if (deed == "lock up")
    dock.Faults.LockedUp = true;
  else if (deed == "reconnect")
    open.Bench.line().reconnect();
  else
    refuse(HY_SIMULATOR_ARGUMENT, "nothing is known by the name of \"" + std::string(deed) + "\"");
}

template <class Faults>
Fault* echoFault(Faults& faults, std::string_view name) {
  if (name == "lose echo") return &faults.LoseEcho;
  if (name == "alter echo") return &faults.AlterEcho;
  if (name == "delay echo") return &faults.DelayEcho;
  return nullptr;
}

Fault* lineFault(LineFaults& faults, std::string_view name) {
  if (name == "lose to pc") return &faults.LoseToPc;
  if (name == "lose to logger") return &faults.LoseToLogger;
  if (name == "alter to pc") return &faults.AlterToPc;
  if (name == "alter to logger") return &faults.AlterToLogger;
  return nullptr;
}

Fault* loggerFault(LoggerFaults& faults, std::string_view name) {
  if (name == "bad line checksum") return &faults.BadLineChecksum;
  if (name == "ignore command") return &faults.IgnoreCommand;
  if (name == "refuse clock") return &faults.RefuseClock;
  if (name == "misstore config") return &faults.MisstoreConfig;
  if (name == "bad config checksum") return &faults.BadConfigChecksum;
  return echoFault(faults, name);
}

Fault& faultOf(OpenBench& open, std::string_view name) {
  Fault* found = lineFault(open.Bench.line().Faults, name);
  if (found == nullptr)
    found = open.Logger != nullptr ? loggerFault(open.Logger->Faults, name)
                                   : echoFault(open.Pendrel->Faults, name);
  if (found == nullptr)
    refuse(HY_SIMULATOR_ARGUMENT, "the logger has no fault \"" + std::string(name) + "\"");
  return *found;
}

/// Worlds are not changed inside a workflow: its waiting calls would go on in another world.
void requireIdle(platform::Platform& world) {
  const auto* work = world.objects().find<platform::WorkUnderWay>();
  if (work != nullptr && work->Count > 0) refuse(HY_SIMULATOR_REFUSED, "a workflow is under way");
}

void close(const OpenBench& bench) {
  requireIdle(platform::current());
  if (bench.Bench.Dock->isOpen()) refuse(HY_SIMULATOR_REFUSED, "a workflow is using the dock");
  Desk& own = desk();
  const bool inUse = bench.Number == own.Open.back().Number;
  const auto world = bench.Bench.World;  // keeps the world alive until the thread is back in the former one
  std::erase_if(own.Open, [number = bench.Number](const OpenBench& open) { return open.Number == number; });
  if (own.Open.empty())
    platform::use(std::exchange(own.Former, nullptr));
  else if (inUse)
    platform::use(own.Open.back().Bench.World);
}

}  // namespace
}  // namespace hy_wristlog::simulator

using namespace hy_wristlog;
using namespace hy_wristlog::simulator;

const char* hySimulatorLastError(void) { return desk().LastError.c_str(); }

HySimulatorResult hySimulatorOpen(const char* model, const char* zone, int64_t begins, int32_t* bench) {
  return resultOf([&] {
    require(bench != nullptr, "there is no room for the bench's number");
    *bench = 0;
    requireIdle(platform::current());
    Desk& own = desk();
    OpenBench made = make(textOf(model), worldOptions(zone, begins));
    made.Number = own.LastNumber + 1;
    own.Open.push_back(made);
    auto former = platform::use(made.Bench.World);
    if (own.Open.size() == 1) own.Former = std::move(former);
    *bench = own.LastNumber = made.Number;
  });
}

HySimulatorResult hySimulatorClose(int32_t bench) {
  return withBench(bench, [](const OpenBench& open) { close(open); });
}

HySimulatorResult hySimulatorSetUp(int32_t bench, int32_t mode, int32_t epoch) {
  return withBench(bench, [&](OpenBench& open) { setUp(open, mode, epoch); });
}

HySimulatorResult hySimulatorWear(int32_t bench, double seconds, uint32_t seed) {
  return withBench(bench, [&](const OpenBench& open) {
    const nanoseconds duration = durationOf(seconds);
    WearOptions options;
    options.Seed = seed;
    open.Logger != nullptr ? open.Logger->wear(duration, options) : open.Pendrel->wear(duration, options);
  });
}

HySimulatorResult hySimulatorAdvance(int32_t bench, double seconds) {
  return withBench(bench, [&](const OpenBench& open) { open.Bench.World->advance(durationOf(seconds)); });
}

HySimulatorResult hySimulatorElapsed(int32_t bench, double* seconds) {
  return withBench(bench, [&](const OpenBench& open) {
    require(seconds != nullptr, "there is no room for the seconds");
    *seconds = open.Bench.World->elapsed();
  });
}

HySimulatorResult hySimulatorNow(int32_t bench, int64_t* seconds) {
  return withBench(bench, [&](const OpenBench& open) {
    require(seconds != nullptr, "there is no room for the seconds");
    *seconds = open.Bench.World->now();
  });
}

HySimulatorResult hySimulatorDo(int32_t bench, const char* deed) {
  return withBench(bench, [&](OpenBench& open) { act(open, textOf(deed)); });
}

HySimulatorResult hySimulatorSetFault(int32_t bench, const char* fault, int32_t skip, int32_t times) {
  return withBench(bench, [&](OpenBench& open) {
    const std::string_view name = textOf(fault);
    require(skip >= 0 && times >= Fault::Always,
            "a fault skips 0 or more, and strikes 0 or more times or -1");
    if (name == "silent")
      (open.Logger != nullptr ? open.Logger->Faults.Silent : open.Pendrel->Faults.Silent) = times != 0;
    else
      faultOf(open, name) = {skip, times};
  });
}

HySimulatorResult hySimulatorAfterBytes(int32_t bench, uint64_t bytes, const char* deed) {
  return withBench(bench, [&](const OpenBench& open) {
    const std::string_view name = textOf(deed);
    SimulatedLine& line = open.Bench.line();
    constexpr std::uint64_t MostBytes = 1ULL << 40;
    require(bytes <= MostBytes, "no line carries so many bytes");
    if (name == "cut")
      line.Faults.CutAfterTotal = line.traffic().total() + bytes;
    else if (name == "pull out")
      open.Bench.Dock->pullOutAfterBytes(bytes);
    else if (name == "unplug")
      open.Bench.Dock->unplugAfterBytes(bytes);
    else
      refuse(HY_SIMULATOR_ARGUMENT, "after so many bytes: cut, pull out or unplug");
  });
}
