#include "replay/replayed_world.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <deque>
#include <filesystem>
#include <map>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "hy_wristlog/failure.h"
#include "platform/wrapped_platform.h"
#include "simulator/simulated_world.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace sim = hy_wristlog::simulator;
namespace platform = hy_wristlog::platform;
using platform::WireEvent;
using platform::WireKind;
using std::chrono::nanoseconds;

namespace {

nanoseconds spanOf(double seconds) { return nanoseconds{std::llround(seconds * 1e9)}; }

std::string quoted(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t Most = 16;
  constexpr std::string_view Digits = "0123456789ABCDEF";
  std::string hex, text;
  for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), Most))) {
    hex.append({Digits[byte >> 4U], Digits[byte & 15U], ' '});
    text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
  }
  return hex + "\"" + text + "\"" + (bytes.size() > Most ? " and more" : "");
}

std::string wordsOf(const WireEvent& event, std::size_t from = 0) {
  switch (event.Kind) {
    case WireKind::Open:
      return "COM" + std::to_string(event.Number) + " opened";
    case WireKind::Configure:
      return std::to_string(event.Settings.Baud) + " baud, " + std::to_string(event.Settings.DataBits) +
             " data bits, parity " +
             platform::ParityLetters[static_cast<std::size_t>(event.Settings.Parity)] + ", stop bits " +
             std::string(platform::StopBitTexts[static_cast<std::size_t>(event.Settings.StopBits)]);
    case WireKind::Sent:
      return quoted(std::span(event.Bytes).subspan(from));
    case WireKind::Dtr:
      return event.On ? "DTR on" : "DTR off";
    case WireKind::Rts:
      return event.On ? "RTS on" : "RTS off";
    case WireKind::Discard:
      return "the input discarded";
    case WireKind::Close:
      return "the port closed";
    // These the program does not say.
    case WireKind::Received:
    case WireKind::Lines:
    case WireKind::Errors:
    case WireKind::Gone:
    case WireKind::Stop:
    case WireKind::Devices:
    case WireKind::Random:
      break;
  }
  return {};
}

bool isSame(const WireEvent& recorded, const WireEvent& now) {
  return recorded.Kind == now.Kind && recorded.Link == now.Link && recorded.Number == now.Number &&
         recorded.On == now.On && recorded.Settings == now.Settings;
}

/// The record's moment of the world's clock.
std::chrono::sys_time<std::chrono::milliseconds> beginOf(const hw::CivilTime& time) {
  using namespace std::chrono;
  return sys_days{year{time.Year} / time.Month / time.Day} + hours{time.Hour} + minutes{time.Minute} +
         seconds{time.Second} + milliseconds{time.Millisecond};
}

std::shared_ptr<sim::SimulatedWorld> worldOf(const SessionRecord& record) {
  sim::WorldOptions options;
  options.Begins = beginOf(record.Start);
  options.Zone = record.Zone.empty() ? "UTC" : record.Zone;
  options.Locale = record.Locale;
  options.Variables["HY_WRISTLOG_DOCKS"] = record.DocksFile;
  try {
    return std::make_shared<sim::SimulatedWorld>(options);
  } catch (const std::invalid_argument&) {
    throw hw::Failure(hw::FailureNumber::InvalidCall, "wristlog",
                      "This machine does not know the record's time zone, " + record.Zone);
  }
}

}  // namespace

/// How far the replay has come in the record. What came to the program comes again so long after its last
/// word as in the record: a program that has become faster gets no answer before its question.
class ReplayedLine {
 public:
  ReplayedLine(const SessionRecord& record, std::shared_ptr<sim::SimulatedWorld> world,
               std::function<void()> onStop)
      : events_(record.Events), world_(std::move(world)), onStop_(std::move(onStop)) {
    for (const WireEvent& event : events_) {
      if (event.Kind == WireKind::Devices) devices_[event.Text].push_back(event.Devices);
      if (event.Kind == WireKind::Random) random_.push_back(event.Bytes);
    }
    skipSides();
  }

  sim::SimulatedWorld& world() { return *world_; }
  nanoseconds now() const { return world_->timeline().elapsed(); }
  std::int32_t nextLink() { return ++links_; }

