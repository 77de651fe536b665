#pragma once

#include <string>
#include <string_view>

namespace wristlog {

/// What puts `text` on the clipboard of the terminal that it is written to: xterm's control sequence OSC 52,
/// also known to tmux, kitty, foot, WezTerm, Windows Terminal and others. Terminals may bound its length or
/// ignore it.
std::string clipboardSequence(std::string_view text);

/// Writes all of `bytes` to the file, past every interruption; false when it cannot.
bool writeWhole(int file, std::string_view bytes);

}  // namespace wristlog
