#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <typeindex>
#include <utility>
#include <vector>

#include "base/dates.h"
#include "hy_wristlog/api.h"
#include "hy_wristlog/failure.h"
#include "hy_wristlog/host.h"

/// The seam between the library and the world. Only the files under platform/ include system headers; tests
/// and the demo replace them with a simulated world.
namespace hy_wristlog::platform {

/// An operation of the system failed. Callers turn it into the Failure of their own contract.
struct SystemError {
  std::int32_t Number;  ///< errno
};

/// The thread's time, and the only way to let it pass.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual CivilTime utc() = 0;
  virtual CivilTime local() = 0;
  /// Seconds on a clock that only moves forward and knows no midnight. The zero point is arbitrary.
  virtual double timer() = 0;
  virtual void sleep(std::chrono::milliseconds duration) = 0;
  /// One round of a waiting loop: lets about a millisecond pass.
  virtual void idle() = 0;
};

enum class LineParity : std::uint8_t { Even, Mark, None, Odd, Space };
enum class LineStopBits : std::uint8_t { One, OneAndHalf, Two };
/// In the order of the enumerators.
inline constexpr std::string_view ParityLetters = "emnos";
inline constexpr std::array<std::string_view, 3> StopBitTexts{"1", "1.5", "2"};

struct LineSettings {
  std::int32_t Baud = 9600;
  LineParity Parity = LineParity::None;
  std::int32_t DataBits = 8;
  LineStopBits StopBits = LineStopBits::One;
  bool operator==(const LineSettings&) const = default;
};

/// How long a character takes on the line, with its start bit.
inline double characterSeconds(const LineSettings& line) {
  const double stopBits = line.StopBits == LineStopBits::One   ? 1
                          : line.StopBits == LineStopBits::Two ? 2
                                                               : 1.5;
  const std::int32_t parityBits = line.Parity == LineParity::None ? 0 : 1;
  return (1 + line.DataBits + parityBits + stopBits) / line.Baud;
}

struct ModemLines {
  bool Cts = false, Dsr = false, Cd = false, Ring = false;
  bool operator==(const ModemLines&) const = default;
};

/// Line errors since the last `takeErrors`.
struct LineErrors {
  std::uint32_t Overrun = 0, Framing = 0, Parity = 0, Break = 0, BufferOverflow = 0;
};

/// An open serial port; destruction closes it. No member but `awaitInput` blocks. When the device has gone
/// (hang-up, unplugged) every member but that one and the destructor raises Failure PortStateFailure.
class SerialPort {
 public:
  virtual ~SerialPort() = default;
  /// Raises PortStateFailure when the device refuses the settings.
  virtual void configure(const LineSettings& settings) = 0;
  /// Takes up to `into.size()` received bytes and returns how many.
  virtual std::size_t read(std::span<std::uint8_t> into) = 0;
  /// Takes as many bytes as fit the transmit queue and returns how many.
  virtual std::size_t write(std::span<const std::uint8_t> bytes) = 0;
  /// Bytes accepted by `write` that have not left yet.
  virtual std::size_t outstanding() = 0;
  virtual void discardInput() = 0;
  virtual void setDtr(bool on) = 0;
  virtual void setRts(bool on) = 0;
  virtual ModemLines modemLines() = 0;
  virtual LineErrors takeErrors() = 0;
  /// How much longer than at a port of this machine an answer is under way. Does not fail.
  virtual std::chrono::microseconds delay() { return {}; }
  /// Returns when a byte waits or the device has gone, and at the latest after `longest`. May return earlier.
  virtual void awaitInput(std::chrono::microseconds longest) = 0;
};

