#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "perfo/TAPerfo.h"
#include "socket/Peers.h"

namespace {

using namespace std::string_literals;

VorListValVorString ListOf(const std::vector<const char*>& elements) {
  VorListValVorString list;
  for (const char* element : elements) list.Append(element);
  return list;
}

// The result of a read of \a bytes, after which the peer has closed.
int Receive(Ours& ours, Reading read, const std::string& bytes, std::size_t limit = 0) {
  ours.SetReadLimits(0, static_cast<int>(limit));
  const RawPeer peer(ours, bytes);
  return (ours.*read)();
}

const std::string kRefused = "Unable to put block in buffer (block size is ";

// The words of "a  b a" in the second block of a connection, and in the first one.
const std::string kAgain =
    Integer(-1) + Integer(4) + Integer(0) + Integer(1) + Integer(2) + Integer(0);
const std::string kDefined =
    Integer(0) + Word("a") + Integer(1) + Word("") + Integer(2) + Word("b") + kAgain;

}  // namespace

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
    ours.Write(VorString("w\0rd"s));
  });
  EXPECT_EQ(bytes,
            "    #   abc%   a b c    #   x\0y\xfe\xff\xff\xff\x04\x03\x02\x01\x04\0\0\0w\0rd"s);
  EXPECT_EQ(writing.Total(), 3 + 5 + 3 + 4 + 4 + 12);  // the length of a word twice
  const RawPeer peer(ours, "    #   abc#   a b#   xyz");
  ours.SetReadLimits(60, 7);  // of each by itself
  for (const Reading read : {&Ours::Text, &Ours::Text, &Ours::List, &Ours::Binary}) {
    EXPECT_EQ((ours.*read)(), 0);
  }
  EXPECT_EQ(reading.Total(), 3 + 3);  // text blocks only
}

TEST(Blocks, CompressedHaveTheirBytesOnEachConnection) {
  Ours ours;
  for (int i = 0; i < 2; ++i) {
    setenv("TASocketCompress", "", 1);
    const std::string bytes = BytesOf(ours, [&] {
      EXPECT_EQ(ours.PutBlock("a  b a"), 0);
      EXPECT_EQ(ours.PutBlock("a  b a"), 0);
      EXPECT_EQ(ours.PutBlock(""), 0);
      EXPECT_EQ(ours.PutBlock(ListOf({"a b", ""})), 0);
      EXPECT_EQ(ours.PutBlock(VorListValVorString()), 0);
    });
    unsetenv("TASocketCompress");
    EXPECT_EQ(bytes, "\x9a```" + kDefined + "\x9a```" + kAgain + "    \x9e```" + Integer(3) +
                         Word("a b") + Integer(-1) + Integer(2) + Integer(3) + Integer(1) + kMark +
                         Integer(-1) + Integer(0));
  }
  {
    const RawPeer peer(ours);
    peer.Send(kMark + kDefined + "!   " + kAgain);  // now a positive size is the same
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(ours.Text(), 0);
      EXPECT_EQ(ours.Value(), "a  b a");
    }
    ours.PutBlock("b");  // compressed, too
    ours.Close();
    EXPECT_EQ(peer.ReceiveAll(),
              kMark + Integer(0) + Word("b") + Integer(-1) + Integer(1) + Integer(0));
  }
  EXPECT_EQ(Receive(ours, &Ours::Text, kMark + kAgain), 1);
  EXPECT_EQ(ours.Message(), kNotFull);
  EXPECT_EQ(BytesOf(ours, [&] { ours.PutBlock("x"); }), "!   x");
}

TEST(Blocks, MustFitTheBuffer) {
  const std::vector<char> huge(TASocket::kLargestBlock + 1);
  Ours ours;
  const std::string bytes = BytesOf(ours, [&] {
    EXPECT_EQ(ours.PutBlock(VorString(std::string(8187, 'x'))), 0);
    EXPECT_EQ(ours.PutBlock(VorString(std::string(8188, 'x'))), 1);
    EXPECT_EQ(ours.PutBinBlock(16777216, huge.data()), 1);
    EXPECT_EQ(ours.LastFailure(), Failure(kRefused + "16777216)", EMSGSIZE));
    EXPECT_EQ(ours.PutBinBlock(TASocket::kLargestBlock, huge.data()), 0);
    setenv("TASocketCompress", "", 1);
    const std::string half(8388608, 'x');
    EXPECT_EQ(ours.PutBlock(ListOf({half.c_str(), half.c_str()})), 1);
    EXPECT_EQ(ours.Message(), kRefused + "16777217)");
    unsetenv("TASocketCompress");
  });
  EXPECT_EQ(bytes.size(), 8191u + 16777219u);
  EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(8191, 4), "[_! ____");

  Ours least(-1);
  const std::string small = BytesOf(least, [&] {
    EXPECT_EQ(least.PutBlock(""), 0);
    EXPECT_EQ(least.Write(VorString("longer than the buffer")), 0);
    EXPECT_EQ(least.PutBlock("x"), 1);
    EXPECT_EQ(least.PutBinBlock(9, "123456789"), 0);
  });
  EXPECT_EQ(small, "    " + Word("longer than the buffer") + ")   123456789");
}

