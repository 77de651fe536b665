#include "commands/held_recording.h"

#include <array>
#include <cctype>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "base/dates.h"
#include "engineering/dates.h"
#include "engineering/zones.h"
#include "hy_wristlog/failure.h"
#include "platform/platform.h"
#include "words/counted.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;
namespace platform = hy_wristlog::platform;

namespace {

constexpr const char* Source = "wristlog";
constexpr std::string_view Digits = "0123456789ABCDEF";
constexpr std::size_t LongestNote = 64 << 10;
/// How long a recording that goes on counts as retrieved: its logger lies in the reader.
constexpr std::int64_t GraceSeconds = 3600;

/// Empty without a home folder.
std::string notesFolder() {
  constexpr std::int32_t UserApplicationData = 26;
  const std::string folder = platform::current().environment().specialFolder(UserApplicationData);
  return folder.empty() ? folder : folder + "/HY_Wristlog/Retrieved";
}

/// A file for each logger, so that two programs at work never write the same one. Characters of a damaged
/// serial number do not leave the folder.
std::string noteFile(const std::string& serialNumber) {
  const std::string folder = notesFolder();
  if (folder.empty() || serialNumber.empty()) return {};
  std::string name;
  for (const char c : serialNumber) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0 && byte < 0x80)
      name += c;
    else
      name.append({'%', Digits[byte >> 4U], Digits[byte & 15U]});
  }
  return folder + "/" + name + ".json";
}

void makeFolders(const std::string& folder) {
  platform::Files& files = platform::current().files();
  for (std::size_t end = folder.find('/', 1);; end = folder.find('/', end + 1)) {
    const std::string above = folder.substr(0, end);
    if (files.state(above).Kind == platform::FileKind::Missing) files.makeFolder(above, false);
    if (end == std::string::npos) return;
  }
}

double utcNow() { return hw::dateFromCivil(platform::current().clock().utc()); }

std::string fromRoot(const std::string& path) {
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::absolute(path, error).lexically_normal();
  if (error) return path;
  return (whole.has_filename() ? whole : whole.parent_path()).string();
}

/// Empty for a file that is not there, or cannot be read.
std::string digestOf(const std::string& file) {
  if (file.empty()) return {};
  try {
    const std::string bytes = platform::current().files().read(file);
    std::string digest;
    for (const std::uint8_t byte : platform::current().cryptography().md5(
             {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}))
      digest.append({Digits[byte >> 4U], Digits[byte & 15U]});
    return digest;
  } catch (const platform::SystemError&) {
    return {};
  }
}

std::string text(const Json& note, const char* name) {
  return note.is_object() && note.contains(name) && note.at(name).is_string()
             ? note.at(name).get<std::string>()
             : std::string();
}

/// The recording has come to more bytes since, but only while the logger lay in its reader.
bool isWithinGrace(const HeldRecording& held, std::int64_t bytes, const std::string& whenUtc) {
  if (!held.GoesOn || held.Bytes < bytes) return false;
  try {
    const std::int64_t since = hw::secondsBetween(engineering::dateFromText(whenUtc), utcNow());
    return since >= 0 && since <= GraceSeconds;
  } catch (const hw::Failure&) {
    return false;
  }
}

HeldRecording heldNow() {
  HeldRecording held;
  held.Read = engineering::isoNow();
  held.ReadUtc = engineering::isoDate(utcNow(), "Z");
  return held;
}

}  // namespace

HeldRecording heldBy(const hw::Class_VardenLogger& logger) {
  HeldRecording held = heldNow();
  held.SerialNumber = logger.Get_SerialNumber();
  held.Identity = logger.Get_SubjectIdentity();
  held.Start = engineering::isoDate(logger.Get_StartTimeGMT(), "Z");
  held.StartLocal = engineering::isoLocal(logger, logger.Get_StartTimeGMT());
  held.Bytes = logger.Get_BytesUsed();
  if (held.Bytes == 0 && logger.Get_DataAvailable() == hw::DataAvail_Yes) held.Bytes = -1;
  return held;
}

HeldRecording heldBy(const hw::Class_Pendrel& logger) {
  constexpr double UnknownDate = -1;
  HeldRecording held = heldNow();
  held.SerialNumber = logger.Get_SerialNumber();
  held.Identity = logger.Get_SubjectIdentity();
  held.Bytes = logger.Get_BytesUsed();
  held.GoesOn = true;
  const double start = engineering::startUtc(logger);
  if (start == UnknownDate) return held;
  held.Start = engineering::isoDate(start, "Z");
  held.StartLocal = engineering::isoLocal(logger, start);
  return held;
}

