#include "replay/redaction.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <functional>
#include <set>
#include <span>
#include <string_view>

#include "hy_wristlog/failure.h"
#include "tools/Class_Base64Class.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace platform = hy_wristlog::platform;
using platform::WireKind;

namespace {

/// The subject's fields are known here by their places in config block, subject texts and arguments.
constexpr std::array SubjectFields{
#define HY_STORED(Name, Type) #Name,
#define HY_TIDIED(Name, Type) #Name,
#define HY_COMPUTED(Name, Type) #Name,
#include "hy_wristlog/subject_properties.inc"
};
static_assert(SubjectFields.size() == 8, "Leave a new field of the subject out of redacted records too");

using Bytes = std::span<std::uint8_t>;

/// Bytes that passed one after the other, wherever the record keeps them.
using Passed = std::vector<std::uint8_t*>;

struct Piece {
  bool FromLogger;
  Passed Bytes;
};

[[noreturn]] void refuse(const char* words) {
  throw hw::Failure(hw::FailureNumber::InvalidCall, "wristlog",
                    std::string("who wears the logger cannot be left out of the record: ") + words);
}

constexpr char Blank = ' ', Filled = 'X';
/// What the program makes of random bytes that are all 0.
constexpr std::string_view NeutralGuid = "00000000000040008000000000000000";
constexpr std::string_view NeutralDay = "01012000", NoDay = "12301899", UnknownDay = "12291899",
                           WrongDay = "00000000";
constexpr std::string_view NeutralTenths = "01000";

bool isFilled(std::uint8_t byte) { return byte != Blank && byte != 0; }

/// Blanks stay, so that a field is as long as it was.
void neutralise(Bytes field, std::string_view pattern = {}) {
  for (std::size_t i = 0; i < field.size(); ++i)
    if (isFilled(field[i])) field[i] = static_cast<std::uint8_t>(i < pattern.size() ? pattern[i] : Filled);
}

void put(Bytes field, std::string_view text) { std::copy(text.begin(), text.end(), field.begin()); }

std::string_view textOf(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string trimmed(std::string_view text) {
  const auto last = text.find_last_not_of(std::string_view(" \0", 2));
  return std::string(text.substr(0, last == std::string_view::npos ? 0 : last + 1));
}

bool isNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

void neutraliseDay(Bytes field) {
  const std::string_view text = textOf(field);
  if (text == NoDay || text == UnknownDay) return;
  const bool isDay = isNumber(text) && text.substr(0, 2) >= "01" && text.substr(0, 2) <= "12" &&
                     text.substr(2, 2) >= "01" && text.substr(2, 2) <= "31";
  put(field, isDay ? NeutralDay : WrongDay);
}

void neutraliseTenths(Bytes field) {
  const std::string_view text = textOf(field);
  if (!isNumber(text))
    neutralise(field);
  else if (text.find_first_not_of('0') != std::string_view::npos)
    put(field, NeutralTenths);
}

/// CRC-16 as of XMODEM, from 0 on: that of a difference is the difference of the CRCs.
std::uint16_t crcOf(std::span<const std::uint8_t> bytes) {
  std::uint32_t crc = 0;
  for (const std::uint8_t byte : bytes) {
    crc ^= static_cast<std::uint32_t>(byte) << 8U;
    for (int bit = 0; bit < 8; ++bit) crc = (crc << 1U) ^ ((crc & 0x8000U) != 0 ? 0x1021U : 0U);
    crc &= 0xFFFFU;
  }
  return static_cast<std::uint16_t>(crc);
}

/// The packets of a transfer of the configuration, each with one half of it, and what is left out of them.
class Packets {
 public:
  static constexpr std::size_t HeadLength = 3, DataLength = 128, Length = HeadLength + DataLength + 2;

  /// Adds to `secrets` what must not be found in the redacted record.
  explicit Packets(std::set<std::string>& secrets) : secrets_(secrets) {}

  void take(const Passed& frame) { frames_.push_back(frame); }

  /// Ends a transfer of the whole block, or of what is sent of it. A packet that was damaged on the way stays
  /// so: what is wrong with its CRC stays wrong.
  void end(bool isSent) {
    std::vector<Data> differences;
    Data second{};
    for (const Passed& frame : frames_) {
      auto data = dataOf(frame);
      const auto former = data;
      const bool isWhole = crcOf(data) == crcIn(frame);
      if (isSent && *frame[1] == 1) redactSubject(data);
      if (!isSent && *frame[1] == 1) redactFirst(data);
      if (!isSent && *frame[1] == 2) redactSecond(data);
      for (std::size_t i = 0; i < data.size(); ++i) data[i] ^= former[i];
      if (isWhole && *frame[1] == 2) second = data;
      differences.push_back(data);
    }
    for (std::size_t i = 0; i < frames_.size(); ++i) {
      if (!isSent && *frames_[i][1] == 1) correctBlockCrc(differences[i], second);
      apply(frames_[i], differences[i]);
    }
    frames_.clear();
  }

 private:
  using Data = std::array<std::uint8_t, DataLength>;
  static constexpr std::size_t SubjectFrom = 64;  ///< in the block; what is sent begins with it

  static Data dataOf(const Passed& frame) {
    Data data{};
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = *frame[HeadLength + i];
    return data;
  }
  static std::uint16_t crcIn(const Passed& frame) {
    return static_cast<std::uint16_t>(*frame[Length - 2] << 8U | *frame[Length - 1]);
  }

  void redactIdentity(Bytes identity) {
    const std::string text = trimmed(textOf(identity));
    if (text == serial_) return;
    secrets_.insert(text);
    neutralise(identity);
  }
  /// The 63 bytes after the identity.
  void redactRest(Bytes rest) {
    neutralise(rest.subspan(0, 3));
    secrets_.insert(trimmed(textOf(rest.subspan(3, 32))));
    neutralise(rest.subspan(3, 32), NeutralGuid);
    if (rest[35] != '\\') neutralise(rest.subspan(35, 1));
    neutraliseDay(rest.subspan(36, 8));
    neutraliseTenths(rest.subspan(44, 5));
    neutraliseTenths(rest.subspan(49, 5));
    neutralise(rest.subspan(54, 9));
  }
  void redactSubject(Bytes subject) {
    redactIdentity(subject.subspan(1, 64));
    redactRest(subject.subspan(65, 63));
  }
  void redactFirst(Bytes data) {
    const std::string_view serial = textOf(data.subspan(6, 16));
    serial_ = serial.substr(0, serial.find('\0'));
    redactIdentity(data.subspan(SubjectFrom + 1));
  }
  /// The last character of the identity comes first.
  static_assert(SubjectFrom + 1 + 64 == DataLength + 1);
  void redactSecond(Bytes data) {
    neutralise(data.subspan(0, 1));
    redactRest(data.subspan(1, 63));
  }

  /// The first two bytes of a block are the CRC of the others, low byte first.
  static void correctBlockCrc(Data& first, const Data& second) {
    std::vector<std::uint8_t> rest(first.begin() + 2, first.end());
    rest.insert(rest.end(), second.begin(), second.end());
    const std::uint16_t crc = crcOf(rest);
    first[0] = static_cast<std::uint8_t>(crc & 0xFFU);
    first[1] = static_cast<std::uint8_t>(crc >> 8U);
  }

  static void apply(const Passed& frame, const Data& difference) {
    for (std::size_t i = 0; i < difference.size(); ++i) *frame[HeadLength + i] ^= difference[i];
    const std::uint16_t crc = crcOf(difference);
    *frame[Length - 2] ^= static_cast<std::uint8_t>(crc >> 8U);
    *frame[Length - 1] ^= static_cast<std::uint8_t>(crc & 0xFFU);
  }

  std::set<std::string>& secrets_;
  std::string serial_;
  std::vector<Passed> frames_;
};

/// The subject text of a Pendrel logger, 64 characters.
class SubjectText {
 public:
  static constexpr std::size_t Length = 64;

  explicit SubjectText(std::set<std::string>& secrets) : secrets_(secrets) {}

  void setSerial(std::string serial) { serial_ = std::move(serial); }

  void redact(Bytes text) {
    const std::string identity = trimmed(textOf(text.subspan(0, 23)));
    if (identity != serial_) {
      secrets_.insert(identity);
      neutralise(text.subspan(0, 23));
    }
    neutralise(text.subspan(23, 4));
    const Bytes packed = text.subspan(31, 32);
    auto bytes = hw::Class_Base64Class::fncDecodeToByteArray(textOf(packed));
    if (bytes.size() != 24) return neutralise(packed);
    secrets_.insert(std::string(textOf(packed)).substr(0, 21));
    for (std::size_t i = 0; i < 16; ++i) bytes[i] = i == 6 ? 0x40 : i == 8 ? 0x80 : 0;
    constexpr std::uint16_t Unknown = 255, NeutralDays = 36526, Tenths = 1000;
    const auto word = [&](std::size_t at) {
      return static_cast<std::uint16_t>(bytes[at] << 8U | bytes[at + 1]);
    };
    const auto setWord = [&](std::size_t at, std::uint16_t value) {
      bytes[at] = static_cast<std::uint8_t>(value >> 8U);
      bytes[at + 1] = static_cast<std::uint8_t>(value & 0xFFU);
    };
    if (word(16) != 0 && word(16) != Unknown) setWord(16, NeutralDays);
    for (const std::size_t at : {std::size_t{20}, std::size_t{22}})
      if (word(at) != 0) setWord(at, Tenths);
    put(packed, hw::Class_Base64Class::fncEncodeByteArray(bytes));
  }

 private:
  std::set<std::string>& secrets_;
  std::string serial_;
};

/// Goes through what passed and leaves out what it tells of the subject.
class Redaction {
 public:
  explicit Redaction(SessionRecord& record) : record_(record), packets_(secrets_), subject_(secrets_) {}

  void run() {
    redactArguments();
    redactPaths();
    for (platform::WireEvent& event : record_.Events)
      if (event.Kind == WireKind::Random) std::fill(event.Bytes.begin(), event.Bytes.end(), 0);
    for (const Piece& piece : pieces()) piece.FromLogger ? answered(piece.Bytes) : said(piece.Bytes);
    endTransfer();
    if (!typedSubject_.empty()) refuse("the session ended while its text was sent");
    requireNothingLeft();
    record_.Redacted = true;
  }

 private:
  enum class State : std::uint8_t { Shell, Asked, Receiving, Offered, Sending, Setup, TypingSubject };

  std::vector<Piece> pieces() {
    std::vector<Piece> all;
    for (platform::WireEvent& event : record_.Events) {
      if (event.Kind != WireKind::Sent && event.Kind != WireKind::Received) continue;
      const bool fromLogger = event.Kind == WireKind::Received;
      if (all.empty() || all.back().FromLogger != fromLogger) all.push_back({fromLogger, {}});
      for (std::uint8_t& byte : event.Bytes) all.back().Bytes.push_back(&byte);
    }
    return all;
  }

  void redactArguments() {
    for (const auto& [option, redact] :
         {std::pair{"--identity", Redact(neutralText)},
          {"--initials", neutralText},
          {"--gender", neutralText},
          {"--guid", neutralGuid},
          {"--dob", [](const std::string&) { return std::string("2000-01-01"); }},
          {"--height", neutralSize},
          {"--weight", neutralSize}}) {
      const std::string value = valueOf(record_.Arguments, option);
      if (value.empty()) continue;
      if (option == std::string_view("--identity") || option == std::string_view("--guid"))
        secrets_.insert(value);
      record_.Arguments = withoutOption(record_.Arguments, option, true);
      addOption(record_.Arguments, {option, redact(value)});
    }
  }

  /// Folders and files are often called after whom they are about, and failures tell of them.
  void redactPaths() {
    if (!record_.DocksFile.empty()) record_.DocksFile = "Docks.INI";
    if (record_.Failed) record_.Failed->Description = "What it said has been left out of the record";
    std::vector<std::string>& arguments = record_.Arguments;
    if (!valueOf(arguments, "--out").empty()) {
      arguments = withoutOption(arguments, "--out", true);
      addOption(arguments, {"--out", "recording"});
    }
    if (arguments.size() < 2 || arguments[1] != "export-krc") return;
    bool isOption = true;
    for (std::size_t i = 2; i < arguments.size(); ++i)
      if (isOption && arguments[i] == "--port")
        ++i;
      else if (isOption && arguments[i].starts_with("--"))
        isOption = arguments[i] != "--";
      else
        arguments[i] = "recording";
  }

  using Redact = std::function<std::string(const std::string&)>;
  static std::string neutralText(const std::string& text) {
    std::string neutral;
    for (const char c : text)
      // One character of the loggers' set for each of UTF-8.
      if ((static_cast<std::uint8_t>(c) & 0xC0U) != 0x80U) neutral += c == Blank ? Blank : Filled;
    return neutral;
  }
  static std::string neutralGuid(const std::string& text) {
    const std::string plain = neutralText(text);
    const std::size_t from = std::min(plain.find_first_not_of(Blank), plain.size());
    std::string neutral = trimmed(plain.substr(from));
    for (std::size_t i = 0; i < neutral.size(); ++i)
      if (neutral[i] != Blank) neutral[i] = NeutralGuid[i];
    return neutral;
  }
  static std::string neutralSize(const std::string& text) {
    return text.find_first_of("123456789") == std::string::npos ? text : "100";
  }

  void said(const Passed& bytes) {
    for (std::uint8_t* const byte : bytes) {
      if (state_ == State::Setup && !typedSubject_.empty()) redactTyped();
      if (state_ == State::Sending) {
        sentFrame(byte);
      } else if (state_ == State::TypingSubject) {
        if (*byte == '*' || *byte == '\r') refuse("the typing of its text was broken off");
        typedSubject_.push_back(byte);
        if (typedSubject_.size() == SubjectText::Length) state_ = State::Setup;
      } else {
        typed(byte);
      }
    }
  }

  void typed(const std::uint8_t* byte) {
    constexpr char WantCrc = 'C', Cancel = 0x18;
    const char c = static_cast<char>(*byte);
    if (state_ == State::Asked && c == WantCrc) {
      state_ = State::Receiving;
      return;
    }
    if (state_ == State::Receiving && c != '\r' && c != Cancel) return;
    line_ += c;
    const auto endsWith = [&](std::string_view text) { return std::string_view(line_).ends_with(text); };
    if (c != '\r' && c != Cancel && !endsWith("***C") && !endsWith("***B")) return;
    brokenOff_ = c == Cancel && (brokenOff_ || state_ == State::Asked || state_ == State::Receiving);
    endTransfer();
    state_ = State::Shell;
    if (endsWith("show config\r"))
      state_ = State::Asked;
    else if (endsWith("config\r"))
      state_ = State::Offered;
    else if (endsWith("***C"))
      state_ = State::Setup;
    else if (endsWith("***B"))
      state_ = State::TypingSubject;
    line_.clear();
  }

  void sentFrame(std::uint8_t* byte) {
    constexpr std::uint8_t Soh = 1, Eot = 4;
    if (frame_.empty() && *byte != Soh) {
      if (*byte == Eot) return;
      endTransfer();
      state_ = State::Shell;
      return typed(byte);
    }
    frame_.push_back(byte);
    if (frame_.size() < Packets::Length) return;
    packets_.take(std::exchange(frame_, {}));
    isSent_ = true;
  }

  void answered(const Passed& bytes) {
    constexpr std::uint8_t Soh = 1, Eot = 4;
    constexpr std::size_t LongestPrompt = 2;
    switch (state_) {
      case State::Receiving:
        if (*bytes.front() == Soh && bytes.size() == Packets::Length)
          packets_.take(bytes);
        else if (*bytes.front() == Eot)
          endTransfer(), state_ = State::Shell;
        else
          // Nobody looks at a packet of another length.
          std::for_each(bytes.begin() + 1, bytes.end(), [](std::uint8_t* byte) { *byte = 0; });
        return;
      case State::Offered:
        if (*bytes.back() == 'C') state_ = State::Sending;
        return;
      case State::Setup:
        if (!typedSubject_.empty()) {
          echoed(bytes.front());
          return redactTyped();
        }
        state_ = State::Shell;
        return redactSetup(bytes);
      case State::TypingSubject:
        if (typedSubject_.empty()) return;
        if (bytes.size() != 1) refuse("an echo of its text is not one character");
        return echoed(bytes.front());
      case State::Shell:
      case State::Asked:
      case State::Sending:
        // What was on its way when the program broke off may be a part of the configuration.
        if (brokenOff_ && bytes.size() > LongestPrompt)
          refuse("its configuration came after the transfer had been broken off");
        return;
    }
  }

  void echoed(std::uint8_t* byte) {
    echoes_.resize(typedSubject_.size());
    echoes_.back() = byte;
  }

  /// The text and its echo are the same, or differ as before.
  void redactTyped() {
    echoes_.resize(typedSubject_.size());
    std::array<std::uint8_t, SubjectText::Length> text{};
    for (std::size_t i = 0; i < text.size(); ++i) text[i] = *typedSubject_[i];
    const auto former = text;
    subject_.redact(text);
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto difference = static_cast<std::uint8_t>(text[i] ^ former[i]);
      *typedSubject_[i] ^= difference;
      if (echoes_[i] != nullptr) *echoes_[i] ^= difference;
    }
    typedSubject_.clear();
    echoes_.clear();
    state_ = State::Shell;
  }

  /// Lines up to their carriage returns: the rest of the echo, the subject's text, and others; from the
  /// eighth on a checksum of all, but the serial number comes late.
  void redactSetup(const Passed& bytes) {
    constexpr std::size_t SubjectLine = 1, DeviceLine = 7, SumLine = 8, SumDigits = 4;
    std::vector<Passed> lines(1);
    for (std::uint8_t* const byte : bytes)
      if (*byte == '\r')
        lines.emplace_back();
      else
        lines.back().push_back(byte);
    if (lines.size() <= SubjectLine) return;
    if (lines.size() <= DeviceLine || lines[SubjectLine].size() != SubjectText::Length) {
      if (lines.size() > SubjectLine + 1) refuse("the logger's set-up did not come as a whole");
      for (std::uint8_t* const byte : lines[SubjectLine])
        if (isFilled(*byte)) *byte = Filled;
      return;
    }
    const auto textOfLine = [&](std::size_t line) {
      std::string text;
      for (const std::uint8_t* const byte : lines[line]) text += static_cast<char>(*byte);
      return text;
    };
    const std::string device = textOfLine(DeviceLine);
    if (device.size() >= 11) subject_.setSerial(device.substr(0, 3) + device.substr(7, 4));
    std::array<std::uint8_t, SubjectText::Length> text{};
    for (std::size_t i = 0; i < text.size(); ++i) text[i] = *lines[SubjectLine][i];
    subject_.redact(text);
    std::uint32_t change = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      change += text[i];
      change -= *lines[SubjectLine][i];
      *lines[SubjectLine][i] = text[i];
    }
    if (lines.size() <= SumLine || lines[SumLine].size() < SumDigits) return;
    const std::string told = textOfLine(SumLine);
    std::uint32_t sum = 0;
    const auto [end, error] = std::from_chars(told.data(), told.data() + SumDigits, sum, 16);
    if (error != std::errc{} || end != told.data() + SumDigits) return;
    constexpr std::string_view Digits = "0123456789ABCDEF";
    sum = (sum + change) & 0xFFFFU;
    for (std::size_t i = 0; i < SumDigits; ++i)
      *lines[SumLine][i] = static_cast<std::uint8_t>(Digits[sum >> (4U * (SumDigits - 1 - i)) & 15U]);
  }

