#include "platform/linux/descriptor_wait.h"

namespace hy_wristlog::platform {

void awaitReady(std::span<pollfd> descriptors, std::chrono::nanoseconds longest) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(longest);
  const timespec limit{seconds.count(), (longest - seconds).count()};
  for (pollfd& descriptor : descriptors) descriptor.revents = 0;
  ::ppoll(descriptors.data(), descriptors.size(), &limit, nullptr);
}

}  // namespace hy_wristlog::platform