  /// Takes what the program says. Returns the recorded event, or null when that is another one. Raises what
  /// the port raised there in the record.
  const WireEvent* hear(const WireEvent& said) {
    comeToWord();
    raiseTrouble(said.Link);
    const WireEvent* const recorded = take(said);
    attend();
    raiseTrouble(said.Link);
    return recorded;
  }
  void hearClosing(std::int32_t link) {
    comeToWord();
    take({.Kind = WireKind::Close, .Link = link});
  }
  void hearBytes(std::int32_t link, std::span<const std::uint8_t> bytes) {
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      comeToWord();
      raiseTrouble(link);
      if (differed_) return;
      const bool isSent =
          next_ < events_.size() && events_[next_].Kind == WireKind::Sent && events_[next_].Link == link;
      if (!isSent || events_[next_].Bytes[sentOfWord_] != bytes[at]) return differ(quoted(bytes.subspan(at)));
      ++sent_;
      if (++sentOfWord_ == events_[next_].Bytes.size()) heard();
    }
  }

  /// Lets happen what is due by now.
  void attend() {
    while (!differed_ && next_ < events_.size() && !platform::isSaid(events_[next_].Kind) && due() <= now())
      happen();
  }
  /// What has come to one port and was not yet taken.
  struct Arrived {
    std::deque<std::uint8_t> Bytes;
    platform::ModemLines Lines;
    platform::LineErrors Errors;
    std::optional<hw::Failure> Trouble;
  };
  Arrived& arrivedAt(std::int32_t link) {
    attend();
    raiseTrouble(link);
    return arrived_[link];
  }

  bool hasNews(std::int32_t link) {
    attend();
    return !arrived_[link].Bytes.empty() || arrived_[link].Trouble;
  }

  std::unique_ptr<platform::DeviceList> devicesOfClass(std::string_view classGuid) {
    const auto found = devices_.find(std::string(classGuid));
    if (found == devices_.end()) return platform::deviceListOf({});
    const platform::ListedDevices listed = found->second.front();
    if (found->second.size() > 1) found->second.pop_front();
    return platform::deviceListOf(listed);
  }
  bool drawRandom(std::span<std::uint8_t> into) {
    if (random_.empty() || random_.front().size() != into.size()) return false;
    std::copy(random_.front().begin(), random_.front().end(), into.begin());
    random_.pop_front();
    return true;
  }

  std::optional<Difference> difference() const {
    if (differed_) return differed_;
    const auto rest = std::find_if(events_.begin() + static_cast<std::ptrdiff_t>(next_), events_.end(),
                                   [](const WireEvent& event) { return platform::isSaid(event.Kind); });
    if (rest == events_.end()) return std::nullopt;
    return Difference{sent_, rest->Time, wordsOf(*rest, sentOfWord_), "the end of the command"};
  }

 private:
  void raiseTrouble(std::int32_t link) {
    const std::optional<hw::Failure>& trouble = arrived_[link].Trouble;
    if (trouble) throw hw::Failure(*trouble);
  }

  const WireEvent* take(const WireEvent& said) {
    if (differed_) return nullptr;
    if (next_ == events_.size() || sentOfWord_ > 0 || !isSame(events_[next_], said)) {
      differ(wordsOf(said));
      return nullptr;
    }
    const WireEvent& recorded = events_[next_];
    heard();
    return &recorded;
  }

  /// Moves the time on to that of the word in the record, since the program may show or send it. A program
  /// that has become slower keeps its own time.
  void heard() {
    const double time = events_[next_++].Time;
    sentOfWord_ = 0;
    lastHeard_ = std::max(now(), spanOf(time));
    lastHeardTime_ = time;
    world_->advance(lastHeard_ - now());
    skipSides();
  }

  /// When the next event comes to the program. The record has two moments: the last look that found nothing,
  /// and the one that found it. It comes midway, so that the program may look a little earlier or later now.
  nanoseconds due() const {
    const WireEvent& event = events_[next_];
    const double before = next_ > 0 ? events_[next_ - 1].Time : 0;
    const double least = std::clamp(event.Empty, std::min(before, event.Time), event.Time);
    return lastHeard_ + spanOf((least + event.Time) / 2 - lastHeardTime_);
  }

  /// To be called before a word of the program: lets happen what came before it in the record.
  void comeToWord() {
    while (!differed_ && next_ < events_.size() && !platform::isSaid(events_[next_].Kind)) happen();
  }

  void happen() {
    const WireEvent& event = events_[next_++];
    skipSides();
    Arrived& arrived = arrived_[event.Link];
    switch (event.Kind) {
      case WireKind::Received:
        arrived.Bytes.insert(arrived.Bytes.end(), event.Bytes.begin(), event.Bytes.end());
        break;
      case WireKind::Lines:
        arrived.Lines = event.Lines;
        break;
      case WireKind::Errors:
        arrived.Errors.Overrun += event.Errors.Overrun;
        arrived.Errors.Framing += event.Errors.Framing;
        arrived.Errors.Parity += event.Errors.Parity;
        arrived.Errors.Break += event.Errors.Break;
        arrived.Errors.BufferOverflow += event.Errors.BufferOverflow;
        break;
      case WireKind::Gone:
        arrived.Trouble = event.Trouble;
        break;
      case WireKind::Stop:
        onStop_();
        break;
      case WireKind::Devices:
      case WireKind::Random:
      // What the program says is heard.
      case WireKind::Open:
      case WireKind::Configure:
      case WireKind::Sent:
      case WireKind::Dtr:
      case WireKind::Rts:
      case WireKind::Discard:
      case WireKind::Close:
        break;
    }
  }

  /// Devices and random bytes are given when they are asked for.
  void skipSides() {
    while (next_ < events_.size() &&
           (events_[next_].Kind == WireKind::Devices || events_[next_].Kind == WireKind::Random))
      ++next_;
  }

  void differ(const std::string& said) {
    differed_ = Difference{
        sent_, std::chrono::duration<double>{now()}.count(),
        next_ < events_.size() ? wordsOf(events_[next_], sentOfWord_) : "the end of the record", said};
  }

  std::vector<WireEvent> events_;
  std::shared_ptr<sim::SimulatedWorld> world_;
  std::function<void()> onStop_;
  std::map<std::string, std::deque<platform::ListedDevices>> devices_;
  std::deque<std::vector<std::uint8_t>> random_;
  std::map<std::int32_t, Arrived> arrived_;
  std::size_t next_ = 0, sentOfWord_ = 0;
  std::int64_t sent_ = 0;
  std::int32_t links_ = 0;
  nanoseconds lastHeard_{};
  double lastHeardTime_ = 0;
  std::optional<Difference> differed_;
};

