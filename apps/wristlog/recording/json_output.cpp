#include "recording/json_output.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <type_traits>

#include "engineering/dates.h"
#include "engineering/recording.h"
#include "engineering/zones.h"
#include "hy_wristlog/Class_Main.h"
#include "words/say.h"

namespace wristlog {

namespace hw = hy_wristlog;
namespace engineering = hy_wristlog::engineering;

namespace {

constexpr double UnknownDate = -1.0, NoDate = 0.0;

bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool isLetter(char c) { return isUpper(c) || (c >= 'a' && c <= 'z'); }

/// "StartTimeGMT" gives "start_time_gmt", "GMToffset" gives "gmt_offset": two capitals or more in a row are a
/// word.
std::string snakeCase(const std::string& name) {
  std::string result;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool upper = isUpper(name[i]);
    const bool afterUpper = i > 0 && isUpper(name[i - 1]);
    const bool afterWord = i > 1 && afterUpper && isUpper(name[i - 2]);
    if (i > 0 && ((upper && !afterUpper) || (!upper && isLetter(name[i]) && afterWord))) result += '_';
    result += upper ? static_cast<char>(name[i] - 'A' + 'a') : name[i];
  }
  return result;
}

/// The double whose shortest text is the float's shortest text.
double shortest(float value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text - 1, value).ptr;
  *end = '\0';
  return std::strtod(text, nullptr);
}

Json jsonOf(float value) { return std::isnan(value) ? Json() : Json(shortest(value)); }
Json jsonOf(hw::Tristate value) {
  return value == hw::Tristate::Empty ? Json() : Json(value == hw::Tristate::True);
}
Json jsonOf(std::int32_t value) { return value == hw::EmptyActivity ? Json() : Json(value); }

template <class Series>
Json seriesJson(const Series& series) {
  Json array = Json::array();
  for (const auto element : series) array.push_back(jsonOf(element));
  return array;
}

void put(Json& object, const std::string& name, const std::string& value) { object[name] = value; }
void put(Json& object, const std::string& name, bool value) { object[name] = value; }
void put(Json& object, const std::string& name, float value) { object[name] = jsonOf(value); }
void put(Json& object, const std::string& name, double date) {
  const std::string text =
      date == UnknownDate || date == NoDate ? std::string() : engineering::isoDate(date, "Z");
  object[name] = text.empty() ? Json() : Json(text);
  object[name + "_date"] = date;
}
template <class T>
requires std::is_integral_v<T> || std::is_enum_v<T>
void put(Json& object, const std::string& name, T value) { object[name] = static_cast<std::int32_t>(value); }
template <class T>
void put(Json&, const std::string&, const std::vector<T>&) {}

/// A day, or a time of day, without a zone.
void putLocal(Json& object, const std::string& name, double date) {
  constexpr std::size_t DateLength = 10;
  const std::string text = date == UnknownDate ? std::string() : engineering::isoDate(date);
  const bool isDay = name != "start_time";
  object[name] = text.empty() || (isDay && date == NoDate)
                     ? Json()
                     : Json(isDay ? text.substr(0, DateLength) : text.substr(DateLength + 1));
}
template <class T>
void putLocal(Json& object, const std::string& name, const T& value) {
  put(object, name, value);
}

template <class T>
constexpr bool IsSeries = false;
template <class T>
constexpr bool IsSeries<std::vector<T>> = true;

/// Leaves series out without making them.
template <class Read>
void putComputed(Json& object, const std::string& name, const Read& read) {
  if constexpr (!IsSeries<std::invoke_result_t<Read>>) {
    try {
      put(object, name, read());
    } catch (const hw::Failure&) {
      object[name] = nullptr;
    }
  }
}

}  // namespace

