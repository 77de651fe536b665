#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/linux_platform.h"
#include "platform/wrapped_platform.h"
#include "simulator/settings_store.h"

namespace hy_wristlog::fuzz {

/// The machine without its disk, its settings and its user: files lie in memory and go with the object, the
/// system's zones are read once. It stands beneath the worlds in which the fuzzers' targets work.
class QuietMachine : public platform::WrappedPlatform {
 public:
  QuietMachine() : WrappedPlatform(machine()) {}

  platform::Files& files() override { return files_; }
  platform::ZoneRecords& zones() override { return zones_; }
  platform::Environment& environment() override { return environment_; }
  platform::SettingsStore& settings() override { return settings_; }

 private:
  static const std::shared_ptr<platform::Platform>& machine() {
    static const auto machine = platform::makeLinuxPlatform();
    return machine;
  }

  /// Folders need not be there for a file in them.
  class MemoryFiles final : public platform::Files {
   public:
    platform::FileState state(const std::string& path) override {
      if (contents_.contains(path)) return {platform::FileKind::File};
      return {folders_.contains(path) ? platform::FileKind::Folder : platform::FileKind::Missing};
    }
    std::string readUpTo(std::size_t most, const std::string& path) override {
      const auto found = contents_.find(path);
      if (found == contents_.end()) throw platform::SystemError{2};
      if (found->second.size() > most) throw platform::SystemError{27};
      return found->second;
    }
    std::unique_ptr<platform::NewFile> create(const std::string& path) override {
      struct File final : platform::NewFile {
        File(std::string& into) : Into(into) {}
        void write(std::string_view piece) override { Text += piece; }
        void takePlace() override { Into = Text; }
        std::string& Into;
        std::string Text;
      };
      return std::make_unique<File>(contents_[path]);
    }
    bool remove(const std::string& path) override { return contents_.erase(path) > 0; }
    void makeFolder(const std::string& path, bool) override { folders_.insert(path); }

   private:
    std::map<std::string, std::string> contents_;
    std::set<std::string> folders_{"/quiet/folders", "/quiet/folders/library"};
  };

  class KeptZones final : public platform::ZoneRecords {
   public:
    std::vector<std::string> keys() override {
      static const auto keys = machine()->zones().keys();
      return keys;
    }
    platform::ZoneRecord read(std::string_view key) override {
      static std::map<std::string, platform::ZoneRecord, std::less<>> records;
      auto found = records.find(key);
      if (found == records.end())
        found = records.emplace(std::string(key), machine()->zones().read(key)).first;
      return found->second;
    }
    std::string localStandardName() override { return read("Eastern Standard Time").Standard; }
  };

  class QuietEnvironment final : public platform::Environment {
   public:
    std::string specialFolder(std::int32_t code) override { return "/quiet/folders/" + std::to_string(code); }
    std::string libraryFolder() override { return "/quiet/folders/library"; }
    std::string localeInfo(platform::LocaleItem item) override {
      switch (item) {
        case platform::LocaleItem::DecimalSeparator:
          return ".";
        case platform::LocaleItem::LongDate:
          return "dddd, MMMM dd, yyyy";
        case platform::LocaleItem::ShortDate:
          return "M/d/yyyy";
        case platform::LocaleItem::Time:
          return "h:mm:ss tt";
      }
      return {};
    }
    std::optional<std::string> variable(std::string_view) override { return std::nullopt; }
    std::string userName() override { return "tester"; }
    std::string fullName() override { return "Terry Tester"; }
    std::string domainName() override { return "LAB"; }
    std::string computerName() override { return "BENCH"; }
    std::string errorText(std::int32_t number) override { return machine()->environment().errorText(number); }
  };

  MemoryFiles files_;
  KeptZones zones_;
  QuietEnvironment environment_;
  simulator::MemorySettings settings_;
};

}  // namespace hy_wristlog::fuzz
