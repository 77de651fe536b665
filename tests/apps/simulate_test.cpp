#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <thread>

#include "apps/sandbox.h"
#include "apps/served.h"

// These run against a served logger in another process, so they take real time.
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr const char* DocksArguments = " --docks Docks.INI --speed 3600 ";

Json jsonOf(const Outcome& outcome) {
  EXPECT_EQ(outcome.Status, 0) << outcome.Out << outcome.Err;
  return Json::parse(outcome.Out, nullptr, false);
}

int samplesIn(const Json& retrieved) { return retrieved.value("samples", 0); }

TEST(Simulate, KeepsWhatItWasToldBetweenCommandsAndRuns) {
  const Sandbox box;
  const std::string again = "vivid --state s" + std::string(DocksArguments);
  {
    Served served(box, again + "--worn 0");
    EXPECT_FALSE(served.Ready.value("goes_on", true));
    EXPECT_NE(box.content("Docks.INI").find(served.Ready.value("docks_section", "?")), std::string::npos);
    const Json docks = jsonOf(box.run("docks --json"));
    EXPECT_NE(docks.dump().find("\"com_port\":60,"), std::string::npos) << docks;
    const Json configured = jsonOf(box.run("configure --mode 5 --epoch 15 --identity Ada --gender F --json"));
    EXPECT_EQ(configured.value("return_code", -1), 0) << configured;
    EXPECT_FALSE(served.await("configured").is_null());
    EXPECT_FALSE(served.await("recording").is_null());
    EXPECT_EQ(served.stop(), 0);
  }
  EXPECT_FALSE(box.has("Docks.INI"));
  Served served(box, again);
  EXPECT_TRUE(served.Ready.value("goes_on", false));
  std::this_thread::sleep_for(200ms);
  const Outcome status = box.run("status --json");
  EXPECT_NE(status.Out.find("\"Ada\""), std::string::npos) << status.Out << status.Err;
  const Json held = jsonOf(box.run("retrieve --out ada --json"));
  EXPECT_GE(samplesIn(held), 4) << held;
  EXPECT_FALSE(served.await("downloaded").is_null());
}

TEST(Simulate, ServesTheOtherModelsOnAPseudoTerminalToo) {
  const Sandbox box;
  {
    const Served served(box, "kestrin2 --worn 2h" + std::string(DocksArguments));
    const Json recording = jsonOf(box.run("retrieve --out k --json"));
    EXPECT_GE(samplesIn(recording), 118) << recording;
  }
  for (const char* model : {"pendrel13", "pendrel27"}) {
    const Served served(box, model + " --worn 2h"s + DocksArguments);
    const Outcome retrieved = box.run("legacy retrieve --port 60 --force --out p --json");
    EXPECT_EQ(retrieved.Status, 0) << retrieved.Out << retrieved.Err;
  }
}

TEST(Simulate, RefusesAStateThatIsNotItsOwn) {
  const Sandbox box;
  {
    const Served first(box, "kestrin2 --worn 1h --state s");
    const Outcome second = box.run("simulate kestrin2 --state s");
    EXPECT_EQ(second.Status, 1);
    EXPECT_NE(second.Err.find("another 'wristlog simulate' serves"), std::string::npos) << second.Err;
  }
  const std::string sound = box.content("s");
  const auto refusal = [&](const std::string& model, const std::string& text) {
    box.write("s", text);
    const Outcome outcome = box.run("simulate " + model + " --state s");
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(box.content("s"), text);
    return outcome.Err;
  };
  EXPECT_NE(refusal("vivid", sound).find("holds a kestrin2, no vivid"), std::string::npos);
  EXPECT_NE(refusal("kestrin2", "[Dock 1]\n").find("no saved state"), std::string::npos);
  EXPECT_NE(refusal("kestrin2", sound.substr(0, 500)).find("damaged"), std::string::npos);
}

TEST(Simulate, RefusesWrongArguments) {
  const Sandbox box;
  for (const char* wrong : {"", "vivid2", "vivid --worn 7", "vivid --worn 401d", "vivid --speed 0.5",
                            "vivid --speed nan", "vivid --listen host", "vivid --listen 1.2.3.4:70000",
                            "vivid --pty --listen 7000", "vivid --fault loose", "vivid --fault unheeded=C",
                            "vivid --fault lose-echo@x", "vivid --fault silent@1", "vivid --port 65"})
    EXPECT_EQ(box.run("simulate " + std::string(wrong)).Status, 2) << wrong;
  EXPECT_EQ(box.run("simulate pendrel27 --serial-number V1").Status, 1);
  EXPECT_EQ(box.run("simulate vivid --listen 192.0.2.1:7000").Status, 1);
  const std::string written = "[dock 60]\nDevice=/dev/ttyUSB0\n";
  box.write("own.ini", written);
  EXPECT_EQ(box.run("simulate vivid --docks own.ini").Status, 1);
  EXPECT_EQ(box.content("own.ini"), written);
  const Outcome told = box.run("simulate vivid --docks own.ini --json");
  EXPECT_EQ(Json::parse(told.Out, nullptr, false).value("event", ""), "failed") << told.Out;
}

