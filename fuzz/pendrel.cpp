// A Pendrel logger: answers from a script, memory images, and the subject's text.
#include <algorithm>
#include <string>

#include "pendrel/Pendrel.h"
#include "pendrel/delayed_start.h"
#include "pendrel/setup_answer.h"
#include "pendrel/subject_text.h"
#include "support/far_end.h"
#include "support/logger_bytes.h"

namespace hy_wristlog::fuzz {
namespace {

constexpr std::string_view Lines[] = {
    "become C901234 144 64 60 1",
    "become B901234 144 64 15 2",
    "become C901234 143 8 # #",
    "become # # # # #",
    "calibration #",
    "used #",
    "image # # #",
    "poke # 00FE",
    "setup # 04",
    "subject Jo",
    "call setup",
    "call decode",
    "call prompt",
    "call block #",
    "call location #",
    "call set # #",
    "call clear #",
    "call reset",
    "call battery #",
    "call delay #",
    "call send #",
    "call subject",
    "on ***C",
    "on ***N00",
    "on ***N#0",
    "on ***O006D",
    "on ***L",
    "on \\r",
    "summed \\rx\\r04\\r00\\r0102\\r31 12 09 23 59\\r01 02 26\\rC90 80 1234 FF 07",
    "say \\r",
    "say 47\\r",
    "sum 006D47",
    "block # 0",
    "block # #",
    "say >",
    "late #",
    "mute",
    "error #",
    "gone #"};

struct PendrelConversation : Conversation {
  using Conversation::Conversation;

  void hold() {
    world.failureOf([&] { logger.fncOpenCOMport(7, false); });
    std::size_t calls = 0;
    for (const Line& line : script)
      if (!line.is("call") || ++calls <= MostCalls) obey(line);
    world.failureOf([&] { takeSetup(logger.record, setup); });
    world.failureOf([&] { takeDeviceRecord(logger.record, setup.back()); });
  }

 private:
  void obey(const Line& line) {
    PendrelRecord& record = logger.record;
    const auto number = [&](std::size_t index, std::int64_t least, std::int64_t most) {
      return static_cast<std::int32_t>(line.number(index, least, most));
    };
    if (line.is("become")) {
      record.SerialNumber = line.word(1);
      record.FirmwareVersion = static_cast<std::uint8_t>(line.number(2));
      record.MemorySizeKB = static_cast<std::int16_t>(number(3, -1, 600));
      record.EpochLength = static_cast<std::int16_t>(number(4, -32768, 32767));
      record.AcquisitionMode = static_cast<enmPDLoggingMode>(number(5, -2, 9));
      record.ActivityCalibration = 128;
      world.failureOf([&] { logger.subInitRawData(); });
    } else if (line.is("calibration")) {
      record.ActivityCalibration = static_cast<std::uint8_t>(line.number(1));
    } else if (line.is("used")) {
      record.BytesUsed = number(1, INT32_MIN, INT32_MAX);
    } else if (line.is("image")) {
      put(number(1, -2, 1000000), anyBytes(static_cast<std::size_t>(number(2, 0, 65536)), line.number(3)));
    } else if (line.is("poke")) {
      const auto bytes = Line("hex " + std::string(line.word(2))).bytes();
      put(number(1, -2, 1000000), bytes);
    } else if (line.is("setup")) {
      setup[static_cast<std::size_t>(number(1, 0, 7))] = Line(line.text()).text();
    } else if (line.is("subject")) {
      record.SubjectInfo = line.text();
      record.SubjectInfo.resize(64, ' ');
      checkSubject();
    } else if (line.is("call")) {
      failureOfCall([&] { call(line); });
    }
  }

  void put(std::int32_t at, std::span<const std::uint8_t> bytes) {
    world.failureOf(
        [&] { logger.subSetRawDataBlock(at, at + static_cast<std::int32_t>(bytes.size()) - 1, bytes); });
  }
  void call(const Line& line) {
    const std::string_view name = line.word(1);
    const auto value = static_cast<std::int32_t>(line.number(2));
    if (name == "setup") logger.fncReadSetup(), reached("setups read", 1);
    if (name == "prompt") logger.fncGetPrompt();
    if (name == "block")
      reached("blocks read", logger.fncReadMemoryBlock(static_cast<std::int16_t>(value)).empty() ? 0 : 1);
    if (name == "location") logger.fncReadMemoryLocation(value);
    if (name == "set") logger.subSetMemorylocation(value, static_cast<std::uint8_t>(line.number(3)));
    if (name == "clear") logger.subClearMemory(static_cast<std::uint8_t>(value));
    if (name == "reset") logger.subResetDevice();
    if (name == "battery") logger.subSendBatteryDate(line.real(2));
    if (name == "delay") logger.fncSendDelayedStart(46204.5 + line.real(2) / 86400);
    if (name == "send") logger.subSendSetup(value == 1);
    if (name == "subject") logger.subDecodeSubjectInfo(), checkSubject();
    if (name == "life") logger.fncBatteryLife(line.real(2));
    if (name == "decode") decode();
  }

  void decode() {
    PendrelRecord& record = logger.record;
    logger.subDecodeDataArrays();
    const auto samples = static_cast<std::size_t>(record.Samples);
    if (globals().ErrorStack.front()) return;
    require(record.ActivityArray.size() == samples && record.MarkerArray.size() == samples,
            "series of unequal length");
    require(record.StepsArray.size() == samples || record.StepsArray.size() == 1, "steps of another length");
    require(record.MarkerCount <= record.Samples, "more markers than samples");
    for (const std::int32_t counts : record.ActivityArray) require(counts <= 32767, "activity out of range");
    logger.Get_RawData(0);
    reached("epochs", record.Samples);
  }

  /// A subject that was read completely is written as it was read.
  void checkSubject() {
    PendrelRecord record = logger.record;
    world.failureOf([&] { decodeSubjectText(record); });
    if (record.SubjectInfoVersion != 2) return;
    PendrelRecord back = record;
    require(world.failureOf([&] { encodeSubjectText(back); }) == 0,
            "a subject that was read cannot be written");
    decodeSubjectText(back);
    require(back.SubjectIdentity == record.SubjectIdentity &&
                back.SubjectInitials == record.SubjectInitials &&
                back.SubjectGender == record.SubjectGender && back.SubjectGUID == record.SubjectGUID &&
                back.GMToffset == record.GMToffset && back.AutoDSTadjust == record.AutoDSTadjust &&
                back.TimeZoneAbbrev == record.TimeZoneAbbrev,
            "a subject written again differs");
    if (back.SubjectDOB != record.SubjectDOB) finding("another date of birth");
    if (back.SubjectHeight != record.SubjectHeight || back.SubjectWeight != record.SubjectWeight)
      finding("another height or weight");
    reached("subjects that went round", 1);
  }

  Pendrel logger;
  SetupLines setup;
};

}  // namespace

const std::span<const std::string_view> Grammar = Lines;

void run(std::string_view script) { PendrelConversation(script).hold(); }

}  // namespace hy_wristlog::fuzz
