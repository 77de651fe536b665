#include "replay/session_record.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <utility>

#include "engineering/docks.h"
#include "hy_wristlog/Class_Main.h"
#include "hy_wristlog/failure.h"
#include "recording/json.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace platform = hy_wristlog::platform;
using platform::WireEvent;
using platform::WireKind;

namespace {

constexpr int FormatVersion = 1;
constexpr const char* Mark = "wristlog_session";

/// What an event is called; a member of that name holds what is particular to it.
constexpr std::array<std::pair<WireKind, const char*>, 14> KindNames{{{WireKind::Open, "open"},
                                                                      {WireKind::Configure, "settings"},
                                                                      {WireKind::Sent, "out"},
                                                                      {WireKind::Dtr, "dtr"},
                                                                      {WireKind::Rts, "rts"},
                                                                      {WireKind::Discard, "discard"},
                                                                      {WireKind::Close, "close"},
                                                                      {WireKind::Received, "in"},
                                                                      {WireKind::Lines, "lines"},
                                                                      {WireKind::Errors, "errors"},
                                                                      {WireKind::Gone, "gone"},
                                                                      {WireKind::Stop, "stop"},
                                                                      {WireKind::Devices, "devices"},
                                                                      {WireKind::Random, "random"}}};
constexpr std::array<std::pair<platform::LocaleItem, const char*>, 4> LocaleNames{
    {{platform::LocaleItem::DecimalSeparator, "decimal_separator"},
     {platform::LocaleItem::LongDate, "long_date"},
     {platform::LocaleItem::ShortDate, "short_date"},
     {platform::LocaleItem::Time, "time"}}};

/// Something in a line is not as it is written.
struct Damaged {};

void require(bool holds) {
  if (!holds) throw Damaged{};
}

const Json& member(const Json& object, const char* name) {
  const auto found = object.find(name);
  require(found != object.end());
  return *found;
}

std::string textIn(const Json& value) {
  require(value.is_string());
  return value.get<std::string>();
}

bool flagIn(const Json& value) {
  require(value.is_boolean());
  return value.get<bool>();
}

std::int32_t numberIn(const Json& value) {
  require(value.is_number_integer());
  // The library takes what exceeds 64 bits with a sign for a negative number.
  require(!value.is_number_unsigned() || std::in_range<std::int32_t>(value.get<std::uint64_t>()));
  const auto number = value.get<std::int64_t>();
  require(std::in_range<std::int32_t>(number));
  return static_cast<std::int32_t>(number);
}

std::uint32_t countIn(const Json& value) {
  const std::int32_t number = numberIn(value);
  require(number >= 0);
  return static_cast<std::uint32_t>(number);
}

bool isPlain(std::uint8_t byte) {
  return (byte >= 0x20 && byte < 0x7F) || byte == '\r' || byte == '\n' || byte == '\t';
}

/// Readable bytes as text, all others as an array with one text of hexadecimal digits.
Json bytesJson(const std::vector<std::uint8_t>& bytes) {
  if (std::all_of(bytes.begin(), bytes.end(), isPlain)) return std::string(bytes.begin(), bytes.end());
  std::string digits;
  for (const std::uint8_t byte : bytes) {
    constexpr std::string_view Digits = "0123456789abcdef";
    digits += Digits[byte >> 4U];
    digits += Digits[byte & 15U];
  }
  return Json::array({digits});
}

std::uint8_t digitOf(char c) {
  if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
  require(c >= 'a' && c <= 'f');
  return static_cast<std::uint8_t>(c - 'a' + 10);
}

std::vector<std::uint8_t> bytesIn(const Json& value) {
  if (value.is_string()) {
    const auto& text = value.get_ref<const std::string&>();
    return {text.begin(), text.end()};
  }
  require(value.is_array() && value.size() == 1);
  const std::string digits = textIn(value.front());
  require(digits.size() % 2 == 0);
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2)
    bytes.push_back(static_cast<std::uint8_t>(digitOf(digits[i]) << 4U | digitOf(digits[i + 1])));
  return bytes;
}