TEST(Simulate, SaysWhoCanReachItAndServesOnWhenItCannotBeSaved) {
  const Sandbox box;
  std::filesystem::create_directory(box.Folder / "states");
  Served served(box, "vivid --worn 1h --state states/s --listen 0.0.0.0:0");
  EXPECT_TRUE(served.Ready.contains("on_loopback") && !served.Ready["on_loopback"]) << served.Ready;
  std::filesystem::remove_all(box.Folder / "states");
  const std::string device = "rfc2217://127.0.0.1" + served.device().substr(served.device().rfind(':'));
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(box.run("status --model vivid --dock " + device).Status, 0);
    EXPECT_FALSE(served.await("not_saved").is_null());
  }
}

TEST(Simulate, SpoilsWhatAFaultNames) {
  const Sandbox box;
  const Served served(box,
                      "vivid --worn 1h --fault bad-config-checksum@0xalways" + std::string(DocksArguments));
  EXPECT_EQ(box.run("status").Status, 1);
}

/// A client of RFC 2217 that knows only its bytes.
class Client {
 public:
  explicit Client(const Served& served) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string device = served.device();
    address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(device.substr(device.rfind(':') + 1))));
    EXPECT_EQ(::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  ~Client() { ::close(socket_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  void send(const std::string& bytes) const {
    EXPECT_EQ(::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
  }
  /// Sends a message of the option for serial ports.
  void order(const std::string& content) const { send("\xFF\xFA\x2C" + content + "\xFF\xF0"); }
  /// Reads until this comes, and forgets what came up to its end.
  bool gets(const std::string& bytes) {
    for (std::size_t at = 0;; at = 0) {
      if (at = Unread.find(bytes); at != std::string::npos) {
        Unread.erase(0, at + bytes.size());
        return true;
      }
      if (!read()) return false;
    }
  }
  bool answers(const std::string& content) { return gets("\xFF\xFA\x2C" + content + "\xFF\xF0"); }
  bool isEnded() {
    while (read()) {
    }
    return ended_;
  }
  void reset() const {
    const linger none{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &none, sizeof none);
  }
  void endSending() const { ::shutdown(socket_, SHUT_WR); }

  std::string Unread;

 private:
  bool read() {
    char bytes[4096];
    pollfd ready{socket_, POLLIN, 0};
    if (::poll(&ready, 1, 5000) <= 0) return false;
    const ssize_t count = ::recv(socket_, bytes, sizeof bytes, 0);
    ended_ = count <= 0;
    if (!ended_) Unread.append(bytes, static_cast<std::size_t>(count));
    return !ended_;
  }

  int socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  bool ended_ = false;
};

TEST(Simulate, AnswersAClientOnTheNetworkAsASerialPortDoes) {
  const Sandbox box;
  const Served served(box, "kestrin2 --listen 0");
  Client client(served);
  client.send("\xFF\xFB\x2C\xFF\xFB\x00\xFF\xFD\x00"s);
  EXPECT_TRUE(client.gets("\xFF\xFD\x2C")) << "it agrees on the option";
  EXPECT_TRUE(client.answers("\x6B\x00"s)) << "and tells the state from which changes are told";
  client.order("\x01\x00\x00\xE1\x00"s);
  EXPECT_TRUE(client.answers("\x65\x00\x00\xE1\x00"s));
  client.order("\x04\x02");
  EXPECT_TRUE(client.answers("\x68\x02"));
  client.order("\x02\x09");
  EXPECT_TRUE(client.answers("\x66\x08")) << "what holds is told in place of what cannot be";
  client.order("\x03\x00"s);
  EXPECT_TRUE(client.answers("\x67\x01"));
  client.order("\x05\x07");
  EXPECT_TRUE(client.answers("\x69\x09")) << "DTR is low at first";
  client.order("\x05\x08");
  EXPECT_TRUE(client.answers("\x69\x08"));
  EXPECT_TRUE(client.answers("\x6B\x22")) << "the logger raises DSR";
  client.send("show clock mode\r");
  EXPECT_TRUE(client.gets("show clock mode\r12#")) << client.Unread;
  client.order("\x0C\x03");
  EXPECT_TRUE(client.answers("\x70\x03"));
  client.order("\x05\x09");
  EXPECT_TRUE(client.answers("\x69\x09"));
  EXPECT_TRUE(client.answers("\x6B\x02")) << "and drops it after DTR";
}

TEST(Simulate, ServesOneClientAtATimeAndSurvivesAll) {
  const Sandbox box;
  Served served(box, "vivid --listen 127.0.0.1:0");
  {
    const Client first(served);
    EXPECT_FALSE(served.await("opened").is_null());
    Client second(served);
    second.send("\xFF\xFB\x2C");
    EXPECT_TRUE(second.gets("Port already in use\r\n"));
    EXPECT_TRUE(second.isEnded());
    first.reset();
  }
  EXPECT_FALSE(served.await("closed").is_null()) << "a reset ends it";
  std::string garbage;
  for (unsigned i = 0, x = 1; i < 200000; ++i, x = x * 1103515245 + 12345)
    garbage += i % 3 == 0 ? '\xFF' : static_cast<char>(x >> 16);
  {
    Client rude(served);
    rude.send("\xFF\xFB\x2C");
    rude.order("\x01\x00\x3D\x09\x00"s);
    std::thread reader([&] { rude.isEnded(); });
    rude.send(garbage);
    rude.endSending();
    reader.join();
  }
  EXPECT_FALSE(served.await("closed").is_null()) << "so does a half-closed one";
  Client polite(served);
  polite.send("\xFF\xFD\x2C");
  EXPECT_TRUE(polite.gets("\xFF\xFB\x2C"));
  const auto asked = std::chrono::steady_clock::now();
  EXPECT_EQ(served.stop(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - asked, 5s);
}

TEST(Simulate, ServesByTlsOnlyWhoKnowsItsAuthorityAndIsKnown) {
  const Sandbox box;
  const auto shell = [&](const std::string& command) {
    return std::system(("cd " + box.Folder.string() + " && " + command + " >told 2>err").c_str());
  };
  for (const std::string name : {"server", "client"})
    ASSERT_EQ(
        shell("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -keyout " +
              name + ".key -out " + name + ".pem -subj /CN=" + name),
        0);
  ASSERT_EQ(shell("openssl genrsa -out other.key 2048"), 0);
  for (const char* wrong : {"server.key", "server.pem --key other.key"})
    EXPECT_EQ(box.run("simulate vivid --listen 0 --certificate "s + wrong).Status, 1) << wrong;
  Served served(box, "vivid --listen 0 --certificate server.pem --key server.key --client-ca client.pem");
  EXPECT_TRUE(served.device().starts_with("rfc2217s://")) << served.device();
  const std::string asks =
      "(printf '\\377\\373\\054'; sleep 1) | timeout 4 openssl s_client -quiet -verify_return_error "
      "-connect " +
      served.device().substr(served.device().rfind('/') + 1) + " -CAfile ";
  const auto isAnswered = [&] { return box.content("told").find("\xFF\xFD\x2C") != std::string::npos; };
  shell(asks + "server.pem -cert client.pem -key client.key");
  EXPECT_TRUE(isAnswered()) << box.content("err");
  for (const char* stranger : {"server.pem", "client.pem -cert client.pem -key client.key"}) {
    EXPECT_FALSE(served.await("closed").is_null());
    shell(asks + stranger);
    EXPECT_FALSE(isAnswered()) << stranger;
  }
}

TEST(Simulate, WorksWithAnotherProgramsClient) {
  const std::string python = "/usr/bin/python3";
  if (std::system((python + " -c 'import serial' >/dev/null 2>&1").c_str()) != 0)
    GTEST_SKIP() << "python3-serial is not installed";
  const Sandbox box;
  const Served served(box, "kestrin2 --listen 127.0.0.1:0");
  box.write("client.py", R"(
import serial, sys, time
port = serial.serial_for_url(sys.argv[1], baudrate=57600, stopbits=2, timeout=5, do_not_open=True)
port.dtr = port.rts = False
port.open()
assert not port.dsr
port.dtr = True
for _ in range(100):
    if port.dsr: break
    time.sleep(0.05)
assert port.dsr
port.write(b"show ver\r")
print(port.read_until(b">"))
port.close()
)");
  const std::string command = "cd " + box.Folder.string() + " && timeout 60 " + python +
                              " -W ignore client.py " + served.device() + " >told 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0) << box.content("told");
  EXPECT_NE(box.content("told").find("show ver\\r01.00.0012#"), std::string::npos) << box.content("told");
}

}  // namespace