namespace {

using SharedLine = std::shared_ptr<ReplayedLine>;

/// Lets happen what is due whenever time passes.
class ReplayedClock : public platform::Clock {
 public:
  ReplayedClock(SharedLine line, double timer) : line_(std::move(line)), timer_(spanOf(timer)) {}
  hw::CivilTime utc() override { return clock().utc(); }
  hw::CivilTime local() override { return clock().local(); }
  double timer() override { return std::chrono::duration<double>{timer_ + line_->now()}.count(); }
  void sleep(std::chrono::milliseconds duration) override {
    clock().sleep(duration);
    line_->attend();
  }
  void idle() override {
    clock().idle();
    line_->attend();
  }

 private:
  platform::Clock& clock() { return line_->world().clock(); }

  SharedLine line_;
  nanoseconds timer_;
};

class ReplayedPort : public platform::SerialPort {
 public:
  ReplayedPort(SharedLine line, std::int32_t link, std::chrono::microseconds delay)
      : line_(std::move(line)), link_(link), delay_(delay) {}
  ~ReplayedPort() override { line_->hearClosing(link_); }
  ReplayedPort(const ReplayedPort&) = delete;
  ReplayedPort& operator=(const ReplayedPort&) = delete;

  void configure(const platform::LineSettings& settings) override {
    line_->hear({.Kind = WireKind::Configure, .Link = link_, .Settings = settings});
    byteTime_ = spanOf(settings.Baud > 0 ? platform::characterSeconds(settings) : 1);
  }
  std::size_t read(std::span<std::uint8_t> into) override {
    auto& bytes = line_->arrivedAt(link_).Bytes;
    const std::size_t count = std::min(into.size(), bytes.size());
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(bytes.begin(), end, into.begin());
    bytes.erase(bytes.begin(), end);
    return count;
  }
  std::size_t write(std::span<const std::uint8_t> bytes) override {
    line_->hearBytes(link_, bytes);
    goneBy_ = std::max(goneBy_, line_->now()) + byteTime_ * bytes.size();
    return bytes.size();
  }
  std::size_t outstanding() override {
    line_->arrivedAt(link_);
    const nanoseconds left = goneBy_ - line_->now();
    return left.count() <= 0 ? 0 : static_cast<std::size_t>((left + byteTime_ - nanoseconds{1}) / byteTime_);
  }
  void discardInput() override {
    line_->hear({.Kind = WireKind::Discard, .Link = link_});
    line_->arrivedAt(link_).Bytes.clear();
  }
  void setDtr(bool on) override { line_->hear({.Kind = WireKind::Dtr, .Link = link_, .On = on}); }
  void setRts(bool on) override { line_->hear({.Kind = WireKind::Rts, .Link = link_, .On = on}); }
  platform::ModemLines modemLines() override { return line_->arrivedAt(link_).Lines; }
  std::chrono::microseconds delay() override { return delay_; }
  platform::LineErrors takeErrors() override { return std::exchange(line_->arrivedAt(link_).Errors, {}); }
  void awaitInput(std::chrono::microseconds longest) override {
    for (const nanoseconds end = line_->now() + longest; line_->now() < end && !line_->hasNews(link_);)
      platform::current().clock().idle();
  }

