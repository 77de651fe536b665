#include <gtest/gtest.h>

#include <numeric>

#include "base/dates.h"
#include "fake_world.h"
#include "tools/Class_Base64Class.h"
#include "tools/Class_Tools.h"

namespace hy_wristlog {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

class ToolsTest : public testing::Test {
 protected:
  fake::InWorld world_;
};

/// The bits of the polynomial division, one by one.
std::int32_t slowCrc(const Bytes& bytes) {
  std::uint32_t crc = 0;
  for (const std::uint8_t byte : bytes)
    for (int bit = 7; bit >= 0; --bit) {
      const bool out = ((crc >> 15U) & 1U) != ((byte >> bit) & 1U);
      crc = ((crc << 1U) & 0xFFFFU) ^ (out ? 0x1021U : 0U);
    }
  return static_cast<std::int32_t>(crc);
}

TEST_F(ToolsTest, Crc) {
  EXPECT_EQ(Tools().fncGetCRC16(bytesOf("123456789")), 0x31C3);
  EXPECT_EQ(Tools().fncGetCRC16(Bytes{0}), 0);
  Bytes bytes;
  for (int i = 0; i < 1100; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(i * 37 + i / 256));
    if (i % 7 != 0) continue;
    ASSERT_EQ(Tools().fncGetCRC16(bytes), slowCrc(bytes)) << i;
  }
  EXPECT_EQ(Tools().fncGetCRC16(std::span(bytes).first(0)), 0);
  EXPECT_EQ(fake::failureOf([] { Tools().fncGetCRC16({}); }).first, fault::Subscript);
}

TEST_F(ToolsTest, HexadecimalText) {
  EXPECT_EQ(Tools().fncConvertByteToHexString(0x0A), "0A");
  EXPECT_EQ(Tools().fncConvertByteArrayToHexString(Bytes{0, 10, 255}), "000AFF");

  GrowingArray<std::uint8_t> bytes;
  EXPECT_EQ(Tools().fncConvertByteArrayToHexString(bytes), "");
  bytes.redim(1, 2);
  EXPECT_EQ(fake::failureOf([&] { Tools().fncConvertByteArrayToHexString(bytes); }).first, fault::Subscript);
  bytes = Tools().fncConvertHexStringToByteArray("0aFf");
  EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), (Bytes{0x0A, 0xFF}));
  EXPECT_EQ(bytes.LBound(), 0);
  EXPECT_EQ(Tools().fncConvertByteArrayToHexString(bytes), "0AFF");
  for (const char* invalid : {"ABC", "ZZ", "00G0", "0g", " 0", "\u00E9"}) {
    const auto marker = Tools().fncConvertHexStringToByteArray(invalid);
    EXPECT_TRUE(marker.LBound() == -1 && marker.UBound() == -1 && marker[-1] == 0) << invalid;
  }
  EXPECT_EQ(fake::failureOf([] { Tools().fncConvertHexStringToByteArray(""); }).first, fault::Subscript);

  GrowingArray<NumberOrText> elements;
  for (NumberOrText element :
       std::vector<NumberOrText>{9.0, 254.6, 256.0, -1.0, 2.5, "17", "1-", "&HA", "xyz", "", "1,0", "300"})
    elements[fncRedimArray(elements, 0)] = element;
  EXPECT_EQ(Tools().fncConvertByteArrayToHexString(elements), "09FF02110Axyz0A");
  elements[0] = 3e9;
  EXPECT_EQ(fake::failureOf([&] { Tools().fncConvertByteArrayToHexString(elements); }).first,
            fault::Overflow);
}

TEST_F(ToolsTest, HexadecimalNumbers) {
  const struct {
    const char* Text;
    std::int32_t Value;
    const char* Upper;
  } cases[] = {{"ff", 255, "FF"},
               {"", 0, ""},
               {"0", 0, "0"},
               {"FFFF", 65535, "FFFF"},
               {"7fffffff", INT32_MAX, "7FFFFFFF"},
               {"80000000", INT32_MIN, "80000000"},
               {"FFFFFFFF", -1, "FFFFFFFF"},
               {"00000000001", 1, "00000000001"},
               {"0x1f", 0, "0X1F"},
               {"-1", 0, "-1"}};
  for (const auto& c : cases) {
    std::string text = c.Text;
    EXPECT_EQ(Tools().fncConvertHexStringToLong(text), c.Value) << c.Text;
    EXPECT_EQ(text, c.Upper);
  }
  std::string tooLong = "1ffffffff";
  EXPECT_EQ(fake::failureOf([&] { Tools().fncConvertHexStringToLong(tooLong); }).first, fault::Overflow);

  EXPECT_EQ(Tools().fncConvertSignedCharToInt(0xFF), -1);
  for (std::int16_t value = -128; value <= 127; ++value)
    EXPECT_EQ(Tools().fncConvertSignedCharToInt(Tools().fncConvertIntToSignedChar(value)), value);
  for (std::int16_t value : {std::int16_t{128}, std::int16_t{-129}, std::int16_t{INT16_MIN}})
    EXPECT_EQ(fake::failureOf([&] { Tools().fncConvertIntToSignedChar(value); }),
              std::pair(11201, std::string("Input value out of bounds")));
}

