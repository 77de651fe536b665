#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "hy_wristlog/host.h"
#include "link/Form_Comm.h"
#include "support/failures.h"
#include "support/scripted_world.h"

namespace hy_wristlog {

/// What a link told, in order: "event 4 text", "l2/3:7" a lost packet, "s1/2" a sent one, "r1:128" a received
/// one with the bytes so far, "aborted".
struct Told : CommEvents {
  void CommEventError(std::int32_t number, std::string& text) override {
    add("event " + std::to_string(number) + ' ' + text);
  }
  void XModemLostPacket(std::int16_t attempt, std::int16_t most, std::int16_t packet) override {
    add("l" + std::to_string(attempt) + '/' + std::to_string(most) + ':' + std::to_string(packet));
  }
  void XModemPacketSent(std::uint8_t packet, std::uint8_t total) override {
    add("s" + std::to_string(packet) + '/' + std::to_string(total));
  }
  void XmodemPacketReceived(std::uint8_t packet, std::int32_t bytes) override {
    add("r" + std::to_string(packet) + ':' + std::to_string(bytes));
  }
  void CommProgress(std::string& text) override { Progress += text + '\n'; }
  void AbortAcknowledged() override { add("aborted"); }
  void CommRX(std::string& text) override { Characters += text; }

  void add(const std::string& line) { Events += (Events.empty() ? "" : " ") + line; }

  std::string Events, Characters, Progress;
};

struct Console : ConsoleSink {
  void append(std::string_view text) override { Text += text; }
  void clear() override { Text.clear(); }
  void showLastError(std::string_view text) override { LastError = text; }
  void showReceiveCount(std::int32_t count) override { ReceiveCount = count; }
  std::string Text, LastError;
  std::int32_t ReceiveCount = -1;
};

struct ConsoleHost : Host {
  ConsoleSink* console() override { return &TheConsole; }
  void copyToClipboard(std::string_view text) override { Clipboard = text; }
  Console TheConsole;
  std::string Clipboard;
};

/// A link on port 3 of a scripted world, opened as the loggers open it.
struct OpenLink {
  explicit OpenLink(bool open = true, bool withConsole = false) {
    if (withConsole) world->setHost(host);
    link = std::make_unique<Form_Comm>(&told);
    if (open) link->subOpenPort(3, 13, 8, 3, 3, 0, false, true);
    world->Journal.clear();
  }
  /// Raises `number` in `operation` for the next `count` times.
  void failIn(const std::string& operation, int count, std::int32_t number = 8015) {
    world->Before = [operation, left = count, number](const std::string& name) mutable {
      if (name == operation && left-- > 0) throw Failure(number, "MSComm", "broken");
    };
  }

  scripted::InWorld world;
  Told told;
  std::shared_ptr<ConsoleHost> host = std::make_shared<ConsoleHost>();
  std::unique_ptr<Form_Comm> link;
};

}  // namespace hy_wristlog
