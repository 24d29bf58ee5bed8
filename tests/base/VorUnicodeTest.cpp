#include <gtest/gtest.h>

#include <random>
#include <string>

#include "base/VorUnicodeChar.h"
#include "base/VorUnicodeString.h"

TEST(VorUnicodeChar, ConvertsAndOrdersByCodePoint) {
  EXPECT_EQ(VorUnicodeChar('\xe9').GetCodePoint(), 0xE9u);
  EXPECT_EQ(static_cast<char>(VorUnicodeChar('\xe9')), '\xe9');
  EXPECT_EQ(static_cast<char>(VorUnicodeChar(U'\u0416')), '\0');
  EXPECT_TRUE(VorUnicodeChar('a') == 'a');
  EXPECT_TRUE(VorUnicodeChar('a') <= VorUnicodeChar('b'));
  EXPECT_TRUE(VorUnicodeChar('\xe9') >= 'z');  // no sign
  EXPECT_TRUE(VorUnicodeChar(U'\u2260') != 0x60);
}

TEST(VorUnicodeChar, ClassTestsKnowUnicode) {
  EXPECT_EQ(VorUnicodeChar(U'\u0416').IsUpper(), 1);
  EXPECT_EQ(VorUnicodeChar(U'\u0436').IsLower(), 1);
  EXPECT_EQ(VorUnicodeChar(U'\u0436').IsAlnum(), 1);
  EXPECT_EQ(VorUnicodeChar(U'\u3000').IsSpace(), 1);
  EXPECT_EQ(VorUnicodeChar('7').IsDigit(), 1);
  EXPECT_EQ(VorUnicodeChar('g').IsXDigit(), 0);
  EXPECT_EQ(VorUnicodeChar('\n').IsCntrl(), 1);
  EXPECT_EQ(VorUnicodeChar(' ').IsPrint(), 1);
  EXPECT_EQ(VorUnicodeChar(' ').IsGraph(), 0);
  EXPECT_EQ(VorUnicodeChar('!').IsPunct(), 1);
  EXPECT_EQ(VorUnicodeChar('!').IsAlpha(), 0);
}

TEST(VorUnicodeString, CountsCharactersNotBytes) {
  VorUnicodeString text("a\u00e9\u20ac\U0001F600");
  EXPECT_EQ(text.GetLengthInChar(), 4);
  EXPECT_EQ(text[2].GetCodePoint(), 0x20ACu);
  EXPECT_EQ(text[4].GetCodePoint(), 0u);
  EXPECT_TRUE(text.SubString(1, 2) == "\u00e9\u20ac");
  EXPECT_TRUE(text.SubString(3, 99) == "\U0001F600");
  EXPECT_TRUE(text.SubString(4, 1).IsNull());
  text.Append(VorUnicodeString(VorUnicodeChar(U'\u20ac'), 2));
  EXPECT_STREQ(text, "a\u00e9\u20ac\U0001F600\u20ac\u20ac");
}

TEST(VorUnicodeString, RawBytesJoinAtTheSeam) {
  VorUnicodeString text("x\xe2");
  text.Append("\x82");
  EXPECT_EQ(text.GetLengthInChar(), 3);
  text.Append("\xacy");
  EXPECT_TRUE(text == VorUnicodeString("x\u20acy"));
  VorUnicodeString twice("\xa9\xc3");
  twice.Append(twice);
  EXPECT_TRUE(twice == VorUnicodeString("\xa9\u00e9\xc3"));
  EXPECT_TRUE(VorUnicodeString(VorUnicodeChar(U'\xD800'), 1) == VorUnicodeString("\ufffd"));
}

TEST(VorUnicodeString, OrdersByCodePoint) {
  const VorUnicodeString low("a\uffff"), high("a\U00010000");
  EXPECT_TRUE(low < high);
  EXPECT_FALSE(low < VorUnicodeString("a\uffff"));  // texts are compared, not addresses
}

TEST(VorUnicodeString, InvalidBytesBecomeRawCharacters) {
  const struct {
    const char* text;
    int length;
  } rows[] = {// A continuation without lead, cut short, overlong, a surrogate.
              {"\x80", 1},
              {"\xc3", 1},
              {"\xf0\x9f\x98", 3},
              {"\xc0\xaf", 2},
              {"\xed\xa0\x80", 3},
              // The encoded form of a raw byte's own character, and beyond the last one.
              {"\xed\xb2\x80", 3},
              {"\xf4\x90\x80\x80", 4},
              {"a\xff\u00e9", 3}};
  for (const auto& row : rows) {
    const VorUnicodeString text(row.text);
    EXPECT_EQ(text.GetLengthInChar(), row.length) << row.text;
    EXPECT_STREQ(text.SubString(0, 99), row.text);
  }
  EXPECT_EQ(VorUnicodeString("\xff")[0].GetCodePoint(), 0xDCFFu);
}

TEST(VorUnicodeString, AnyBytesMakeTheRoundTrip) {
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    std::string bytes;
    for (int i = 0; i < 12; ++i) bytes.push_back(static_cast<char>(random() % 255 + 1));
    const VorUnicodeString text(bytes.c_str());
    VorUnicodeString halves = text.SubString(0, 5);
    halves.Append(text.SubString(5, 99));
    ASSERT_STREQ(halves, bytes.c_str());
  }
}

TEST(VorUnicodeString, Strip) {
  const VorUnicodeString text("  a b ");
  EXPECT_STREQ(text.Strip(VorUnicodeString::Leading, ' '), "a b ");
  EXPECT_STREQ(text.Strip(VorUnicodeString::Trailing, ' '), "  a b");
  EXPECT_STREQ(text.Strip(VorUnicodeString::Both, ' '), "a b");
  for (const auto mode :
       {VorUnicodeString::Leading, VorUnicodeString::Trailing, VorUnicodeString::Both}) {
    EXPECT_EQ(VorUnicodeString("   ").Strip(mode, ' ').IsNull(), 1) << mode;
  }
}

TEST(VorUnicodeString, NumbersUnderAFormat) {
  VorUnicodeString text("kept");
  for (const char* format : {"%s", "%d %d", "none", "%*d", "%5.3.2d"}) {
    EXPECT_EQ(text.BuildFromNum(1, format), 1) << format;
  }
  EXPECT_STREQ(text, "kept");
  EXPECT_EQ(text.BuildFromNum(-5000000000L, "%d"), 0);
  EXPECT_STREQ(text, "-5000000000");
  EXPECT_EQ(text.BuildFromNum(255, "<%04x%%>"), 0);
  EXPECT_STREQ(text, "<00ff%>");

  int value = 7;
  EXPECT_EQ(VorUnicodeString("x12").ConvertToNum(&value), 1);
  EXPECT_EQ(VorUnicodeString("99999999999").ConvertToNum(&value), 1);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(VorUnicodeString("12x").ConvertToNum(&value), 0);
  EXPECT_EQ(value, 12);
  EXPECT_EQ(VorUnicodeString("ff").ConvertToNum(&value, "%x"), 0);
  EXPECT_EQ(value, 255);
  EXPECT_EQ(VorUnicodeString("  12345").ConvertToNum(&value, "%3d"), 0);
  EXPECT_EQ(value, 123);
}
