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
#include "simulator/named_faults.h"

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

/// A bench with its number.
struct OpenBench : ModelBench {
  std::int32_t Number = 0;
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

Mode modeOf(std::int32_t mode) {
  for (const Mode known :
       {Mode::Off, Mode::Activity, Mode::StandardLight, Mode::ActivityAndStandardLight, Mode::SpecialLight,
        Mode::ActivityAndSpecialLight, Mode::OffWristFrequency, Mode::LightCalibration, Mode::Activity32Hz})
    if (static_cast<std::int32_t>(known) == mode) return known;
  refuse(HY_SIMULATOR_ARGUMENT, "the logger has no such mode");
}

void setUp(OpenBench& open, std::int32_t mode, std::int32_t epoch) {
  const SimulatedWorld& world = *open.World;
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
  SimulatedDock& dock = *open.Dock;
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
    open.line().reconnect();
  else
    refuse(HY_SIMULATOR_ARGUMENT, "nothing is known by the name of \"" + std::string(deed) + "\"");
}

/// Worlds are not changed inside a workflow: its waiting calls would go on in another world.
void requireIdle(platform::Platform& world) {
  const auto* work = world.objects().find<platform::WorkUnderWay>();
  if (work != nullptr && work->Count > 0) refuse(HY_SIMULATOR_REFUSED, "a workflow is under way");
}

void close(const OpenBench& bench) {
  requireIdle(platform::current());
  if (bench.Dock->isOpen()) refuse(HY_SIMULATOR_REFUSED, "a workflow is using the dock");
  Desk& own = desk();
  const bool inUse = bench.Number == own.Open.back().Number;
  const auto world = bench.World;  // keeps the world alive until the thread is back in the former one
  std::erase_if(own.Open, [number = bench.Number](const OpenBench& open) { return open.Number == number; });
  if (own.Open.empty())
    platform::use(std::exchange(own.Former, nullptr));
  else if (inUse)
    platform::use(own.Open.back().World);
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
    OpenBench made{makeBench(modelOptions(textOf(model)), worldOptions(zone, begins)), own.LastNumber + 1};
    own.Open.push_back(made);
    auto former = platform::use(made.World);
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
    open.wear(duration, options);
  });
}

HySimulatorResult hySimulatorAdvance(int32_t bench, double seconds) {
  return withBench(bench, [&](const OpenBench& open) { open.World->advance(durationOf(seconds)); });
}

HySimulatorResult hySimulatorElapsed(int32_t bench, double* seconds) {
  return withBench(bench, [&](const OpenBench& open) {
    require(seconds != nullptr, "there is no room for the seconds");
    *seconds = open.World->elapsed();
  });
}

HySimulatorResult hySimulatorNow(int32_t bench, int64_t* seconds) {
  return withBench(bench, [&](const OpenBench& open) {
    require(seconds != nullptr, "there is no room for the seconds");
    *seconds = open.World->now();
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
    setNamedFault(open, name, {skip, times});
  });
}

HySimulatorResult hySimulatorAfterBytes(int32_t bench, uint64_t bytes, const char* deed) {
  return withBench(bench, [&](const OpenBench& open) {
    const std::string_view name = textOf(deed);
    if (name != "cut" && name != "pull out" && name != "unplug")
      refuse(HY_SIMULATOR_ARGUMENT, "after so many bytes: cut, pull out or unplug");
    setNamedFault(open, std::string(name) + " after", always(), std::to_string(bytes));
  });
}