Json failureIn(const hw::Failure& failure) {
  return {{"number", failure.Number}, {"source", failure.Source}, {"description", failure.Description}};
}

hw::Failure failureOf(const Json& value) {
  require(value.is_object());
  return {numberIn(member(value, "number")), textIn(member(value, "source")),
          textIn(member(value, "description"))};
}

Json settingsJson(const platform::LineSettings& settings) {
  return {{"baud", settings.Baud},
          {"parity", std::string(1, platform::ParityLetters[static_cast<std::size_t>(settings.Parity)])},
          {"data_bits", settings.DataBits},
          {"stop_bits", platform::StopBitTexts[static_cast<std::size_t>(settings.StopBits)]}};
}

platform::LineSettings settingsOf(const Json& value) {
  require(value.is_object());
  const std::string parity = textIn(member(value, "parity")), stop = textIn(member(value, "stop_bits"));
  const auto place = parity.size() == 1 ? platform::ParityLetters.find(parity) : std::string_view::npos;
  const auto stopBits = std::find(platform::StopBitTexts.begin(), platform::StopBitTexts.end(), stop);
  require(place != std::string_view::npos && stopBits != platform::StopBitTexts.end());
  return {numberIn(member(value, "baud")), static_cast<platform::LineParity>(place),
          numberIn(member(value, "data_bits")),
          static_cast<platform::LineStopBits>(stopBits - platform::StopBitTexts.begin())};
}

Json devicesJson(const platform::ListedDevices& listed) {
  Json devices = Json::array();
  const auto put = [](Json& object, const char* name, std::int32_t error) {
    if (error != 0) object[name] = error;
  };
  for (const platform::ListedDevice& device : listed.Devices) {
    Json entry{{"id", device.HardwareId}, {"name", device.FriendlyName}};
    put(entry, "info_error", device.InfoError);
    put(entry, "id_error", device.IdError);
    put(entry, "name_error", device.NameError);
    if (!device.Names.empty()) entry["names"] = device.Names;
    devices.push_back(entry);
  }
  Json answer{{"list", devices}};
  put(answer, "error", listed.Error);
  put(answer, "end_error", listed.EndError);
  return answer;
}

platform::ListedDevices devicesOf(const Json& value) {
  require(value.is_object());
  const auto errorIn = [](const Json& object, const char* name) {
    return object.contains(name) ? numberIn(object.at(name)) : 0;
  };
  const Json& list = member(value, "list");
  require(list.is_array());
  platform::ListedDevices listed{errorIn(value, "error"), {}, errorIn(value, "end_error")};
  for (const Json& entry : list) {
    require(entry.is_object());
    listed.Devices.push_back({errorIn(entry, "info_error"),
                              errorIn(entry, "id_error"),
                              errorIn(entry, "name_error"),
                              textIn(member(entry, "id")),
                              textIn(member(entry, "name")),
                              {}});
    if (!entry.contains("names")) continue;
    require(entry.at("names").is_array());
    for (const Json& name : entry.at("names")) listed.Devices.back().Names.push_back(textIn(name));
  }
  return listed;
}

Json linesJson(const platform::ModemLines& lines) {
  return {{"cts", lines.Cts}, {"dsr", lines.Dsr}, {"cd", lines.Cd}, {"ring", lines.Ring}};
}

platform::ModemLines linesOf(const Json& value) {
  require(value.is_object());
  return {flagIn(member(value, "cts")), flagIn(member(value, "dsr")), flagIn(member(value, "cd")),
          flagIn(member(value, "ring"))};
}

Json errorsJson(const platform::LineErrors& errors) {
  return {{"overrun", errors.Overrun},
          {"framing", errors.Framing},
          {"parity", errors.Parity},
          {"break", errors.Break},
          {"overflow", errors.BufferOverflow}};
}

platform::LineErrors errorsOf(const Json& value) {
  require(value.is_object());
  return {countIn(member(value, "overrun")), countIn(member(value, "framing")),
          countIn(member(value, "parity")), countIn(member(value, "break")),
          countIn(member(value, "overflow"))};
}

