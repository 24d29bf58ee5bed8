#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "base/VorListValVorString.h"
#include "perfo/TAPerfo.h"
#include "socket/RawPeer.h"
#include "socket/SocketBytes.h"
#include "socket/TASocket.h"

namespace {

using namespace std::string_literals;

// Switches compression on for as long as it lives.
struct Compression {
  Compression() { setenv("TASocketCompress", "", 1); }
  ~Compression() { unsetenv("TASocketCompress"); }
};

VorListValVorString List(const std::vector<const char*>& elements) {
  VorListValVorString list;
  for (const char* element : elements) list.Append(element);
  return list;
}

std::string Joined(const VorListValVorString& list) {
  std::string all;
  for (int i = 1; i <= list.Size(); ++i) all += std::string(list[i].View()) + "|";
  return all;
}

std::string TotalOf(TAPerfo& counter) {
  VorString line;
  counter.Report(line);
  return std::string(line.SubString(0, static_cast<unsigned>(line.FindPosition(" in "))).View());
}

// What a socket sends for some calls.
std::string BytesOf(const std::function<void(TASocket&)>& write) {
  TASocket ours;
  const RawPeer peer(ours);
  write(ours);
  EXPECT_EQ(ours.Close(), 0);
  return peer.ReceiveAll();
}

// How each kind of read ends on some bytes, after which the peer has closed.
struct Outcome {
  int result;
  std::string value;
  std::string message;
};

using Reader = std::function<Outcome(TASocket&)>;

Outcome ReadText(TASocket& socket) {
  VorString text("before");
  const int result = socket.GetBlock(text, 0);
  return {result, std::string(text.View()), socket.GetErrMsg()};
}
Outcome ReadList(TASocket& socket) {
  VorListValVorString list = List({"before"});
  const int result = socket.GetBlock(list, 0);
  return {result, Joined(list), socket.GetErrMsg()};
}
Outcome ReadBinary(TASocket& socket) {
  int size = -1;
  void* data = nullptr;
  const int result = socket.GetBinBlock(&size, &data, 0);
  const std::string value(static_cast<char*>(data), data ? static_cast<std::size_t>(size) : 0);
  free(data);
  return {result, value, socket.GetErrMsg()};
}
Outcome ReadString(TASocket& socket) {
  VorString text;
  const int result = socket.Read(text, 0);
  return {result, std::string(text.View()), socket.GetErrMsg()};
}
Outcome ReadInteger(TASocket& socket) {
  int value = 0;
  const int result = socket.Read(value, 0);
  return {result, std::to_string(value), socket.GetErrMsg()};
}

Outcome Receive(const Reader& read, const std::string& bytes, int limit = 0) {
  TASocket ours;
  ours.SetReadLimits(0, limit);
  const RawPeer peer(ours, bytes);
  return read(ours);
}

const char* const kNoHeader = "Unable to get block size ";
const char* const kNoSize = "Unable to get block size";
const char* const kNotFull = "Unable to get full block";

// a b a, as the second block of a connection sends it, and all of a first one.
const std::string kAgain = Integer(-1) + Integer(3) + Integer(0) + Integer(1) + Integer(0);
const std::string kDefined = Integer(0) + Word("a") + Integer(1) + Word("b") + kAgain;

}  // namespace

TEST(BlockHeader, IsPrintableAndComesBack) {
  const struct {
    int size;
    const char* bytes;
  } rows[] = {{0, "    "}, {63, "_   "},   {64, " !  "},
              {3, "#   "}, {8187, "[_! "}, {16777215, "____"}};
  for (const auto& row : rows) {
    unsigned char header[4];
    SetSize(header, row.size);
    EXPECT_EQ(memcmp(header, row.bytes, 4), 0) << row.size;
    EXPECT_EQ(GetSize(header), row.size);
  }
}

TEST(BlockHeader, OfANegativeSizeIsNegative) {
  for (const int size : {-1, -63, -64, -65, -5000, -16777215, INT32_MIN}) {
    unsigned char header[4];
    SetSize(header, size);
    for (const int byte : header) EXPECT_TRUE(byte >= 96 && byte < 160) << size;
    EXPECT_LT(GetSize(header), 0) << size;
  }
  unsigned char one[4];
  SetSize(one, -1);
  EXPECT_EQ(std::string(one, one + 4), "\x9f```");
}

