#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "perfo/TAPerfo.h"
#include "socket/Peers.h"

namespace {

using namespace std::string_literals;

// Switches compression on for as long as it lives.
struct Compression {
  Compression() { setenv("TASocketCompress", "", 1); }
  ~Compression() { unsetenv("TASocketCompress"); }
};

VorListValVorString ListOf(const std::vector<const char*>& elements) {
  VorListValVorString list;
  for (const char* element : elements) list.Append(element);
  return list;
}

// How a read ends on some bytes, after which the peer has closed.
struct Outcome {
  int result;
  std::string value;
  std::string message;
};

Outcome Receive(Reading read, const std::string& bytes, std::size_t limit = 0) {
  Ours ours;
  ours.SetReadLimits(0, static_cast<int>(limit));
  const RawPeer peer(ours, bytes);
  const int result = (ours.*read)();
  return {result, ours.Value(), ours.Message()};
}

// The words of "a  b a", as the second block of a connection has them, and as the first one.
const std::string kAgain =
    Integer(-1) + Integer(4) + Integer(0) + Integer(1) + Integer(2) + Integer(0);
const std::string kDefined =
    Integer(0) + Word("a") + Integer(1) + Word("") + Integer(2) + Word("b") + kAgain;

}  // namespace

TEST(Blocks, BeginWithAPrintableSize) {
  const std::pair<int, const char*> rows[] = {
      {0, "    "},      {63, "_   "},        {64, " !  "},
      {8187, "[_! "},   {16777215, "____"},  {-1, "\x9f```"},
      {-64, "`\x9f``"}, {-16777215, "aaaa"}, {INT32_MIN, "````"}};
  for (const auto& [size, bytes] : rows) {
    EXPECT_EQ(Header(size), bytes);
    unsigned char header[4];
    memcpy(header, bytes, sizeof header);
    EXPECT_TRUE(size < 0 ? GetSize(header) < 0 : GetSize(header) == size) << size;
  }
}

TEST(Blocks, HaveTheirBytes) {
  Ours ours;
  const std::string bytes = BytesOf(ours, [&] {
    ours.PutBlock("");
    ours.PutBlock("abc");
    ours.PutBlock(ListOf({"a b", "c"}));
    ours.PutBlock(VorListValVorString());
    ours.PutBinBlock(3, "x\0y");
    ours.Write(-2);
    ours.Write(0x01020304);
    ours.Write(VorString("word"));
  });
  EXPECT_EQ(bytes,
            "    #   abc%   a b c    #   x\0y\xfe\xff\xff\xff\x04\x03\x02\x01\x04\0\0\0word"s);
}

TEST(Blocks, CompressedHaveTheirBytesOnEachConnection) {
  Ours ours;
  for (int i = 0; i < 2; ++i) {
    const Compression on;
    const std::string bytes = BytesOf(ours, [&] {
      EXPECT_EQ(ours.PutBlock("a  b a"), 0);
      EXPECT_EQ(ours.PutBlock("a  b a"), 0);
      EXPECT_EQ(ours.PutBlock(""), 0);
      EXPECT_EQ(ours.PutBlock(ListOf({"a b", ""})), 0);
      EXPECT_EQ(ours.PutBlock(VorListValVorString()), 0);
    });
    EXPECT_EQ(bytes, Header(-6) + kDefined + Header(-6) + kAgain + Header(0) + Header(-2) +
                         Integer(3) + Word("a b") + Integer(-1) + Integer(2) + Integer(3) +
                         Integer(1) + Header(-1) + Integer(-1) + Integer(0));
  }
  {
    const RawPeer peer(ours);
    peer.Send(kMark + kDefined + "!   " + kAgain);  // a positive size is no different any more
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(ours.Text(), 0);
      EXPECT_EQ(ours.Value(), "a  b a");
    }
    ours.PutBlock("b");  // in the form in which it was asked
    ours.Close();
    EXPECT_EQ(peer.ReceiveAll(),
              kMark + Integer(0) + Word("b") + Integer(-1) + Integer(1) + Integer(0));
  }
  {
    const RawPeer peer(ours, kMark + kAgain);
    EXPECT_EQ(ours.Text(), 1);
    EXPECT_EQ(ours.Message(), kNotFull);
  }
  EXPECT_EQ(BytesOf(ours, [&] { ours.PutBlock("x"); }), "!   x");
}

