#include "sourcefiles/VorFwModRespHelper.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/TempDir.h"

namespace {

class Responsibles : public testing::Test {
 protected:
  // Reads both files; what is printed goes to _printed.
  void Parse(const std::string& org, const std::string& kvr) {
    const std::string orgFile = _dir.Write("org", org);
    const std::string kvrFile = _dir.Write("kvr", kvr);
    testing::internal::CaptureStdout();
    EXPECT_EQ(_helper.parseFiles(orgFile.c_str(), kvrFile.c_str()), 0);
    _printed = testing::internal::GetCapturedStdout();
  }

  TempDir _dir;
  VorFwModRespHelper _helper;
  std::string _printed;
};

}  // namespace

TEST_F(Responsibles, OfFrameworksAndModules) {
  EXPECT_EQ(_helper.getFrameworkLongResponsible("FW1"), nullptr);
  Parse("Some. Team.ab.\n",
        "a b c d Fw:FW1 Resp:ab\n"
        "a b c 1234567FW1 Mod:m1 Resp:aB\n"
        "a b c 1234567FW1 Mod:m2 Resp:no one\n"
        "    Fw: Resp:ab\n"            // all fields but the last two are empty, so is the name
        "a b c short Mod:m Resp:ab\n"  // of the framework ""
        "a b c d Other:e Resp:ab\n"    // ignored without a message
        "a b c d Fw:cut Resp:ab");
  EXPECT_EQ(_printed, "");
  EXPECT_STREQ(_helper.getFrameworkLongResponsible("FW1"), "Some. Team.ab.");
  EXPECT_STREQ(_helper.getModuleShortResponsible("FW1", "m2"), "NO ONE");
  EXPECT_EQ(_helper.getModuleLongResponsible("FW1", "m2"), nullptr);
  EXPECT_STREQ(_helper.getModuleLongResponsible("FW1", "m1"), "Some. Team.ab.");
  EXPECT_STREQ(_helper.getModuleLongResponsible("", "m"), "Some. Team.ab.");
  Parse("bad\n", "a b c d Fw:late Resp:cd\n");
  EXPECT_EQ(_printed, "") << "files are read once";
  for (const char* unknown : {static_cast<const char*>(nullptr), "fw1", "cut", "late"}) {
    EXPECT_EQ(_helper.getFrameworkShortResponsible(unknown), nullptr);
    EXPECT_EQ(_helper.getModuleLongResponsible("FW1", unknown), nullptr);
  }
  EXPECT_EQ(_helper.parseQXOrgFile(nullptr), 1);
  for (const char* unreadable : {"/none", _dir.Path().c_str(), static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(VorFwModRespHelper().parseKVRFile(unreadable), 0);
  }
}

TEST_F(Responsibles, OrganisationLines) {
  std::vector<std::pair<std::string, std::string>> codes = {
      {"abcde.x.", "X"}, {"....abc.", "ABC"}, {"orgname.\xe9z.", "\xe9Z"}};
  // Around the size of the read buffer and its double, so that each falls across its end.
  for (const int size : {10, 63980, 64000, 64001, 127999, 200000, 20}) {
    const std::string code = std::to_string(100 + size % 97);
    codes.emplace_back(std::string(size, 'x') + "." + code + ".", code);
  }
  std::string org, kvr, want;
  const char* const kBad[][2] = {
      // line, as it is shown
      {"xyzw.abcd.", "xyzw.abcd."},
      {"orgname..", "orgname.."},
      {"abcd.x.", "abcd.x."},
      {"one dot.", "one dot."},
      {"org.cd.\r", "org.cd.\\r"},
      {"\x1b]0;\a\t\x7f \xc2\x9bm \x9b \\", "\\x1b]0;\\x07\\t\\x7f \\xc2\\x9bm \\x9b \\"},
      {"\xe9 \xc3\x89 \xe2\x82\x9b", "\xe9 \xc3\x89 \xe2\x82\x9b"},  // none is a control character
  };
  for (const auto& [line, shown] : kBad) {
    org += line + std::string("\n");
    want += "# ERROR: Bad line in file " + _dir / "org" + ": " + shown + "\n";
  }
  for (const auto& [line, code] : codes) {
    org += line + "\n";
    kvr += "a b c d Fw:" + line + " Resp:" + code + "\n";
  }
  Parse(org, kvr);
  EXPECT_EQ(_printed, want);
  for (const auto& [line, code] : codes) {
    EXPECT_STREQ(_helper.getFrameworkLongResponsible(line.c_str()), line.c_str());
  }
}

TEST_F(Responsibles, InvalidDeclarationsAreSkipped) {
  const std::string inFile = " in file " + _dir / "kvr" + "\n";
  const std::string kTable[][2] = {
      // line, message; "" for a bad line
      {"a b c 1234567F Mod:m\a Resp:xx",
       "# Error: fw F not yet referenced for mod m\\x07" + inFile},
      {"a b c d Fw:F Resp:ab", " "},
      {"a b c d Fw:F Resp:cd", "# Error: fw Fw:F referenced multiple time" + inFile},
      {"a b c 1234567F Mod:m Resp:mm\r", " "},
      {"a b c 1234567F Mod:m Resp:nn",
       "# Error: mod m defined multiple time\n# Error: unable to add mod m in fw F for file " +
           _dir / "kvr" + "\n"},
      {"", ""},
      {"a b c d Fw:G ", ""},
      {"a b c d Fw:G Resp:", ""},
      {"a b c d Fw:G  Resp:ab", ""},
  };
  std::string kvr, want;
  for (const auto& [line, message] : kTable) {
    kvr += line + "\n";
    if (message != " ") want += message;
    if (message.empty()) want += "# Error: Bad line in file (" + _dir / "kvr" + "): " + line + "\n";
  }
  Parse("first line.ab.\nsecond line.AB.\n", kvr);
  EXPECT_EQ(_printed, want);
  EXPECT_STREQ(_helper.getFrameworkLongResponsible("F"), "first line.ab.");
  EXPECT_STREQ(_helper.getModuleShortResponsible("F", "m"), "MM\r");
  EXPECT_EQ(_helper.getFrameworkShortResponsible("G"), nullptr);
}