 private:
  SharedLine line_;
  std::int32_t link_;
  std::chrono::microseconds delay_;
  nanoseconds byteTime_{1}, goneBy_{};
};

class ReplayedPorts : public platform::SerialPorts {
 public:
  explicit ReplayedPorts(SharedLine line) : line_(std::move(line)) {}
  std::unique_ptr<platform::SerialPort> open(std::int32_t number) override {
    const std::int32_t link = line_->nextLink();
    const WireEvent* const recorded = line_->hear({.Kind = WireKind::Open, .Link = link, .Number = number});
    if (recorded != nullptr && recorded->Trouble) throw hw::Failure(*recorded->Trouble);
    const auto delay = recorded != nullptr ? recorded->Delay : std::chrono::microseconds{};
    return std::make_unique<ReplayedPort>(line_, link, delay);
  }

 private:
  SharedLine line_;
};

class ReplayedDevices : public platform::DeviceTree {
 public:
  explicit ReplayedDevices(SharedLine line) : line_(std::move(line)) {}
  std::unique_ptr<platform::DeviceList> devicesOfClass(std::string_view classGuid) override {
    return line_->devicesOfClass(classGuid);
  }

 private:
  SharedLine line_;
};

class ReplayedCryptography : public platform::CryptographicProvider {
 public:
  explicit ReplayedCryptography(SharedLine line) : line_(std::move(line)) {}
  std::array<std::uint8_t, 16> md5(std::span<const std::uint8_t> bytes) override {
    return inner().md5(bytes);
  }
  void randomBytes(std::span<std::uint8_t> into) override {
    if (!line_->drawRandom(into)) inner().randomBytes(into);
  }
  std::unique_ptr<platform::Sha1Hash> createSha1() override { return inner().createSha1(); }
  std::unique_ptr<platform::KeyContainer> openContainer(const std::string& file) override {
    return inner().openContainer(file);
  }
  void deleteContainer(const std::string& file) override { inner().deleteContainer(file); }
  void deleteDamagedContainer(const std::string& file) override { inner().deleteDamagedContainer(file); }

 private:
  platform::CryptographicProvider& inner() { return line_->world().cryptography(); }

