#include "pendrel/delayed_start.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "base/dates.h"
#include "support/failures.h"

namespace hy_wristlog {
namespace {

constexpr double Now = 46204.5;  // 1 July 2026, 12:00

std::string wordsFor(double seconds, std::int16_t epoch) {
  const DelayedStart plan = planDelayedStart(Now + (seconds + 10) / SecondsPerDay, Now, epoch);
  return plan.epochWord() + plan.secondsWord();
}

TEST(DelayedStart, Words) {
  const std::tuple<double, std::int16_t, std::string> cases[] = {
      {3605, 60, "0043030A"}, {60.4, 60, "007F0000"},       {60.6, 60, "007E030E"},
      {1, 60, "007F030E"},    {128 * 60, 60, "00000000"},   {129 * 60, 60, "FFFF0000"},
      {31, 15, "007D000E"},   {32896 * 15, 15, "80000000"}, {32896 * 900 - 899, 900, "80003B0E"},
      {1, 32767, "007F8806"}};
  for (const auto& [seconds, epoch, words] : cases) EXPECT_EQ(wordsFor(seconds, epoch), words) << seconds;
}

TEST(DelayedStart, Limits) {
  const std::tuple<double, std::int16_t, std::int32_t> cases[] = {
      {-10.01, 0, 10111}, {-10, 60, 10112}, {0.4, 60, 10112}, {32896 * 15 + 1, 15, 10112},
      {100, -15, 10112},  {100, 0, 11},     {100, 2, 6},      {100, -1, 6},
      {1e10, 60, 6},      {NAN, 60, 6}};
  for (const auto& [seconds, epoch, number] : cases)
    EXPECT_EQ(numberOf([&, s = seconds, e = epoch] { wordsFor(s, e); }), number) << seconds << ' ' << epoch;
  EXPECT_EQ(failureOf([] { wordsFor(-11, 60); }).second, "Start date and time have already passed");
  EXPECT_EQ(failureOf([] { wordsFor(-10, 60); }).second, "Number of epochs to delay is out of bounds");
  EXPECT_EQ(failureOf([] { shorteningFor(1); }),
            (std::pair{10112, std::string("Number of seconds/quarter minutes delay is out of bounds")}));

  EXPECT_EQ(millisecondsToRelease(Now + 7.6543 / SecondsPerDay, Now), 7654);
  EXPECT_EQ(millisecondsToRelease(Now, Now + 0.0004 / SecondsPerDay), 0);
  EXPECT_EQ(numberOf([] { millisecondsToRelease(Now, Now + 0.001 / SecondsPerDay); }), 10112);
  EXPECT_EQ(numberOf([] { millisecondsToRelease(Now - 30, Now); }), 10112) << "beyond 32 bits too";
  EXPECT_EQ(numberOf([] { millisecondsToRelease(Now + 30, Now); }), 6);
}

/// The words as a logger takes them, read from their digits alone: the start that it reaches, when it begins
/// to wait at the moment of release.
double startByWords(const DelayedStart& plan, std::int16_t epoch) {
  const auto word = [](const std::string& digits) { return std::stoi(digits, nullptr, 16); };
  const int epochWord = word(plan.epochWord()), secondsWord = word(plan.secondsWord());
  const int epochs = 128 - (epochWord >= 0x8000 ? epochWord - 0x10000 : epochWord);
  const int less = secondsWord / 256 * 15 + secondsWord % 256;
  EXPECT_LT(less, epoch);
  return plan.ReleaseTime + (1.0 * epochs * epoch - less) / SecondsPerDay;
}

TEST(DelayedStart, WordsLeadToTheStart) {
  std::mt19937 random{20260701};
  const auto within = [&](double low, double high) {
    return std::uniform_real_distribution<double>{low, high}(random);
  };
  for (int i = 0; i < 20000; ++i) {
    const auto epoch = static_cast<std::int16_t>(i % 2 == 0 ? 15 * (1 + i / 2 % 60) : within(3, 1900));
    // Days that the epochs do not divide are measured by the most of them that fit; here only those they do.
    if (86400 % epoch != 0) continue;
    const double seconds = within(0.6, i % 3 == 0 ? 4.0 * epoch : 32896.0 * epoch - 0.6);
    const double now = Now + within(0, 1), start = now + (seconds + 10) / SecondsPerDay;
    const DelayedStart plan = planDelayedStart(start, now, epoch);
    EXPECT_NEAR((startByWords(plan, epoch) - start) * SecondsPerDay, 0, 0.001) << seconds << ' ' << epoch;
    EXPECT_NEAR((plan.ReleaseTime - now) * SecondsPerDay, 10, 0.501);
  }
}

}  // namespace
}  // namespace hy_wristlog
