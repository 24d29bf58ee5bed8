#include "sourcefiles/VorFwModRespHelper.h"

#include <gtest/gtest.h>

#include <string>

#include "support/TempDir.h"

namespace {

class Responsibles : public testing::Test {
 protected:
  // Reads both files; what is printed goes to _printed.
  void Parse(const std::string& org, const std::string& kvr) {
    _org = _dir.Write("org", org);
    _kvr = _dir.Write("kvr", kvr);
    testing::internal::CaptureStdout();
    EXPECT_EQ(_helper.parseFiles(_org.c_str(), _kvr.c_str()), 0);
    _printed = testing::internal::GetCapturedStdout();
  }

  TempDir _dir;
  VorFwModRespHelper _helper;
  std::string _org, _kvr, _printed;
};

}  // namespace

TEST_F(Responsibles, OfFrameworksAndModules) {
  Parse(
      "Some Team Name.ab.\n"
      "Another. Team.xYz.\n",
      "a b c d Fw:FW1 Resp:ab\n"
      "a b c 1234567FW1 Mod:m1 Resp:xyz\n"
      "a b c 1234567FW1 Mod:m2 Resp:no one\n"
      "    Fw: Resp:ab\n"            // all fields but the last two are empty, so is the name
      "a b c short Mod:m Resp:ab\n"  // of the framework ""
      "a b c d Other:e Resp:ab\n");  // ignored in silence
  EXPECT_EQ(_printed, "");
  EXPECT_STREQ(_helper.getFrameworkShortResponsible("FW1"), "AB");
  EXPECT_STREQ(_helper.getFrameworkLongResponsible("FW1"), "Some Team Name.ab.");
  EXPECT_STREQ(_helper.getModuleShortResponsible("FW1", "m1"), "XYZ");
  EXPECT_STREQ(_helper.getModuleLongResponsible("FW1", "m1"), "Another. Team.xYz.");
  EXPECT_STREQ(_helper.getModuleShortResponsible("FW1", "m2"), "NO ONE");
  EXPECT_EQ(_helper.getModuleLongResponsible("FW1", "m2"), nullptr);
  EXPECT_STREQ(_helper.getModuleLongResponsible("", "m"), "Some Team Name.ab.");
  for (const char* unknown : {static_cast<const char*>(nullptr), "FW", "fw1"}) {
    EXPECT_EQ(_helper.getFrameworkShortResponsible(unknown), nullptr);
    EXPECT_EQ(_helper.getFrameworkLongResponsible(unknown), nullptr);
    EXPECT_EQ(_helper.getModuleShortResponsible(unknown, "m1"), nullptr);
    EXPECT_EQ(_helper.getModuleLongResponsible("FW1", unknown), nullptr);
  }
}

TEST_F(Responsibles, OrganisationLines) {
  const struct {
    const char* line;
    const char* code;  // null for a bad line
  } kTable[] = {
      {"Some Team Name.ab.", "AB"}, {"abcde.x.", "X"},           {"....abc.", "ABC"},
      {"orgname.a-b.", "A-B"},      {"orgname.\xe9z.", "\xe9Z"}, {"xyzw.abcd.", nullptr},
      {"orgname..", nullptr},       {"abcd.x.", nullptr},        {"orgname.ab", nullptr},
      {"organisation.", nullptr},   {"org.ab. ", nullptr},       {"", nullptr},
  };
  for (const auto& row : kTable) {
    VorFwModRespHelper helper;
    const std::string org = _dir.Write("org", std::string(row.line) + "\n");
    const std::string code = row.code == nullptr ? "AB" : row.code;
    const std::string kvr = _dir.Write("kvr", "a b c d Fw:F Resp:" + code + "\n");
    testing::internal::CaptureStdout();
    helper.parseFiles(org.c_str(), kvr.c_str());
    EXPECT_EQ(
        testing::internal::GetCapturedStdout(),
        row.code != nullptr ? "" : "# ERROR: Bad line in file " + org + ": " + row.line + "\n");
    EXPECT_STREQ(helper.getFrameworkLongResponsible("F"), row.code == nullptr ? nullptr : row.line);
  }
}

