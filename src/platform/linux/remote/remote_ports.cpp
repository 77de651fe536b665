#include "platform/linux/remote/remote_ports.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include <netdb.h>

#include "base/ascii.h"
#include "hy_wristlog/failure.h"
#include "platform/linux/linux_environment.h"
#include "platform/linux/remote/name_lookup.h"
#include "platform/linux/remote/remote_channel.h"
#include "platform/linux/remote/remote_serial_port.h"
#include "platform/linux/system_io.h"

namespace hy_wristlog::platform {

using namespace FailureNumber;
namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds ConnectTime{5000}, AnswerTime{5000};
/// A server that looks at the modem lines once a second, counted from its opening, sees what a DTR has
/// changed 700 ms after that DTR, and not just after the second for which a dock is waited for.
constexpr milliseconds SettleTime{300};
/// For so long a server may take to answer the first questions about its port.
constexpr milliseconds LongestSettling{2000};
/// The echo of a character is awaited before the next one is sent. A logger forgets a command whose
/// characters come some 400 ms apart.
constexpr milliseconds MostDelay{350};
/// A server needs a moment to free a port after its last user has left.
constexpr milliseconds ReleaseTime{1000};
constexpr milliseconds Turn{20};

/// A wait while a port is opened.
class Wait {
 public:
  explicit Wait(milliseconds longest) : deadline_(SteadyClock::now() + longest) {}

  bool isOver() const { return SteadyClock::now() >= deadline_ || isAborted(); }
  static bool isAborted() { return current().endsWaits(); }
  milliseconds left() const {
    return std::chrono::duration_cast<milliseconds>(deadline_ - SteadyClock::now());
  }
  static void turn(const RemoteChannel& channel) {
    channel.await(Turn);
    current().serveEvents();
  }
  static void turn() {
    std::this_thread::sleep_for(milliseconds{2});
    current().serveEvents();
  }

 private:
  SteadyClock::time_point deadline_;
};

std::string printableText(const telnet::Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += byte < 127 ? static_cast<char>(byte) : '?';
  while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) text.pop_back();
  return printable(text);
}

class Opening {
 public:
  Opening(const RemoteAddress& address, const TlsIdentity& identity, const std::string& name)
      : address_(address), identity_(identity), name_(name) {}

  std::unique_ptr<SerialPort> open() {
    const SteadyClock::time_point patience = SteadyClock::now() + ReleaseTime;
    for (;;) {
      auto port = attempt();
      if (port) return port;
      if (SteadyClock::now() >= patience || Wait::isAborted())
        raise(PortNotAvailable, "is in use by another program. Close that program and try again");
      for (const Wait pause(milliseconds{100}); !pause.isOver();) Wait::turn();
    }
  }

 private:
  [[noreturn]] void raise(std::int32_t number, const std::string& words) const {
    throw Failure(number, "MSComm", name_ + " " + words + ".");
  }

  [[noreturn]] void refuse(const std::string& words) const { raise(InvalidPort, words); }

  void requireTime(const Wait& wait, const char* words) const {
    if (Wait::isAborted()) refuse("is not opened: stopped");
    if (wait.isOver()) refuse(words);
  }

  /// Null for a port that somebody else uses.
  std::unique_ptr<SerialPort> attempt() {
    try {
      auto channel = connect();
      if (address_.Encrypted) encrypt(*channel);
      return agree(std::move(channel));
    } catch (const TlsTrouble& trouble) {
      refuse(trouble.Words);
    }
  }

  std::vector<SocketAddress> addresses(const Wait& wait) const {
    const NameLookup lookup(address_.Host, address_.Port);
    while (!lookup.isDone()) {
      requireTime(wait, "is not reached: its name was not looked up in time. Check the network");
      Wait::turn();
    }
    if (lookup.error() == EAI_NONAME || lookup.error() == EAI_NODATA)
      refuse("is not reached: there is no machine of that name. Correct Docks.INI");
    if (lookup.error() != 0)
      refuse(std::string("is not reached: its name cannot be looked up (") + ::gai_strerror(lookup.error()) +
             "). Check the network");
    return lookup.addresses();
  }