  SharedLine line_;
};

/// Whatever a record names as its command's files, nothing outside the world's own folder and the given one
/// is read or written: other paths are but names in the latter.
class ReplayedFiles : public platform::Files {
 public:
  ReplayedFiles(SharedLine line, const SessionRecord& record, std::string folder)
      : line_(std::move(line)), folder_(std::move(folder)) {
    for (const std::string& argument : record.Arguments) {
      names_.push_back(normal(argument).string());
      if (argument == "retrieve") outIsFolder_ = true;
    }
    out_ = normal(valueOf(record.Arguments, "--out"));
    if (folder_.empty()) {
      folder_ = line_->world().rootFolder() + "/Replayed";
      inner().makeFolder(folder_, false);
    }
  }

  platform::FileState state(const std::string& path) override {
    if (isAbove(path)) return {platform::FileKind::Folder, false, false};
    return inner().state(mapped(path));
  }
  std::string readUpTo(std::size_t most, const std::string& path) override {
    return inner().readUpTo(most, mapped(path));
  }
  std::unique_ptr<platform::NewFile> create(const std::string& path) override {
    return inner().create(mapped(path));
  }
  bool remove(const std::string& path) override { return inner().remove(mapped(path)); }
  void makeFolder(const std::string& path, bool forEveryone) override {
    if (!isAbove(path)) inner().makeFolder(mapped(path), forEveryone);
  }

 private:
  static std::filesystem::path normal(const std::filesystem::path& path) {
    const std::filesystem::path plain = path.lexically_normal();
    return plain.has_filename() ? plain : plain.parent_path();
  }
  platform::Files& inner() { return line_->world().files(); }

  /// Folders on the way to what the command names: they are there.
  bool isAbove(const std::string& path) const {
    const std::string own = normal(path).string();
    return own.empty() || own == "." || own == "/" || line_->world().rootFolder().starts_with(own + "/") ||
           std::any_of(names_.begin(), names_.end(),
                       [&](const std::string& name) { return name.starts_with(own + "/"); });
  }
  std::string mapped(const std::string& path) const {
    const std::filesystem::path plain = normal(path);
    const std::string root = line_->world().rootFolder();
    std::string own = plain.string();
    if (own == root || own.starts_with(root + "/")) return own;
    if (outIsFolder_ && plain == out_) return folder_;
    return folder_ + "/" + plain.filename().string();
  }

  SharedLine line_;
  std::string folder_;
  std::vector<std::string> names_;
  std::filesystem::path out_;
  bool outIsFolder_ = false;
};

class ReplayedPlatform : public platform::WrappedPlatform {
 public:
  ReplayedPlatform(const std::shared_ptr<sim::SimulatedWorld>& world, const SharedLine& line,
                   const SessionRecord& record, const std::string& folder)
      : WrappedPlatform(world),
        clock_(line, record.Timer),
        ports_(line),
        devices_(line),
        cryptography_(line),
        files_(line, record, folder) {}
  /// The objects that the library keeps in a world may still use it while they end.
  ~ReplayedPlatform() override { objects().clear(); }
  ReplayedPlatform(const ReplayedPlatform&) = delete;
  ReplayedPlatform& operator=(const ReplayedPlatform&) = delete;

  platform::Clock& clock() override { return clock_; }
  platform::SerialPorts& serialPorts() override { return ports_; }
  platform::DeviceTree& deviceTree() override { return devices_; }
  platform::CryptographicProvider& cryptography() override { return cryptography_; }
  platform::Files& files() override { return files_; }

 private:
  ReplayedClock clock_;
  ReplayedPorts ports_;
  ReplayedDevices devices_;
  ReplayedCryptography cryptography_;
  ReplayedFiles files_;
};

}  // namespace

ReplayedWorld::ReplayedWorld(const SessionRecord& record, const std::string& folder,
                             std::function<void()> onStop) {
  const auto world = worldOf(record);
  line_ = std::make_shared<ReplayedLine>(record, world, std::move(onStop));
  platform_ = std::make_shared<ReplayedPlatform>(world, line_, record, folder);
}

ReplayedWorld::~ReplayedWorld() = default;

std::optional<Difference> ReplayedWorld::difference() const { return line_->difference(); }

}  // namespace wristlog