class SerialPorts {
 public:
  virtual ~SerialPorts() = default;
  /// Opens COM port `number`, both output lines low. Raises InvalidPort (no such port), PortNotAvailable
  /// (held by another program, or no permission), PortStateFailure (the port cannot be used).
  virtual std::unique_ptr<SerialPort> open(std::int32_t number) = 0;
  /// The same for a device by its path or address, whether it is declared or not.
  virtual std::unique_ptr<SerialPort> openDevice(const std::string& device) {
    throw Failure(FailureNumber::InvalidPort, "SerialPorts", "There is no " + device);
  }
};

/// The present devices of one interface class. Members raise SystemError.
class DeviceList {
 public:
  virtual ~DeviceList() = default;
  /// False past the last device.
  virtual bool hasInterface(std::size_t index) = 0;
  virtual void readInfo(std::size_t index) = 0;
  /// For instance "USB\VID_5245&PID_4000&REV_0600". May hold several identifiers, NUL between them.
  virtual std::string hardwareId(std::size_t index) = 0;
  /// For instance "Communications Dock (COM33)".
  virtual std::string friendlyName(std::size_t index) = 0;
  /// What the device can be called, the steadiest name first: where it is plugged in, "usb-1-1.4", its
  /// section in Docks.INI, its serial number, its device. Empty in a world that knows none.
  virtual std::vector<std::string> names(std::size_t /*index*/) { return {}; }
};

/// The classes that docks belong to.
inline constexpr const char* ComPortClass = "{4d36e978-e325-11ce-bfc1-08002be10318}";
inline constexpr const char* UsbDeviceClass = "{a5dcbf10-6530-11d2-901f-00c04fb951ed}";
/// Of the serial ports that are declared without a dock on them, as that of a Pendreader is. Such a device
/// has no hardware identifier.
inline constexpr const char* PlainPortClass = "{plain serial port}";

class DeviceTree {
 public:
  virtual ~DeviceTree() = default;
  /// `classGuid` in registry form with braces, any case. Raises SystemError.
  virtual std::unique_ptr<DeviceList> devicesOfClass(std::string_view classGuid) = 0;
  /// What keeps docks that the user has declared from being found, a sentence each.
  virtual std::vector<std::string> troubles() { return {}; }
};

/// A value of the settings store with the type code it was written with (1 text, 2 expandable text,
/// 3 binary, 4 and 5 32-bit numbers, little- and big-endian).
struct SettingValue {
  std::int32_t Type = 1;
  std::vector<std::uint8_t> Data;
};

/// Keys are paths with "\" between their names. Comparisons ignore ASCII case. Members raise SystemError.
class SettingsStore {
 public:
  virtual ~SettingsStore() = default;
  virtual bool keyExists(std::int32_t root, std::string_view key) = 0;
  virtual void createKey(std::int32_t root, std::string_view key) = 0;
  /// False when there was nothing to delete.
  virtual bool deleteKey(std::int32_t root, std::string_view key) = 0;
  virtual bool deleteValue(std::int32_t root, std::string_view key, std::string_view name) = 0;
  virtual std::optional<SettingValue> read(std::int32_t root, std::string_view key,
                                           std::string_view name) = 0;
  virtual void write(std::int32_t root, std::string_view key, std::string_view name,
                     const SettingValue& value) = 0;
  virtual std::vector<std::string> valueNames(std::int32_t root, std::string_view key) = 0;
  virtual std::vector<std::string> subkeys(std::int32_t root, std::string_view key) = 0;
};

/// When a zone changes its clocks, every year. Year 0: on the `Day`-th (5: last) `DayOfWeek` (Sunday 0) of
/// `Month`, otherwise on the day `Day` of it; `Hour` -167 to 167, in the days around it. Month 0: no change.
struct ZoneTransition {
  std::int16_t Year = 0, Month = 0, DayOfWeek = 0, Day = 0, Hour = 0, Minute = 0, Second = 0,
               Milliseconds = 0;
  bool operator==(const ZoneTransition&) const = default;
};

