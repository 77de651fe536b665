#pragma once

#include "pendrel/record.h"

/// The text of 64 characters in which a logger carries who wears it: identity (23), initials (3), gender (1),
/// "T" or "F" for AutoDSTadjust, zone abbreviation (3), 24 bytes in Base64 (32), version digit "2". The
/// bytes, numbers with the high byte first: GUID (16), date of birth in days (2), GMToffset (2), height and
/// weight in tenths (2 each). Characters are those of code page 1252, one byte each.
namespace hy_wristlog {

/// Builds SubjectInfo from the subject's members and sets SubjectInfoVersion to 2. Longer texts are cut;
/// numbers keep their lowest 16 bits. A pair of GUID characters counts as far as it begins with hexadecimal
/// digits. A date of birth of -1 has no days of its own: it reads back as day 255. Raises 6 for a date,
/// height or weight beyond 32 bits or that is no number.
void encodeSubjectText(PendrelRecord& record);

/// Reads SubjectInfo into the subject's members. What cannot be read becomes unknown: texts empty, GMToffset
/// -32768, the others -1; AutoDSTadjust keeps its value. An identity of blanks is one blank. Never fails.
void decodeSubjectText(PendrelRecord& record);

}  // namespace hy_wristlog
