#pragma once

#include "replay/session_record.h"

namespace wristlog {

/// The record without who wears the logger: in arguments, configurations and subject texts stand neutral
/// texts of the same length, under checksums of their own; it replays as the other does. Raises InvalidCall
/// where what passed cannot be told apart, for instance since bytes of it were lost.
SessionRecord redacted(const SessionRecord& record);

}  // namespace wristlog
