#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "apps/sandbox.h"
#include "simulator/bench.h"
#include "support/certificates.h"
#include "support/network_proxy.h"
#include "support/served_dock.h"

namespace hy_wristlog {
namespace {

using namespace std::chrono_literals;
using platform::NetworkFaults;
using simulator::Bench;

// These run in real time: ser2net is another program, and looks at the modem lines by its own clock.

constexpr const char* Ser2netProgram = "/usr/sbin/ser2net";

/// The n-th block of YAML in docs/remote.md.
std::string documentedYaml(int number) {
  const std::string text = contentOf(std::string(TEST_DATA) + "/../../docs/remote.md");
  const std::string fence = "```yaml\n";
  std::size_t at = 0;
  for (int i = 0; i < number; ++i) at = text.find(fence, at) + fence.size();
  return text.substr(at, text.find("```", at) - at);
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  EXPECT_NE(text.find(what), std::string::npos) << what;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
    text.replace(at, what.size(), with);
  return text;
}

/// ser2net as docs/remote.md sets it up, in front of a dock.
class Ser2net {
 public:
  Ser2net(const ServedDock& dock, std::string yaml) {
    const std::string port = std::to_string(port_);
    yaml = replaced(replaced(std::move(yaml), "4001", port), "/dev/ttyUSB0", dock.path());
    const std::string file = folder_.put("ser2net.yaml", yaml), lines = "MODEM_LINES=" + dock.linesFile();
    const std::string preloaded = "LD_PRELOAD=" MODEM_LINES_LIBRARY;
    const char* const arguments[] = {Ser2netProgram, "-n", "-c", file.c_str(), nullptr};
    const char* const variables[] = {preloaded.c_str(), lines.c_str(), nullptr};
    EXPECT_EQ(::posix_spawn(&child_, Ser2netProgram, nullptr, nullptr, const_cast<char* const*>(arguments),
                            const_cast<char* const*>(variables)),
              0);
    EXPECT_TRUE(listens()) << yaml;
  }
  Ser2net(const Ser2net&) = delete;
  Ser2net& operator=(const Ser2net&) = delete;
  ~Ser2net() {
    ::kill(child_, SIGTERM);
    ::waitpid(child_, nullptr, 0);
  }

  std::uint16_t port() const { return port_; }

 private:
  bool listens() const {
    std::ostringstream entry;
    entry << ':' << std::uppercase << std::hex << std::setw(4) << std::setfill('0') << port_ << " 0";
    for (int round = 0; round < 500; ++round) {
      for (const char* table : {"/proc/net/tcp", "/proc/net/tcp6"})
        if (contentOf(table).find(entry.str()) != std::string::npos) return true;
      std::this_thread::sleep_for(10ms);
    }
    return false;
  }

  TemporaryFolder folder_;
  std::uint16_t port_ = platform::LocalServer([](int) {}).port();
  pid_t child_ = -1;
};

/// A logger that was worn for some hours up to now, in a dock that ser2net hands out.
class RemoteDock : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(Ser2netProgram)) GTEST_SKIP() << "ser2net is not installed";
  }

  static Bench wornBench(simulator::BenchOptions options, std::chrono::minutes worn) {
    const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    options.World.Begins = now - worn;
    Bench bench = simulator::makeBench(options);
    bench.Logger->setUp(simulator::ordinarySetup(*bench.World, simulator::Mode::Activity, 60));
    bench.Logger->wear(worn);
    return bench;
  }

  void declare(const char* product, const std::string& device) const {
    box_.write("Docks.INI",
               std::string("[Dock 1]\nVendorID=5245\nProductID=") + product + "\nDevice=" + device + "\n");
  }
  void declare(const char* product, std::uint16_t port) const {
    declare(product, "rfc2217://localhost:" + std::to_string(port));
  }
  /// Asks, retrieves and configures a logger.
  void useLogger(const std::string& model, const char* product, const simulator::BenchOptions& options) {
    const ServedDock dock(wornBench(options, 12h));
    const Ser2net server(dock, documentedYaml(1));
    declare(product, server.port());
    for (const std::string command : {"status --model ", "retrieve --out data --model ",
                                      "configure --mode 1 --epoch 60 --identity P07 --model "}) {
      const Outcome told = box_.run(command + model);
      EXPECT_EQ(told.Status, 0) << command << told.Out << told.Err;
    }
    const std::string series = box_.content("data/series.csv");
    EXPECT_GE(std::count(series.begin(), series.end(), '\n'), 12 * 60);
  }
  Outcome retrieve() const { return box_.run("retrieve --model vivid --force --out data"); }

  Sandbox box_;
};

