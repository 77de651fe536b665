#pragma once

#include <cstdint>
#include <string>

#include "hy_wristlog/enumerations.h"

namespace wristlog {

/// What a return code of a workflow means, and what to do about it.
std::string meaningOf(std::int32_t returnCode);

/// "Decode_OK".
std::string nameOf(hy_wristlog::enmDecodeResult result);

/// The verdict on a recording in a sentence.
std::string wordsFor(hy_wristlog::enmDecodeResult result);

}  // namespace wristlog
