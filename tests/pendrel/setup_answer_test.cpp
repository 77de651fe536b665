#include "pendrel/setup_answer.h"

#include "varden/varden_support.h"

namespace hy_wristlog {
namespace {

SetupLines answer() {
  return {"", std::string(64, ' '), "04", "7F", "0100", "31 12 09 23 59", "01 06 30", "C9A.64.12ab.FF.03"};
}

PendrelRecord read(const SetupLines& lines) {
  PendrelRecord record;
  takeDeviceRecord(record, lines[7]);
  takeSetup(record, lines);
  return record;
}

/// What stands in a line's fields.
std::string fieldsOf(const PendrelRecord& r, std::size_t line) {
  switch (line) {
    case 2:
      return std::to_string(r.EpochLength);
    case 3:
      return std::to_string(r.SetupLine3Value);
    case 4:
      return std::to_string(r.BytesUsed);
    case 5:
      return textOf(r.StartDate) + " " + textOf(r.StartTime * 1440);
    case 6:
      return textOf(r.BatteryDate);
    default:
      return r.SerialNumber + " " + std::to_string(r.FirmwareVersion) + " " + std::to_string(r.MemorySizeKB) +
             " " + std::to_string(r.ActivityCalibration) + " " + std::to_string(r.Resets);
  }
}

TEST(PendrelSetupAnswer, ReadsEachLine) {
  // text=fields; a time of -1440 minutes is the unknown one.
  const std::pair<std::size_t, const char*> lines[] = {
      {2, "04=60|01=15|3Fxx=945|81=2|C1=5|c2=10|00=-1|40=-1|82=-1|4=-1|-4=-1| 4=-1|zz=-1|=-1"},
      {3, "..FF=255|0=-1|FG=-1"},
      {4, "0000=0|xx7FFF=32767|8000=32768|FF7F=65407|FF80=0|FFFF=0|100=-1|01 0=-1"},
      {5, "31 12 09 23 59=40178 1439|31/12/09T23:59=40178 1439|01 01 29 00 00=47119 0"},
      {5, "01 01 30 24 00=10959 -1440|31 02 09 12 60=39875 -1440| 1 1. 9  .5 3 =39814 3"},  // 3 March
      {5, "32 01 09 12 30=-1 750|00 01 09 12 30=-1 750|.9 01 09 12 30=-1 750|01 xx 09 12 30=-1 750"},
      {5, "01 13 09 12 -1=-1 -1440|01 00 09 xx 30=-1 -1440|01 01 -9 1  +2=-1 62"},
      {5, "31 12 09 23 5=-1 -1440|31 12 09 23 590=-1 -1440"},
      {6, "01 06 30=11110|01 06 3=-1|xx xx 09=-1|01 xx 09=-1|99 -- 09=-1|01    09=-1|01 13 09=-1"},
      {7, "C9A.64.12ab.FF.03=C9A12ab 154 64 100 3|B00.ff.0000.1F.FFrest=B000000 0 8 255 255"},
      {7, "Cxx.y0.0000.3F.-1=Cxx0000 0 16 0 -1|C9A.8=C9A 154 -1 0 -1|C9=C9 9 -1 0 -1|= 0 -1 0 -1"},
      {7, "\xEB\x39\x30.80.1234.7F.0=\xC3\xAB\x39\x30\x31\x32\x33\x34 144 32 128 -1"}};
  for (const auto& [line, cases] : lines) {
    std::istringstream rest(cases);
    for (std::string text, fields; std::getline(rest, text, '=') && std::getline(rest, fields, '|');) {
      SetupLines changed = answer();
      changed[line] = text;
      EXPECT_EQ(fieldsOf(read(changed), line), fields) << line << ": " << text;
    }
  }
}

TEST(PendrelSetupAnswer, WhatALoggerIsLimitsItsBytes) {
  SetupLines lines = answer();
  lines[7][0] = 'X';
  EXPECT_EQ(read(lines).BytesUsed, 0);
  lines[4] = "";
  EXPECT_EQ(read(lines).BytesUsed, -1);
}

}  // namespace
}  // namespace hy_wristlog