Json detailsOf(const WireEvent& event) {
  switch (event.Kind) {
    case WireKind::Open:
      return event.Number;
    case WireKind::Configure:
      return settingsJson(event.Settings);
    case WireKind::Sent:
    case WireKind::Received:
    case WireKind::Random:
      return bytesJson(event.Bytes);
    case WireKind::Dtr:
    case WireKind::Rts:
      return event.On;
    case WireKind::Lines:
      return linesJson(event.Lines);
    case WireKind::Errors:
      return errorsJson(event.Errors);
    case WireKind::Devices:
      return event.Text;
    case WireKind::Discard:
    case WireKind::Close:
    case WireKind::Gone:
    case WireKind::Stop:
      break;
  }
  return true;
}

void takeDetails(WireEvent& event, const Json& details, const Json& line) {
  switch (event.Kind) {
    case WireKind::Open:
      event.Number = numberIn(details);
      return;
    case WireKind::Configure:
      event.Settings = settingsOf(details);
      return;
    case WireKind::Sent:
    case WireKind::Received:
      event.Bytes = bytesIn(details);
      return require(!event.Bytes.empty());
    case WireKind::Random:
      event.Bytes = bytesIn(details);
      return;
    case WireKind::Dtr:
    case WireKind::Rts:
      event.On = flagIn(details);
      return;
    case WireKind::Lines:
      event.Lines = linesOf(details);
      return;
    case WireKind::Errors:
      event.Errors = errorsOf(details);
      return;
    case WireKind::Devices:
      event.Text = textIn(details);
      event.Devices = devicesOf(line);
      return;
    case WireKind::Gone:
      return require(event.Trouble.has_value());
    case WireKind::Discard:
    case WireKind::Close:
    case WireKind::Stop:
      return;
  }
}

double secondsIn(const Json& value, double most = 1e7) {
  require(value.is_number());
  const auto seconds = value.get<double>();
  require(seconds >= 0 && seconds <= most);
  return seconds;
}

/// Seconds between two looks at the port, at most, while the program waits.
constexpr double UsualRound = 0.0011;

double rounded(double seconds) { return std::round(seconds * 1e6) / 1e6; }

std::chrono::microseconds delayOf(const Json& value) {
  constexpr double Longest = 60;
  return std::chrono::round<std::chrono::microseconds>(
      std::chrono::duration<double>(secondsIn(value, Longest)));
}

WireEvent eventOf(const Json& line) {
  WireEvent event;
  event.Time = secondsIn(member(line, "t"));
  event.Empty = line.contains("empty") ? secondsIn(line.at("empty")) : std::max(event.Time - UsualRound, 0.0);
  if (line.contains("link")) event.Link = numberIn(line.at("link"));
  if (line.contains("delay")) event.Delay = delayOf(line.at("delay"));
  if (line.contains("failure")) event.Trouble = failureOf(line.at("failure"));
  for (const auto& [kind, name] : KindNames)
    if (line.contains(name)) {
      event.Kind = kind;
      takeDetails(event, line.at(name), line);
      return event;
    }
  throw Damaged{};
}

std::string startText(const hw::CivilTime& time) {
  std::array<char, 80> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", time.Year, time.Month,
                time.Day, time.Hour, time.Minute, time.Second, time.Millisecond);
  return text.data();
}

hw::CivilTime startOf(const std::string& text) {
  hw::CivilTime time;
  int length = 0;
  require(text.size() == 24 &&
          std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d.%3dZ%n", &time.Year, &time.Month, &time.Day,
                      &time.Hour, &time.Minute, &time.Second, &time.Millisecond, &length) == 7 &&
          startText(time) == text);
  require(time.Year >= 1970 && time.Year <= 2200 && time.Month >= 1 && time.Month <= 12 && time.Day >= 1 &&
          time.Day <= 31 && time.Hour <= 23 && time.Minute <= 59 && time.Second <= 59);
  return time;
}

