#include "varden/config/subject_codec.h"

#include <limits>

#include "base/code_page.h"
#include "varden/VardenLogger.h"
#include "varden_support.h"

namespace hy_wristlog {
namespace {

using SubjectCodecTest = InSimulatedWorld;

/// A text as a logger holds it, with these 19 characters from the gender on.
std::string subjectText(const std::string& end = "F061519900072201805") {
  return "2Anna" + std::string(60, ' ') + "AB " + std::string(32, '7') + end;
}

TEST_F(SubjectCodecTest, WritesEveryFieldAtItsPlace) {
  VardenLogger logger, other;
  VardenRecord& record = logger.record;
  record.SubjectIdentity = "Zo\xC3\xAB \xE2\x82\xAC";  // one byte a character on the wire
  record.SubjectInitials = "ABCD";
  record.SubjectGUID = std::string(40, 'G');
  record.SubjectGender = " male";
  record.SubjectDOB = 33039;  // 1990-06-15
  record.SubjectWeight = 70.1f;
  record.SubjectHeight = 180.55f;
  logger.subEncodeSubjectInfo();
  const std::string text = ansiTextFromUtf8(record.EncodedSetup);
  EXPECT_EQ(text, "2Zo\xEB \x80" + std::string(59, ' ') + "ABC" + std::string(32, 'G') +
                      "m061519900070101805" + std::string(9, '\0'));
  EXPECT_EQ(record.SubjectInfoVersion, 2);

  const PacketArray packets = logger.Get_SubjectPacket();
  ASSERT_TRUE(packets && packets->size() == 1 && packets->front().BinData.size() == 128);
  other.Let_SubjectPacket(packets);
  EXPECT_EQ(other.record.SubjectIdentity, record.SubjectIdentity);
  EXPECT_EQ(ansiTextFromUtf8(other.record.EncodedSetup).size(), 119u);  // cut at the filler

  record.EncodedSetup = utf8FromAnsiText(std::string(200, '\xEB'));
  EXPECT_EQ(seriesText(encodeSubjectBytes(record)), "235x127 0");
}

TEST_F(SubjectCodecTest, TenthsAndDatesInBothDirections) {
  const std::tuple<float, const char*, float> cases[] = {
      {72.25f, "00722", 72.2f}, {70.1f, "00701", 70.1f}, {9999.9f, "99999", 9999.9f}};
  for (const auto& [weight, written, read] : cases) {
    VardenRecord record;
    record.SubjectWeight = weight;
    record.SubjectDOB = -1;
    encodeSubjectText(record);
    EXPECT_EQ(record.EncodedSetup.substr(100, 19), "\\12291899" + std::string(written) + "00000");
    decodeSubjectText(record);
    EXPECT_EQ(record.SubjectWeight, read);
    EXPECT_EQ(record.SubjectDOB, -1);  // the day 1899-12-29
    EXPECT_EQ(record.SubjectIdentity, " ");
  }
  VardenRecord bad;
  bad.SubjectHeight = std::numeric_limits<float>::infinity();
  EXPECT_EQ(raisedBy([&] { encodeSubjectText(bad); }), "6 Overflow");
  bad.SubjectDOB = 1e9;
  EXPECT_EQ(raisedBy([&] { encodeSubjectText(bad); }), "5 Invalid procedure call or argument");
}

/// "version identity|initials|GUID|gender born weight height"
std::string decodedText(const std::string& text) {
  VardenRecord r;
  r.SubjectIdentity = r.SubjectInitials = r.SubjectGUID = r.SubjectGender = "old";
  r.EncodedSetup = text;
  decodeSubjectText(r);
  return std::to_string(r.SubjectInfoVersion) + " " + r.SubjectIdentity + "|" + r.SubjectInitials + "|" +
         r.SubjectGUID + "|" + r.SubjectGender + " " + textOf(r.SubjectDOB) + " " +
         elementText(r.SubjectWeight) + " " + elementText(r.SubjectHeight);
}

TEST_F(SubjectCodecTest, BadFieldsLeaveTheirMemberUnknown) {
  const std::pair<const char*, const char*> cases[] = {
      {"\\061519900072201805", " 33039 72.2 180.5"}, {" 023120010072201805", " 36953 72.2 180.5"},  // 3 March
      {"F        0072201805", "F -1 72.2 180.5"},    {"F130119900072201805", "F -1 72.2 180.5"},
      {"F063219900072201805", "F -1 72.2 180.5"},    {"F0615199x0072201805", "F -1 72.2 180.5"},
      {"F010100-10072201805", "F -1 72.2 180.5"},    {"F010100000072201805", "F 36526 72.2 180.5"},
      {"F06151990abcde01805", "F 33039 -1 180.5"},   {"F06151990  722     ", "F 33039 72.2 -1"},
      {"F061519909E30701805", "F 33039 -1 180.5"}};
  for (const auto& [end, fields] : cases)
    EXPECT_EQ(decodedText(subjectText(end)), "2 Anna|AB|" + std::string(32, '7') + "|" + fields);
  EXPECT_EQ(decodedText("x" + subjectText().substr(1)), "0 old|old|old|old -1 -1 -1");
  EXPECT_EQ(decodedText(subjectText().substr(0, 118)), "-1 ||| -1 -1 -1");
}

TEST_F(SubjectCodecTest, BadPackets) {
  VardenLogger other;
  EXPECT_EQ(outcome([&] { other.subDecodeSubjectPacket({}); }),
            "11503 Class_VardenLogger.subDecodeSubjectPacket: Invalid packet array input");
  EXPECT_EQ(outcome([&] { other.Let_SubjectPacket(std::vector<Class_Packet>{}); }),
            "11503 Let_SubjectPacket: Invalid packet array input");
  other.Let_SubjectPacket(PacketArray{{Class_Packet{}}});
  EXPECT_EQ(other.record.SubjectInfoVersion, -1);
}

}  // namespace
}  // namespace hy_wristlog
