#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include <asm/termbits.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/linux_platform.h"
#include "platform/linux/linux_serial_ports.h"
#include "platform/linux/system_io.h"
#include "support/failures.h"
#include "support/surroundings.h"

namespace hy_wristlog::platform {
namespace {

/// The far end of a line: the master of a pseudo-terminal.
class FarEnd {
 public:
  FarEnd() {
    std::array<char, 64> name{};
    EXPECT_TRUE(::grantpt(fd_.get()) == 0 && ::unlockpt(fd_.get()) == 0 &&
                ::ptsname_r(fd_.get(), name.data(), name.size()) == 0);
    path_ = name.data();
  }

  const std::string& path() const { return path_; }
  void send(std::string_view text) const {
    ASSERT_EQ(::write(fd_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  std::string receive(std::size_t count) const {
    std::string text;
    std::array<char, 4096> bytes{};
    pollfd ready{fd_.get(), POLLIN, 0};
    while (text.size() < count && ::poll(&ready, 1, 2000) == 1) {
      const ssize_t got = ::read(fd_.get(), bytes.data(), bytes.size());
      if (got <= 0) break;
      text.append(bytes.data(), static_cast<std::size_t>(got));
    }
    return text;
  }
  termios2 line() const {
    termios2 settings{};
    EXPECT_EQ(::ioctl(fd_.get(), TCGETS2, &settings), 0);
    return settings;
  }

 private:
  Descriptor fd_{::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)};
  std::string path_;
};

std::string bytesFrom(SerialPort& port, std::size_t count) {
  std::string text;
  std::array<std::uint8_t, 4096> buffer{};
  for (int round = 0; round < 2000 && text.size() < count; ++round) {
    const std::size_t got = port.read(buffer);
    text.append(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(got));
    if (got == 0) std::this_thread::sleep_for(std::chrono::milliseconds{1});
  }
  return text;
}

std::span<const std::uint8_t> asBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(SerialPort, CarriesEveryByteBothWays) {
  FarEnd far;
  const auto port = openSerialDevice(far.path(), "COM1");
  port->setDtr(true);
  port->setRts(true);
  const ModemLines seated{.Cts = false, .Dsr = true, .Cd = false, .Ring = false};
  EXPECT_EQ(port->modemLines(), seated) << "a pseudo-terminal has none, so DSR follows DTR";
  port->configure({57600, LineParity::None, 8, LineStopBits::Two});
  std::array<std::uint8_t, 16> buffer{};
  EXPECT_EQ(port->read(buffer), 0U);
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  far.send(all);
  EXPECT_EQ(bytesFrom(*port, all.size()), all);
  EXPECT_EQ(port->write(asBytes(all)), all.size());
  EXPECT_EQ(far.receive(all.size()), all);
  EXPECT_EQ(port->outstanding() + port->takeErrors().Framing, 0U);
  far.send("stale");
  std::this_thread::sleep_for(std::chrono::milliseconds{20});
  port->discardInput();
  far.send("new");
  EXPECT_EQ(bytesFrom(*port, 3), "new");
}

TEST(SerialPort, AFullQueueTakesWhatFitsAndDoesNotBlock) {
  FarEnd far;
  const auto port = openSerialDevice(far.path(), "COM1");
  const std::string block(1 << 16, 'x');
  std::size_t taken = 0, last = 1;
  for (int round = 0; round < 100 && last > 0; ++round) taken += last = port->write(asBytes(block));
  EXPECT_EQ(last, 0U);
  EXPECT_GT(taken, 0U);
  EXPECT_EQ(far.receive(taken).size(), taken);
}

TEST(SerialPort, SetsTheLine) {
  const auto none = LineParity::None;
  const auto one = LineStopBits::One, oneAndHalf = LineStopBits::OneAndHalf, two = LineStopBits::Two;
  // clang-format off
  const LineSettings good[] = {
      {57600, none, 8, two}, {600, none, 8, one}, {14400, LineParity::Mark, 8, one},
      {28800, LineParity::Space, 8, one}, {56000, LineParity::Even, 7, one}, {128000, LineParity::Odd, 8, one},
      {256000, none, 8, one}, {9600, none, 5, oneAndHalf}};
  // clang-format on
  const LineSettings bad[] = {{9600, none, 8, oneAndHalf}, {9600, none, 5, two}, {9600, none, 4, one},
                              {9600, none, 9, one},        {0, none, 8, one},    {-9600, none, 8, one}};
  FarEnd far;
  const auto port = openSerialDevice(far.path(), "COM1");
  for (const LineSettings& settings : bad)
    EXPECT_EQ(numberOf([&] { port->configure(settings); }), 8015) << settings.Baud;
  for (const LineSettings& settings : good) {
    port->configure(settings);
    const termios2 line = far.line();
    EXPECT_EQ(line.c_ospeed, static_cast<speed_t>(settings.Baud));
    EXPECT_EQ(line.c_ispeed, static_cast<speed_t>(settings.Baud));
    EXPECT_EQ((line.c_cflag & CSTOPB) != 0, settings.StopBits != one);
    const bool mark = settings.Parity == LineParity::Mark;
    EXPECT_EQ((line.c_cflag & CMSPAR) != 0, mark || settings.Parity == LineParity::Space);
    EXPECT_EQ((line.c_cflag & PARODD) != 0, mark || settings.Parity == LineParity::Odd);
    EXPECT_EQ((line.c_cflag & CRTSCTS) | line.c_lflag | line.c_oflag, 0U);
    EXPECT_EQ(line.c_iflag & (IXON | IXOFF | ICRNL | ISTRIP), 0U);
  }
}

TEST(SerialPort, IsHeldAgainstAnyoneElse) {
  const FarEnd far;
  const auto open = [&] { return openSerialDevice(far.path(), "COM9 (a dock)"); };
  const std::string words = "COM9 (a dock) is in use by another program. Close that program and try again.";
  EXPECT_EQ(failureOf([&] {
              const auto port = open();
              open();
            }),
            std::pair(8005, words));
  // Last the exclusive mode, which a pseudo-terminal keeps after its holder.
  for (const bool exclusiveMode : {false, true}) {
    {
      const Descriptor holder{::open(far.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
      ASSERT_EQ(exclusiveMode ? ::ioctl(holder.get(), TIOCEXCL) : ::flock(holder.get(), LOCK_EX), 0);
      EXPECT_EQ(numberOf(open), 8005);
    }
    EXPECT_EQ(numberOf(open), exclusiveMode ? 8005 : 0);
  }
}

TEST(SerialPort, WhatIsNoSerialPortIsNotOpened) {
  const TemporaryFolder folder;
  folder.put("file", "text");
  folder.link("loop", "loop");
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  for (const std::string& path : {folder / "missing", folder / "file", folder / "file/below", folder / "loop",
                                  folder / "pipe", folder.path(), std::string{"/dev/null"}})
    EXPECT_EQ(numberOf([&] { openSerialDevice(path, "COM1"); }), 8002) << path;
}

TEST(SerialPort, WithoutPermissionNamesTheDeviceAndTheWayOut) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can give its rights away";
  FarEnd far;
  ASSERT_TRUE(::chown(far.path().c_str(), 0, 5) == 0 && ::chmod(far.path().c_str(), 0660) == 0);
  const pid_t child = ::fork();
  if (child == 0) {
    if (::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(2);
    const auto [number, words] = failureOf([&] { openSerialDevice(far.path(), "COM33 (/dev/ttyUSB0)"); });
    const auto tells = [&text = words](const char* part) { return text.find(part) != std::string::npos; };
    ::_exit(number == 8005 && tells("COM33 (/dev/ttyUSB0)") && tells("group \"tty\"") ? 0 : 1);
  }
  int status = 0;
  EXPECT_TRUE(::waitpid(child, &status, 0) == child && status == 0);
}

TEST(SerialPort, EveryMemberSeesThatTheDeviceHasGone) {
  const auto port = [] {
    FarEnd far;
    auto open = openSerialDevice(far.path(), "COM1");
    open->configure({});
    far.send("last words");
    EXPECT_EQ(bytesFrom(*open, 10), "last words");
    return open;
  }();
  std::array<std::uint8_t, 4> buffer{};
  const std::function<void()> members[] = {
      [&] { port->read(buffer); }, [&] { port->read({}); },      [&] { port->write(buffer); },
      [&] { port->write({}); },    [&] { port->outstanding(); }, [&] { port->discardInput(); },
      [&] { port->setDtr(true); }, [&] { port->setRts(false); }, [&] { port->modemLines(); },
      [&] { port->takeErrors(); }, [&] { port->configure({}); }};
  for (const auto& member : members) EXPECT_EQ(numberOf(member), 8015) << &member - members;
}

TEST(SerialPort, NumbersAreOpenedByDeclarationThenByRule) {
  FarEnd far;
  const TemporaryFolder folder;
  const Variable docks{"HY_WRISTLOG_DOCKS",
                       folder.put("docks", "[Dock 1]\nCOMport=64\nDevice=" + far.path() + "\n")};
  const auto world = makeLinuxPlatform();
  const auto port = world->serialPorts().open(64);
  far.send("ok");
  EXPECT_EQ(bytesFrom(*port, 2), "ok");
  const auto [number, words] = failureOf([&] { world->serialPorts().open(63); });
  EXPECT_EQ(number, 8002);
  EXPECT_NE(words.find("COM63 (/dev/ttyACM14)"), std::string::npos) << words;
  for (const std::int32_t number : {0, -1, 32768, INT32_MAX, INT32_MIN})
    EXPECT_EQ(numberOf([&] { world->serialPorts().open(number); }), 8002) << number;
}

}  // namespace
}  // namespace hy_wristlog::platform