TEST(Blocks, MustFitTheBuffer) {
  const std::string refused = "Unable to put block in buffer (block size is ";
  const std::vector<char> huge(16777216);
  Ours ours;
  const std::string bytes = BytesOf(ours, [&] {
    EXPECT_EQ(ours.PutBlock(VorString(std::string(8187, 'x'))), 0);
    EXPECT_EQ(ours.PutBlock(VorString(std::string(8188, 'x'))), 1);
    EXPECT_EQ(ours.Message(), refused + "8188)");
    EXPECT_EQ(ours.PutBinBlock(16777216, huge.data()), 1);
    EXPECT_EQ(ours.Message(), refused + "16777216)");
    EXPECT_EQ(ours.PutBinBlock(-1, huge.data()), 1);
    EXPECT_EQ(ours.PutBinBlock(16777215, huge.data()), 0);
    const Compression on;
    const std::string half(8388608, 'x');
    EXPECT_EQ(ours.PutBlock(ListOf({half.c_str(), half.c_str()})), 1);
    EXPECT_EQ(ours.Message(), refused + "16777217)");
  });
  EXPECT_EQ(bytes.size(), 8191u + 16777219u);

  Ours least(-1);
  const std::string small = BytesOf(least, [&] {
    EXPECT_EQ(least.PutBlock("") + least.Write(VorString("longer than the buffer")), 0);
    EXPECT_EQ(least.PutBlock("x"), 1);
    EXPECT_EQ(least.PutBinBlock(9, "123456789"), 0);
  });
  EXPECT_EQ(small, "    " + Word("longer than the buffer") + ")   123456789");
}

TEST(Blocks, AreCounted) {
  struct Counter : TAPerfo {
    using TAPerfo::Total;
  } reading, writing;
  Ours ours;
  ours.SetPerfo(&reading, &writing);
  const RawPeer peer(ours, "    #   abc%   vwxyz");
  const struct {
    std::function<int()> call;
    int read;
    int written;
  } rows[] = {
      {[&] { return ours.PutBlock("12345"); }, 0, 5},
      {[&] { return ours.Write(1); }, 0, 9},
      {[&] { return ours.Write(VorString("abc")); }, 0, 20},  // its length counts twice
      {[&] { return ours.PutBinBlock(100, std::string(100, 'x').data()); }, 0, 120},
      {[&] { return ours.Text(); }, 0, 120},
      {[&] { return ours.Text(); }, 3, 120},
      {[&] { return ours.Binary(); }, 3, 120},  // text blocks only
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.call(), 0);
    EXPECT_EQ(reading.Total(), row.read);
    EXPECT_EQ(writing.Total(), row.written);
  }
}

