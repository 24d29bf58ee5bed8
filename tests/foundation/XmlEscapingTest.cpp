#include "foundation/XmlEscaping.h"

#include <gtest/gtest.h>

TEST(EscapeXml, ReplacesCharactersThatXmlForbids) {
  using namespace std::string_view_literals;
  const struct {
    std::string_view text;
    const char* want;
  } rows[] = {{"", ""},
              {"<a b=\"c\">&'toreplace'</a>",
               "&lt;a b=&quot;c&quot;&gt;&amp;&apos;toreplace&apos;&lt;/a&gt;"},
              {"&amp;", "&amp;amp;"},
              {"a\0b\x1f\x7f"sv, "a?b?\x7f"},
              {"\u00e9\u20ac\U0001F600\ufffd", "\u00e9\u20ac\U0001F600\ufffd"},
              {"\uffff\xff\xed\xa0\x80", "?????"}};  // no character, no UTF-8, a surrogate
  for (const auto& row : rows) {
    EXPECT_EQ(EscapeXml(VorString(row.text)), row.want) << row.text;
    EXPECT_EQ(EscapeXmlAttribute(VorString(row.text)), row.want) << row.text;
  }
  EXPECT_EQ(EscapeXml("a\tb\r\n"), "a\tb&#13;\n");
  EXPECT_EQ(EscapeXmlAttribute("a\tb\r\n"), "a&#9;b&#13;&#10;");
}
