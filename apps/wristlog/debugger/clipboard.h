#pragma once

#include <string>
#include <string_view>

namespace wristlog {

/// The bytes that put `text` on the clipboard of the terminal that they are written to: xterm's control
/// sequence OSC 52, also known to tmux, kitty, foot, WezTerm, Windows Terminal and others. Terminals may
/// bound its length or ignore it.
std::string clipboardSequence(std::string_view text);

/// Writes all of `bytes` to the file, resuming after interruptions; false when it cannot.
bool writeWhole(int file, std::string_view bytes);

}  // namespace wristlog