  std::unique_ptr<RemoteChannel> connect() const {
    const Wait wait(ConnectTime);
    const std::vector<SocketAddress> found = addresses(wait);
    int error = ETIMEDOUT;
    for (std::size_t i = 0; i < found.size(); ++i) {
      // An address that does not answer leaves time for those after it.
      const Wait share(wait.left() / static_cast<std::int64_t>(found.size() - i));
      try {
        auto channel = std::make_unique<RemoteChannel>(found[i]);
        while (!channel->isConnected() && !share.isOver()) Wait::turn(*channel);
        if (channel->isConnected()) return channel;
        error = ETIMEDOUT;
      } catch (const NotConnected& failure) {
        error = failure.Error;
      }
      if (Wait::isAborted()) refuse("is not opened: stopped");
    }
    raiseNotConnected(error);
  }

  [[noreturn]] void raiseNotConnected(int error) const {
    if (error == ECONNREFUSED)
      refuse("is refused: the machine answers, but no server listens there. Start it, or correct the port");
    if (error == ETIMEDOUT)
      refuse(
          "is not reached: nothing answers within 5 s. Check that the machine is on and the network works");
    refuse("is not reached: " + systemErrorText(error) + ". Check the network");
  }

  void encrypt(RemoteChannel& channel) const {
    const Wait wait(AnswerTime);
    channel.encrypt(std::make_unique<TlsSession>(identity_, address_.Host));
    while (!channel.shakeHands()) {
      if (channel.isEnded())
        refuse("has ended the connection instead of agreeing on TLS. Check that it speaks TLS at this port");
      requireTime(wait, "does not answer in TLS. Check that it speaks TLS at this port");
      Wait::turn(channel);
    }
  }

  std::unique_ptr<SerialPort> agree(std::unique_ptr<RemoteChannel> owned) const {
    using State = RemoteSerialPort::Opening;
    const RemoteChannel& channel = *owned;
    auto port = std::make_unique<RemoteSerialPort>(std::move(owned), name_);
    const Wait wait(AnswerTime);
    State state = port->opening();
    for (; state == State::UnderWay; state = port->opening()) {
      if (wait.isOver() && !Wait::isAborted()) break;
      requireTime(wait, "");
      Wait::turn(channel);
    }
    if (state == State::Agreed) {
      port->begin();
      const Wait settle(SettleTime), answer(LongestSettling);
      const auto isSettled = [&] { return settle.isOver() && (port->hasBegun() || answer.isOver()); };
      for (; state == State::Agreed && !isSettled(); state = port->opening()) Wait::turn(channel);
      if (Wait::isAborted()) refuse("is not opened: stopped");
    }
    if (state != State::Agreed) return judge(*port, state);
    if (port->delay() > MostDelay)
      refuse("is too far away: an answer takes " + std::to_string(port->delay() / milliseconds{1}) +
             " ms over the network, and a logger forgets what comes slower than every " +
             std::to_string(MostDelay.count()) + " ms. Use a faster network");
    port->dropReceived();
    return port;
  }

  std::unique_ptr<SerialPort> judge(const RemoteSerialPort& port, RemoteSerialPort::Opening state) const {
    const std::string said = printableText(port.said());
    if (asciiLower(said).find("in use") != std::string::npos) return nullptr;
    const std::string saying = said.empty() ? "" : ", saying \"" + said + "\"";
    if (state == RemoteSerialPort::Opening::Ended && said.empty() && address_.Encrypted)
      refuse(
          "has ended the connection once TLS was made: it may refuse this client's certificate. Check "
          "Certificate and Key in Docks.INI, and the server's log");
    if (state == RemoteSerialPort::Opening::Ended)
      refuse("has ended the connection at once" + saying + ". Check the server there" +
             (said.empty() ? ", and whether it wants TLS: rfc2217s://" : ""));
    if (!port.hasAnswered()) refuse("is reached, but nothing comes from it. Check server and network");
    refuse("speaks no RFC 2217" + saying + ". Check address and server");
  }

  const RemoteAddress& address_;
  const TlsIdentity& identity_;
  const std::string& name_;
};

}  // namespace

std::unique_ptr<SerialPort> openRemotePort(const RemoteAddress& address, const TlsIdentity& identity,
                                           const std::string& name) {
  return Opening(address, identity, name).open();
}

}  // namespace hy_wristlog::platform
