#pragma once

#include "pendrel/record.h"

/// The text of 64 characters in which a logger keeps who wears it: identity (23), initials (3), gender (1),
/// "T" or "F" for AutoDSTadjust, zone abbreviation (3), 24 bytes in Base64 (32), version digit "2". The 24
/// bytes, in numbers with the high byte first: GUID (16), date of birth in days (2), GMToffset (2), height
/// and weight in tenths (2 each). Characters are those of code page 1252, one byte each.
namespace hy_wristlog {

/// Makes SubjectInfo from the subject's members and sets SubjectInfoVersion to 2. Longer texts are cut, and
/// numbers keep their lowest 16 bits. A pair of GUID characters counts as far as it begins with hexadecimal
/// digits. The date of birth -1 cannot be told apart: it is read back as day 255. Raises Overflow for a date,
/// height or weight that is no number or needs more than 32 bits.
void encodeSubjectText(PendrelRecord& record);

/// Takes the subject's members from SubjectInfo. What cannot be read becomes unknown: texts empty, GMToffset
/// -32768, the others -1; AutoDSTadjust keeps its value. An identity of blanks becomes one blank. Never
/// fails.
void decodeSubjectText(PendrelRecord& record);

}  // namespace hy_wristlog
