#include <algorithm>
#include <map>

#include "simulator/pendrel_subject.h"
#include "simulator/wearer.h"
#include "support/failures.h"
#include "wire.h"

namespace hy_wristlog::simulator {
namespace {

constexpr auto Plain = PendrelModel::Plain, Checksums = PendrelModel::Checksums, Steps = PendrelModel::Steps;

PendrelBenchOptions optionsOf(PendrelModel model, std::size_t kilobytes = 64) {
  PendrelBenchOptions options;
  options.Logger.Model = model;
  options.Logger.MemoryKilobytes = kilobytes;
  return options;
}

/// Somebody at the PC's end of a Pendreader's line.
struct Reader {
  explicit Reader(const PendrelBenchOptions& options) : Lab(makePendrelBench(options)) { connect(); }

  void connect(bool dtr = true, bool rts = true) {
    Port.reset();
    Port = Lab.World->serialPorts().open(1);
    speed(600);
    Port->setDtr(dtr);
    Port->setRts(rts);
  }
  void speed(int baud) {
    Port->configure({baud, platform::LineParity::None, 8, platform::LineStopBits::One});
  }
  /// Types at the pace of the line, waits, and returns what has come by then.
  std::string exchange(const std::string& text, int milliseconds = 3000) {
    Port->write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    Lab.World->advance(std::chrono::milliseconds{milliseconds + 17 * static_cast<int>(text.size())});
    std::string answer(70000, '\0');
    answer.resize(Port->read({reinterpret_cast<std::uint8_t*>(answer.data()), answer.size()}));
    return answer;
  }
  std::string inTwo(const std::string& first, int pause, const std::string& second) {
    const std::string answer = exchange(first, pause);
    return answer + exchange(second);
  }
  SimulatedPendrel& logger() const { return *Lab.Logger; }

