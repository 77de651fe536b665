#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// The bytes of a telnet connection (RFC 854, 855, 856), for either end of it. Nothing here reads or writes.
namespace hy_wristlog::platform::telnet {

using Bytes = std::vector<std::uint8_t>;

/// What follows an Iac.
inline constexpr std::uint8_t Se = 240, Nop = 241, Break = 243, AreYouThere = 246, GoAhead = 249, Sb = 250,
                              Will = 251, Wont = 252, Do = 253, Dont = 254, Iac = 255;

/// Options.
inline constexpr std::uint8_t Binary = 0, Echo = 1, SuppressGoAhead = 3, ComPort = 44;

/// The longest content of a subnegotiation that is told.
inline constexpr std::size_t LongestSubnegotiation = 512;

/// Hears what a parser finds, in the order of the bytes.
class Listener {
 public:
  /// Bytes as they were before escaping. Of the same data more or fewer calls come when it arrives in other
  /// pieces. The span lives as long as the call.
  virtual void data(std::span<const std::uint8_t> bytes) = 0;
  /// Any byte after an Iac that is neither a negotiation nor a subnegotiation, such as Nop.
  virtual void command(std::uint8_t code) = 0;
  /// `verb` is Will, Wont, Do or Dont.
  virtual void negotiation(std::uint8_t verb, std::uint8_t option) = 0;
  virtual void subnegotiation(std::uint8_t option, std::span<const std::uint8_t> content) = 0;

 protected:
  ~Listener() = default;
};

/// Takes received bytes in any pieces, and any bytes. A subnegotiation that is too long is passed over up to
/// its end; one that is broken off by another command is forgotten, and the command counts. Line ends are
/// data, as in binary mode.
class Parser {
 public:
  void take(std::span<const std::uint8_t> bytes, Listener& listener);

 private:
  enum class State : std::uint8_t { Data, Command, Verb, Option, Content, ContentCommand };

  void takeOther(std::uint8_t byte, Listener& listener);
  void takeCommand(std::uint8_t code, Listener& listener);
  void endSubnegotiation(Listener& listener);
  void addContent(std::uint8_t byte);

  State state_ = State::Data;
  std::uint8_t verb_ = 0, option_ = 0;
  bool tooLong_ = false;
  Bytes content_;
};

/// Appends data, each Iac doubled.
void addData(Bytes& out, std::span<const std::uint8_t> bytes);
void addCommand(Bytes& out, std::uint8_t code);
void addNegotiation(Bytes& out, std::uint8_t verb, std::uint8_t option);
void addSubnegotiation(Bytes& out, std::uint8_t option, std::span<const std::uint8_t> content);

/// Which options this end and the other one have agreed on. An option that was on or proposed and that the
/// other end then refuses stays off. Together with answering only what changes something, this keeps two ends
/// from answering each other for ever.
class Options {
 public:
  /// Lets this end do the option when the other one asks.
  void allowHere(std::uint8_t option) { here_[option].Allowed = true; }
  /// Lets the other end do the option when it offers.
  void allowThere(std::uint8_t option) { there_[option].Allowed = true; }
  /// Offers to do the option; allows it too.
  void offerHere(Bytes& out, std::uint8_t option) { propose(out, here_[option], Will, option); }
  /// Asks the other end to do the option; allows it too.
  void askThere(Bytes& out, std::uint8_t option) { propose(out, there_[option], Do, option); }
  /// Takes a negotiation of the other end and appends the answer, if one is due.
  void take(Bytes& out, std::uint8_t verb, std::uint8_t option);

  bool isOnHere(std::uint8_t option) const { return here_[option].Now == State::On; }
  bool isOnThere(std::uint8_t option) const { return there_[option].Now == State::On; }
  /// Whether the other end has refused what was proposed or on.
  bool isRefusedHere(std::uint8_t option) const { return here_[option].Now == State::Refused; }
  bool isRefusedThere(std::uint8_t option) const { return there_[option].Now == State::Refused; }

 private:
  enum class State : std::uint8_t { Off, Proposed, On, Refused };
  struct Side {
    State Now = State::Off;
    bool Allowed = false;
  };

  static void propose(Bytes& out, Side& side, std::uint8_t verb, std::uint8_t option);
  static void turnOn(Bytes& out, Side& side, std::uint8_t yes, std::uint8_t no, std::uint8_t option);
  static void turnOff(Bytes& out, Side& side, std::uint8_t no, std::uint8_t option);

  std::array<Side, 256> here_{}, there_{};
};

}  // namespace hy_wristlog::platform::telnet
