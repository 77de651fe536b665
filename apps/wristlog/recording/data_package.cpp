#include "recording/data_package.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "recording/events_csv.h"

namespace wristlog {

namespace {

struct TypeNames {
  const char *Type, *Format;
};

/// As a Table Schema calls them; without a format the default one counts.
TypeNames namesOf(FieldType type) {
  switch (type) {
    case FieldType::Text:
      return {"string", nullptr};
    case FieldType::Integer:
      return {"integer", nullptr};
    case FieldType::Number:
      return {"number", nullptr};
    case FieldType::Boolean:
    case FieldType::Flag:
      return {"boolean", nullptr};
    case FieldType::Utc:
    case FieldType::UtcAndCount:
      return {"datetime", nullptr};
    case FieldType::Local:
      return {"datetime", "%Y-%m-%dT%H:%M:%S%z"};
    case FieldType::Clock:
      return {"datetime", "%Y-%m-%dT%H:%M:%S"};
    case FieldType::Day:
      return {"date", nullptr};
    case FieldType::TimeOfDay:
      return {"time", nullptr};
  }
  return {};
}

Json limit(double value) {
  return value == std::floor(value) ? Json(static_cast<std::int64_t>(value)) : Json(value);
}

/// What an empty cell means, or the number that stands for no value: "-1: not known".
std::string emptyWords(const Field& field) {
  if (field.Empty.empty()) return {};
  const bool isNumber = field.Empty.find_first_of("-0123456789") == 0;
  return (isNumber ? " " : " Empty: ") + std::string(field.Empty) + ".";
}

Json fieldJson(const Field& field) {
  const TypeNames names = namesOf(field.Type);
  Json object{{"name", field.Name}, {"type", names.Type}};
  if (names.Format != nullptr) object["format"] = names.Format;
  if (field.Type == FieldType::Flag) object.update({{"trueValues", {"1"}}, {"falseValues", {"0"}}});
  if (!field.Unit.empty()) object["unit"] = field.Unit;
  object["description"] = std::string(field.Meaning) + "." + emptyWords(field);
  Json constraints = Json::object();
  if (field.Least != -Unbounded) constraints["minimum"] = limit(field.Least);
  if (field.Most != Unbounded) constraints["maximum"] = limit(field.Most);
  if (field.Name == "kind") constraints["enum"] = eventKindNames();
  if (!constraints.empty()) object["constraints"] = constraints;
  return object;
}

Json facts(Family family) {
  Json fields = Json::array();
  for (const Field& field : recordingFields()) {
    if (field.In != Family::Every && field.In != family) continue;
    fields.push_back(fieldJson(field));
    if (field.Type != FieldType::UtcAndCount) continue;
    fields.push_back({{"name", std::string(field.Name) + "_date"},
                      {"type", "number"},
                      {"unit", "d"},
                      {"description", "The same as days since 1899-12-30. 0 or -1: not known."}});
  }
  // No table, so its fields are no Table Schema; a name with a point is that of a member of a member.
  return {{"name", "recording"}, {"path", "recording.json"},        {"profile", "data-resource"},
          {"format", "json"},    {"mediatype", "application/json"}, {"encoding", "utf-8"},
          {"fields", fields}};
}

}  // namespace

Json tableResource(const std::string& name, const Json& path, std::span<const Field> fields) {
  Json columns = Json::array();
  for (const Field& field : fields) columns.push_back(fieldJson(field));
  return {{"name", name},
          {"path", path},
          {"profile", "tabular-data-resource"},
          {"format", "csv"},
          {"mediatype", "text/csv"},
          {"encoding", "utf-8"},
          {"dialect", {{"lineTerminator", "\n"}}},
          {"schema", {{"fields", columns}, {"missingValues", {""}}}}};
}

Json dataPackage(Family family, bool isPart) {
  const char* const ending = isPart ? ".partial.csv" : ".csv";
  const auto table = [&](const std::string& name, std::span<const Field> fields) {
    return tableResource(name, name + ending, fields);
  };
  Json resources = Json::array({table("series", seriesFields())});
  // A Pendrel keeps no events.
  if (family == Family::Varden) resources.push_back(table("events", eventFields()));
  resources.push_back(facts(family));
  return {{"profile", "data-package"},
          {"name", "wristlog-recording"},
          {"title", "A recording of a wrist-worn activity logger"},
          {"resources", resources}};
}

}  // namespace wristlog
