#include <gtest/gtest.h>
#include <openssl/ssl.h>

#include <array>
#include <chrono>
#include <future>

#include "platform/linux/linux_platform.h"
#include "platform/linux/openssl_support.h"
#include "platform/linux/remote/remote_ports.h"
#include "support/certificates.h"
#include "support/failures.h"
#include "support/remote_server.h"
#include "support/surroundings.h"

namespace hy_wristlog::platform {
namespace {

using namespace std::chrono_literals;
using Time = std::chrono::steady_clock;

// These run in real time, since they test the machine's own network. Servers settle for 0.3 s each.

std::unique_ptr<SerialPort> openAt(std::uint16_t port, const TlsIdentity* identity = nullptr,
                                   const std::string& host = "127.0.0.1") {
  return openRemotePort({identity != nullptr, host, port}, identity != nullptr ? *identity : TlsIdentity{},
                        "COM32 (dock)");
}

std::string receive(SerialPort& port, std::size_t count) {
  std::string text;
  std::array<std::uint8_t, 4096> bytes{};
  for (const auto end = Time::now() + 2s; text.size() < count && Time::now() < end;) {
    const std::size_t got = port.read(bytes);
    text.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(got));
    if (got == 0) port.awaitInput(10ms);
  }
  return text;
}

void send(SerialPort& port, std::string_view text) {
  EXPECT_EQ(port.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}), text.size());
}

template <class Condition>
bool soon(Condition condition) {
  for (const auto end = Time::now() + 2s; Time::now() < end; std::this_thread::sleep_for(1ms))
    if (condition()) return true;
  return false;
}

TEST(RemotePort, CarriesBytesLinesAndSettings) {
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  for (const bool byteByByte : {false, true}) {
    EchoingPort far(byteByByte);
    bool told = false;
    const LocalServer server([&](int connection) {
      far.serve(connection, [&](EchoingPort& echo) {
        if (told || echo.told().find("5=8 ") == std::string::npos) return true;
        echo.notify(com_port::NotifyModemState, com_port::ModemDsr | com_port::ModemDsrChanged);
        echo.notify(com_port::NotifyLineState, com_port::LineFraming | com_port::LineDataReady);
        return told = true;
      });
    });
    const auto port = openAt(server.port());
    EXPECT_EQ(port->modemLines(), ModemLines{});
    port->configure({57600, LineParity::Even, 7, LineStopBits::Two});
    port->setRts(true);
    send(*port, all + all);
    EXPECT_EQ(receive(*port, 2 * all.size()), all + all);
    EXPECT_EQ(port->outstanding(), 0U);
    EXPECT_EQ(port->takeErrors().Framing, 0U);
    port->setDtr(true);
    EXPECT_TRUE(soon([&] { return port->modemLines().Dsr; }));
    EXPECT_FALSE(port->modemLines().Cts);
    EXPECT_TRUE(soon([&] { return port->takeErrors().Framing == 1; }));
    EXPECT_EQ(port->takeErrors().Framing, 0U);
    send(*port, "stale");
    port->discardInput();
    send(*port, "new");
    EXPECT_EQ(receive(*port, 3), "new");
    const std::string told57600 = far.told();
    EXPECT_NE(told57600.find("5=9 5=12 "), std::string::npos) << "both lines are low first: " << told57600;
    EXPECT_NE(told57600.find("1=57600 2=7 3=3 4=2 5=11 5=8 "), std::string::npos) << told57600;
  }
}

TEST(RemotePort, ASettingThatTheServerDoesNotKeepIsRefused) {
  EchoingPort far;
  far.refuseBaud();
  const LocalServer server([&](int connection) { far.serve(connection); });
  const auto port = openAt(server.port());
  EXPECT_TRUE(soon([&] {
    return numberOf([&] {
             port->configure({57600, LineParity::None, 8, LineStopBits::Two});
           }) == 8015 ||
           numberOf([&] { port->modemLines(); }) == 8015;
  }));
  EXPECT_EQ(numberOf([&] { port->configure({9600, LineParity::None, 8, LineStopBits::OneAndHalf}); }), 8015);
}

