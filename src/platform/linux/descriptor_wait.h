#pragma once

#include <chrono>
#include <span>

#include <poll.h>

namespace hy_wristlog::platform {

/// Sleeps until one of the descriptors is ready for what it is watched for, a signal comes, or `longest` is
/// over. Their `revents` are set.
void awaitReady(std::span<pollfd> descriptors, std::chrono::nanoseconds longest);

}  // namespace hy_wristlog::platform