SessionRecord headerOf(const Json& line) {
  SessionRecord record;
  record.Program = textIn(member(line, "program"));
  const Json& command = member(line, "command");
  require(command.is_array());
  for (const Json& argument : command) record.Arguments.push_back(textIn(argument));
  record.Model = textIn(member(line, "model"));
  record.Simulated = textIn(member(line, "simulated"));
  record.Zone = textIn(member(line, "zone"));
  record.Start = startOf(textIn(member(line, "start_utc")));
  record.Timer = secondsIn(member(line, "timer"), 1e9);
  record.Redacted = flagIn(member(line, "redacted"));
  if (line.contains("docks_file")) record.DocksFile = textIn(line.at("docks_file"));
  const Json& locale = member(line, "locale");
  require(locale.is_object());
  for (const auto& [item, name] : LocaleNames) record.Locale[item] = textIn(member(locale, name));
  return record;
}

std::string lineOf(const Json& json) {
  return json.dump(-1, ' ', true, Json::error_handler_t::replace) + "\n";
}

[[noreturn]] void refuse(const std::string& words) {
  throw hw::Failure(hw::FailureNumber::InvalidCall, "wristlog", words);
}

std::string zoneKeyOf(platform::Platform& world) {
  const std::string name = world.zones().localStandardName();
  if (name.empty()) return {};
  for (const std::string& key : world.zones().keys())
    if (key == name || world.zones().read(key).Standard == name) return key;
  return {};
}

std::string modelOf(const std::vector<std::string>& arguments) {
  return !arguments.empty() && arguments.front() == "legacy" ? "pendrel" : valueOf(arguments, "--model");
}

/// Whether an argument is the option, and how its value is given with it.
bool isOption(const std::string& argument, std::string_view option) {
  return argument == option ||
         (argument.starts_with(option) && argument.size() > option.size() && argument[option.size()] == '=');
}

std::size_t endOfOptions(const std::vector<std::string>& arguments) {
  return static_cast<std::size_t>(std::find(arguments.begin(), arguments.end(), "--") - arguments.begin());
}

}  // namespace

bool usesPort(const SessionRecord& record) {
  return std::any_of(record.Events.begin(), record.Events.end(),
                     [](const platform::WireEvent& event) { return platform::isSaid(event.Kind); });
}

std::string valueOf(const std::vector<std::string>& arguments, std::string_view option) {
  for (std::size_t i = 0; i < endOfOptions(arguments); ++i)
    if (isOption(arguments[i], option)) {
      if (arguments[i].size() > option.size()) return arguments[i].substr(option.size() + 1);
      return i + 1 < arguments.size() ? arguments[i + 1] : "";
    }
  return {};
}

std::vector<std::string> withoutOption(const std::vector<std::string>& arguments, std::string_view option,
                                       bool takesValue) {
  std::vector<std::string> left;
  const std::size_t end = endOfOptions(arguments);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (i >= end || !isOption(arguments[i], option))
      left.push_back(arguments[i]);
    else if (takesValue && arguments[i] == option)
      ++i;
  }
  return left;
}

void addOption(std::vector<std::string>& arguments, const std::vector<std::string>& option) {
  arguments.insert(arguments.begin() + static_cast<std::ptrdiff_t>(endOfOptions(arguments)), option.begin(),
                   option.end());
}

std::vector<std::string> withoutOwnWorld(std::vector<std::string> arguments) {
  for (const auto& [option, takesValue] :
       {std::pair{"--record", true}, {"--redact", false}, {"--simulate", true}, {"--force", false}})
    arguments = withoutOption(arguments, option, takesValue);
  // The record has the chosen dock alone; that of `docks` has all.
  const bool hasAll = !arguments.empty() && arguments.front() == "docks";
  return hasAll ? arguments : withoutOption(arguments, "--dock", true);
}

