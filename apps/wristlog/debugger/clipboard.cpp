#include "debugger/clipboard.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <span>

#include "tools/Class_Base64Class.h"

namespace wristlog {

std::string clipboardSequence(std::string_view text) {
  const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  std::string base64 = hy_wristlog::Class_Base64Class::fncEncodeByteArray(bytes);
  std::erase_if(base64, [](char c) { return c == '\r' || c == '\n'; });
  return "\x1B]52;c;" + base64 + '\a';
}

bool writeWhole(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd ready{file, POLLOUT, 0};
      ::poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace wristlog
