#include <cerrno>
#include <set>

#include "base/dates.h"
#include "simulator/checksum.h"
#include "tools/Class_Base64Class.h"
#include "tools/tools_test.h"

namespace hy_wristlog {
namespace {

template <class T>
std::vector<T> elementsOf(const GrowingArray<T>& array) {
  return {array.begin(), array.end()};
}

TEST_F(ToolsTest, Crc) {
  EXPECT_EQ(Tools().fncGetCRC16(bytesOf("123456789")), 0x31C3);
  std::string text;
  for (int i = 0; i < 1100; ++i) text += static_cast<char>(i * 37 + i / 256);
  const Bytes bytes = bytesOf(text);
  EXPECT_EQ(Tools().fncGetCRC16(bytes), simulator::checksum(text));
  EXPECT_EQ(Tools().fncGetCRC16(std::span(bytes).first(0)), 0);
  EXPECT_EQ(numberOf([] { Tools().fncGetCRC16({}); }), fault::Subscript);
}

TEST_F(ToolsTest, HexadecimalText) {
  GrowingArray<std::uint8_t> bytes;
  EXPECT_EQ(Tools().fncConvertByteArrayToHexString(bytes), "");
  bytes.redim(1, 2);
  EXPECT_EQ(numberOf([&] { Tools().fncConvertByteArrayToHexString(bytes); }), fault::Subscript);
  bytes = Tools().fncConvertHexStringToByteArray("0aFf");
  EXPECT_EQ(elementsOf(bytes), (Bytes{0x0A, 0xFF}));
  EXPECT_EQ(bytes.LBound(), 0);
  EXPECT_EQ(Tools().fncConvertByteArrayToHexString(bytes), "0AFF");
  for (const char* invalid : {"ABC", "ZZ", "0g", " 0", "\u00E9"}) {
    const auto marker = Tools().fncConvertHexStringToByteArray(invalid);
    EXPECT_TRUE(marker.LBound() == -1 && marker.UBound() == -1 && marker[-1] == 0) << invalid;
  }
  EXPECT_EQ(numberOf([] { Tools().fncConvertHexStringToByteArray(""); }), fault::Subscript);

  GrowingArray<NumberOrText> elements;
  for (NumberOrText element :
       std::vector<NumberOrText>{9.0, 254.6, 256.0, -1.0, 2.5, "17", "1-", "&HA", "xyz", "", "1,0", "300"})
    elements[fncRedimArray(elements, 0)] = element;
  EXPECT_EQ(Tools().fncConvertByteArrayToHexString(elements), "09FF02110Axyz0A");
  elements[0] = 3e9;
  EXPECT_EQ(numberOf([&] { Tools().fncConvertByteArrayToHexString(elements); }), fault::Overflow);
}

TEST_F(ToolsTest, HexadecimalNumbers) {
  const auto value = [](std::string text) { return Tools().fncConvertHexStringToLong(text); };
  EXPECT_TRUE(value("7fffffff") == INT32_MAX && value("80000000") == INT32_MIN && value("FFFFFFFF") == -1);
  EXPECT_TRUE(value("00000000001") == 1 && value("-1") == 0 && value("") == 0);
  EXPECT_EQ(numberOf([&] { value("1ffffffff"); }), fault::Overflow);
  std::string text = "0x1f";
  EXPECT_EQ(Tools().fncConvertHexStringToLong(text), 0);
  EXPECT_EQ(text, "0X1F");

  for (std::int16_t value = -128; value <= 127; ++value)
    EXPECT_EQ(Tools().fncConvertSignedCharToInt(Tools().fncConvertIntToSignedChar(value)), value);
  for (const int value : {128, -129})
    EXPECT_EQ(failureOf([&] { Tools().fncConvertIntToSignedChar(static_cast<std::int16_t>(value)); }),
              std::pair(11201, std::string("Input value out of bounds")));
}

TEST_F(ToolsTest, Fields) {
  // clang-format off
  const std::tuple<const char*, const char*, std::int16_t, std::vector<NumberOrText>> cases[] = {
      {"1,abc,,2.5", ",", 1, {1.0, "abc", "", 2.5}}, {"", ",", 1, {""}}, {"a,", ",", 0, {"a"}},
      {",a", ",", 0, {"", "a"}}, {"a--b--", "--", 0, {"a", "-b", "-"}}, {"a,b", ",", -1, {0.0, "a", "b"}},
      {"1;1,5;&HFF; 7 ", ";", 0, {1.0, 1.0, 0.0, 7.0}}, {"ab", "", 0, {"", ""}}};
  // clang-format on
  for (const auto& [text, delimiter, bound, expected] : cases) {
    const auto fields = Tools().fncParseString(text, bound, delimiter);
    EXPECT_EQ(elementsOf(fields), expected) << text;
    EXPECT_EQ(fields.LBound(), std::max<int>(bound, 0));
  }
  const auto kept = Tools().fncParseStringKeepString("1,abc,,2.5", 1, ",");
  EXPECT_EQ(elementsOf(kept), (std::vector<std::string>{"1", "abc", "2.5"}));
  EXPECT_FALSE(Tools().fncParseStringKeepString("", 1, ",").isArray());
}

TEST_F(ToolsTest, Lines) {
  const std::tuple<const char*, const char*, std::vector<std::string>> cases[] = {
      {"ab|cd|e", "|", {"ab", "cd"}},       {"||x|", "|", {"", "", "x"}},
      {"a<>b<>cd", "<>", {"a", "b", "cd"}}, {"a|\u00E9", "|", {"a"}},
      {"a|\u00E9x", "|", {"a", "\u00E9x"}}, {"", "|", {}}};
  for (const auto& [text, delimiter, expected] : cases) {
    const auto lines = Tools().fncStringToLineArray(text, delimiter);
    EXPECT_EQ(elementsOf(lines), expected) << text;
    EXPECT_EQ(lines.isArray() ? lines.LBound() : 0, expected.empty() ? 0 : 1);
  }
  EXPECT_EQ(numberOf([] { Tools().fncStringToLineArray("ab", ""); }), fault::InvalidCall);

  const std::pair<const char*, const char*> joined[] = {
      {"ab\r\ncd", "ab cd"}, {"ab\r\nc", "ab"}, {"a", ""}, {" a\r\n\r\nb\r\n", "a  b"}};
  for (const auto& [text, result] : joined) EXPECT_EQ(Tools().fncStripVbCrLf(text), result);
  EXPECT_EQ(Tools().fncStripBlanksForFileName("a b/c:d\t\x7F\u00E9\\*?~"), "a_b_c_d\\*?~");
}

TEST_F(ToolsTest, CeilingAndAge) {
  const std::pair<double, double> ceilings[] = {{2.0, 2}, {2.1, 3}, {-2.1, -2}, {-2, -2}};
  for (const auto& [value, ceiling] : ceilings) EXPECT_EQ(Tools().fncTrueCeiling(value), ceiling);

  const auto& day = dateSerial;
  const std::tuple<double, double, int> ages[] = {
      {day(2000, 6, 15), day(2010, 6, 14), 9},  {day(2000, 6, 15) + 0.9, day(2010, 6, 15) + 0.1, 10},
      {day(2000, 2, 29), day(2011, 2, 28), 10}, {day(2000, 2, 29), day(2011, 3, 1), 11},
      {day(2000, 2, 29), day(2012, 2, 29), 12}, {day(1890, 6, 15) - 0.5, day(1895, 6, 15) - 0.25, 5},
      {day(2010, 1, 1), day(2009, 12, 31), -1}, {0, day(2010, 1, 1), 0}};
  for (const auto& [from, to, years] : ages) EXPECT_EQ(Tools().fncAgeDiff(from, to), years) << from;
  EXPECT_EQ(numberOf([] { Tools().fncAgeDiff(1e9, 1); }), fault::InvalidCall);
}

TEST_F(ToolsTest, GrowingArrays) {
  GrowingArray<int> array;
  const auto refuses = [](auto action) { return numberOf(action) == fault::Subscript; };
  for (int expected : {1, 2, 3}) EXPECT_EQ(Tools().fncRedimArray(array), expected);
  EXPECT_TRUE(refuses([&] { array[0] = 1; }) && refuses([&] { array[4] = 1; }));
}

TEST_F(ToolsTest, DelaysServeEvents) {
  Tools().subDelay(250);
  EXPECT_EQ(host_->Served, 1);
  Tools().subDelay(-5);
  EXPECT_DOUBLE_EQ(world_->elapsed(), 0.25);
  host_->Served = 0;
  Tools().subDelay(2000, 500.0);
  EXPECT_NEAR(world_->elapsed(), 2.25, 0.002);
  EXPECT_NEAR(host_->Served, 4, 1);
}

TEST(Base64, EncodesAndDecodes) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\xFB\xFF\xFE", "+//+"}};
  for (const auto& [plain, text] : cases) {
    EXPECT_EQ(Class_Base64Class::fncEncodeByteArray(bytesOf(plain)), text);
    EXPECT_EQ(Class_Base64Class::fncDecodeToByteArray(text), bytesOf(plain)) << text;
  }
  for (const std::size_t size : {57U, 58U, 114U, 200U}) {
    const Bytes bytes(size, 0xA7);
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
  std::set<std::string> seen;
  for (int i = 0; i < 64; ++i) {
    const std::string guid = *seen.insert(Tools().fncCreateGUID()).first;
    EXPECT_TRUE(guid.size() == 32 && guid.find_first_not_of("0123456789ABCDEF") == std::string::npos) << guid;
    EXPECT_TRUE(guid[12] == '4' && std::string_view("89AB").find(guid[16]) != std::string::npos) << guid;
  }
  EXPECT_EQ(seen.size(), 64U);
  EXPECT_EQ(Tools().fncGenerateMD5hash(""), "D41D8CD98F00B204E9800998ECF8427E");
  EXPECT_EQ(Tools().fncGenerateMD5hash("\u20AC\u00E9"), "9DDFA4260A1BDEB1F9B7F8ADE790F4F2");
  world_->Faults.Cryptography = {EIO, simulator::always()};
  EXPECT_EQ(failureOf([] { Tools().fncGenerateMD5hash(""); }),
            std::pair(EIO, std::string("Error Getting Hash")));
  EXPECT_EQ(numberOf([] { Tools().fncCreateGUID(); }), EIO);
}

}  // namespace
}  // namespace hy_wristlog
