#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "platform/com_port_option.h"
#include "platform/linux/remote/remote_channel.h"
#include "platform/platform.h"
#include "platform/telnet.h"

namespace hy_wristlog::platform {

/// A serial port on another machine (RFC 2217). What is set is sent and not waited for; an answer that says
/// that the port there does something else is a PortStateFailure of the next member. A network that has gone
/// silent is noticed within 10 s, also where something on the way keeps the TCP connection alive: a server
/// that says nothing is asked for its baud rate.
class RemoteSerialPort final : public SerialPort, private telnet::Listener {
 public:
  /// Takes a connection over that is made and, if it is to be, encrypted, and begins to agree with the
  /// server. `name` is the port's name in failures.
  RemoteSerialPort(std::unique_ptr<RemoteChannel> channel, std::string name);
  RemoteSerialPort(const RemoteSerialPort&) = delete;
  RemoteSerialPort& operator=(const RemoteSerialPort&) = delete;
  /// Gives queued bytes a short while to leave, and the server to free the port.
  ~RemoteSerialPort() override;

  /// Where the opening stands. A server that has `Refused` or `Ended` is not used further.
  enum class Opening : std::uint8_t { UnderWay, Agreed, Refused, Ended };
  /// Raises TlsTrouble.
  Opening opening();
  /// What the server has said in data so far; before it has agreed at most some 200 bytes are kept.
  const telnet::Bytes& said() const { return received_; }
  /// Whether anything has come from the server.
  bool hasAnswered() const { return answered_; }
  /// Puts the lines and what is to be told into a known state, after the server has agreed.
  void begin();
  void dropReceived();
  /// Whether the server has answered what `begin` has asked, so that `delay` is known.
  bool hasBegun() const { return answersPurge_; }

  void configure(const LineSettings& settings) override;
  std::size_t read(std::span<std::uint8_t> into) override;
  std::size_t write(std::span<const std::uint8_t> bytes) override;
  std::size_t outstanding() override;
  void discardInput() override;
  void setDtr(bool on) override;
  void setRts(bool on) override;
  ModemLines modemLines() override;
  LineErrors takeErrors() override;
  std::chrono::microseconds delay() override { return delay_; }
  void awaitInput(std::chrono::microseconds longest) override;

 private:
  using Time = std::chrono::steady_clock::time_point;

  /// A setting that the server answers with what it has set.
  struct Setting {
    std::uint32_t Wanted = 0;
    int AnswersDue = 0;
  };

  void data(std::span<const std::uint8_t> bytes) override;
  void command(std::uint8_t code) override;
  void negotiation(std::uint8_t verb, std::uint8_t option) override;
  void subnegotiation(std::uint8_t option, std::span<const std::uint8_t> content) override;
  void takeAnswer(Setting& setting, std::optional<std::uint32_t> value);
  void noteLineState(std::uint8_t state);

  /// Takes what has come and sends what waits.
  void pump();
  void checkPresent();
  [[noreturn]] void raiseGone();
  void watchSilence();
  void sendMessages();
  void purge();
  void sendByte(std::uint8_t number, std::uint8_t value);
  void set(Setting& setting, std::uint8_t number, std::uint8_t value);
  std::size_t waiting() const { return received_.size() - taken_; }

  std::unique_ptr<RemoteChannel> channel_;
  std::string name_;
  telnet::Parser parser_;
  telnet::Options options_;
  telnet::Bytes messages_;  ///< to be sent, escaped
  telnet::Bytes received_;  ///< the waiting bytes begin at taken_
  std::size_t taken_ = 0;
  bool begun_ = false, suspended_ = false, answered_ = false;

  LineSettings settings_;
  Setting baud_, size_, parity_, stop_;
  bool refused_ = false;
  ModemLines lines_;
  LineErrors errors_;

  bool answersPurge_ = false, answersBaud_ = false;
  std::deque<Time> purges_;            ///< when those were asked for that are not answered
  std::chrono::microseconds delay_{};  ///< the longest that the server took to answer a purge
  Time heard_;                         ///< when the server last sent anything
  std::optional<Time> asked_;          ///< when it was asked for a sign of life
  std::string gone_;                   ///< why the port is no longer there
};

}  // namespace hy_wristlog::platform