TEST(Blocks, HaveTheirBytes) {
  EXPECT_EQ(BytesOf([](TASocket& s) {
              EXPECT_EQ(s.PutBlock(""), 0);
              EXPECT_EQ(s.PutBlock("abc"), 0);
              EXPECT_EQ(s.PutBlock(List({"a b", "c"})), 0);
              EXPECT_EQ(s.PutBlock(VorListValVorString()), 0);
              EXPECT_EQ(s.PutBinBlock(3, "x\0y"), 0);
              EXPECT_EQ(s.Write(-2), 0);
              EXPECT_EQ(s.Write(0x01020304), 0);
              EXPECT_EQ(s.Write(VorString("word")), 0);
            }),
            "    #   abc%   a b c    #   x\0y\xfe\xff\xff\xff\x04\x03\x02\x01\x04\0\0\0word"s);
}

TEST(Blocks, CompressedHaveTheirBytes) {
  const Compression on;
  const std::string bytes = BytesOf([](TASocket& s) {
    for (int i = 0; i < 2; ++i) EXPECT_EQ(s.PutBlock("a b a"), 0);
    EXPECT_EQ(s.PutBlock(""), 0);
    EXPECT_EQ(s.PutBlock("a  b"), 0);
    EXPECT_EQ(s.PutBlock(List({"a b", ""})), 0);
  });
  unsigned char mark[4];
  SetSize(mark, -5);
  const std::string five(mark, mark + 4);
  SetSize(mark, -4);
  const std::string four(mark, mark + 4);
  const std::string blocks = five + kDefined + five + kAgain + "    " + four + Integer(2) +
                             Word("") + Integer(-1) + Integer(3) + Integer(0) + Integer(2) +
                             Integer(1);
  EXPECT_EQ(bytes.substr(0, blocks.size()), blocks);
  EXPECT_EQ(bytes.substr(blocks.size() + 4),
            Integer(3) + Word("a b") + Integer(-1) + Integer(2) + Integer(3) + Integer(2));
}

TEST(Blocks, ArriveInBothModes) {
  for (const bool compressed : {false, true}) {
    TASocket server, left, right;
    ASSERT_EQ(server.OpenServer(0), 0);
    ASSERT_EQ(left.OpenClient("localhost", server.GetPort()), 0);
    ASSERT_EQ(server.GetQuery(right), 0);
    if (compressed) setenv("TASocketCompress", "", 1);
    left.PutBlock("a  b a");
    left.PutBlock(List({"x y", "", "z"}));
    left.Flush();
    unsetenv("TASocketCompress");
    EXPECT_EQ(ReadText(right).value, "a  b a");
    EXPECT_EQ(ReadList(right).value, compressed ? "x y||z|" : "x|y|z|");
    right.PutBlock(List({"an answer", "a"}));  // in the form in which it was asked
    right.Flush();
    EXPECT_EQ(ReadList(left).value, compressed ? "an answer|a|" : "an|answer|a|");
  }
}

TEST(Blocks, DictionariesBeginAnewOnTheNextConnection) {
  const Compression on;
  TASocket ours;
  for (int i = 0; i < 2; ++i) {
    const RawPeer peer(ours);
    ours.PutBlock("a b a");
    ours.Close();
    EXPECT_EQ(peer.ReceiveAll().substr(4), kDefined);
  }
  {
    const RawPeer peer(ours, "\x9f```"s + kDefined);
    EXPECT_EQ(ReadText(ours).value, "a b a");
  }
  {
    const RawPeer peer(ours, "\x9f```"s + kAgain);
    EXPECT_EQ(ReadText(ours).message, kNotFull);
  }
}

