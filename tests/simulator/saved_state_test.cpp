#include <gtest/gtest.h>

#include <string>

#include "simulator/bench.h"
#include "simulator/named_faults.h"
#include "simulator/saved_state.h"

namespace hy_wristlog::simulator {
namespace {

using namespace std::chrono_literals;

std::string saved(const ModelBench& bench) {
  SavedState state;
  bench.persist(state);
  return state.text();
}

ModelBench loaded(const ModelBench& original, const std::string& text) {
  WorldOptions world;
  world.Begins =
      std::chrono::sys_time(std::chrono::ceil<std::chrono::milliseconds>(original.World->timeline().now()));
  const ModelBench bench = makeBench(original.Options, world, false);
  SavedState state(text);
  bench.persist(state);
  return bench;
}

TEST(SavedState, ALoadedLoggerGoesOnAsTheSavedOneWould) {
  for (const std::string_view model : ModelNames) {
    SCOPED_TRACE(std::string(model));
    const ModelBench first = makeBench(modelOptions(model), {}, false);
    WearOptions wears;
    wears.Seed = 7;
    setUpForWearing(first, 30);
    first.dockable().putOn(wears);
    for (const nanoseconds passed : {nanoseconds{10s}, nanoseconds{50h}, nanoseconds{200h}}) {
      first.World->advance(passed);
      const ModelBench second = loaded(first, saved(first));
      EXPECT_TRUE(saved(second) == saved(first)) << "waiting, recording, or full";
      first.World->advance(30h);
      second.World->advance(30h);
      EXPECT_TRUE(saved(second) == saved(first));
    }
  }
}

TEST(SavedState, IsRefusedWhenItIsDamagedOrHoldsWhatNoLoggerHas) {
  const ModelBench bench = makeBench(modelOptions("vivid"), {}, false);
  setUpForWearing(bench, 30);
  bench.World->advance(1h);
  const std::string whole = saved(bench);
  const auto wordsOf = [&](const std::string& text) -> std::string {
    try {
      loaded(bench, text);
      return "";
    } catch (const WrongState& wrong) {
      return wrong.what();
    }
  };
  /// With another value of that name, and the checksum that goes with it.
  const auto with = [&](const std::string& name, const std::string& value) {
    std::string text = whole;
    const std::size_t at = text.find("\n" + name + "=") + name.size() + 2;
    text.replace(at, text.find('\n', at) - at, value);
    const std::string body = text.substr(0, text.rfind("checksum="));
    return body + "checksum=" + SavedState::sumOf(body) + "\n";
  };
  EXPECT_EQ(wordsOf(whole), "");
  EXPECT_EQ(wordsOf(""), "is no saved state of a simulated logger");
  EXPECT_EQ(wordsOf("HY_Wristlog simulated logger, version 2\n"),
            "was saved by another version of this program, which wrote the format 2");
  for (std::size_t at = whole.find('\n') + 1; at < whole.size(); at += 97) {
    std::string altered = whole;
    altered[at] ^= 1;
    EXPECT_EQ(wordsOf(altered), "is damaged: its checksum is wrong") << at;
  }
  EXPECT_EQ(wordsOf(whole.substr(0, whole.size() - 1)), "is damaged: its checksum is wrong");
  EXPECT_EQ(wordsOf(with("clock.drift", "x")), "holds nothing usable as clock.drift");
  EXPECT_EQ(wordsOf(with("recorder.state", "3")), "holds nothing usable as recorder.state");
  EXPECT_EQ(wordsOf(with("battery.charge", "nan")), "holds nothing usable as battery.charge");
  EXPECT_EQ(wordsOf(with("memory", "0")), "holds nothing usable as memory");
  EXPECT_EQ(wordsOf(with("config", "")), "holds nothing usable as the recording's mode and epoch");
}

TEST(NamedFaults, EachCanBeSetOnTheLoggersThatHaveItAndOnNoOther) {
  const ModelBench vivid = makeBench(modelOptions("vivid"), {}),
                   pendrel = makeBench(modelOptions("pendrel27"), {});
  for (const NamedFault& fault : namedFaults()) {
    const std::string_view argument = fault.Argument == "COMMAND"     ? "N"
                                      : fault.Argument == "LINE:TEXT" ? "3:00"
                                      : fault.Argument.empty()        ? ""
                                                                      : "64";
    for (const auto& [bench, has] :
         {std::pair{vivid, fault.ForVarden}, std::pair{pendrel, fault.ForPendrel}}) {
      SCOPED_TRACE(std::string(fault.Name));
      const auto set = [&](std::string_view given) { setNamedFault(bench, fault.Name, once(), given); };
      if (has)
        EXPECT_NO_THROW(set(argument));
      else
        EXPECT_THROW(set(argument), std::invalid_argument);
      EXPECT_THROW(set(argument.empty() ? "1" : ""), std::invalid_argument);
      EXPECT_THROW(set("-1"), std::invalid_argument);
    }
  }
}

}  // namespace
}  // namespace hy_wristlog::simulator
