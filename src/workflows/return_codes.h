#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>

namespace hy_wristlog {

/// What the workflows return for states that they detect themselves; other codes are failure numbers. Some
/// belong to the workflows of the Pendrel family alone.
namespace ReturnCode {
inline constexpr std::int32_t Success = 0;
inline constexpr std::int32_t NoPortSetting = 10001;
inline constexpr std::int32_t NotWritable = 10002;
inline constexpr std::int32_t NotFound = 10003;
inline constexpr std::int32_t WrongMode = 10005;
inline constexpr std::int32_t WrongEpoch = 10006;
inline constexpr std::int32_t WrongStart = 10007;
inline constexpr std::int32_t NotOpened = 10008;
inline constexpr std::int32_t WrongLogger = 10009;
inline constexpr std::int32_t WrongFirmware = 10010;
inline constexpr std::int32_t NoFactoryValues = 10011;
inline constexpr std::int32_t VerificationFailed = 10012;
inline constexpr std::int32_t Aborted = 10013;
inline constexpr std::int32_t SubjectUnusable = 10014;
inline constexpr std::int32_t NoData = 10015;
inline constexpr std::int32_t UnknownLength = 10016;
inline constexpr std::int32_t UnreadableBlock = 10017;
inline constexpr std::int32_t WrongDate = 10018;
inline constexpr std::int32_t UnknownZone = 10019;
inline constexpr std::int32_t TooManyDocks = 10020;
inline constexpr std::int32_t WrongDateFormat = 10021;
inline constexpr std::int32_t WrongTimeFormat = 10022;
inline constexpr std::int32_t WrongEnd = 10023;
inline constexpr std::int32_t UnknownStructure = 10024;
inline constexpr std::int32_t ClockFailed = 10025;
inline constexpr std::int32_t LoggerReset = 10026;
inline constexpr std::int32_t StillWaiting = 10027;
inline constexpr std::int32_t ZoneDiffers = 10028;
inline constexpr std::int32_t NoSamples = 10029;
inline constexpr std::int32_t DecodeProblem = 10030;
}  // namespace ReturnCode

inline bool isOneOf(std::int32_t number, std::initializer_list<std::int32_t> numbers) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

}  // namespace hy_wristlog
