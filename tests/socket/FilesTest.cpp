#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>

#include "socket/Peers.h"
#include "support/TempDir.h"

namespace {

class Files : public testing::Test {
 protected:
  VorString Path(const char* name) const { return VorString(dir / name); }

  // The result of a file that arrives as these bytes.
  int Receive(const std::string& bytes, bool isText = false) {
    Ours ours;
    const RawPeer peer(ours, bytes);
    const int result = isText ? ours.GetFileASCII(Path("in"), 0) : ours.GetFile(Path("in"), 0);
    message = ours.Message();
    return result;
  }

  TempDir dir;
  std::string message;
};

std::string Sized(std::size_t size) {
  std::string content(size, '\0');
  for (std::size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * i / 13);
  return content;
}

// A stream of blocks that each have the room of the buffer, the first what \a first leaves of it.
std::string StreamOf(const std::string& content, std::size_t first) {
  std::string stream;
  std::size_t room = first;
  for (std::size_t at = 0; at < content.size(); room = 8188) {
    const std::string block = content.substr(at, room);
    stream += Header(static_cast<int>(block.size())) + block;
    at += block.size();
  }
  const std::string count = std::to_string(content.size());
  return stream + Header(0) + Header(static_cast<int>(count.size())) + count;
}

}  // namespace

TEST_F(Files, TravelAsBlocksOfTheBufferSizeThatAHeaderCanTell) {
  for (const std::size_t size : {0u, 1u, 8187u, 8188u, 8189u, 16376u, 20000u, 300000u, 16777223u}) {
    const std::string content = Sized(size);
    dir.Write("out", content);
    const bool isHuge = size > 16777215;
    Ours ours(isHuge ? 1 << 25 : 8192);
    const std::string bytes = BytesOf(ours, [&] {
      ours.PutBlock("before");  // which takes its room of the first block
      EXPECT_EQ(ours.PutFile(Path("out")), 0);
    });
    EXPECT_TRUE(bytes == "&   before" + StreamOf(content, isHuge ? 16777215 : 8178)) << size;
  }
}

TEST_F(Files, ArriveWholeAfterABlock) {
  const std::string content = Sized(1000003);
  dir.Write("out", content);
  Ours server, left, right;
  server.OpenServer(0);
  left.OpenClient("localhost", server.GetPort());
  server.GetQuery(right);
  std::thread sender([&] {
    EXPECT_EQ(left.PutBinBlock(1000003, content.data()), 0);
    EXPECT_EQ(left.PutFile(Path("out")), 0);
    left.Close();
  });
  EXPECT_EQ(right.Binary(), 0);
  EXPECT_TRUE(right.Value() == content);
  EXPECT_EQ(right.GetFile(Path("in"), 10), 0) << right.Message();
  EXPECT_TRUE(dir.Read("in") == content);
  right.Close();  // or the sender waits for ever after a failure
  sender.join();
}

TEST_F(Files, CutShortAtAnyByteKeepWhatArrived) {
  const std::string stream = StreamOf("abcdef", 4);  // of four and of two bytes
  for (std::size_t size = 0; size < stream.size(); ++size) {
    EXPECT_EQ(Receive(stream.substr(0, size)), 1) << size;
    EXPECT_EQ(dir.Read("in"), size < 8 ? "" : size < 14 ? "abcd" : "abcdef") << size;
    const bool isInBlock = (size >= 4 && size < 8) || (size >= 12 && size < 14) || size >= 22;
    EXPECT_EQ(message, isInBlock ? kNotFull : size < 18 ? kNoSize : kNoHeader) << size;
  }
  EXPECT_EQ(Receive(stream), 0);
  EXPECT_EQ(Receive(StreamOf("a\r\n\rb\r\n", 3), true), 0);
  EXPECT_EQ(dir.Read("in"), "a\nb\n");
}

TEST_F(Files, HostileStreamsAreRefused) {
  const std::pair<std::string, const char*> rows[] = {
      {Header(8193) + Sized(8193), kNotFull},
      {kMark + "abc", kNotFull},
      {"$   abcd    !   5", "Wrong byte count in GetFile"}};
  for (const auto& [stream, problem] : rows) {
    EXPECT_EQ(Receive(stream), 1);
    EXPECT_EQ(message, problem);
  }
  EXPECT_EQ(dir.Read("in"), "abcd");
}

TEST_F(Files, LocalFailuresTellWhy) {
  Ours ours;
  const RawPeer peer(ours, StreamOf("abc", 8188));
  for (const VorString& path : {Path("missing"), VorString(dir.Path())}) {
    EXPECT_EQ(ours.PutFile(path), 1);
    EXPECT_EQ(ours.Message(), "Unable to read file for TASocket::PutFile");
  }
  for (const char* path : {"missing/in", "/dev/full"}) {
    EXPECT_EQ(ours.GetFile(path, 0), 1);
    EXPECT_EQ(ours.Message(), "Unable to write in file for TASocket::GetFile");
  }
  ours.Close();
  EXPECT_EQ(peer.ReceiveAll(), "");
}
