#include "sourcefiles/VorFilePrepro.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <random>
#include <string>

#include "support/NaivePrepro.h"
#include "support/TempDir.h"

namespace {

// The result, a colon and the text.
std::string Preprocess(VorFilePrepro& prepro, int flags) {
  char* out = nullptr;
  const std::string result = std::to_string(prepro.preprocess(flags, out));
  const std::unique_ptr<char, decltype(&free)> owner(out, free);
  return result + ":" + (out == nullptr ? "null" : out);
}

}  // namespace

TEST(VorFilePrepro, RemovesTheSelectedKinds) {
  const struct {
    int flags;
    const char* content;
    const char* want;
  } kRows[] = {
      {0, "a // b\n/* c\n*/ \"d\" 'e'\n#f\n", "0:a // b\n/* c\n*/ \"d\" 'e'\n#f\n"},
      {1, "a; // b \\\nc /* d // */\n", "0:a; \nc /* d // */\n"},
      {1, "a // b", "2:a "},
      {2, "a/*/b\n * c */d /**/ e", "0:a\nd  e"},
      {4, "a\n #define b \\\n c // d\ne", "0:a\n \ne"},
      {8, "a 'b' \"'\" 'c\\'\\\n\nd' e", "0:a  \"'\" \n e"},
      {16, "a \"b \\\" // c\" '\"' d \"\n\" e", "0:a  '\"' d \n e"},
      {31, "\\\"a\\/* b \\\\'c'\\#d /", "0:\\\"a\\/* b \\\\\\#d /"},
  };
  const TempDir dir;
  for (const auto& row : kRows) {
    VorFilePrepro prepro(dir.Write("source.c", row.content).c_str());
    EXPECT_EQ(Preprocess(prepro, row.flags), row.want) << row.flags << ": " << row.content;
  }
}

TEST(VorFilePrepro, AgreesWithANaiveFilter) {
  const TempDir dir;
  std::mt19937 random(9);
  for (int round = 0; round < 500; ++round) {
    // Plain runs of up to 40 characters between the bytes that mean something.
    std::string content;
    for (auto pieces = random() % 30; pieces > 0; --pieces) {
      content.append(random() % 3 == 0 ? random() % 40 : 0, static_cast<char>(random() % 255 + 1));
      content += "/*\\\"'#\n/*x"[random() % 10];
    }
    VorFilePrepro prepro(dir.Write(std::to_string(round), content).c_str());
    for (int flags = 0; flags < 32; ++flags) {
      std::string text(content.size() + 1, '?');
      const int result = NaivePrepro(content.c_str(), flags, text.data());
      ASSERT_EQ(Preprocess(prepro, flags), std::to_string(result) + ":" + text.c_str())
          << flags << ": " << content;
    }
  }
}

TEST(VorFilePrepro, RetriesUntilItsFileWasRead) {
  const TempDir dir;
  VorFilePrepro prepro((dir / "source.c").c_str());
  EXPECT_EQ(Preprocess(prepro, 1), "1:null");
  dir.Write("source.c", std::string("a // b\nc\0d", 10));
  EXPECT_EQ(Preprocess(prepro, 1), "0:a \nc");  // up to the NUL
  dir.Write("source.c", "other");
  EXPECT_EQ(Preprocess(prepro, 1), "0:a \nc");
}