Json loggerJson(hw::Class_VardenLogger& logger) {
  using namespace hw;
  Json object = Json::object();
#define HY_STORED(Name, Type, Access, Copy) put(object, snakeCase(#Name), logger.Get_##Name());
#define HY_COMPUTED(Name, Type) putComputed(object, snakeCase(#Name), [&] { return logger.Get_##Name(); });
#include "hy_wristlog/varden_properties.inc"
  // A recording that was decoded again, as most are, went through no step.
  object.erase("retrieve_step");
  return object;
}

Json loggerJson(hw::Class_Pendrel& logger) {
  using namespace hw;
  Json object = Json::object();
#define HY_STORED(Name, Type, Access) putLocal(object, snakeCase(#Name), logger.Get_##Name());
#define HY_COMPUTED(Name, Type) putComputed(object, snakeCase(#Name), [&] { return logger.Get_##Name(); });
#include "hy_wristlog/pendrel_properties.inc"
  return object;
}

Json textOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

Json subjectJson(const hw::Class_Subject& subject) {
  Json object = Json::object();
  put(object, "identity", subject.Get_Identity());
  put(object, "initials", subject.Get_Initials());
  put(object, "gender", subject.Get_Gender());
  put(object, "dob", subject.Get_DOB());
  put(object, "guid", subject.Get_GUID());
  put(object, "height", subject.Get_Height());
  put(object, "weight", subject.Get_Weight());
  putComputed(object, "age", [&] { return subject.Get_Age(); });
  return object;
}

Json recordingJson(hw::Class_VardenLogger& logger, std::optional<hw::enmDecodeResult> result,
                   bool lowBattery) {
  Json object = Json::object();
  object["decode_result"] = result ? Json(static_cast<std::int32_t>(*result)) : Json();
  object["decode_result_name"] = result ? Json(hw::Class_Main::ResultName(*result)) : Json();
  object["samples"] = logger.Get_Samples();
  put(object, "start_time_gmt", logger.Get_StartTimeGMT());
  object["low_battery"] = lowBattery;
  object["marker_count"] = logger.Get_MarkerCount();
  object["marker2_count"] = logger.Get_Marker2Count();
  object["activity"] = seriesJson(logger.Get_ActivityArray());
  object["light"] = seriesJson(logger.Get_LightArray());
  object["red"] = seriesJson(logger.Get_RedLightArray());
  object["green"] = seriesJson(logger.Get_GreenLightArray());
  object["blue"] = seriesJson(logger.Get_BlueLightArray());
  object["marker"] = seriesJson(logger.Get_MarkerArray());
  object["marker2"] = seriesJson(logger.Get_Marker2Array());
  object["wrist"] = seriesJson(logger.Get_WristStatusArray());
  const hw::EventLog& log = engineering::events(logger);
  Json& events = object["events"] = Json::array();
  for (std::size_t i = 0; i < log.size(); ++i) events.push_back(log.text(i));
  return object;
}

Json recordingJson(const hw::Class_Pendrel& logger) {
  Json object = Json::object();
  object["samples"] = logger.Get_Samples();
  put(object, "start_time_gmt", engineering::startUtc(logger));
  object["marker_count"] = logger.Get_MarkerCount();
  object["activity"] = seriesJson(logger.Get_ActivityArray());
  object["steps"] = logger.Get_AcquisitionMode() == hw::PD_Mode_ActivityAndSteps
                        ? seriesJson(logger.Get_StepsArray())
                        : Json::array();
  object["marker"] = seriesJson(logger.Get_MarkerArray());
  return object;
}

Json partJson(const RecordingPart& part) {
  return {{"part", true},
          {"bytes_received", part.Bytes},
          {"bytes_in_logger", part.InLogger},
          {"part_until_utc", part.Until ? Json(engineering::isoDate(*part.Until, "Z")) : Json()}};
}

double roundedDays(double days) { return std::round(days * 10) / 10; }

Json failureJson(const hw::Failure& failure) {
  return {{"failure",
           {{"number", failure.Number}, {"source", failure.Source}, {"description", failure.Description}}}};
}

void print(const Json& document) {
  printDocument(document.dump(2, ' ', false, Json::error_handler_t::replace));
}

}  // namespace wristlog
