#include "varden/subject_codec.h"

#include <gtest/gtest.h>

#include "base/code_page.h"
#include "codec_world.h"
#include "varden/VardenLogger.h"

namespace hy_wristlog {
namespace {

using SubjectCodecTest = InCodecWorld;

/// A text as a logger holds it.
std::string subjectText(const std::string& gender = "F", const std::string& born = "06151990",
                        const std::string& weight = "00722", const std::string& height = "01805") {
  std::string text =
      "2Anna" + std::string(60, ' ') + "AB " + std::string(32, '7') + gender + born + weight + height;
  return text;
}

TEST_F(SubjectCodecTest, WritesEveryFieldAtItsPlace) {
  VardenRecord record;
  record.SubjectIdentity = "Zo\xC3\xAB \xE2\x82\xAC";  // one byte a character on the wire
  record.SubjectInitials = "ABCD";
  record.SubjectGUID = std::string(40, 'G');
  record.SubjectGender = " male";
  record.SubjectDOB = 33039;  // 1990-06-15
  record.SubjectWeight = 70.1f;
  record.SubjectHeight = 180.55f;
  encodeSubjectText(record);
  const std::string text = ansiTextFromUtf8(record.EncodedSetup);
  EXPECT_EQ(text, "2Zo\xEB \x80" + std::string(59, ' ') + "ABC" + std::string(32, 'G') + "m06151990" +
                      "00701" + "01805" + std::string(9, '\0'));
  EXPECT_EQ(record.SubjectInfoVersion, 2);
  const auto bytes = encodeSubjectBytes(record);
  ASSERT_EQ(bytes.size(), 128u);
  EXPECT_TRUE(std::equal(bytes.begin(), bytes.end() - 1, text.begin(),
                         [](std::uint8_t byte, char c) { return byte == static_cast<std::uint8_t>(c); }));
  EXPECT_EQ(bytes.back(), 0);

  record.EncodedSetup = utf8FromAnsiText(std::string(200, '\xEB'));
  EXPECT_EQ(encodeSubjectBytes(record)[126], 0xEB);
  EXPECT_EQ(encodeSubjectBytes(record)[127], 0);
}

TEST_F(SubjectCodecTest, TenthsAndDatesInBothDirections) {
  struct {
    float Weight;
    const char* Written;
    float Read;
  } const cases[] = {{72.25f, "00722", 72.2f},
                     {70.1f, "00701", 70.1f},
                     {0, "00000", 0},
                     {0.09f, "00000", 0},
                     {9999.9f, "99999", 9999.9f}};
  for (const auto& c : cases) {
    VardenRecord record;
    record.SubjectWeight = c.Weight;
    record.SubjectDOB = -1;
    encodeSubjectText(record);
    EXPECT_EQ(record.EncodedSetup.substr(101, 8), "12291899");
    EXPECT_EQ(record.EncodedSetup.substr(109, 5), c.Written);
    EXPECT_EQ(record.EncodedSetup.substr(100, 1), "\\");
    decodeSubjectText(record);
    EXPECT_EQ(record.SubjectWeight, c.Read);
    EXPECT_EQ(record.SubjectHeight, 0);
    EXPECT_EQ(record.SubjectDOB, -1);  // the day 1899-12-29
    EXPECT_EQ(record.SubjectIdentity, " ");
    EXPECT_EQ(record.SubjectGender, "");
  }
  VardenRecord bad;
  bad.SubjectHeight = std::numeric_limits<float>::infinity();
  EXPECT_EQ(failureOf([&] { encodeSubjectText(bad); }), 6);
  bad.SubjectDOB = 1e9;
  EXPECT_EQ(failureOf([&] { encodeSubjectText(bad); }), 5);
  EXPECT_EQ(bad.EncodedSetup, "");
}

TEST_F(SubjectCodecTest, BadFieldsLeaveTheirMemberUnknown) {
  struct {
    std::string Text;
    std::string Gender;
    double Born;
    float Weight, Height;
  } const cases[] = {
      {subjectText(), "F", 33039, 72.2f, 180.5f},
      {subjectText("\\"), "", 33039, 72.2f, 180.5f},
      {subjectText(" "), "", 33039, 72.2f, 180.5f},
      {subjectText("F", "02312001"), "F", 36953, 72.2f, 180.5f},  // 3 March
      {subjectText("F", "        "), "F", -1, 72.2f, 180.5f},
      {subjectText("F", "13011990"), "F", -1, 72.2f, 180.5f},
      {subjectText("F", "00151990"), "F", -1, 72.2f, 180.5f},
      {subjectText("F", "06321990"), "F", -1, 72.2f, 180.5f},
      {subjectText("F", "0615199x"), "F", -1, 72.2f, 180.5f},
      {subjectText("F", "01019999"), "F", 2958101, 72.2f, 180.5f},
      {subjectText("F", "010100-1"), "F", -1, 72.2f, 180.5f},
      {subjectText("F", "01010000"), "F", 36526, 72.2f, 180.5f},
      {subjectText("F", "06151990", "abcde"), "F", 33039, -1, 180.5f},
      {subjectText("F", "06151990", "  722", "     "), "F", 33039, 72.2f, -1},
      {subjectText("F", "06151990", "9E307"), "F", 33039, -1, 180.5f},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Text);
    VardenRecord record;
    record.EncodedSetup = c.Text;
    decodeSubjectText(record);
    EXPECT_EQ(record.SubjectInfoVersion, 2);
    EXPECT_EQ(record.SubjectIdentity, "Anna");
    EXPECT_EQ(record.SubjectInitials, "AB");
    EXPECT_EQ(record.SubjectGUID, std::string(32, '7'));
    EXPECT_EQ(record.SubjectGender, c.Gender);
    EXPECT_EQ(record.SubjectDOB, c.Born);
    EXPECT_EQ(record.SubjectWeight, c.Weight);
    EXPECT_EQ(record.SubjectHeight, c.Height);
  }
}

TEST_F(SubjectCodecTest, UnusableTexts) {
  VardenRecord record;
  record.SubjectIdentity = record.SubjectInitials = record.SubjectGUID = record.SubjectGender = "old";
  record.EncodedSetup = subjectText();
  record.EncodedSetup[0] = 'x';
  decodeSubjectText(record);
  EXPECT_EQ(record.SubjectInfoVersion, 0);
  EXPECT_EQ(record.SubjectIdentity, "old");
  EXPECT_EQ(record.SubjectDOB, -1);
  EXPECT_EQ(record.SubjectWeight, -1);

  record.EncodedSetup = subjectText().substr(0, 118);
  decodeSubjectText(record);
  EXPECT_EQ(record.SubjectInfoVersion, -1);
  EXPECT_EQ(record.SubjectIdentity + record.SubjectInitials + record.SubjectGUID + record.SubjectGender, "");
  EXPECT_EQ(record.SubjectHeight, -1);
}

TEST_F(SubjectCodecTest, PacketsCarryTheText) {
  VardenLogger logger, other;
  logger.record.SubjectIdentity = "Zo\xC3\xAB";
  logger.record.SubjectDOB = 33039;
  logger.subEncodeSubjectInfo();
  const auto packets = logger.Get_SubjectPacket();
  ASSERT_TRUE(packets && packets->size() == 1);
  EXPECT_EQ(packets->front().PacketSize, 1);
  EXPECT_EQ(packets->front().PacketNum, 1);
  other.Let_SubjectPacket(packets);
  EXPECT_EQ(other.record.SubjectIdentity, "Zo\xC3\xAB");
  EXPECT_EQ(other.record.SubjectDOB, 33039);
  EXPECT_EQ(ansiTextFromUtf8(other.record.EncodedSetup).size(), 119u);  // cut at the filler

  for (const PacketArray& none : {PacketArray{}, PacketArray{std::vector<Class_Packet>{}}}) {
    std::string text, source;
    EXPECT_EQ(failureOf([&] { other.Let_SubjectPacket(none); }, &text, &source), 11503);
    EXPECT_EQ(text, "Invalid packet array input");
    EXPECT_NE(source.find("Class_VardenLogger.subDecodeSubjectPacket"), std::string::npos);
  }
  other.Let_SubjectPacket(PacketArray{{Class_Packet{}}});
  EXPECT_EQ(other.record.SubjectInfoVersion, -1);
}

}  // namespace
}  // namespace hy_wristlog
