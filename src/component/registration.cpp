#include "component/registration.h"

#include <cstdio>
#include <string>

#include "component/members.h"
#include "platform/platform.h"
#include "tools/Class_Registry.h"

namespace hy_wristlog::component {
namespace {

constexpr std::int32_t Root = Class_Registry::ClassesRoot;
constexpr char ClassesKey[] = "CLSID";

platform::SettingsStore& store() { return platform::current().settings(); }

void write(const std::string& key, const std::string& name, const std::string& text) {
  platform::SettingValue value;
  value.Data.assign(text.begin(), text.end());
  value.Data.push_back(0);
  store().write(Root, key, name, value);
}

std::string textOf(const HyGuid& id) {
  char text[40];
  const auto* d = id.Data4;
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", id.Data1, id.Data2,
                id.Data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
  return text;
}

std::string programId(const ClassTable& table) { return std::string("HY_Wristlog.") + table.Name; }
std::string classKey(const ClassTable& table) {
  return std::string(ClassesKey) + "\\" + textOf(table.ClassId);
}

std::string libraryFile() {
  return platform::current().environment().libraryFolder() + "/libhy_wristlog.so." +
         std::to_string(WRISTLOG_VERSION_MAJOR);
}

void writeClass(const ClassTable& table) {
  const std::string key = classKey(table), name = programId(table);
  write(key, "", name);
  write(key + "\\ProgID", "", name);
  write(key + "\\InprocServer32", "", libraryFile());
  write(key + "\\InprocServer32", "ThreadingModel", "Apartment");
  write(name, "", name);
  write(name + "\\CLSID", "", textOf(table.ClassId));
}

void deleteWhenEmpty(const std::string& key) {
  if (store().keyExists(Root, key) && store().subkeys(Root, key).empty() &&
      store().valueNames(Root, key).empty())
    store().deleteKey(Root, key);
}

}  // namespace

bool registerClasses() {
  try {
    for (const ClassTable* table : Classes) writeClass(*table);
    return true;
  } catch (...) {
    unregisterClasses();
    return false;
  }
}

bool unregisterClasses() {
  try {
    for (const ClassTable* table : Classes) {
      store().deleteKey(Root, classKey(*table));
      store().deleteKey(Root, programId(*table));
    }
    deleteWhenEmpty(ClassesKey);
    deleteWhenEmpty("");
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace hy_wristlog::component