TEST(Blocks, MustFitTheBuffer) {
  TASocket ours;
  const RawPeer peer(ours);
  EXPECT_EQ(ours.PutBlock(VorString(std::string(8187, 'x'))), 0);
  EXPECT_EQ(ours.PutBlock(VorString(std::string(8188, 'x'))), 1);
  EXPECT_STREQ(ours.GetErrMsg(), "Unable to put block in buffer (block size is 8188)");
  std::vector<char> huge(16777216);
  EXPECT_EQ(ours.PutBinBlock(16777216, huge.data()), 1);
  EXPECT_STREQ(ours.GetErrMsg(), "Unable to put block in buffer (block size is 16777216)");
  EXPECT_EQ(ours.PutBinBlock(-1, huge.data()), 1);
  {
    const Compression on;
    ours.SetStallLimit(1);  // nobody takes what should not be sent
    const std::string half(8388608, 'x');
    EXPECT_EQ(ours.PutBlock(List({half.c_str(), half.c_str()})), 1);
    EXPECT_STREQ(ours.GetErrMsg(), "Unable to put block in buffer (block size is 16777217)");
  }
  ours.Close();
  EXPECT_EQ(peer.ReceiveAll().size(), 8191u);

  TASocket smallest(-1);
  const RawPeer other(smallest);
  EXPECT_EQ(smallest.PutBlock(""), 0);
  EXPECT_EQ(smallest.PutBlock("x"), 1);
  EXPECT_EQ(smallest.Write(VorString("longer than the buffer")), 0);
  EXPECT_EQ(smallest.PutBinBlock(9, "123456789"), 0);
  smallest.Close();
  EXPECT_EQ(other.ReceiveAll(), "    " + Word("longer than the buffer") + ")   123456789");
}

TEST(Blocks, LargeBinaryBlocksArrive) {
  std::string data(16777215, '\0');
  for (std::size_t i = 0; i < data.size(); i += 7) data[i] = static_cast<char>(i / 7);
  TASocket server, left, right;
  server.OpenServer(0);
  left.OpenClient("127.0.0.1", server.GetPort());
  server.GetQuery(right);
  std::thread sender([&] {
    left.Write(1);
    EXPECT_EQ(left.PutBinBlock(static_cast<int>(data.size()), data.data()), 0);
    EXPECT_EQ(left.PutBinBlock(0, nullptr), 0);
    left.Close();
  });
  EXPECT_EQ(ReadInteger(right).value, "1");
  EXPECT_TRUE(ReadBinary(right).value == data);
  EXPECT_EQ(ReadBinary(right).result, 0);
  sender.join();
}

TEST(Blocks, AreCounted) {
  TAPerfo reading("read"), writing("written");
  TASocket ours;
  ours.SetPerfo(&reading, &writing);
  const RawPeer peer(ours, "    #   abc\x01\0\0\0%   vwxyz"s);
  ours.PutBlock("12345");
  EXPECT_EQ(TotalOf(writing), "written 5");
  ours.Write(1);
  EXPECT_EQ(TotalOf(writing), "written 9");
  ours.Write(VorString("abc"));  // its length counts twice
  EXPECT_EQ(TotalOf(writing), "written 20");
  ours.PutBinBlock(100, std::string(100, 'x').data());
  EXPECT_EQ(TotalOf(writing), "written 120");
  ReadText(ours);
  EXPECT_EQ(TotalOf(reading), "read 0");
  ReadText(ours);
  ReadInteger(ours);
  EXPECT_EQ(TotalOf(reading), "read 3");
  ReadBinary(ours);
  EXPECT_EQ(TotalOf(reading), "read 3");  // text blocks only
}

TEST(Blocks, CutShortAtAnyByteEndInTheirError) {
  const struct {
    Reader read;
    std::string bytes;
    std::size_t header;  // bytes of it
    const char* noHeader;
    const char* noRest;
    const char* value;  // of the whole
  } rows[] = {
      {ReadText, "#   abc", 4, kNoHeader, kNotFull, "abc"},
      {ReadList, "#   a b", 4, kNoHeader, kNotFull, "a|b|"},
      {ReadText, "\x9f```"s + kDefined, 4, kNoHeader, kNoSize, "a b a"},
      {ReadList, "\x9f```"s + kDefined, 4, kNoHeader, kNoSize, "a|b|a|"},
      {ReadBinary, "#   abc", 4, kNoSize, kNotFull, "abc"},
      {ReadString, Word("abc"), 4, kNoSize, kNoSize, "abc"},
      {ReadInteger, Integer(-7), 4, kNoSize, kNoSize, "-7"},
  };
  for (const auto& row : rows) {
    for (std::size_t size = 0; size < row.bytes.size(); ++size) {
      const Outcome cut = Receive(row.read, row.bytes.substr(0, size));
      EXPECT_EQ(cut.result, 1) << row.bytes << size;
      EXPECT_EQ(cut.message, size < row.header ? row.noHeader : row.noRest) << row.bytes << size;
      // A bound is as good as an end.
      if (size > 0) {
        EXPECT_EQ(Receive(row.read, row.bytes, static_cast<int>(size)).message, cut.message);
      }
    }
    EXPECT_EQ(Receive(row.read, row.bytes, static_cast<int>(row.bytes.size())).value, row.value);
  }
}

