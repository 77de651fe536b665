#pragma once

#include <string>

#include "hy_wristlog/host.h"

namespace hy_wristlog {

/// Keeps what is shown to the user, and counts how often it is served.
struct NotingHost : Host {
  void serveEvents() override { ++Served; }
  MessageBoxButton showMessageBox(std::string_view title, std::string_view text, std::int32_t) override {
    ((((Shown += '[') += title) += "] ") += text) += '\n';
    return MessageBoxButton::Ok;
  }
  std::string Shown;
  std::int32_t Served = 0;
};

}  // namespace hy_wristlog