  void endTransfer() {
    if (!frame_.empty()) refuse("the session ended in a packet that was sent");
    packets_.end(std::exchange(isSent_, false));
  }

  /// Of the arguments what may be the subject's: neither commands nor names of options and models.
  std::vector<std::string> freeValues() const {
    constexpr std::size_t CommandWords = 2;
    std::vector<std::string> values;
    for (std::size_t i = 0; i < record_.Arguments.size(); ++i) {
      const std::string& argument = record_.Arguments[i];
      if (argument.starts_with("--"))
        values.push_back(argument.substr(std::min(argument.find('='), argument.size())));
      else if (i >= CommandWords && argument != record_.Model)
        values.push_back(argument);
    }
    return values;
  }

  /// Where bytes were lost, or the logger spoke unasked, something may have been overlooked.
  void requireNothingLeft() {
    constexpr std::size_t Shortest = 4, Window = 8;
    std::array<std::string, 2> streams;
    for (const platform::WireEvent& event : record_.Events)
      if (event.Kind == WireKind::Sent || event.Kind == WireKind::Received)
        streams[event.Kind == WireKind::Sent ? 0 : 1].append(event.Bytes.begin(), event.Bytes.end());
    for (const std::string& value : freeValues()) streams[0] += value + '\n';
    for (const std::string& secret : secrets_) {
      if (secret.size() < Shortest || secret == NeutralGuid) continue;
      const std::size_t length = std::min(secret.size(), Window);
      for (std::size_t at = 0; at + length <= secret.size(); ++at)
        for (const std::string& stream : streams)
          if (const std::string part = secret.substr(at, length);
              part.find_first_not_of(" X") != std::string::npos && stream.find(part) != std::string::npos)
            refuse("its name stands in another place too");
    }
  }

  SessionRecord& record_;
  std::set<std::string> secrets_;
  Packets packets_;
  SubjectText subject_;
  State state_ = State::Shell;
  std::string line_;
  Passed frame_;
  bool isSent_ = false;
  bool brokenOff_ = false;  ///< a transfer of the configuration, and nothing was typed since
  Passed typedSubject_, echoes_;
};

}  // namespace

SessionRecord redacted(const SessionRecord& record) {
  SessionRecord neutral = record;
  Redaction(neutral).run();
  return neutral;
}

}  // namespace wristlog
