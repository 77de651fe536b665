#pragma once

#include <cstdint>
#include <span>

#include "platform/com_port_option.h"
#include "platform/platform.h"
#include "platform/telnet.h"
#include "simulate/served_logger.h"

namespace wristlog {

/// The server's part of telnet with serial ports (RFC 2217) for one client: takes what the client sent, does
/// it to the port, and makes what the client gets.
class PortServer final : private hy_wristlog::platform::telnet::Listener {
 public:
  /// The logger's port is open as long as this lives.
  explicit PortServer(ServedLogger& logger);

  /// Takes what came from the client.
  void take(std::span<const std::uint8_t> bytes) { parser_.take(bytes, *this); }
  /// Gives the port what the client has said, as much as fits, and looks what the port tells.
  void serve();
  /// What the client is to get; whoever sends some of it takes it away.
  hy_wristlog::platform::telnet::Bytes& answer() { return out_; }
  bool hasAnswer() const { return !out_.empty(); }
  /// Whether more of the client should be taken now.
  bool hasRoom() const { return toLogger_.empty() && out_.size() < MostUnsent; }
  /// Whether the port has taken all that the client has said.
  bool isDone() const { return toLogger_.empty(); }

 private:
  static constexpr std::size_t MostUnsent = 65536;

  void data(std::span<const std::uint8_t> bytes) override;
  void command(std::uint8_t code) override;
  void negotiation(std::uint8_t verb, std::uint8_t option) override;
  void subnegotiation(std::uint8_t option, std::span<const std::uint8_t> content) override;

  void obey(const hy_wristlog::platform::com_port::Message& message);
  void set(hy_wristlog::platform::LineSettings wanted);
  std::uint8_t control(std::uint8_t value);
  void purge(std::uint8_t what);
  void tellModemState(bool always);
  void tellLineErrors();
  void speak();
  void answerByte(std::uint8_t message, std::uint8_t value);

  ServedLogger& logger_;
  hy_wristlog::platform::telnet::Parser parser_;
  hy_wristlog::platform::telnet::Options options_;
  hy_wristlog::platform::telnet::Bytes out_, toLogger_;
  hy_wristlog::platform::LineSettings settings_;
  hy_wristlog::platform::ModemLines lines_;
  std::uint8_t modemMask_ = 0xFF, lineMask_ = 0;
  bool dtr_ = false, rts_ = false, breaks_ = false, suspended_ = false, greeted_ = false;
  bool afterReturn_ = false;  ///< the client's last byte was a carriage return
};

}  // namespace wristlog