TEST(Blocks, HostileBytesAreRefused) {
  const std::string mark = "\x9f```";
  const struct {
    const char* what;
    Reader read;
    std::string bytes;
    const char* message;
  } rows[] = {
      {"length below zero", ReadString, Integer(-1) + "abc", kNoSize},
      {"length without bytes", ReadString, Integer(INT32_MAX) + "abc", kNoSize},
      {"size without bytes", ReadText, "____abc", kNotFull},
      {"size without bytes", ReadBinary, "____abc", kNotFull},
      {"compressed mark", ReadBinary, mark + "abc", "Unable to alloc memory for GetBinBlock"},
      {"word never defined", ReadText, mark + Integer(-1) + Integer(1) + Integer(0), kNotFull},
      {"word never defined", ReadList, mark + Integer(-1) + Integer(1) + Integer(-5), kNotFull},
      {"impossible count", ReadText, mark + Integer(-1) + Integer(INT32_MAX), kNotFull},
      {"above all sizes", ReadText, std::string(400, '\xbf'), kNotFull},
      {"above all sizes", ReadBinary, std::string(400, '\xa0'), kNotFull},
      {"one, from a digit below 0", ReadText, "\x1f   x", kNotFull},
      {"one, from a digit below 0", ReadList, "\x1f   x", kNotFull},
      {"one, from a digit below 0", ReadBinary, "\x1f   x", kNotFull},
      {"zero, from opposite digits", ReadText, "\x60\x1f  ", kNotFull},
  };
  for (const auto& row : rows) {
    const Outcome outcome = Receive(row.read, row.bytes);
    EXPECT_EQ(outcome.result, 1) << row.what;
    EXPECT_EQ(outcome.message, row.message) << row.what;
  }
  // A word of a megabyte, named a hundred times.
  std::string blown =
      mark + Integer(0) + Word(std::string(1 << 20, 'x')) + Integer(-1) + Integer(100);
  for (int i = 0; i < 100; ++i) blown += Integer(0);
  for (const Reader& read : {Reader(ReadText), Reader(ReadList)}) {
    TASocket ours;
    const RawPeer peer(ours);
    std::thread sender([&] { peer.Send(blown); });
    EXPECT_EQ(read(ours).message, kNotFull);
    sender.join();
  }
  // Definitions, used or not, are no more than a block.
  const std::string half = Word(std::string(8388608, 'x'));
  const std::string none = Integer(-1) + Integer(0);
  for (const std::string& words : {Word(std::string(16777216, 'x')), half + Integer(1) + half}) {
    TASocket ours;
    const RawPeer peer(ours);
    std::thread sender([&] { peer.Send(mark + Integer(0) + words + none); });
    EXPECT_EQ(ReadText(ours).message, kNoSize);
    ours.Close();
    sender.join();
  }
}

TEST(Blocks, OddCompressedBlocksAreTaken) {
  const std::string mark = "\x9f```";
  const std::string none = mark + Integer(-1) + Integer(-3);
  EXPECT_EQ(Receive(ReadText, none).result, 0);
  // The first word under an identifier stays, and any number will do.
  const std::string twice = mark + Integer(-7) + Word("first") + Integer(-7) + Word("second") +
                            Integer(-1) + Integer(1) + Integer(-7);
  EXPECT_EQ(Receive(ReadText, twice).value, "first");
  // Once compressed, a positive size is no different.
  TASocket ours;
  const RawPeer peer(ours, mark + kDefined + "!   " + kAgain);
  EXPECT_EQ(ReadText(ours).value + ReadText(ours).value, "a b aa b a");
}

TEST(Blocks, NulBytesEndTheirPiece) {
  EXPECT_EQ(Receive(ReadText, "%   ab\0cd"s).value, "ab");
  EXPECT_EQ(Receive(ReadString, Word("ab\0cd"s)).value, "ab");
  unsigned char header[4];
  SetSize(header, 10241);
  EXPECT_EQ(
      Receive(ReadText, std::string(header, header + 4) + 'a' + std::string(10239, '\0') + 'b')
          .value,
      "ab");
}

TEST(Blocks, SafeReadStopsAtTheEnd) {
  char buffer[8] = {};
  EXPECT_EQ(socketsaferead(-1, buffer, 0), 0);
  EXPECT_EQ(socketsaferead(-1, buffer, 4), 0);
}
