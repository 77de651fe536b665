#pragma once

#include "platform/platform.h"

/// The kernel's own terminal interface (termios2), which takes any baud rate. It cannot be included beside
/// the C library's termios.h.
namespace hy_wristlog::platform {

enum class LineResult : std::uint8_t { Done, Refused, Gone };

/// Puts the line into raw mode with `settings`, without flow control, both output lines low on closing.
/// `Refused`: outside 5 to 8 data bits, a stop bit length that the hardware does not have for these data bits
/// (1.5 with 5, 2 with 6 to 8), or settings that the driver did not keep. A pseudo-terminal (`simulatesLine`)
/// need not keep them.
LineResult configureLine(int fd, const LineSettings& settings, bool simulatesLine);

/// The speed and the stop bits of a line. Neither parity nor data bits: a pseudo-terminal, whose master end
/// may ask too, does not keep them.
LineSettings settingsOfLine(int fd);

/// False when the device is no terminal.
bool isTerminal(int fd);

bool discardReceived(int fd);
void discardQueued(int fd);

}  // namespace hy_wristlog::platform