TEST(RemotePort, WhatKeepsItFromBeingOpenedIsTold) {
  struct Case {
    const char* Says;
    std::int32_t Number;
    const char* Words;
  };
  for (const Case& each :
       {Case{"\xFF\xFD\x2CPort already in use\r\n", 8005, "is in use by another program"},
        Case{"SSH-2.0-server\r\n", 8002, "ended the connection at once, saying \"SSH-2.0-server\""},
        Case{"\xFF\xFE\x2C", 8002, "speaks no RFC 2217"}, Case{"", 8002, "ended the connection"}}) {
    const LocalServer server([&](int connection) { sendTo(connection, each.Says); });
    const auto [number, words] = failureOf([&] { openAt(server.port()); });
    EXPECT_EQ(number, each.Number) << each.Says;
    EXPECT_NE(words.find(each.Words), std::string::npos) << words;
  }
  const std::uint16_t closed = LocalServer([](int) {}).port();
  EXPECT_NE(failureOf([&] { openAt(closed); }).second.find("is refused"), std::string::npos);
  const auto [number, words] = failureOf([&] { openAt(closed, nullptr, "no-such-machine.invalid"); });
  EXPECT_EQ(number, 8002);
  EXPECT_NE(words.find("name"), std::string::npos) << words;
}

TEST(RemotePort, AnAbortEndsTheOpeningAtOnce) {
  const LocalServer server([](int connection) {
    char byte = 0;
    while (::recv(connection, &byte, 1, 0) > 0) continue;
  });
  struct Aborting : Host {
    void serveEvents() override { Abort = ++Rounds > 3; }
    int Rounds = 0;
    bool Abort = false;
  };
  const auto host = std::make_shared<Aborting>();
  const WorldScope world(makeLinuxPlatform());
  current().setHost(host);
  current().setWaits({true, &host->Abort});
  const auto began = Time::now();
  EXPECT_NE(failureOf([&] { openAt(server.port()); }).second.find("stopped"), std::string::npos);
  EXPECT_LT(Time::now() - began, 1s);
}

TEST(RemotePort, ANetworkThatFailsIsTold) {
  enum Way { Reset, End, Silence };
  const auto wordsOf = [](Way way) {
    const LocalServer server([&](int connection) {
      EchoingPort far;
      far.serve(connection,
                [](const EchoingPort& echo) { return echo.told().find("5=8 ") == std::string::npos; });
      if (way == Reset) reset(connection);
      for (pollfd state{connection, POLLRDHUP, 0}; way == Silence && ::poll(&state, 1, 20000) == 0;) continue;
    });
    const auto port = openAt(server.port());
    port->setDtr(true);
    const auto began = Time::now();
    std::string words;
    while (words.empty() && Time::now() - began < 11s) {
      port->awaitInput(50ms);
      const auto [number, description] = failureOf([&] { port->outstanding(); });
      if (number == 8015) words = description;
    }
    EXPECT_LT(Time::now() - began, way == Silence ? 10s : 1s);
    for (const auto& member : std::initializer_list<std::function<void()>>{
             [&] { port->read({}); }, [&] { port->write({}); }, [&] { port->discardInput(); },
             [&] { port->setRts(true); }, [&] { port->modemLines(); }, [&] { port->takeErrors(); }})
      EXPECT_EQ(numberOf(member), 8015);
    return words;
  };
  auto silent = std::async(std::launch::async, wordsOf, Silence);
  EXPECT_NE(wordsOf(Reset).find("broke off"), std::string::npos);
  EXPECT_NE(wordsOf(End).find("has ended the connection. The dock was unplugged"), std::string::npos);
  EXPECT_NE(silent.get().find("has fallen silent"), std::string::npos);
}

