#include "varden/config/config_check.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "base/numbers.h"
#include "hy_wristlog/failure.h"
#include "varden/config/config_codec.h"
#include "varden/config/config_text.h"

namespace hy_wristlog {
namespace {

constexpr std::string_view Unused = "Unused 2";

[[noreturn]] void refuse(const std::string& words) {
  throw Failure(FailureNumber::OutOfRange, "checkEditedConfig", words);
}

/// A record whose values are all valid, so that a failure is due to the one value that is put into it.
VardenRecord plainRecord() {
  VardenConfigBlock block;
  block.Version = 2;
  block.Button1Map = block.Button2Map = 1;
  VardenRecord record;
  applyConfigBlock(block, record);
  return record;
}

/// The record that a logger would give back after this one was sent to it.
VardenRecord keptOf(const VardenRecord& record) {
  const ByteArray sent = encodeConfigBlock(record);
  ByteArray block(ConfigBlockSize);
  std::copy_n(sent.begin(), ConfigBlockSize - ConfigSentFrom, block.begin() + ConfigSentFrom);
  VardenRecord kept;
  applyConfigBlock(readConfigBlock(block), kept);
  return kept;
}

const std::string& valueOf(const ConfigItems& items, std::string_view label) {
  return std::find_if(items.begin(), items.end(), [&](const auto& item) { return item.first == label; })
      ->second;
}

/// Whether two texts mean the same number. A text that is no number counts as the same.
bool isSameNumber(std::string_view asked, std::string_view kept) {
  const auto one = parseNumber(asked), other = parseNumber(kept);
  return !one || !other || *one == *other;
}

void checkValue(const std::string& label, const std::string& asked) {
  if (label == Unused && asked.empty()) return;
  IniFile file("");
  for (const auto& [other, value] : editableConfig(plainRecord()))
    file.setValue(ConfigDataSection, other, IniFile::quotedIfNeeded(other == label ? asked : value));
  VardenRecord record = plainRecord();
  readEditableConfig(file, record);
  const std::string kept = valueOf(editableConfig(keptOf(record)), label);
  if (kept != valueOf(editableConfig(record), label) || (label != Unused && !isSameNumber(asked, kept)))
    refuse(label + ": of \"" + asked + "\" a logger would keep \"" + kept + "\"");
  if (label == "Epoch Length" && record.EpochLength < 1) refuse(label + ": an epoch has at least one second");
}

}  // namespace

void checkEditedConfig(const IniFile& file) {
  for (const auto& item : editableConfig(plainRecord())) {
    const std::string& label = item.first;
    const std::string asked(file.value(ConfigDataSection, label).value_or(""));
    try {
      checkValue(label, asked);
    } catch (const Failure& failure) {
      if (failure.Description.find(label + ": ") != std::string::npos) throw;
      throw Failure(
          failure.Number, failure.Source,
          std::string(label).append(": \"").append(asked).append("\": ").append(failure.Description));
    }
  }
}

}  // namespace hy_wristlog
