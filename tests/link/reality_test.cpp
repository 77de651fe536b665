#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "link/Form_Comm.h"
#include "support/failures.h"
#include "support/surroundings.h"

// These run over a real pseudo-terminal and against another program, so they take real time.
namespace hy_wristlog {
namespace {

/// A folder, a pseudo-terminal that is declared as COM port 7, and a program at its far end.
class Line {
 public:
  Line() {
    if (::grantpt(master_) != 0 || ::unlockpt(master_) != 0) throw std::runtime_error("no pseudo-terminal");
    Folder.put("Docks.INI", std::string("[Dock 1]\nCOMport=7\nDevice=") + ::ptsname(master_) + "\n");
    Link.subOpenPort(7, 13, 8, 3, 3, 0, false, true);
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  ~Line() {
    finish();
    hangUp();
  }

  /// Runs the program in the folder with the line as its input and output.
  void run(std::vector<std::string> arguments) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    std::vector<char*> words;
    for (std::string& word : arguments) words.push_back(word.data());
    words.push_back(nullptr);
    child_ = ::fork();
    if (child_ == 0) {
      ::dup2(ends[1], 0);
      ::dup2(ends[1], 1);
      ::dup2(::open("/dev/null", O_WRONLY), 2);
      if (::chdir(Folder.path().c_str()) == 0) ::execvp(words[0], words.data());
      ::_exit(127);
    }
    ::close(ends[1]);
    relay_ = std::thread([this, socket = ends[0]] { relay(socket); });
  }
  /// The program's exit status.
  int finish() {
    if (!relay_.joinable()) return -1;
    relay_.join();
    int status = 0;
    ::waitpid(child_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  void hangUp() {
    if (master_ >= 0) ::close(master_);
    master_ = -1;
  }
  void send(std::string_view text) const { pass(text.data(), text.size(), master_); }

  TemporaryFolder Folder;

 private:
  static void pass(const char* bytes, std::size_t count, int to) {
    for (ssize_t sent = 0; count > 0; bytes += sent, count -= static_cast<std::size_t>(sent))
      if ((sent = ::write(to, bytes, count)) <= 0) return;
  }
  void relay(int socket) const {
    std::array<pollfd, 2> ready{{{master_, POLLIN, 0}, {socket, POLLIN, 0}}};
    std::array<char, 4096> bytes{};
    for (ssize_t count = 1; count > 0 && ::poll(ready.data(), ready.size(), 20000) > 0;)
      for (std::size_t i = 0; i < ready.size() && count > 0; ++i) {
        if (ready[i].revents == 0) continue;
        count = ::read(ready[i].fd, bytes.data(), bytes.size());
        if (count > 0) pass(bytes.data(), static_cast<std::size_t>(count), ready[1 - i].fd);
      }
    ::close(socket);
  }

  Variable docks_{"HY_WRISTLOG_DOCKS", Folder / "Docks.INI"};
  int master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  pid_t child_ = -1;
  std::thread relay_;

 public:
  Form_Comm Link;
};

bool installed(const char* program) {
  return std::system((std::string("command -v ") + program + " >/dev/null 2>&1").c_str()) == 0;
}

/// Every byte value, with no end in a packet's filler.
std::string sample(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>((i * 7 + i / 256) % 256);
  text.back() = '!';
  return text;
}

TEST(Reality, ReceivesWhatAnotherProgramSends) {
  if (!installed("sx")) GTEST_SKIP() << "lrzsz is not installed";
  for (const bool big : {false, true}) {
    Line line;
    const std::string sent = sample(5000);
    line.Folder.put("data", sent);
    line.run(big ? std::vector<std::string>{"sx", "-q", "-k", "data"}
                 : std::vector<std::string>{"sx", "-q", "data"});
    const PacketArray packets = line.Link.fncReceiveXmodemPackets(13, 8, 3, 3, 3000);
    EXPECT_EQ(line.finish(), 0);
    ASSERT_TRUE(packets);
    EXPECT_EQ(packets->front().BinData.size(), big ? 1024U : 128U);
    std::string received;
    for (const Class_Packet& packet : *packets) received.append(packet.BinData.begin(), packet.BinData.end());
    ASSERT_GE(received.size(), sent.size());
    EXPECT_EQ(received.find_first_not_of('\x1A', sent.size()), std::string::npos);
    received.resize(sent.size());
    EXPECT_EQ(received, sent);
  }
}

TEST(Reality, SendsWhatAnotherProgramReceives) {
  if (!installed("rx")) GTEST_SKIP() << "lrzsz is not installed";
  for (const auto& [size, length, byteByByte] :
       {std::tuple{1, 128U, true}, std::tuple{1, 128U, false}, std::tuple{2, 1024U, false}}) {
    Line line;
    const std::string data = sample(2 * length);
    std::vector<Class_Packet> packets(2);
    for (std::size_t i = 0; i < packets.size(); ++i) {
      packets[i].PacketSize = size;
      packets[i].PacketNum = static_cast<std::uint8_t>(i + 1);
      const std::string part = data.substr(i * length, length);
      packets[i].BinData.assign(part.begin(), part.end());
    }
    line.run({"rx", "-q", "-b", "-c", "received"});
    line.Link.subSendXmodemPackets(packets, 13, 8, 3, 3, 3000, byteByByte, 1);
    EXPECT_EQ(line.finish(), 0);
    EXPECT_EQ(contentOf(line.Folder / "received"), data);
  }
}

TEST(Reality, ReadsLinesAndSeesTheHangUp) {
  Line line;
  line.send("5.01 A2\r>");
  EXPECT_EQ(line.Link.fncGetCharLine('\r', 500), "5.01 A2");
  EXPECT_EQ(line.Link.fncGetCharLine('>', 500), "");
  EXPECT_TRUE(line.Link.DSRHolding()) << "a pseudo-terminal has no lines, so DSR follows DTR";
  line.hangUp();
  EXPECT_EQ(numberOf([&] { line.Link.fncGetCharLine('>', 500); }), 8015) << "not taken for silence";
  line.Link.subClosePort();
  EXPECT_FALSE(line.Link.Get_PortReady());
}

}  // namespace
}  // namespace hy_wristlog