TEST(RemoteDocks, TheOneThatIsUsedIsWarnedOfAndAWrongOneNamed) {
  Sandbox box;
  box.write("Docks.INI",
            "[Dock 1]\nVendorID=5245\nProductID=4000\nDevice=rfc2217://[::1]:1\n"
            "[Dock 2]\nVendorID=5245\nProductID=4000\nDevice=rfc2217://far.invalid:1\n");
  for (const auto& [dock, isFar] : {std::pair{"'Dock 1'", false}, std::pair{"'Dock 2'", true},
                                    std::pair{"rfc2217://other.invalid:1 --model vivid", true}}) {
    const Outcome told = box.run(std::string("status --dock ") + dock);
    EXPECT_EQ(told.Err.find("names and data travel readable") != std::string::npos, isFar)
        << dock << told.Err;
  }
  box.write("Docks.INI", "[Dock 1]\nVendorID=5245\nProductID=4000\nDevice=rfc2217://no port\n");
  const Outcome told = box.run("status --model vivid");
  EXPECT_NE(told.Err.find("Line 4 is no whole address"), std::string::npos) << told.Out << told.Err;
  box.Environment = "HY_WRISTLOG_DOCK=nowhere ";
  EXPECT_NE(box.run("status").Err.find("HY_WRISTLOG_DOCK names it"), std::string::npos);
}

TEST_F(RemoteDock, AVividWorksAsOnTheMachineItself) {
  useLogger("vivid", "4000", simulator::vividBenchOptions());
}

TEST_F(RemoteDock, AKestrin2ShowsItselfOnTheModemLines) {
  useLogger("kestrin2", "4002", simulator::kestrin2BenchOptions());
}

TEST_F(RemoteDock, WithTlsOnlyThoseWhoKnowEachOtherTalk) {
  const Certificates made;
  made.add("wristlog", 2, "localhost");
  const ServedDock dock(wornBench(simulator::vividBenchOptions(), 10min));
  std::string yaml = documentedYaml(2);
  yaml = replaced(yaml, "/etc/ser2net/dock.key", made / "good.pem");
  yaml = replaced(yaml, "/etc/ser2net/dock.crt", made / "good.crt");
  yaml = replaced(yaml, "/etc/ser2net/auth", made / "auth");
  ASSERT_EQ(
      std::system(("cd " + (made / ".") +
                   " && mkdir -p auth/wristlog/allowed_certs && cp ca.pem auth/wristlog/allowed_certs && "
                   "openssl rehash auth/wristlog/allowed_certs")
                      .c_str()),
      0);
  const Ser2net server(dock, yaml);
  const std::string device =
      "rfc2217s://localhost:" + std::to_string(server.port()) + "\nCA=" + (made / "ca.pem");
  declare("4000", device + "\nCertificate=" + (made / "wristlog.pem"));
  const Outcome known = box_.run("status --model vivid");
  EXPECT_TRUE(known.Status == 0 && known.Out.find("bytes recorded") != std::string::npos)
      << known.Out << known.Err;
  declare("4000", device);
  const Outcome stranger = box_.run("status --model vivid");
  EXPECT_NE(stranger.Err.find("may refuse this client's certificate"), std::string::npos)
      << stranger.Out << stranger.Err;
}

TEST_F(RemoteDock, ASlowNetworkBringsTheWholeRecordingOrIsRefused) {
  const ServedDock dock(wornBench(simulator::vividBenchOptions(), 12h));
  const Ser2net server(dock, documentedYaml(1));
  for (const NetworkFaults& faults :
       {NetworkFaults{}, NetworkFaults{.SplitsBytes = true}, NetworkFaults{.Delay = 50ms}}) {
    const platform::NetworkProxy network(server.port(), faults);
    declare("4000", network.port());
    std::filesystem::remove(box_.Folder / "record");
    const auto began = std::chrono::steady_clock::now();
    const Outcome told = box_.run("retrieve --model vivid --force --out data --record record");
    EXPECT_EQ(told.Status, 0) << faults.Delay.count() << told.Out << told.Err
                              << box_.content("data/session.log");
    EXPECT_EQ(told.Out.find("The network made the retrieval up to ") != std::string::npos, faults.Delay > 0ms)
        << told.Out;
    const Outcome again = box_.run("replay record");
    EXPECT_EQ(again.Out + again.Err, told.Out + told.Err);
    RecordProperty("retrieval_with_" + std::to_string(faults.Delay.count()) + "_ms",
                   static_cast<int>((std::chrono::steady_clock::now() - began) / 1ms));
  }
  const platform::NetworkProxy far(server.port(), {.Delay = 300ms});
  declare("4000", far.port());
  const Outcome told = retrieve();
  EXPECT_NE(told.Err.find("is too far away: an answer takes "), std::string::npos) << told.Out << told.Err;
}

TEST_F(RemoteDock, ANetworkThatIsCutEndsARetrievalInItsOwnWords) {
  using Cut = NetworkFaults::Cut;
  const ServedDock dock(wornBench(simulator::vividBenchOptions(), 120h));
  const Ser2net server(dock, documentedYaml(1));
  for (const Cut cut : {Cut::Reset, Cut::Silent}) {
    const platform::NetworkProxy network(server.port(), {.CutBy = cut, .CutAfter = 6000});
    declare("4000", network.port());
    const Outcome told = retrieve();
    EXPECT_NE(told.Status, 0) << told.Out;
    EXPECT_NE(told.Err.find("The network to the dock failed"), std::string::npos) << told.Out << told.Err;
  }
  declare("4000", server.port());
  const Outcome again = retrieve();
  EXPECT_EQ(again.Status, 0) << again.Out << again.Err;
}

}  // namespace
}  // namespace hy_wristlog