/// Minutes from local time to UTC, and the two changes.
struct ZoneRule {
  std::int32_t Bias = 0, StandardBias = 0, DaylightBias = 0;
  ZoneTransition StandardDate, DaylightDate;
  bool operator==(const ZoneRule&) const = default;
};

struct ZoneRecord {
  std::optional<ZoneRule> Rule;  ///< none when the zone's file cannot be read
  std::string Display, Standard, Daylight, MapID;
};

/// A zone of the tz database.
struct NamedZone {
  ZoneRule Rule;  ///< of the years to come
  std::string
      Key;  ///< of the record with the same rule; empty when there is none, or when years to come differ
};

/// The zones of the system under the catalogue's keys ("Eastern Standard Time").
class ZoneRecords {
 public:
  virtual ~ZoneRecords() = default;
  virtual std::vector<std::string> keys() = 0;
  virtual ZoneRecord read(std::string_view key) = 0;
  /// The standard name of the machine's own zone; empty when no record fits it.
  virtual std::string localStandardName() = 0;
  /// The zone of a name in the tz database, "Europe/Paris"; none for a name that it does not have.
  virtual std::optional<NamedZone> named(std::string_view /*name*/) { return std::nullopt; }
  /// The name of the machine's own zone in the tz database; empty when it has none.
  virtual std::string localName() { return {}; }
  /// Why the machine's own zone is not known, in a sentence; empty when it is.
  virtual std::string trouble() { return {}; }
};

enum class LocaleItem : std::uint8_t { DecimalSeparator, LongDate, ShortDate, Time };

/// Folders, variables and formats of the user, and the user's names.
class Environment {
 public:
  virtual ~Environment() = default;
  /// 5 documents, 26 the user's application data, 35 application data of all users; empty for others.
  virtual std::string specialFolder(std::int32_t code) = 0;
  /// The folder of the library, or of a program that has the library inside. A site may put ErrorActions.XML
  /// there.
  virtual std::string libraryFolder() = 0;
  /// A pattern such as "M/d/yyyy"; empty when the locale gives nothing.
  virtual std::string localeInfo(LocaleItem item) = 0;
  virtual std::optional<std::string> variable(std::string_view name) = 0;
  /// These four raise SystemError.
  virtual std::string userName() = 0;
  /// The person's name; empty when the system knows none.
  virtual std::string fullName() = 0;
  virtual std::string domainName() = 0;
  virtual std::string computerName() = 0;
  /// The system's words for an error number; empty for an unknown one.
  virtual std::string errorText(std::int32_t number) = 0;
};

enum class FileKind : std::uint8_t { Missing, File, Folder, Other };

struct FileState {
  FileKind Kind = FileKind::Missing;
  bool ReadOnly = false;
  bool Hidden = false;
};

/// A file that is being written. `finish` puts it whole in its place; without `finish` a former file stays
/// unchanged. Members raise SystemError; after that the object must not be used.
class NewFile {
 public:
  NewFile() = default;
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  virtual ~NewFile() = default;
  HY_WRISTLOG_API void add(std::string_view text);
  HY_WRISTLOG_API void finish();

 protected:
  /// To be called at least once, also for an empty file.
  virtual void write(std::string_view piece) = 0;
  virtual void takePlace() = 0;

 private:
  void pass(std::string_view piece);

  std::string waiting_;
  bool begun_ = false;
};

/// A lock that is held as long as the object lives.
class FolderLock {
 public:
  FolderLock() = default;
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  virtual ~FolderLock() = default;
};

/// Whole files. Paths are absolute or relative Linux paths. Members raise SystemError.
class Files {
 public:
  static constexpr std::size_t LongestFile = std::size_t{512} << 20;
  /// The most that a text file is read up to. Settings, error actions and configurations are shorter.
  static constexpr std::size_t LongestText = std::size_t{4} << 20;