TEST_F(Responsibles, BadDeclarations) {
  const char* const kBad[] = {"",
                              "a b c d Fw:F",
                              "a b c d Fw:F ",
                              "a b c d Fw:F Resp:",
                              "a b c d Fw:F resp:ab",
                              "a b c d Fw:F  Resp:ab"};
  std::string kvr;
  std::string want;
  for (const char* line : kBad) {
    kvr += std::string(line) + "\n";
    want += "# Error: Bad line in file (" + _dir / "kvr" + "): " + line + "\n";
  }
  Parse("", kvr);
  EXPECT_EQ(_printed, want);
  EXPECT_EQ(_helper.getFrameworkShortResponsible("F"), nullptr);
}

TEST_F(Responsibles, WhatIsDeclaredFirstCounts) {
  Parse("first line.ab.\nsecond line.AB.\n",
        "a b c 1234567F Mod:m Resp:xx\n"
        "a b c d Fw:F Resp:ab\n"
        "a b c d Fw:F Resp:cd\n"
        "a b c 1234567F Mod:m Resp:mm\n"
        "a b c 1234567F Mod:m Resp:nn\n");
  EXPECT_EQ(_printed, "# Error: fw F not yet referenced for mod m in file " + _kvr +
                          "\n# Error: fw Fw:F referenced multiple time in file " + _kvr +
                          "\n# Error: mod m defined multiple time\n"
                          "# Error: unable to add mod m in fw F for file " +
                          _kvr + "\n");
  EXPECT_STREQ(_helper.getFrameworkLongResponsible("F"), "first line.ab.");
  EXPECT_STREQ(_helper.getModuleShortResponsible("F", "m"), "MM");
}

TEST_F(Responsibles, EachFileIsReadOnce) {
  Parse("Some Team Name.ab.\n", "a b c d Fw:F Resp:ab\na b c d Fw:cut Resp:ab");
  EXPECT_EQ(_helper.getFrameworkShortResponsible("cut"), nullptr) << "no newline at the end";
  const std::string other = _dir.Write("other", "a b c d Fw:G Resp:cd\n");
  EXPECT_EQ(_helper.parseFiles("bad", other.c_str()), 0);
  EXPECT_EQ(_helper.parseQXOrgFile("bad"), 1);
  EXPECT_EQ(_helper.parseKVRFile(other.c_str()), 1);
  EXPECT_EQ(_helper.getFrameworkShortResponsible("G"), nullptr);
  EXPECT_STREQ(_helper.getFrameworkLongResponsible("F"), "Some Team Name.ab.");
}

TEST_F(Responsibles, AFileThatCannotBeReadIsEmpty) {
  for (const std::string& path : {_dir / "missing", _dir.Path(), std::string()}) {
    const char* const file = path.empty() ? nullptr : path.c_str();
    VorFwModRespHelper helper;
    EXPECT_EQ(helper.getFrameworkLongResponsible("F"), nullptr) << "before any file";
    EXPECT_EQ(helper.parseKVRFile(file), 0);
    EXPECT_EQ(helper.getFrameworkShortResponsible("F"), nullptr);
    EXPECT_EQ(helper.parseKVRFile(file), 1);
    EXPECT_EQ(helper.parseQXOrgFile(file), 0);
  }
}

// Lines around the size of the read buffer and its double, so that each falls across its end.
TEST_F(Responsibles, LongLines) {
  std::string org, kvr;
  const std::size_t kSizes[] = {10, 63980, 64000, 64001, 127999, 200000, 20};
  for (const std::size_t size : kSizes) {
    const std::string code = std::to_string(100 + size % 97);
    org += std::string(size, 'x') + "." + code + ".\n";
    kvr += "a b c d Fw:" + std::string(size, 'f') + " Resp:" + code + "\n";
  }
  Parse(org, kvr);
  EXPECT_EQ(_printed, "");
  for (const std::size_t size : kSizes) {
    const std::string line = std::string(size, 'x') + "." + std::to_string(100 + size % 97) + ".";
    EXPECT_EQ(_helper.getFrameworkLongResponsible(std::string(size, 'f').c_str()), line);
  }
}