TEST(Blocks, MessagesOutliveTheirSocket) {
  std::optional<Ours> first(std::in_place);
  Ours second;
  const RawPeer peers[] = {RawPeer(*first), RawPeer(second)};
  first->PutBinBlock(INT32_MIN, nullptr);
  const char* const message = first->GetErrMsg();
  first.reset();
  for (int size = -1000; size < 0; ++size) second.PutBinBlock(size, nullptr);
  EXPECT_EQ(second.Message(), kRefused + "-1)");
  EXPECT_EQ(message, kRefused + "-2147483648)");
}

TEST(Blocks, CutShortAtAnyByteFail) {
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
      EXPECT_EQ(cut.LastFailure(), Failure(size < 4 ? row.noHeader : row.noRest, 0)) << row.bytes;
      if (size == 0) continue;  // no limit; another fails like an end
      EXPECT_EQ(Receive(bounded, row.read, row.bytes, size), 1) << row.bytes << size;
      EXPECT_EQ(bounded.LastFailure(), Failure(cut.Message(), EMSGSIZE)) << row.bytes << size;
    }
    Ours whole;
    EXPECT_EQ(Receive(whole, row.read, row.bytes, row.bytes.size()), 0) << row.bytes;
    EXPECT_EQ(whole.Value(), row.value);
  }
  Ours pieces;
  Receive(pieces, &Ours::Text, Header(10241) + 'a' + std::string(10239, '\0') + 'b');
  EXPECT_EQ(pieces.Value(), "ab");
  char buffer[8] = {};
  EXPECT_EQ(socketsaferead(-1, buffer, 0), 0);
  EXPECT_EQ(socketsaferead(-1, buffer, 4), 0);
}

TEST(Blocks, HostileBytesAreRefused) {
  // A few bytes that name a long word again and again: for a text above all sizes, or above the
  // limit of the bytes that name it.
  const auto blown = [](std::size_t size, int count) {
    std::string bytes = kMark + Integer(0) + Word(std::string(size, 'x')) + Integer(-1);
    for (int i = -1; i < count; ++i) bytes += Integer(i < 0 ? count : 0);
    return bytes;
  };
  const struct {
    Reading read;
    std::string bytes;
    Failure failure = {kNotFull, EBADMSG};
    std::size_t limit = 0;
  } rows[] = {
      {&Ours::String, Integer(-1) + "abc", {kNoSize, EBADMSG}},
      {&Ours::String, Integer(INT32_MAX) + "abc", {kNoSize, 0}},
      {&Ours::Binary, kMark + "abc", {"Unable to alloc memory for GetBinBlock", EBADMSG}},
      {&Ours::Text, kMark + Integer(-1) + Integer(1) + Integer(0)},
      {&Ours::Text, kMark + Integer(-1) + Integer(INT32_MAX), {kNotFull, EMSGSIZE}},  // words
      // Headers of a size above all others, of 1 from a digit below 0, and of 0.
      {&Ours::Text, std::string(400, '\xbf')},
      {&Ours::Binary, std::string(400, '\xa0')},
      {&Ours::List, "\x1f   x"},
      {&Ours::Text, "\x60\x1f  "},
      {&Ours::Text, blown(1 << 15, 512), {kNotFull, EMSGSIZE}},
      {&Ours::Text, blown(30, 2), {kNotFull, EMSGSIZE}, 58},
      // Definitions of more than a block can hold.
      {&Ours::Text, kMark + Integer(0) + Integer(16777216), {kNoSize, EMSGSIZE}},
      {&Ours::Text,
       kMark + Integer(0) + Word("x") + Integer(1) + Integer(16777214),
       {kNoSize, EMSGSIZE}},
  };
  for (const auto& row : rows) {
    Ours ours;
    EXPECT_EQ(Receive(ours, row.read, row.bytes, row.limit), 1) << row.bytes.substr(0, 20);
    EXPECT_EQ(ours.LastFailure(), row.failure) << row.bytes.substr(0, 20);
  }
}
