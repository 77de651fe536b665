#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

/// Checks of the command line's arguments. Each returns what is wrong with a text, or an empty text.
namespace wristlog {

using ArgumentCheck = std::function<std::string(const std::string&)>;

/// A date that `engineering::dateFromText` takes.
std::string validDate(const std::string& text);
/// A date that `engineering::dateFromText` takes and a logger's clock can express.
std::string validLoggerTime(const std::string& text);
/// A date of birth that a Pendrel logger can keep: 16 bits of days from 1899-12-30.
std::string validPendrelBirthDate(const std::string& text);
/// One letter from A to Z, small or capital. Other characters can mean "none" to a logger.
std::string validGender(const std::string& text);
/// 32 hexadecimal digits.
std::string validGuid(const std::string& text);
/// A height or a weight that a Pendrel logger can keep: 16 bits of tenths. More decimals are refused.
std::string validPendrelSize(const std::string& text);
/// A height or a weight, 0 to 9999.9 in tenths.
std::string validSize(const std::string& text);
/// A factor of the speed of time, 0 to 1000.
std::string validSpeed(const std::string& text);
/// How many times faster a served logger's time goes, 1 to 3600.
std::string validServingSpeed(const std::string& text);
/// A time of days, hours or minutes ("7d", "36h", "90m"), or 0. Throws std::invalid_argument for other texts,
/// and for more than 400 days.
std::chrono::minutes wornFor(const std::string& text);
/// A day that a Pendrel logger can keep, whose years have two digits: 1930 to 2029.
std::string validPendrelDay(const std::string& text);
std::string validFile(const std::string& text);
std::string validName(const std::string& text);
std::string validFolder(const std::string& text);
/// A folder to write to; "-", which stands for standard output elsewhere, is none.
std::string validOutputFolder(const std::string& text);
std::string notEmpty(const std::string& text);
/// A check for a text that a logger keeps in a field of `length` characters.
ArgumentCheck storableIn(std::size_t length);

}  // namespace wristlog
