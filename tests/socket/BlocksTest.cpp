#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

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

// The result of a read of some bytes, after which the peer has closed.
int Receive(Ours& ours, Reading read, const std::string& bytes, std::size_t limit = 0) {
  ours.SetReadLimits(0, static_cast<int>(limit));
  const RawPeer peer(ours, bytes);
  return (ours.*read)();
}

// The words of "a  b a", as the second block of a connection has them, and as the first one.
const std::string kAgain =
    Integer(-1) + Integer(4) + Integer(0) + Integer(1) + Integer(2) + Integer(0);
const std::string kDefined =
    Integer(0) + Word("a") + Integer(1) + Word("") + Integer(2) + Word("b") + kAgain;

}  // namespace

TEST(Blocks, BeginWithAPrintableSize) {
  const std::pair<int, const char*> rows[] = {{0, "    "},         {8187, "[_! "},
                                              {16777215, "____"},  {-1, "\x9f```"},
                                              {-16777215, "aaaa"}, {INT32_MIN, "````"}};
  for (const auto& [size, bytes] : rows) {
    EXPECT_EQ(Header(size), bytes);
    unsigned char header[4];
    memcpy(header, bytes, sizeof header);
    EXPECT_TRUE(size < 0 ? GetSize(header) < 0 : GetSize(header) == size) << size;
  }
}

TEST(Blocks, HaveTheirBytesAndAreCounted) {
  struct Counter : TAPerfo {
    using TAPerfo::Total;
  } reading, writing;
  Ours ours;
  ours.SetPerfo(&reading, &writing);
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
  EXPECT_EQ(writing.Total(), 3 + 5 + 3 + 4 + 4 + 12);  // the length of a word twice
  const RawPeer peer(ours, "    #   abc#   a b#   xyz");
  EXPECT_EQ(ours.Text() + ours.Text() + ours.List() + ours.Binary(), 0);
  EXPECT_EQ(reading.Total(), 3 + 3);  // text blocks only
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
  EXPECT_EQ(Receive(ours, &Ours::Text, kMark + kAgain), 1);
  EXPECT_EQ(ours.Message(), kNotFull);
  EXPECT_EQ(BytesOf(ours, [&] { ours.PutBlock("x"); }), "!   x");
}

TEST(Blocks, MustFitTheBuffer) {
  const std::string refused = "Unable to put block in buffer (block size is ";
  const std::vector<char> huge(16777216);
  Ours ours;
  const std::string bytes = BytesOf(ours, [&] {
    EXPECT_EQ(ours.PutBlock(VorString(std::string(8187, 'x'))), 0);
    EXPECT_EQ(ours.PutBlock(VorString(std::string(8188, 'x'))), 1);
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
      Ours cut, bounded;
      EXPECT_EQ(Receive(cut, row.read, row.bytes.substr(0, size)), 1) << row.bytes << size;
      EXPECT_EQ(cut.Value(), "") << row.bytes << size;
      EXPECT_EQ(cut.Message(), size < 4 ? row.noHeader : row.noRest) << row.bytes << size;
      if (size == 0) continue;  // no bound; others are as good as an end
      EXPECT_EQ(Receive(bounded, row.read, row.bytes, size), 1) << row.bytes << size;
      EXPECT_EQ(bounded.Message(), cut.Message()) << row.bytes << size;
    }
    Ours whole;
    EXPECT_EQ(Receive(whole, row.read, row.bytes, row.bytes.size()), 0) << row.bytes;
    EXPECT_EQ(whole.Value(), row.value);
  }
  Ours pieces;
  Receive(pieces, &Ours::Text, Header(10241) + 'a' + std::string(10239, '\0') + 'b');
  EXPECT_EQ(pieces.Value(), "ab");
  char buffer[8] = {};
  EXPECT_EQ(socketsaferead(-1, buffer, 0) + socketsaferead(-1, buffer, 4), 0);
}

TEST(Blocks, HostileBytesAreRefused) {
  // A few bytes that name long words again and again, for a text above all sizes.
  std::string blown =
      kMark + Integer(0) + Word(std::string(1 << 15, 'x')) + Integer(-1) + Integer(512);
  for (int i = 0; i < 512; ++i) blown += Integer(0);
  const struct {
    Reading read;
    std::string bytes;
    const char* message = kNotFull;
  } rows[] = {
      {&Ours::String, Integer(-1) + "abc", kNoSize},
      {&Ours::String, Integer(INT32_MAX) + "abc", kNoSize},
      {&Ours::Binary, kMark + "abc", "Unable to alloc memory for GetBinBlock"},
      // Words that were never defined, and more than there can be.
      {&Ours::Text, kMark + Integer(-1) + Integer(1) + Integer(0)},
      {&Ours::Text, kMark + Integer(-1) + Integer(INT32_MAX)},
      // Headers of a size above all others, of 1 from a digit below 0, and of 0.
      {&Ours::Text, std::string(400, '\xbf')},
      {&Ours::Binary, std::string(400, '\xa0')},
      {&Ours::List, "\x1f   x"},
      {&Ours::Text, "\x60\x1f  "},
      {&Ours::Text, blown},
  };
  for (const auto& row : rows) {
    Ours ours;
    EXPECT_EQ(Receive(ours, row.read, row.bytes), 1) << row.bytes.substr(0, 20);
    EXPECT_EQ(ours.Message(), row.message) << row.bytes.substr(0, 20);
  }
}