  virtual ~Files() = default;
  virtual FileState state(const std::string& path) = 0;
  std::string read(const std::string& path) { return readUpTo(LongestFile, path); }
  /// Reads a file of at most `most` bytes; raises EFBIG for a longer one.
  virtual std::string readUpTo(std::size_t most, const std::string& path) = 0;
  /// Begins a file that replaces the one at `path` when it is finished.
  virtual std::unique_ptr<NewFile> create(const std::string& path) = 0;
  /// Replaces the file whole; after a failure the former file is unchanged.
  void write(const std::string& path, std::string_view content);
  /// False when there was no file.
  virtual bool remove(const std::string& path) = 0;
  /// One folder level; `forEveryone` gives it mode 1777. An existing folder is left as it is.
  virtual void makeFolder(const std::string& path, bool forEveryone) = 0;
  /// Locks the folder for a caller that reads a file of it, changes it and writes it back; null while
  /// somebody else holds the lock. The default is for worlds that nobody shares, and locks nothing.
  virtual std::unique_ptr<FolderLock> tryLockFolder(const std::string& /*path*/) {
    return std::make_unique<FolderLock>();
  }
};

using Sha1Digest = std::array<std::uint8_t, 20>;

/// SHA-1 (FIPS 180-4) of bytes that come in pieces. Members raise SystemError.
class Sha1Hash {
 public:
  virtual ~Sha1Hash() = default;
  virtual void add(std::span<const std::uint8_t> bytes) = 0;
  /// The digest; to be called once, at the end.
  virtual Sha1Digest value() = 0;
};

enum class KeyPairState : std::uint8_t { Missing, Damaged, Usable };

/// A place for one RSA key pair, seen as it was when the container was opened. Signatures are
/// RSASSA-PKCS1-v1_5 with SHA-1, public keys SubjectPublicKeyInfo in DER (RFC 8017, RFC 5280). Members raise
/// SystemError.
class KeyContainer {
 public:
  virtual ~KeyContainer() = default;
  virtual KeyPairState keyPairState() = 0;
  /// Makes and stores a pair of 2048 bits, whole or not at all. Where another process has stored one
  /// meanwhile, that one is used.
  virtual void generateKeyPair() = 0;
  virtual std::size_t publicKeySize() = 0;
  /// `into` has the size above.
  virtual void exportPublicKey(std::span<std::uint8_t> into) = 0;
  virtual std::size_t signatureSize() = 0;
  /// `into` has the size above.
  virtual void sign(const Sha1Digest& digest, std::span<std::uint8_t> into) = 0;
  /// Sets the key for `verify`. The object keeps it as long as it lives.
  virtual void importPublicKey(std::span<const std::uint8_t> key) = 0;
  virtual bool verify(const Sha1Digest& digest, std::span<const std::uint8_t> signature) = 0;
};

/// Members raise SystemError.
class CryptographicProvider {
 public:
  virtual ~CryptographicProvider() = default;
  /// RFC 1321.
  virtual std::array<std::uint8_t, 16> md5(std::span<const std::uint8_t> bytes) = 0;
  virtual void randomBytes(std::span<std::uint8_t> into) = 0;
  virtual std::unique_ptr<Sha1Hash> createSha1() = 0;
  /// The container whose pair is in this file, which need not exist. Null where no keys can be kept.
  virtual std::unique_ptr<KeyContainer> openContainer(const std::string& file) = 0;
  /// Does nothing when there is no such file.
  virtual void deleteContainer(const std::string& file) = 0;
  /// Deletes the container only if its pair is still damaged, so that a pair that another process has made
  /// meanwhile stays.
  virtual void deleteDamagedContainer(const std::string& file) = 0;
};

/// Begins the description of a PortNotAvailable whose device exists but may not be opened by this user.
inline constexpr std::string_view NoPermission = "No permission";

/// Runs while events are served: for instance a link with its line events and its timer.
class EventSource {
 public:
  virtual void serveEvents() = 0;

 protected:
  ~EventSource() = default;
};