SessionRecord sessionIn(platform::Platform& world, const std::vector<std::string>& arguments,
                        const std::string& simulated) {
  SessionRecord record;
  record.Program = hw::Class_Main().Get_Version();
  record.Arguments = withoutOwnWorld(arguments);
  record.Model = modelOf(arguments);
  if (!arguments.empty() && arguments.front() == "docks")
    record.DocksFile = hw::engineering::declaredDocksFile();
  record.Simulated = simulated;
  record.Zone = zoneKeyOf(world);
  record.Start = world.clock().utc();
  record.Timer = world.clock().timer();
  for (const auto& [item, name] : LocaleNames) record.Locale[item] = world.environment().localeInfo(item);
  return record;
}

std::string headerLine(const SessionRecord& record) {
  Json line{{Mark, FormatVersion},
            {"program", record.Program},
            {"command", record.Arguments},
            {"model", record.Model},
            {"simulated", record.Simulated},
            {"zone", record.Zone},
            {"start_utc", startText(record.Start)},
            {"timer", record.Timer},
            {"redacted", record.Redacted}};
  for (const auto& [item, name] : LocaleNames) line["locale"][name] = record.Locale.at(item);
  if (!record.DocksFile.empty()) line["docks_file"] = record.DocksFile;
  return lineOf(line);
}

std::string eventLine(const WireEvent& event, std::int32_t& latest) {
  Json line{{"t", rounded(event.Time)}};
  // Left out where the program looks every millisecond: readers assume that.
  const double empty = std::max(rounded(event.Empty), 0.0);
  if (event.Kind == WireKind::Received && rounded(rounded(event.Time) - empty) > UsualRound)
    line["empty"] = empty;
  if (event.Kind == WireKind::Open) latest = event.Link;
  if (event.Link != 0 && event.Link != latest) line["link"] = event.Link;
  const auto* const name = std::find_if(KindNames.begin(), KindNames.end(),
                                        [&](const auto& entry) { return entry.first == event.Kind; });
  line[name->second] = detailsOf(event);
  if (event.Kind == WireKind::Devices) line.update(devicesJson(event.Devices));
  if (event.Delay.count() > 0) line["delay"] = std::chrono::duration<double>(event.Delay).count();
  if (event.Trouble) line["failure"] = failureIn(*event.Trouble);
  return lineOf(line);
}

std::string endLine(int exitStatus, const std::string& words, const std::optional<hw::Failure>& failed) {
  Json line{{"exit_status", exitStatus}};
  if (!words.empty()) line["words"] = words;
  if (failed) line["failure"] = failureIn(*failed);
  return lineOf(line);
}

std::string textOf(const SessionRecord& record) {
  std::string text = headerLine(record);
  std::int32_t latest = 0;
  for (const WireEvent& event : record.Events) text += eventLine(event, latest);
  if (record.ExitStatus) text += endLine(*record.ExitStatus, record.Words, record.Failed);
  return text;
}

SessionRecord recordOf(std::string_view text) {
  SessionRecord record;
  double before = 0;
  std::int32_t latest = 0;
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos && number > 1) return record;
    const Json line = Json::parse(text.substr(0, end), nullptr, false);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (number == 1 && (!line.is_object() || !line.contains(Mark))) refuse("it is no record of a session");
    if (number == 1 && line.at(Mark) != FormatVersion)
      refuse("it is a record of another format version than " + std::to_string(FormatVersion));
    try {
      require(line.is_object() && !record.ExitStatus);
      if (number == 1) {
        record = headerOf(line);
      } else if (line.contains("exit_status")) {
        record.ExitStatus = numberIn(line.at("exit_status"));
        if (line.contains("words")) record.Words = textIn(line.at("words"));
        if (line.contains("failure")) record.Failed = failureOf(line.at("failure"));
      } else {
        WireEvent event = eventOf(line);
        require(event.Time >= before);
        before = event.Time;
        if (event.Kind == WireKind::Open) event.Link = ++latest;
        if (event.Link == 0) event.Link = latest;
        record.Events.push_back(std::move(event));
      }
    } catch (const Damaged&) {
      refuse("its line " + std::to_string(number) + " is damaged");
    }
  }
  if (record.Program.empty()) refuse("it is no record of a session");
  return record;
}

}  // namespace wristlog
