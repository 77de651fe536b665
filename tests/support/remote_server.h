#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "platform/com_port_option.h"
#include "platform/linux/system_io.h"
#include "platform/telnet.h"

namespace hy_wristlog::platform {

inline sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  return address;
}

/// A listening socket of this machine. Each connection is handed to `serve`, one after the other, in a
/// thread.
class LocalServer {
 public:
  explicit LocalServer(std::function<void(int)> serve) : serve_(std::move(serve)) {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(::listen(listener_.get(), 4), 0);
    ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] {
      for (;;) {
        const Descriptor connection{::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC)};
        if (!connection) return;
        serve_(connection.get());
      }
    });
  }
  LocalServer(const LocalServer&) = delete;
  LocalServer& operator=(const LocalServer&) = delete;
  ~LocalServer() {
    ::shutdown(listener_.get(), SHUT_RDWR);
    thread_.join();
  }

  std::uint16_t port() const { return port_; }

 private:
  std::function<void(int)> serve_;
  Descriptor listener_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  std::uint16_t port_ = 0;
  std::thread thread_;
};

inline void sendTo(int connection, std::string_view bytes) {
  EXPECT_EQ(::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
}

/// Closes the connection so that the other end sees it reset.
inline void reset(int connection) {
  const linger atOnce{1, 0};
  ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

/// The other end of a port on another machine: agrees on everything, sends data back, answers what is asked,
/// and keeps what it was told in `told`.
class EchoingPort final : private telnet::Listener {
 public:
  explicit EchoingPort(bool byteByByte = false) : byteByByte_(byteByByte) {
    for (const std::uint8_t option : {telnet::Binary, telnet::ComPort}) {
      options_.allowHere(option);
      options_.allowThere(option);
    }
  }

  /// Until the other end has gone, or `goesOn` says false; called after each message and about every 10 ms.
  void serve(
      int connection, const std::function<bool(EchoingPort&)>& goesOn = [](EchoingPort&) { return true; }) {
    connection_ = connection;
    for (pollfd state{connection, POLLIN, 0}; goesOn(*this);) {
      if (::poll(&state, 1, 10) <= 0) continue;
      std::array<std::uint8_t, 4096> bytes{};
      const ssize_t count = ::recv(connection, bytes.data(), bytes.size(), 0);
      if (count <= 0) return;
      parser_.take(std::span(bytes).first(static_cast<std::size_t>(count)), *this);
      flush();
    }
  }
  void notify(std::uint8_t number, std::uint8_t value) {
    com_port::addByteMessage(toSend_, static_cast<std::uint8_t>(number + com_port::ServerOffset), value);
    flush();
  }
  std::string told() const {
    const std::lock_guard guard(lock_);
    return told_;
  }
  void refuseBaud() { refusesBaud_ = true; }

 private:
  void flush() {
    const std::string_view all(reinterpret_cast<const char*>(toSend_.data()), toSend_.size());
    const std::size_t piece = byteByByte_ ? 1 : std::max<std::size_t>(all.size(), 1);
    for (std::size_t at = 0; at < all.size(); at += piece) sendTo(connection_, all.substr(at, piece));
    toSend_.clear();
  }
  void data(std::span<const std::uint8_t> bytes) override { telnet::addData(toSend_, bytes); }
  void command(std::uint8_t) override {}
  void negotiation(std::uint8_t verb, std::uint8_t option) override { options_.take(toSend_, verb, option); }
  void subnegotiation(std::uint8_t, std::span<const std::uint8_t> content) override {
    const auto message = com_port::messageOf(content);
    if (!message) return;
    const auto number = message->number();
    if (number && *number != com_port::AskValue) baud_ = refusesBaud_ ? 300 : *number;
    const auto answer = static_cast<std::uint8_t>(message->Number + com_port::ServerOffset);
    if (number)
      com_port::addNumberMessage(toSend_, answer, baud_);
    else if (message->Number != com_port::SetControl)
      com_port::addMessage(toSend_, answer, message->Value);
    const std::lock_guard guard(lock_);
    told_ += std::to_string(message->Number) + "=" +
             std::to_string(number.value_or(message->byte().value_or(0))) + " ";
  }

  bool byteByByte_, refusesBaud_ = false;
  int connection_ = -1;
  telnet::Parser parser_;
  telnet::Options options_;
  telnet::Bytes toSend_;
  std::uint32_t baud_ = 9600;
  mutable std::mutex lock_;
  std::string told_;
};

}  // namespace hy_wristlog::platform