  PendrelBench Lab;
  std::unique_ptr<platform::SerialPort> Port;
};

unsigned sumOf(const std::string& text) {
  unsigned sum = 0;
  for (const char c : text) sum += static_cast<std::uint8_t>(c);
  return sum;
}

std::string hexOf(unsigned value) {
  char digits[8];
  std::snprintf(digits, sizeof digits, "%04X", value & 0xFFFFU);
  return digits;
}

std::string setupText(const std::string& beforeRecord, const std::string& record, bool checksum) {
  const std::string text = "\r" + beforeRecord + record;
  return "***C" + text + "\r" + (checksum ? hexOf(sumOf(text)) + "\r>" : ">");
}

TEST(Pendrel, AnswersToTheByte) {
  const std::string fresh = std::string(64, ' ') + "\r02\r00\rFF80\r00 00 00 00 00\r02 03 26\r",
                    subject = "Subject 17 * " + std::string(51, 'x'), read = "***O006D",
                    delay = "***A04***W0043030A", steps = setupText(fresh, "B21 80 1234 FF 00", true);
  const std::string altered = "?\rS" + fresh.substr(64) + "C9\r";
  const auto sound = [](PendrelFaults&) {};
  const std::tuple<PendrelModel, std::size_t, void (*)(PendrelFaults&), std::string, std::string> cases[] = {
      {Plain, 64, sound, "\r\r", "\r>\r>"},
      {Plain, 8, sound, "***C", setupText(fresh, "C8B 80 1234 1F 00", false)},
      {Checksums, 16, sound, "***C", setupText(fresh, "C94 80 1234 3F 00", true)},
      {Checksums, 32, sound, "***C", setupText(fresh, "C94 80 1234 7F 00", true)},
      {Steps, 64, sound, "***C", steps},
      {Steps, 64, sound, "***B" + subject + "***A81***D311209***E2359***L290200***P006D47***C",
       "***B" + subject + "***A81***D311209***E2359***L290200\r>***P006D47\r>" +
           setupText(subject + "\r81\r00\rFF80\r31 12 09 23 59\r29 02 00\r", "B21 80 1234 FF 00", true)},
      {Plain, 64, sound, "***Bshort\r***C",
       "***Bshort\r" + setupText("short" + fresh.substr(64), "C8B 80 1234 FF 00", false)},
      {Plain, 64, sound, read, read + "FF\r>"},
      {Checksums, 64, sound, read, read + "FF\r" + hexOf(sumOf("006DFF")) + "\r>"},
      {Steps, 8, sound, "***P1FFF0A***P20000B***O1FFF***O2000",
       "***P1FFF0A\r>***P20000B\r>***O1FFF0A\r" + hexOf(sumOf("1FFF0A")) + "\r>***O2000FF\r" +
           hexOf(sumOf("2000FF")) + "\r>"},
      {Checksums, 64, sound, delay, delay + "\r0043030A" + hexOf(sumOf("0043030A")) + "\r>"},
      {Plain, 64, sound, "***A04***H0043***F030A", "***A04***H0043\r***F030A\r"},
      {Plain, 64, sound, "***GU\r", "***GU"},
      {Plain, 64, [](auto& f) { f.LoseEcho = once(3); }, read, "***006DFF\r>"},
      {Plain, 64, [](auto& f) { f.AlterEcho = once(4); }, read, "***O106DFF\r>"},
      {Plain, 64, [](auto& f) { f.DelayEcho = once(), f.EchoDelay = 4s; }, "*", ""},
      {Plain, 64, [](auto& f) { f.Silent = true; }, "\r***C", ""},
      {Plain, 64, [](auto& f) { f.Unheeded['O'] = once(1); }, read + "***O0000***O0001",
       read + "FF\r>***O0000***O0001FF\r>"},
      {Plain, 64, [](auto& f) { f.Unheeded['\r'] = once(); }, "\r\r", "\r\r>"},
      {Steps, 64,
       [](auto& f) { f.Feigned['P'] = f.Feigned['L'] = f.Feigned['B'] = f.Feigned['E'] = always(); },
       "***P006D47***L010101***B" + subject + "***E2359***C",
       "***P006D47\r>***L010101\r>***B" + subject + "***E2359" + steps},
      {Steps, 64, [](auto& f) { f.BadChecksum['C'] = once(); }, "***C",
       steps.substr(0, steps.size() - 6) + hexOf(sumOf(steps.substr(4, steps.size() - 11)) ^ 0x101) + "\r>"},
      {Steps, 64, [](auto& f) { f.BadChecksum['O'] = once(); }, read,
       read + "FF\r" + hexOf(sumOf("006DFF") ^ 0x101) + "\r>"},
      {Steps, 64, [](auto& f) { f.BadChecksum['W'] = once(); }, delay,
       delay + "\r0043030A" + hexOf(sumOf("0043030A") ^ 0x101) + "\r>"},
      {Steps, 64, [](auto& f) { f.WrongDelayEcho = once(); }, delay,
       delay + "\r00430300" + hexOf(sumOf("0043030A")) + "\r>"},
      {Checksums, 64,
       [](auto& f) {
         f.SetupLines = {{0, "?"}, {1, "S"}, {7, "C9"}, {9, "no"}};
       },
       "***C", "***C" + altered + hexOf(sumOf(altered) - 13) + "\r>"},
  };
  for (const auto& [model, kilobytes, spoil, typed, answer] : cases) {
    Reader reader{optionsOf(model, kilobytes)};
    spoil(reader.logger().Faults);
    EXPECT_EQ(reader.exchange(typed), answer) << int(model) << ' ' << typed;
  }
}

TEST(Pendrel, ObeysNothingThatIsWrong) {
  const std::pair<PendrelModel, std::vector<std::string>> cases[] = {
      {Plain, {"***",        "***c",       "***Q",         "**C",      "****C",    "***O006g",   "***O006d",
               "***ON006D",  "***O 06D",   "***W007F0000", "***F0000", "***A00",   "***A40",     "***A82",
               "***D320126", "***D310026", "***D3112O9",   "***E2400", "***E2360", "***L001226", "***L311326",
               "***N01",     "***N20",     "***NF0",       "***X0",    "***H0080", "***H7FFF"}},
      {Checksums,
       {"***H0043", "***F0000", "***W00800000", "***W7FFF0000", "***W007F000F", "***W007F0200",
        "***W007F01FF"}}};
  for (const auto& [model, commands] : cases)
    for (const std::string& command : commands) {
      Reader reader{optionsOf(model, 8)};
      reader.logger().memory().write(0x6D, 1);
      const auto before = reader.logger().setupLines();
      EXPECT_EQ(reader.exchange(command), command);
      reader.connect();
      reader.connect();
      EXPECT_EQ(reader.logger().setupLines(), before) << command;
      EXPECT_FALSE(reader.logger().waiting()) << command;
    }
}

TEST(Pendrel, ForgetsHalfACommandAndListensOnlyWhenFree) {
  Reader reader{optionsOf(Checksums)};
  const std::string value = "FF\r" + hexOf(sumOf("006DFF")) + "\r>";
  EXPECT_EQ(reader.inTwo("***O00", 1700, "6D"), "***O006D" + value);
  EXPECT_EQ(reader.inTwo("***O00", 1850, "6D"), "***O006D");
  EXPECT_EQ(reader.exchange("***O00\r***O006D"), "***O00\r>***O006D" + value);
  reader.logger().forgetCommands();
  reader.exchange("***O00");
  reader.connect();
  EXPECT_EQ(reader.exchange("6D"), "6D") << "without power it forgets at once";
  PendrelMemory& memory = reader.logger().memory();
  memory.append(std::vector<std::uint8_t>(300, 7));
  memory.write(0x6D, 'G');
  reader.logger().Faults.Feigned['X'] = once();
  EXPECT_EQ(reader.exchange("***X00", 10000), "***X00\r>");
  EXPECT_EQ(reader.logger().setupLines()[4], "012C") << "said, but not done";
  EXPECT_EQ(reader.exchange("***X00", 9500), "***X00");
  EXPECT_EQ(reader.logger().setupLines()[4], "FF80");
  EXPECT_EQ(memory.read(0x6D) * 256 + memory.read(128), 'G' * 256 + 255) << "the header stays";
  EXPECT_EQ(reader.exchange("\r"), "\r>") << "of the clear";
  EXPECT_EQ(reader.exchange("\r"), "\r>");
  EXPECT_EQ(reader.inTwo("***GU\r", 580, "\r"), "***GU\r>");
  EXPECT_EQ(reader.logger().commands(), (std::vector<std::string>{"***X00", "***X00", "", "***GU", ""}));
  EXPECT_EQ(reader.exchange("***X00", 1000), "***X00");
  reader.logger().powerReset();
  EXPECT_EQ(reader.exchange("\r", 1000), "\r>") << "a restart ends the clear";
}

TEST(Pendrel, StreamsItsBlocks) {
  const std::tuple<PendrelModel, void (*)(PendrelFaults&), std::size_t, unsigned> cases[] = {
      {Plain, [](auto&) {}, 4096, 0},
      {Checksums, [](auto&) {}, 4098, 0},
      {Steps, [](auto&) {}, 4098, 0},
      {Steps, [](auto& f) { f.BadChecksum['N'] = once(); }, 4098, 0x101},
      {Plain, [](auto& f) { f.ShortBlock = once(), f.Shortfall = 96; }, 4000, 0},
      {Plain, [](auto& f) { f.LongBlock = once(); }, 4103, 0}};
  for (const auto& [model, spoil, length, error] : cases) {
    Reader reader{optionsOf(model, 8)};
    for (std::size_t at = 0; at < 8192; ++at)
      reader.logger().memory().write(at, static_cast<std::uint8_t>(at * 7 + at / 256));
    const std::string data = textOf(reader.logger().memory().block(1));
    spoil(reader.logger().Faults);
    reader.speed(600);
    EXPECT_EQ(reader.exchange("***N10", 900), "***N10");
    EXPECT_EQ(reader.exchange("", 80), "") << "the PC has a second to change its speed";
    reader.speed(4800);
    const std::string block = reader.exchange("", 9000);
    EXPECT_EQ(block.size(), length);
    EXPECT_EQ(block.substr(0, 4096), data.substr(0, length));
    if (length == 4098) {
      const std::uint8_t high = static_cast<std::uint8_t>(block[4096]),
                         low = static_cast<std::uint8_t>(block[4097]);
      EXPECT_EQ((sumOf(data) ^ error) & 0xFFFFU, high * 256U + low);
    }
    reader.speed(600);
    EXPECT_EQ(reader.exchange("\r"), "\r>") << "and it speaks slowly again";

    const std::string deaf = reader.exchange("***N10", 11000).substr(6);
    EXPECT_GT(deaf.size(), 100U);
    EXPECT_EQ(deaf.find(data.substr(0, 100)), std::string::npos) << "too slow for the block";
    EXPECT_EQ(reader.exchange("\r"), "\r>");
    reader.exchange("***N00", 3000);
    reader.connect();
    EXPECT_EQ(reader.exchange("\r"), "\r>") << "a block ends with the power";
  }
}

TEST(Pendreader, FeedsItsLoggerFromTwoLines) {
  Reader reader{optionsOf(Plain)};
  SimulatedDock& dock = *reader.Lab.Dock;
  for (const bool dtr : {false, true})
    for (const bool rts : {false, true}) {
      reader.connect(dtr, rts);
      EXPECT_EQ(reader.exchange("\r"), dtr && rts ? "\r>" : "");
      EXPECT_FALSE(reader.Port->modemLines().Dsr);
    }
  dock.pullOut();
  EXPECT_EQ(reader.exchange("\r"), "");
  dock.insert(*reader.Lab.Logger);
  EXPECT_EQ(reader.exchange("\r"), "\r>");
  dock.line().Faults.CutAfterTotal = dock.line().traffic().total() + 5;
  EXPECT_EQ(reader.exchange("***O006D"), "**") << "five bytes, both ways";
  dock.line().reconnect();

  dock.pullOut();
  dock.insert(reader.Lab.World->addLogger({}));
  reader.connect();
  EXPECT_EQ(reader.exchange("\r"), "") << "a Vivid makes no contact";
  SimulatedDock& quillander = reader.Lab.World->addDock({});
  quillander.insert(*reader.Lab.Logger);
  const auto other = reader.Lab.World->serialPorts().open(33);
  other->setRts(true);
  reader.Lab.World->advance(1s);
  other->setRts(false);
  reader.Lab.World->advance(1s);
  EXPECT_FALSE(reader.logger().awake());
  EXPECT_EQ(numberOf([&] { reader.Lab.World->serialPorts().open(2); }), 8002);
  for (const char* guid :
       {"{4d36e978-e325-11ce-bfc1-08002be10318}", "{a5dcbf10-6530-11d2-901f-00c04fb951ed}"})
    EXPECT_FALSE(dock.hasClass(guid));
}

TEST(Pendrel, BeginsWhenItsDelayHasRunOut) {
  struct Case {
    PendrelModel Model;
    std::vector<std::string> Commands;
    std::int64_t Delay, Epoch;
    const char *Told, *Released;
  };
  const Case cases[] = {
      {Checksums, {"***A04", "***W0043030A"}, 61 * 60 - 55, 60, "FFC3", "FFC3"},
      {Steps, {"***A01", "***W007F0000"}, 15, 15, "FFFF", "FFFF"},
      {Steps, {"***A01", "***W007F000E"}, 1, 15, "FFFF", "FFFF"},
      {Checksums, {"***A3C", "***W80003B0E"}, 32896LL * 900 - 899, 900, "FF80", "FF80"},
      {Plain, {"***A02", "***H0000", "***F010E"}, 128 * 30 - 29, 30, "FF80", "FF80"},
      {Plain, {"***A02", "***H0020", "***F0110", "***F0100"}, 96 * 30 - 15, 30, "FFA0", "FFA0"},
  };
  for (const Case& c : cases)
    for (const double drift : {0.0, 50.0}) {
      PendrelBenchOptions options = optionsOf(c.Model);
      options.Logger.ClockDrift = drift;
      Reader reader{options};
      SimulatedPendrel& logger = reader.logger();
      logger.memory().setPointer(5000);
      for (const std::string& command : c.Commands) reader.exchange(command);
      EXPECT_EQ(logger.setupLines().at(4), c.Told);
      reader.Lab.World->advance(10h);
      EXPECT_TRUE(logger.waiting());
      reader.Port.reset();
      EXPECT_EQ(logger.setupLines().at(4), c.Released) << "the delay runs from the release on";
      const auto own = [&](std::int64_t seconds) {
        return nanoseconds{static_cast<std::int64_t>(static_cast<double>(seconds) * (1e9 - drift * 1e3))};
      };
      const Moment released = reader.Lab.World->timeline().now();
      const auto advanceTo = [&](nanoseconds since) {
        reader.Lab.World->timeline().advanceTo(released + since);
      };
      advanceTo(own(c.Delay) - 1us);
      EXPECT_FALSE(logger.recording()) << c.Delay;
      EXPECT_EQ(logger.setupLines().at(4), "FFFF");
      reader.connect();
      advanceTo(own(c.Delay) + 1us);
      EXPECT_TRUE(logger.recording()) << "read out or not";
      EXPECT_EQ(logger.setupLines().at(4), "0000");
      advanceTo(own(c.Delay + 3 * c.Epoch) - 1us);
      EXPECT_EQ(logger.recordedBytes().size(), 2U);
      advanceTo(own(c.Delay + 3 * c.Epoch) + 1us);
      EXPECT_EQ(logger.setupLines().at(4), "0003");
      reader.exchange("***GU");
      EXPECT_FALSE(logger.recording());
      EXPECT_EQ(logger.recordedBytes().size(), 3U) << "a restart ends the recording and keeps it";
    }
}

/// What a recording says, read by its lengths and by an activity scale of the test's own.
struct Reading {
  std::vector<double> Low, High;  ///< the counts of a code lie from the one to below the other
  std::vector<int> StepCounts;
  std::vector<bool> Markers;