TEST_F(ToolsTest, Fields) {
  auto fields = Tools().fncParseString("1,abc,,2.5", 1, ",");
  EXPECT_EQ(std::vector<NumberOrText>(fields.begin(), fields.end()),
            (std::vector<NumberOrText>{1.0, "abc", "", 2.5}));
  EXPECT_EQ(fields.LBound(), 1);
  const struct {
    const char *Text, *Delimiter;
    std::int16_t LowerBound;
    std::vector<NumberOrText> Fields;
  } cases[] = {
      {"", ",", 1, {""}},
      {"a,", ",", 0, {"a"}},
      {",a", ",", 0, {"", "a"}},
      {"a--b--", "--", 0, {"a", "-b", "-"}},
      {"a,b", ",", -1, {0.0, "a", "b"}},
      {"1;1,5;&HFF; 7 ", ";", 0, {1.0, 1.0, 0.0, 7.0}},
      {"ab", "", 0, {"", ""}},
  };
  for (const auto& c : cases) {
    fields = Tools().fncParseString(c.Text, c.LowerBound, c.Delimiter);
    EXPECT_EQ(std::vector(fields.begin(), fields.end()), c.Fields) << c.Text;
  }
  auto kept = Tools().fncParseStringKeepString("1,abc,,2.5", 1, ",");
  EXPECT_EQ(std::vector(kept.begin(), kept.end()), (std::vector<std::string>{"1", "abc", "2.5"}));
  EXPECT_EQ(kept.LBound(), 1);
  EXPECT_FALSE(Tools().fncParseStringKeepString("", 1, ",").isArray());
}

TEST_F(ToolsTest, Lines) {
  const struct {
    const char *Text, *Delimiter;
    std::vector<std::string> Lines;
  } cases[] = {
      {"ab|cd|e", "|", {"ab", "cd"}},
      {"ab|cd|ef", "|", {"ab", "cd", "ef"}},
      {"||x|", "|", {"", "", "x"}},
      {"a<>b<>cd", "<>", {"a", "b", "cd"}},
      {"a|\u00E9", "|", {"a"}},
      {"a|\u00E9\u00E9", "|", {"a", "\u00E9\u00E9"}},
      {"", "|", {}},
  };
  for (const auto& c : cases) {
    auto lines = Tools().fncStringToLineArray(c.Text, c.Delimiter);
    EXPECT_EQ(std::vector(lines.begin(), lines.end()), c.Lines) << c.Text;
    EXPECT_EQ(lines.isArray(), !c.Lines.empty());
    EXPECT_TRUE(!lines.isArray() || lines.LBound() == 1);
  }
  EXPECT_EQ(fake::failureOf([] { Tools().fncStringToLineArray("ab", ""); }).first, fault::InvalidCall);

  const std::pair<const char*, const char*> joined[] = {
      {"ab\r\ncd", "ab cd"}, {"ab\r\nc", "ab"}, {"a", ""}, {"ab", "ab"}, {" a\r\n\r\nb\r\n", "a  b"}};
  for (const auto& [text, result] : joined) EXPECT_EQ(Tools().fncStripVbCrLf(text), result);
  EXPECT_EQ(Tools().fncStripBlanksForFileName("a b/c:d\t\x7F\u00E9\\*?~"), "a_b_c_d\\*?~");
  EXPECT_EQ(Tools().fncTrimNull(std::string_view("ab\0c", 4)), "ab");
}

TEST_F(ToolsTest, CeilingAndAge) {
  const std::pair<double, double> ceilings[] = {{2.0, 2}, {2.1, 3}, {-2.1, -2}, {-1.5, -1}, {-2, -2}};
  for (const auto& [value, ceiling] : ceilings) EXPECT_EQ(Tools().fncTrueCeiling(value), ceiling);

  const auto day = [](std::int32_t y, std::int32_t m, std::int32_t d) { return dateSerial(y, m, d); };
  const struct {
    double From, To;
    int Years;
  } cases[] = {
      {day(2000, 6, 15), day(2010, 6, 14), 9},
      {day(2000, 6, 15), day(2010, 6, 15), 10},
      {day(2000, 6, 15) + 0.9, day(2010, 6, 15) + 0.1, 10},
      {day(2000, 2, 29), day(2011, 2, 28), 10},
      {day(2000, 2, 29), day(2011, 3, 1), 11},
      {day(2000, 2, 29), day(2012, 2, 29), 12},
      {day(1890, 6, 15) - 0.5, day(1895, 6, 15) - 0.25, 5},
      {day(2010, 1, 1), day(2009, 12, 31), -1},
      {0, day(2010, 1, 1), 0},
  };
  for (const auto& c : cases) EXPECT_EQ(Tools().fncAgeDiff(c.From, c.To), c.Years) << c.From;
  EXPECT_EQ(fake::failureOf([] { Tools().fncAgeDiff(1e9, 1); }).first, fault::InvalidCall);
}