/// Objects of which each thread's world has one. They are made on first use and end with the world.
class WorldObjects {
 public:
  WorldObjects() = default;
  WorldObjects(const WorldObjects&) = delete;
  WorldObjects& operator=(const WorldObjects&) = delete;
  ~WorldObjects() { clear(); }

  template <class T>
  T& get() {
    if (T* found = find<T>()) return *found;
    auto object = std::make_shared<T>();
    objects_.push_back({typeid(T), object});
    return *object;
  }

  template <class T>
  T* find() const {
    for (const Slot& slot : objects_)
      if (slot.Type == typeid(T)) return static_cast<T*>(slot.Object.get());
    return nullptr;
  }

  /// Ends the objects, the youngest first.
  void clear() {
    while (!objects_.empty()) objects_.pop_back();
  }

 private:
  struct Slot {
    std::type_index Type;
    std::shared_ptr<void> Object;
  };
  std::vector<Slot> objects_;
};

/// How those who work with a logger wait.
struct Waits {
  /// Waits for a logger end with the byte that they wait for, instead of going on in fixed rounds.
  bool EndWithInput = false;
  /// Where waits end with their input: as long as this is true, they and pauses end at once.
  const bool* AbortRequest = nullptr;
};

/// What the world is for one thread.
class Platform {
 public:
  Platform() = default;
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;
  virtual ~Platform() = default;

  virtual Clock& clock() = 0;
  virtual SerialPorts& serialPorts() = 0;
  virtual DeviceTree& deviceTree() = 0;
  virtual SettingsStore& settings() = 0;
  virtual ZoneRecords& zones() = 0;
  virtual Environment& environment() = 0;
  virtual Files& files() = 0;
  virtual CryptographicProvider& cryptography() = 0;

  Host& host();
  void setHost(std::shared_ptr<Host> host);
  const Waits& waits() const { return held_->PresentWaits; }
  void setWaits(const Waits& waits) { held_->PresentWaits = waits; }
  bool wakesOnInput() const { return waits().EndWithInput; }
  /// Whether whoever waits now should not wait any longer.
  bool endsWaits() const {
    return waits().EndWithInput && waits().AbortRequest != nullptr && *waits().AbortRequest;
  }
  WorldObjects& objects() { return held_->Objects; }

  void addEventSource(EventSource& source);
  void removeEventSource(EventSource& source);
  /// Lets every event source and then the host run once. Does nothing while it is already running.
  void serveEvents();

 protected:
  /// For a view of `world`: both have the same host, waits, objects and event sources.
  struct ViewOf {
    const Platform& World;
  };
  explicit Platform(const ViewOf& view) : held_(view.World.held_) {}

 private:
  struct Held {
    std::shared_ptr<Host> PresentHost;
    std::vector<EventSource*> Sources;
    bool Serving = false;
    Waits PresentWaits;
    WorldObjects Objects;
  };
  std::shared_ptr<Held> held_ = std::make_shared<Held>();
};

/// The calling thread's world: the machine itself, unless `use` has set another one.
HY_WRISTLOG_API Platform& current();
/// The same, for those that must keep their world alive.
std::shared_ptr<Platform> shareCurrent();

/// Makes `world` the calling thread's world; null brings the machine back. Returns the former world, null for
/// the machine. What belonged to the former world stays with it.
HY_WRISTLOG_API std::shared_ptr<Platform> use(std::shared_ptr<Platform> world);

/// Puts a world in place as long as it lives, and then brings the former one back.
class WorldScope {
 public:
  explicit WorldScope(std::shared_ptr<Platform> world) : former_(use(std::move(world))) {}
  WorldScope(const WorldScope&) = delete;
  WorldScope& operator=(const WorldScope&) = delete;
  ~WorldScope() { use(std::move(former_)); }

 private:
  std::shared_ptr<Platform> former_;
};

}  // namespace hy_wristlog::platform