std::optional<RetrievalNote> noteOf(const HeldRecording& held) {
  const std::string file = noteFile(held.SerialNumber);
  if (file.empty() || held.Bytes < 1 || held.Start.empty()) return std::nullopt;
  try {
    const Json note = Json::parse(platform::current().files().readUpTo(LongestNote, file), nullptr, false);
    if (!note.is_object() || !note.contains("bytes") || !note.at("bytes").is_number_integer() ||
        text(note, "serial_number") != held.SerialNumber || text(note, "start_utc") != held.Start)
      return std::nullopt;
    const auto bytes = note.at("bytes").get<std::int64_t>();
    if (bytes != held.Bytes && !isWithinGrace(held, bytes, text(note, "retrieved_utc"))) return std::nullopt;
    const std::string digest = digestOf(text(note, "file"));
    if (!digest.empty() && digest != text(note, "md5")) return std::nullopt;
    return RetrievalNote{text(note, "retrieved"), text(note, "place"), !digest.empty()};
  } catch (const platform::SystemError&) {
    return std::nullopt;
  }
}

void noteRetrieval(const HeldRecording& held, const std::string& place, const std::string& bytes) {
  const std::string file = noteFile(held.SerialNumber);
  if (file.empty() || held.Bytes < 1 || held.Start.empty()) return;
  const std::string whole = fromRoot(place), written = bytes.empty() ? whole : whole + "/" + bytes;
  const Json note{{"serial_number", held.SerialNumber},
                  {"start_utc", held.Start},
                  {"bytes", held.Bytes},
                  {"retrieved", held.Read},
                  {"retrieved_utc", held.ReadUtc},
                  {"place", whole},
                  {"file", written},
                  {"md5", digestOf(written)}};
  try {
    makeFolders(notesFolder());
    platform::current().files().write(file, note.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
  } catch (const platform::SystemError& problem) {
    complain()
        << "It could not be noted that this recording was retrieved, so 'configure' will ask for --erase: "
        << file << ": " << platform::current().environment().errorText(problem.Number) << '\n';
  }
}

void forgetRetrieval(const std::string& serialNumber) {
  const std::string file = noteFile(serialNumber);
  if (file.empty()) return;
  try {
    platform::current().files().remove(file);
  } catch (const platform::SystemError&) {
    // The note is of another start, and of no use.
  }
}

std::string retrievalWords(const HeldRecording& held) {
  const auto note = noteOf(held);
  if (!note) return "Its recording was not retrieved by this user on this computer.";
  return "Its recording was retrieved on " + minuteWords(note->When) + ", to " + note->Place +
         (note->IsThere ? "." : ", where it is not any more.");
}

Json retrievalJson(const HeldRecording& held) {
  if (!held.isThere()) return {};
  const auto note = noteOf(held);
  return {{"retrieved", note ? Json(note->When) : Json()}, {"place", note ? Json(note->Place) : Json()}};
}

void requireRetrieved(const HeldRecording& held, const std::string& retrieve) {
  if (!held.isThere() || noteOf(held)) return;
  std::string words = "Logger " + held.SerialNumber +
                      " holds a recording that was not retrieved by this user on this computer: of " +
                      (held.Identity.empty() ? "nobody named" : held.Identity) + ", since " +
                      (held.StartLocal.empty() ? "an unknown time" : minuteWords(held.StartLocal)) + ", " +
                      (held.Bytes < 0 ? "of unknown length" : counted(held.Bytes, "byte")) +
                      ". Configuring would erase it. '" + retrieve +
                      "' retrieves it; --erase configures the logger all the same";
  throw hw::Failure(hw::FailureNumber::FileExists, Source, words);
}

void refuseUnknown(const std::string& reason) {
  throw hw::Failure(
      hw::FailureNumber::FileExists, Source,
      "It cannot be told whether the logger holds a recording, which configuring would erase. " + reason +
          " --erase configures the logger all the same");
}

std::string minuteWords(const std::string& isoLocal) {
  constexpr std::size_t Day = 10, Minute = 16, Second = 19;
  if (isoLocal.size() < Second) return isoLocal;
  return isoLocal.substr(0, Day) + " " + isoLocal.substr(Day + 1, Minute - Day - 1) + " " +
         isoLocal.substr(Second);
}

}  // namespace wristlog