TEST(Blocks, CutShortAtAnyByteEndInTheirError) {
  const struct {
    Reading read;
    std::string bytes;
    const char* noHeader;
    const char* noRest;
    std::string value;  // of the whole
  } rows[] = {
      {&Ours::Text, "#   abc", kNoHeader, kNotFull, "abc"},
      {&Ours::List, "&   a b  c", kNoHeader, kNotFull, "a|b|c|"},
      {&Ours::Text, kMark + kDefined, kNoHeader, kNoSize, "a  b a"},
      {&Ours::List, kMark + kDefined, kNoHeader, kNoSize, "a||b|a|"},
      {&Ours::Binary, "#   a\0c"s, kNoSize, kNotFull, "a\0c"s},
      {&Ours::Binary, Header(0), kNoSize, "", ""},
      {&Ours::String, Word("abc"), kNoSize, kNoSize, "abc"},
      {&Ours::Number, Integer(-7), kNoSize, kNoSize, "-7"},
      {&Ours::Text, kMark + Integer(-1) + Integer(-3), kNoHeader, kNoSize, ""},
      // The first word under an identifier stays, and any number will do.
      {&Ours::Text,
       kMark + Integer(-7) + Word("1st") + Integer(-7) + Word("2nd") + Integer(-1) + Integer(1) +
           Integer(-7),
       kNoHeader, kNoSize, "1st"},
      // A NUL ends its piece.
      {&Ours::Text, "%   ab\0cd"s, kNoHeader, kNotFull, "ab"},
      {&Ours::String, Word("ab\0cd"s), kNoSize, kNoSize, "ab"},
  };
  for (const auto& row : rows) {
    for (std::size_t size = 0; size < row.bytes.size(); ++size) {
      const Outcome cut = Receive(row.read, row.bytes.substr(0, size));
      EXPECT_EQ(cut.result, 1) << row.bytes << size;
      EXPECT_EQ(cut.value, "") << row.bytes << size;
      EXPECT_EQ(cut.message, size < 4 ? row.noHeader : row.noRest) << row.bytes << size;
      if (size == 0) continue;  // no bound; others are as good as an end
      EXPECT_EQ(Receive(row.read, row.bytes, size).message, cut.message);
    }
    const Outcome whole = Receive(row.read, row.bytes, row.bytes.size());
    EXPECT_EQ(whole.result, 0) << row.bytes;
    EXPECT_EQ(whole.value, row.value);
  }
  const std::string pieces = Header(10241) + 'a' + std::string(10239, '\0') + 'b';
  EXPECT_EQ(Receive(&Ours::Text, pieces).value, "ab");
  char buffer[8] = {};
  EXPECT_EQ(socketsaferead(-1, buffer, 0) + socketsaferead(-1, buffer, 4), 0);
}

TEST(Blocks, HostileBytesAreRefused) {
  // A few bytes that name long words again and again, for a text above all sizes.
  std::string blown =
      kMark + Integer(0) + Word(std::string(1 << 15, 'x')) + Integer(-1) + Integer(512);
  for (int i = 0; i < 512; ++i) blown += Integer(0);
  const struct {
    const char* what;
    Reading read;
    std::string bytes;
    const char* message;
  } rows[] = {
      {"length below zero", &Ours::String, Integer(-1) + "abc", kNoSize},
      {"length without bytes", &Ours::String, Integer(INT32_MAX) + "abc", kNoSize},
      {"size without bytes", &Ours::Text, "____abc", kNotFull},
      {"size without bytes", &Ours::Binary, "____abc", kNotFull},
      {"compressed", &Ours::Binary, kMark + "abc", "Unable to alloc memory for GetBinBlock"},
      {"unknown word", &Ours::Text, kMark + Integer(-1) + Integer(1) + Integer(0), kNotFull},
      {"unknown word", &Ours::List, kMark + Integer(-1) + Integer(1) + Integer(-5), kNotFull},
      {"impossible count", &Ours::Text, kMark + Integer(-1) + Integer(INT32_MAX), kNotFull},
      {"above all sizes", &Ours::Text, std::string(400, '\xbf'), kNotFull},
      {"above all sizes", &Ours::Binary, std::string(400, '\xa0'), kNotFull},
      {"one, from a digit below 0", &Ours::Text, "\x1f   x", kNotFull},
      {"one, from a digit below 0", &Ours::List, "\x1f   x", kNotFull},
      {"one, from a digit below 0", &Ours::Binary, "\x1f   x", kNotFull},
      {"zero, from opposite digits", &Ours::Text, "\x60\x1f  ", kNotFull},
      {"blown text", &Ours::Text, blown, kNotFull},
      {"blown list", &Ours::List, blown, kNotFull},
  };
  for (const auto& row : rows) {
    const Outcome outcome = Receive(row.read, row.bytes);
    EXPECT_EQ(outcome.result, 1) << row.what;
    EXPECT_EQ(outcome.message, row.message) << row.what;
  }
  // Definitions, used or not, are no more than a block, and what is more is not waited for.
  for (const std::string& words : {Integer(16777216), Word("x") + Integer(1) + Integer(16777214)}) {
    Ours ours;
    ours.SetReadLimits(1, 0);
    const RawPeer peer(ours);
    peer.Send(kMark + Integer(0) + words);
    EXPECT_EQ(ours.Text(), 1);
    EXPECT_EQ(ours.Message(), kNoSize);
  }
}
