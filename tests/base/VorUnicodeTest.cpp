#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "base/VorUnicodeChar.h"
#include "base/VorUnicodeString.h"

static_assert(!std::is_constructible_v<bool, VorUnicodeString>);  // as a condition

TEST(VorUnicodeChar, ConvertsAndOrdersByCodePoint) {
  EXPECT_EQ(VorUnicodeChar('\xe9').GetCodePoint(), 0xE9u);
  EXPECT_EQ(static_cast<char>(VorUnicodeChar('\xe9')), '\xe9');
  EXPECT_EQ(static_cast<char>(VorUnicodeChar(U'\u0416')), '\0');
  EXPECT_TRUE(VorUnicodeChar('\xe9') >= 'z');  // no sign
  EXPECT_TRUE(VorUnicodeChar(U'\u2260') != 0x60);
}

TEST(VorUnicodeChar, ClassTestsCoverUnicode) {
  using C = VorUnicodeChar;
  const std::pair<int (C::*)() const, std::u32string_view> classes[] = {
      {&C::IsAlnum, U"7g\u0416\u0436"},
      {&C::IsAlpha, U"g\u0416\u0436"},
      {&C::IsCntrl, U"\n"},
      {&C::IsGraph, U"7g!\u0416\u0436"},
      {&C::IsLower, U"g\u0436"},
      {&C::IsDigit, U"7"},
      {&C::IsPrint, U"7g! \u0416\u0436\u3000"},
      {&C::IsSpace, U"\n \u3000"},
      {&C::IsPunct, U"!"},
      {&C::IsUpper, U"\u0416"},
      {&C::IsXDigit, U"7"}};
  for (const auto& [isMember, members] : classes) {
    for (const char32_t c : std::u32string_view(U"7g!\n \u0416\u0436\u3000")) {
      EXPECT_EQ((C(c).*isMember)(), members.find(c) != members.npos) << std::uint32_t{c};
    }
  }
}

TEST(VorUnicodeString, CountsCharactersNotBytes) {
  VorUnicodeString text("a\u00e9\u20ac\U0001F600");
  EXPECT_EQ(text.GetLengthInChar(), 4);
  EXPECT_EQ(text[2].GetCodePoint(), 0x20ACu);
  EXPECT_EQ(text[4].GetCodePoint(), 0u);
  EXPECT_STREQ(text.SubString(1, 2), "\u00e9\u20ac");
  EXPECT_STREQ(text.SubString(3, 99), "\U0001F600");
  EXPECT_EQ(text.SubString(4, 1).IsNull(), 1);
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
  EXPECT_TRUE(VorUnicodeString("a\uffff") < VorUnicodeString("a\U00010000"));
  EXPECT_FALSE(VorUnicodeString("a") < VorUnicodeString("a"));  // texts, not addresses
}

TEST(VorUnicodeString, InvalidBytesBecomeRawCharacters) {
  const std::pair<const char*, int> rows[] = {
      // A continuation without lead, cut short, overlong, a surrogate.
      {"\x80", 1},
      {"\xc3", 1},
      {"\xf0\x9f\x98", 3},
      {"\xc0\xaf", 2},
      {"\xed\xa0\x80", 3},
      // The encoded form of a raw byte's own character, and beyond the last one.
      {"\xed\xb2\x80", 3},
      {"\xf4\x90\x80\x80", 4},
      {"a\xff\u00e9", 3}};
  for (const auto& [bytes, length] : rows) {
    const VorUnicodeString text(bytes);
    EXPECT_EQ(text.GetLengthInChar(), length) << bytes;
    EXPECT_STREQ(text.SubString(0, 99), bytes);
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
  const char* const wants[] = {"a b ", "  a b", "a b"};  // leading, trailing, both
  for (const auto mode :
       {VorUnicodeString::Leading, VorUnicodeString::Trailing, VorUnicodeString::Both}) {
    EXPECT_STREQ(VorUnicodeString("  a b ").Strip(mode, ' '), wants[mode]);
    EXPECT_STREQ(VorUnicodeString("   ").Strip(mode, ' '), "") << mode;
  }
}

TEST(VorUnicodeString, BuildsFromANumber) {
  VorUnicodeString text("kept");
  for (const char* format : {"%s", "%d %d", "none", "%*d", "%5.3.2d"}) {
    EXPECT_EQ(text.BuildFromNum(1, format), 1) << format;
  }
  EXPECT_STREQ(text, "kept");
  EXPECT_EQ(text.BuildFromNum(-5000000000L, "%d"), 0);
  EXPECT_STREQ(text, "-5000000000");
  EXPECT_EQ(text.BuildFromNum(255, "<%04x%%>"), 0);
  EXPECT_STREQ(text, "<00ff%>");
}

TEST(VorUnicodeString, ConvertsToANumber) {
  const std::tuple<const char*, const char*, int> rows[] = {
      // 7: fails
      {"x12", "%d", 7},  {"99999999999", "%d", 7}, {"1", "%s", 7},
      {"12x", "%d", 12}, {"ff", "%x", 255},        {"  12345", "%3d", 123}};
  for (const auto& [text, format, want] : rows) {
    int value = 7;
    EXPECT_EQ(VorUnicodeString(text).ConvertToNum(&value, format), want == 7) << text;
    EXPECT_EQ(value, want) << text;
  }
}