/// Makes TLS of each connection and then says that it speaks no RFC 2217.
void serveTls(int connection, const std::string& pem, const std::string& clientCa) {
  const std::unique_ptr<SSL_CTX, OpensslDeleter<SSL_CTX_free>> context(::SSL_CTX_new(::TLS_server_method()));
  ::SSL_CTX_use_certificate_file(context.get(), pem.c_str(), SSL_FILETYPE_PEM);
  ::SSL_CTX_use_PrivateKey_file(context.get(), pem.c_str(), SSL_FILETYPE_PEM);
  if (!clientCa.empty()) {
    ::SSL_CTX_load_verify_file(context.get(), clientCa.c_str());
    ::SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
  }
  const std::unique_ptr<SSL, OpensslDeleter<SSL_free>> session(::SSL_new(context.get()));
  ::SSL_set_fd(session.get(), connection);
  if (::SSL_accept(session.get()) == 1) ::SSL_write(session.get(), "\xFF\xFE\x2C", 3);
  std::array<char, 100> rest{};
  ::SSL_read(session.get(), rest.data(), rest.size());
}

TEST(RemotePort, WithTlsBothEndsMustBeTheRightOnes) {
  const Certificates made, foreign;
  made.add("expired", -1, "localhost");
  made.add("elsewhere", 2, "elsewhere.example");
  const std::string digits = fingerprintDigits(made.fingerprint("good"));
  const TlsIdentity trusted{made / "ca.pem", "", "", ""}, pinned{"", digits, "", ""};
  struct Case {
    const char* Certificate;
    TlsIdentity Client;
    bool AsksClient;
    const char* Words;
  };
  const char* const good = "speaks no RFC 2217";  // told by the server once TLS is made
  for (const Case& each :
       {Case{"good", trusted, false, good}, Case{"good", pinned, false, good},
        Case{"expired", pinned, false, digits.c_str()},
        Case{"good", {made / "ca.pem", "", made / "good.pem", ""}, true, good},
        Case{"good", {foreign / "ca.pem", "", "", ""}, false, "from no authority that is trusted here"},
        Case{"good", {}, false, "from no authority that is trusted here"},
        Case{"expired", trusted, false, "has expired"}, Case{"elsewhere", trusted, false, "for another name"},
        Case{"good", trusted, true, "refuses a client without a certificate"},
        Case{"good",
             {made / "ca.pem", "", foreign / "good.pem", ""},
             true,
             "refuses this client's certificate"},
        Case{"good",
             {made / "ca.pem", "", made / "good.pem", made / "rsa.key"},
             true,
             "is not the certificate's private key"},
        Case{"good", {made / "missing", "", "", ""}, false, "the CA, cannot be read"},
        Case{"good", {made / "ca.key", "", "", ""}, false, "is not a certificate in PEM"}}) {
    const LocalServer server([&](int connection) {
      serveTls(connection, made / (std::string(each.Certificate) + ".pem"),
               each.AsksClient ? made / "ca.pem" : "");
    });
    const auto [number, words] = failureOf([&] { openAt(server.port(), &each.Client, "localhost"); });
    EXPECT_EQ(number, 8002);
    const bool wrongPin = each.Words == digits.c_str();
    EXPECT_NE(words.find(wrongPin ? "has another certificate than the one of the Fingerprint" : each.Words),
              std::string::npos)
        << words;
  }
  const LocalServer plain([](int connection) {
    sendTo(connection, "\xFF\xFB\x03\xFF\xFD\x03\xFF\xFB\x01");
    for (char byte = 0; ::recv(connection, &byte, 1, 0) > 0;) continue;
  });
  const std::string words = failureOf([&] { openAt(plain.port(), &trusted, "localhost"); }).second;
  EXPECT_NE(words.find("speaks no TLS"), std::string::npos) << words;
}

}  // namespace
}  // namespace hy_wristlog::platform