  Reading(const std::vector<std::uint8_t>& bytes, bool steps, int epoch, int calibration) {
    std::vector<double> scale;
    for (int value = 0; scale.size() < 255; value = std::min(value + 1 + epoch / 15 + value / 64, 32767))
      scale.push_back(value * 128.0 / calibration);
    for (std::size_t at = 0; at < bytes.size();) {
      const std::size_t code = bytes[at++];
      if (code > 253) ADD_FAILURE() << "no activity at " << at;
      Low.push_back(scale.at(code));
      High.push_back(scale.at(code + 1));
      StepCounts.push_back(steps && at < bytes.size() ? bytes[at++] : -1);
      Markers.push_back(at < bytes.size() && bytes[at] == 254);
      if (Markers.back()) ++at;
    }
  }
};

TEST(Pendrel, RecordsDaysUntilItsMemoryIsFull) {
  const std::tuple<PendrelModel, bool, int, std::uint8_t> cases[] = {{Plain, false, 60, 128},
                                                                     {Checksums, true, 15, 100},
                                                                     {Steps, false, 30, 200},
                                                                     {Steps, true, 2, 128},
                                                                     {Steps, true, 900, 128}};
  for (const auto& [model, wanted, epoch, calibration] : cases)
    for (const std::size_t kilobytes : {8U, 64U}) {
      SCOPED_TRACE(testing::Message() << int(model) << ' ' << epoch << ' ' << kilobytes);
      PendrelBenchOptions options = optionsOf(model, kilobytes);
      options.Logger.ActivityCalibration = calibration;
      const PendrelBench bench = makePendrelBench(options);
      const PendrelSetup setup = ordinaryPendrelSetup(*bench.World, epoch, wanted);
      WearOptions days;
      days.MarkersPerDay = 40;
      const bool steps = model == Steps && wanted;
      bench.Logger->setUp(setup);
      EXPECT_EQ(bench.Logger->setupLines()[5], "02 03 26 09 01");
      EXPECT_TRUE(bench.Logger->waiting());
      bench.Logger->wear(std::chrono::seconds{60 + 1000 * epoch}, days);
      const Reading some{bench.Logger->recordedBytes(), steps, epoch, calibration};
      ASSERT_EQ(some.Low.size(), 1000U);
      Wearer wearer{days, std::chrono::hours{-5}};
      for (std::size_t i = 0; i < some.Low.size(); ++i) {
        const EpochReading truth = wearer.read(setup.StartTime + static_cast<int>(i) * epoch, epoch);
        const bool top = some.Low[i] == some.High[i];
        EXPECT_LE(some.Low[i], truth.Counts) << i;
        EXPECT_TRUE(top || truth.Counts < some.High[i]) << i << ' ' << truth.Counts << ' ' << some.High[i];
        EXPECT_EQ(some.StepCounts[i], steps ? std::min(truth.Steps, 253) : -1) << i;
        EXPECT_EQ(some.Markers[i], truth.Button1 || truth.Button2) << i;
      }
      bench.Logger->wear(std::chrono::seconds{65536LL * epoch}, days);
      const std::size_t size = bench.Logger->recordedBytes().size(), full = kilobytes * 1024 - 128;
      EXPECT_FALSE(bench.Logger->recording());
      EXPECT_LE(size, std::min<std::size_t>(full, 0xFF7F)) << "FF80 would be an empty memory";
      EXPECT_GE(size, full - 3);
      EXPECT_EQ(bench.Logger->setupLines()[4], hexOf(static_cast<unsigned>(size)));
    }
}

TEST(Pendrel, TellsItsSubjectAndResets) {
  const PendrelSubject subject{"Subject 17", "AB", 'F',  true, "EST", "0123456789ABCDEF0123456789ABCDEF",
                               30808,        -300, 1705, 723};
  const std::string text = "Subject 17             AB FTESTASNFZ4mrze8BI0VniavN73hY/tQGqQLT2";
  EXPECT_EQ(encode(subject), text);
  EXPECT_EQ(decodePendrelSubject(text), subject);
  for (const auto& [at, wrong] : std::map<std::size_t, char>{{27, 'X'}, {40, '='}, {63, '1'}}) {
    std::string spoilt = text;
    spoilt[at] = wrong;
    EXPECT_EQ(decodePendrelSubject(spoilt), std::nullopt);
  }
  EXPECT_EQ(decodePendrelSubject(text.substr(1)), std::nullopt);

  const PendrelBench bench = makePendrelBench(optionsOf(Steps));
  bench.Logger->setUp(ordinaryPendrelSetup(*bench.World, 60));
  WearOptions day;
  day.Happenings = {{30min, Happening::Kind::IntoDock}, {1h + 1s, Happening::Kind::PowerReset}};
  bench.Logger->wear(2h, day);
  EXPECT_EQ(bench.Logger->recordedBytes().size(), 59U);
  EXPECT_EQ(bench.Logger->setupLines()[7].substr(15), "01");
  const auto bytes = bench.Logger->recordedBytes();
  EXPECT_EQ(std::count(bytes.begin() + 30, bytes.end(), 0), 29) << "nothing moves in a dock";
  const auto make = [](const auto& change) {
    PendrelBenchOptions options;
    change(options.Logger);
    return makePendrelBench(options);
  };
  EXPECT_THROW(make([](auto& o) { o.Firmware = 143; }), std::invalid_argument);
  EXPECT_THROW(make([](auto& o) { o.MemoryKilobytes = 4; }), std::invalid_argument);
  EXPECT_THROW(make([](auto& o) { o.SerialDigits = "12345"; }), std::invalid_argument);
  EXPECT_THROW(bench.Logger->setUp(ordinaryPendrelSetup(*bench.World, 20)), std::invalid_argument);
}

}  // namespace
}  // namespace hy_wristlog::simulator