TEST_F(ToolsTest, GrowingArrays) {
  GrowingArray<int> array;
  EXPECT_EQ(fake::failureOf([&] { array.UBound(); }).first, fault::Subscript);
  for (int expected : {1, 2, 3}) EXPECT_EQ(Tools().fncRedimArray(array), expected);
  array[3] = 7;
  EXPECT_EQ(fake::failureOf([&] { array[0] = 1; }).first, fault::Subscript);
  EXPECT_EQ(fake::failureOf([&] { array[4] = 1; }).first, fault::Subscript);
  EXPECT_EQ(fake::failureOf([&] { fncRedimArray(array, 0); }).first, fault::Subscript);
  EXPECT_EQ(fncRedimArray(array, 5), 5);
  EXPECT_EQ(array.LBound(), 5);

  array.erase();
  EXPECT_EQ(fncRedimArray(array, -1), 1);
  EXPECT_EQ(array.LBound(), 0);
  array[0] = 9;
  EXPECT_EQ(fncRedimArray(array, -1), 2);
  EXPECT_EQ(array[0], 9);
  array.redim(0, 0);
  EXPECT_EQ(fncRedimArray(array, -1), 1);
  array.redim(-1, -1);
  EXPECT_EQ(fake::failureOf([&] { fncRedimArray(array, -1); }).first, fault::Subscript);
}

TEST_F(ToolsTest, DelaysServeEvents) {
  const double start = world_->TheClock.Now;
  Tools().subDelay(250);
  EXPECT_DOUBLE_EQ(world_->TheClock.Now, start + 0.25);
  EXPECT_EQ(world_->TheHost->Served, 1);
  Tools().subDelay(-5);
  EXPECT_DOUBLE_EQ(world_->TheClock.Now, start + 0.25);

  world_->TheHost->Served = 0;
  Tools().subDelay(2000, 500.0);
  EXPECT_NEAR(world_->TheClock.Now, start + 2.25, 0.002);
  EXPECT_EQ(world_->TheClock.Sleeps, 1);
  EXPECT_NEAR(world_->TheHost->Served, 4, 1);
  EXPECT_EQ(Tools().fncGetErrorStringFromDLLerrorNum(5), "words for 5");
}

TEST(Base64, EncodesAndDecodes) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},        {"f", "Zg=="},          {"fo", "Zm8="},
      {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {"\xFB\xFF\xFE", "+//+"}};
  for (const auto& [plain, text] : cases) {
    EXPECT_EQ(Class_Base64Class::fncEncodeByteArray(bytesOf(plain)), text);
    EXPECT_EQ(Class_Base64Class::fncDecodeToByteArray(text), bytesOf(plain)) << text;
  }
  for (std::size_t size : {24U, 56U, 57U, 58U, 114U, 200U}) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(200));
    const std::string text = Class_Base64Class::fncEncodeByteArray(bytes);
    EXPECT_EQ(text.size(), (size + 2) / 3 * 4 + (size - 1) / 57 * 2) << size;
    EXPECT_EQ(text.find("\r\n"), size > 57 ? 76U : std::string::npos);
    EXPECT_EQ(Class_Base64Class::fncDecodeToByteArray(text), bytes) << size;
  }
  const std::pair<const char*, const char*> odd[] = {{"Zm8", ""},       {"====", ""},   {"Z===", ""},
                                                     {"Zm9vYm", "foo"}, {"Z=m8", "fo"}, {"*m9v", "\x02oo"}};
  for (const auto& [text, plain] : odd)
    EXPECT_EQ(Class_Base64Class::fncDecodeToByteArray(text), bytesOf(plain)) << text;
}

TEST_F(ToolsTest, Identifiers) {
  EXPECT_EQ(Tools().fncCreateGUID(), "FFFFFFFFFFFF4FFFBFFFFFFFFFFFFFFF");
  world_->TheCryptography.Random = 0;
  EXPECT_EQ(Tools().fncCreateGUID(), "00000000000040008000000000000000");
  EXPECT_EQ(Tools().fncGenerateMD5hash("\u20AC\u00E9"), "D41D" + std::string(28, '0'));
  EXPECT_EQ(world_->TheCryptography.Hashed, (Bytes{0x80, 0xE9}));
  world_->TheCryptography.Error = EIO;
  EXPECT_EQ(fake::failureOf([] { Tools().fncGenerateMD5hash(""); }),
            std::pair(EIO, std::string("Error Getting Hash")));
  EXPECT_EQ(fake::failureOf([] { Tools().fncCreateGUID(); }).first, EIO);
}

}  // namespace
}  // namespace hy_wristlog
