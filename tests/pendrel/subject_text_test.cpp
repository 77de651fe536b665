#include "pendrel/subject_text.h"

#include <cmath>
#include <limits>
#include <random>

#include "pendrel/Pendrel.h"
#include "varden/varden_support.h"

namespace hy_wristlog {
namespace {

using PendrelSubjectText = InSimulatedWorld;

constexpr char Packed[] = "ABEiM0RVZneImaq7zN3u/4EP/tQGqQK9";

PendrelRecord subject() {
  PendrelRecord record;
  record.SubjectIdentity = "Zo\xC3\xAB \xE2\x82\xAC";  // one byte a character on the wire
  record.SubjectInitials = "ABCD";
  record.SubjectGender = "male";
  record.AutoDSTadjust = true;
  record.TimeZoneAbbrev = "CST";
  record.SubjectGUID = "00112233445566778899aabbccddeeff";
  record.SubjectDOB = 33039.75;
  record.GMToffset = -300;
  record.SubjectHeight = 170.5F;
  record.SubjectWeight = 70.1F;
  return record;
}

/// "version identity|initials|gender|flag|zone|GUID born offset height weight"
std::string fieldsOf(const PendrelRecord& r) {
  return std::to_string(r.SubjectInfoVersion) + " " + r.SubjectIdentity + "|" + r.SubjectInitials + "|" +
         r.SubjectGender + "|" + (r.AutoDSTadjust ? "T|" : "F|") + r.TimeZoneAbbrev + "|" + r.SubjectGUID +
         " " + textOf(r.SubjectDOB) + " " + std::to_string(r.GMToffset) + " " + elementText(r.SubjectHeight) +
         " " + elementText(r.SubjectWeight);
}

TEST_F(PendrelSubjectText, EveryFieldHasItsPlace) {
  Pendrel logger;
  logger.record = subject();
  logger.subEncodeSubjectInfo();
  EXPECT_EQ(logger.record.SubjectInfo, "Zo\xEB \x80" + std::string(18, ' ') + "ABCmTCST" + Packed + "2");
  EXPECT_EQ(logger.record.SubjectInfoVersion, 2);

  Pendrel other;
  other.record.SubjectInfo = logger.record.SubjectInfo;
  other.subDecodeSubjectInfo();
  EXPECT_EQ(fieldsOf(other.record),
            "2 Zo\xC3\xAB \xE2\x82\xAC|ABC|m|T|CST|00112233445566778899AABBCCDDEEFF 33039 -300 170.5 70.1");
}

TEST_F(PendrelSubjectText, OddValuesAreWrittenAsTheyFit) {
  PendrelRecord record;
  record.SubjectIdentity = std::string(30, 'i');
  record.TimeZoneAbbrev = "UNKNOWN";
  record.SubjectDOB = record.SubjectHeight = record.SubjectWeight = -1;
  record.GMToffset = -32768;
  encodeSubjectText(record);
  EXPECT_EQ(record.SubjectInfo, std::string(23, 'i') + "    FUNK" + "AAAAAAAAAAAAAAAAAAAAAAD/gAD/9v/22");
  const std::pair<std::string, const char*> guids[] = {
      {"ABC", "AB0C"}, {"G15z", "0005"}, {"-1+2", "0000"}, {"\xC3\xAB\x31\x31\x32", "0012"}};
  for (const auto& [guid, begin] : guids) {
    record.SubjectGUID = guid;
    encodeSubjectText(record);
    decodeSubjectText(record);
    EXPECT_EQ(record.SubjectGUID, begin + std::string(28, '0')) << guid;
  }
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity(), 3e9, -3e9})
    for (const bool birth : {true, false}) {
      record = subject();
      birth ? record.SubjectDOB = bad : record.SubjectHeight = static_cast<float>(bad);
      EXPECT_EQ(raisedBy([&] { encodeSubjectText(record); }), "6 Overflow");
      EXPECT_EQ(record.SubjectInfo, "");
    }
}

TEST_F(PendrelSubjectText, DecodingEndsAtABadField) {
  const std::string good = "Anna" + std::string(19, ' ') + "A  " + "FTCST" + Packed + "2";
  const std::string gone = "| -1 -32768 -1 -1";
  // The position, counted from 1, and what is put there.
  const std::tuple<std::size_t, std::string, std::string> cases[] = {
      {64, "3", "-1 Anna|A|F|T|CST|00112233445566778899AABBCCDDEEFF 33039 -300 170.5 70.1"},
      {28, "t", "-1 Anna|A||F|" + gone},
      {29, "XXX", "-1 Anna|A|F|T|" + gone},
      {29, "cst", "-1 Anna|A|F|T|" + gone},
      {62, "==", "-1 Anna|A|F|T|CST" + gone},
      {1, std::string(26, ' '), "2  ||F|T|CST|00112233445566778899AABBCCDDEEFF 33039 -300 170.5 70.1"},
      {27, " FUNK" + std::string(32, '\xFF'),
       "2 Anna|A| |F|UNK|" + std::string(32, '0') + " 0 0 0 0"},  // what is no Base64 counts as "A"
      {64, "", "-1 |||F|" + gone},
      {64, "22", "-1 |||F|" + gone}};
  for (const auto& [position, text, fields] : cases) {
    PendrelRecord record = subject();
    record.AutoDSTadjust = false;
    record.SubjectInfo = good;
    record.SubjectInfo.replace(position - 1, std::max<std::size_t>(text.size(), 1), text);
    decodeSubjectText(record);
    EXPECT_EQ(fieldsOf(record), fields) << position << text;
  }
}

TEST_F(PendrelSubjectText, WhatWasDecodedIsEncodedAlike) {
  std::mt19937 random(7);
  const std::string_view base64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int round = 0; round < 20000; ++round) {
    std::string text(64, ' ');
    for (char& c : text) c = static_cast<char>(random());
    PendrelRecord record;
    record.SubjectInfo = text;
    decodeSubjectText(record);
    EXPECT_EQ(record.SubjectInfoVersion, -1);

    text.replace(27, 4, random() % 2 == 0 ? "TUNK" : "FROM");
    for (std::size_t i = 31; i < 63; ++i) text[i] = base64[random() % 64];
    text[63] = '2';
    record.SubjectInfo = text;
    decodeSubjectText(record);
    encodeSubjectText(record);
    EXPECT_EQ(record.SubjectInfo == text, record.TimeZoneAbbrev != "") << text;
  }
}

TEST_F(PendrelSubjectText, LoggerSeconds) {
  EXPECT_EQ(Pendrel::fncDateToLoggerSeconds(25570), 86400);
  EXPECT_EQ(Pendrel::fncLoggerSecondsToDate(86400), 25570);
  EXPECT_EQ(raisedBy([] { Pendrel::fncDateToLoggerSeconds(713.86518); }, true),
            "10103 Class_Pendrel.fncDateToLoggerSeconds: Date is before 12/13/1901 8:45:52 PM");
}

}  // namespace
}  // namespace hy_wristlog
