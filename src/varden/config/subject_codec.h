#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "varden/record.h"

/// The text of 128 characters in which a logger carries who wears it: version digit, identity (64), initials
/// (3), GUID (32), gender (1), date of birth mmddyyyy (8), weight and height in tenths (5 each), filler (9).
/// Characters are those of code page 1252.
namespace hy_wristlog {

/// Builds EncodedSetup from the subject's members and sets SubjectInfoVersion to 2. A text that is too long
/// is cut. A date of birth of -1 is written as 29 December 1899, the day that it stands for. Raises
/// InvalidCall for a date outside the years 100 to 9999 and Overflow for a weight or height that is no
/// number.
void encodeSubjectText(VardenRecord& record);

/// Reads EncodedSetup into the subject's members. Never fails: a number or date that is wrong leaves its
/// member at -1.
void decodeSubjectText(VardenRecord& record);

/// EncodedSetup as it goes out: at most 127 characters in 128 bytes, the rest 0.
std::vector<std::uint8_t> encodeSubjectBytes(const VardenRecord& record);

/// The text of up to 128 received bytes, cut at its first NUL.
std::string decodeSubjectBytes(std::span<const std::uint8_t> bytes);

}  // namespace hy_wristlog
