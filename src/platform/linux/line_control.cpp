#include "platform/linux/line_control.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace hy_wristlog::platform {
namespace {

constexpr std::int32_t FastestBaud = 4000000;
constexpr tcflag_t FormatBits = CSIZE | CSTOPB | PARENB | PARODD | CMSPAR;

std::optional<tcflag_t> dataBits(std::int32_t bits) {
  switch (bits) {
    case 5:
      return tcflag_t{CS5};
    case 6:
      return tcflag_t{CS6};
    case 7:
      return tcflag_t{CS7};
    case 8:
      return tcflag_t{CS8};
    default:
      return std::nullopt;
  }
}

tcflag_t parityBits(LineParity parity) {
  switch (parity) {
    case LineParity::Even:
      return PARENB;
    case LineParity::Odd:
      return PARENB | PARODD;
    case LineParity::Mark:
      return PARENB | PARODD | CMSPAR;
    case LineParity::Space:
      return PARENB | CMSPAR;
    case LineParity::None:
      break;
  }
  return 0;
}

std::optional<tcflag_t> formatBits(const LineSettings& settings) {
  const auto size = dataBits(settings.DataBits);
  if (!size) return std::nullopt;
  // The long stop bit lasts 1.5 bits with five data bits and 2 bits otherwise.
  const LineStopBits longStop = settings.DataBits == 5 ? LineStopBits::OneAndHalf : LineStopBits::Two;
  if (settings.StopBits != LineStopBits::One && settings.StopBits != longStop) return std::nullopt;
  return *size | parityBits(settings.Parity) | (settings.StopBits == longStop ? tcflag_t{CSTOPB} : 0);
}

/// Whether a rate is near enough: drivers report what their divisor gives, and an asynchronous line tolerates
/// a few percent.
bool isNearRate(speed_t actual, std::int32_t wanted) {
  const std::int64_t difference = std::int64_t{actual} - wanted;
  return std::int64_t{wanted} * 3 >= (difference < 0 ? -difference : difference) * 100;
}

LineResult resultOfErrno() { return errno == EINVAL ? LineResult::Refused : LineResult::Gone; }

}  // namespace

LineResult configureLine(int fd, const LineSettings& settings, bool simulatesLine) {
  const auto format = formatBits(settings);
  if (!format || settings.Baud <= 0 || settings.Baud > FastestBaud) return LineResult::Refused;
  termios2 line{};
  if (::ioctl(fd, TCGETS2, &line) != 0) return resultOfErrno();
  line.c_iflag = IGNBRK;
  line.c_oflag = 0;
  line.c_lflag = 0;
  constexpr tcflag_t inputRate = static_cast<tcflag_t>(CBAUD) << IBSHIFT;
  line.c_cflag &= ~(FormatBits | CBAUD | inputRate | static_cast<tcflag_t>(CRTSCTS));
  line.c_cflag |= *format | BOTHER | (static_cast<tcflag_t>(BOTHER) << IBSHIFT) | CREAD | CLOCAL | HUPCL;
  line.c_ispeed = static_cast<speed_t>(settings.Baud);
  line.c_ospeed = static_cast<speed_t>(settings.Baud);
  // VMIN 1: a read of 0 bytes then can only mean a hang-up.
  line.c_cc[VMIN] = 1;
  line.c_cc[VTIME] = 0;
  if (::ioctl(fd, TCSETS2, &line) != 0) return resultOfErrno();

  termios2 kept{};
  if (::ioctl(fd, TCGETS2, &kept) != 0) return resultOfErrno();
  if (!isNearRate(kept.c_ospeed, settings.Baud)) return LineResult::Refused;
  if (!simulatesLine && (kept.c_cflag & FormatBits) != *format) return LineResult::Refused;
  return LineResult::Done;
}

LineSettings settingsOfLine(int fd) {
  LineSettings settings;
  termios2 line{};
  if (::ioctl(fd, TCGETS2, &line) != 0 || line.c_ospeed == 0) return settings;
  settings.Baud = static_cast<std::int32_t>(std::min<speed_t>(line.c_ospeed, FastestBaud));
  if ((line.c_cflag & CSTOPB) != 0) settings.StopBits = LineStopBits::Two;
  return settings;
}

bool isTerminal(int fd) {
  termios2 line{};
  return ::ioctl(fd, TCGETS2, &line) == 0;
}

bool discardReceived(int fd) { return ::ioctl(fd, TCFLSH, TCIFLUSH) == 0; }

void discardQueued(int fd) { ::ioctl(fd, TCFLSH, TCOFLUSH); }

}  // namespace hy_wristlog::platform
