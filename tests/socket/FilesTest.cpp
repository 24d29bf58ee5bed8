#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "socket/RawPeer.h"
#include "socket/SocketBytes.h"
#include "socket/TASocket.h"
#include "support/TempDir.h"

namespace {

class Files : public testing::Test {
 protected:
  VorString Path(const char* name) const { return VorString(dir / name); }

  // The result of a file that arrives as these bytes.
  int Receive(const std::string& bytes, bool isText = false) {
    TASocket ours;
    const RawPeer peer(ours, bytes);
    const int result = isText ? ours.GetFileASCII(Path("in"), 0) : ours.GetFile(Path("in"), 0);
    message = ours.GetErrMsg();
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

std::string Header(std::size_t size) {
  unsigned char header[4];
  SetSize(header, static_cast<int>(size));
  return {header, header + 4};
}

// A stream of blocks that each have the room of the buffer, the first what \a first leaves of it.
std::string StreamOf(const std::string& content, std::size_t first) {
  std::string stream;
  std::size_t room = first;
  for (std::size_t at = 0; at < content.size(); room = 8188) {
    const std::string block = content.substr(at, room);
    stream += Header(block.size()) + block;
    at += block.size();
  }
  const std::string count = std::to_string(content.size());
  return stream + Header(0) + Header(count.size()) + count;
}

}  // namespace

TEST_F(Files, TravelAsBlocksOfTheBufferSize) {
  for (const std::size_t size : {0u, 1u, 8187u, 8188u, 8189u, 16376u, 20000u, 300000u}) {
    const std::string content = Sized(size);
    dir.Write("out", content);
    TASocket ours;
    const RawPeer peer(ours);
    int result = -1;
    std::thread sender([&] {
      ours.PutBlock("before");  // which takes its room of the first block
      result = ours.PutFile(Path("out"));
      ours.Close();
    });
    EXPECT_EQ(peer.ReceiveAll(), "&   before" + StreamOf(content, 8178)) << size;
    sender.join();
    EXPECT_EQ(result, 0);
  }
}

TEST_F(Files, ArriveWholeInBothModes) {
  const std::string content = Sized(1000003);
  dir.Write("out", content);
  for (const bool compressed : {false, true}) {
    if (compressed) setenv("TASocketCompress", "", 1);
    TASocket server, left, right;
    server.OpenServer(0);
    left.OpenClient("localhost", server.GetPort());
    server.GetQuery(right);
    std::thread sender([&] {
      for (int i = 0; i < 2; ++i) EXPECT_EQ(left.PutFile(Path("out")), 0);
      left.Flush();
    });
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(right.GetFile(Path("in"), 10), 0) << right.GetErrMsg();
      EXPECT_TRUE(dir.Read("in") == content);
    }
    sender.join();
    unsetenv("TASocketCompress");
  }
}

TEST_F(Files, TravelAsBlocksThatAHeaderCanTell) {
  const std::string content = std::string(16777215, 'x') + "not lost";
  dir.Write("out", content);
  TASocket server, left(1 << 25), right(1 << 25);
  server.OpenServer(0);
  left.OpenClient("localhost", server.GetPort());
  server.GetQuery(right);
  std::thread sender([&] {
    EXPECT_EQ(left.PutFile(Path("out")), 0);
    left.Close();
  });
  EXPECT_EQ(right.GetFile(Path("in"), 10), 0) << right.GetErrMsg();
  EXPECT_TRUE(dir.Read("in") == content);
  right.Close();  // or the sender waits for ever after a failure
  sender.join();
}

TEST_F(Files, AsTextLoseTheirCarriageReturns) {
  EXPECT_EQ(Receive(StreamOf("a\r\n\rb\r\n", 3), true), 0);
  EXPECT_EQ(dir.Read("in"), "a\nb\n");
}

TEST_F(Files, CutShortAtAnyByteKeepWhatArrived) {
  const std::string stream = StreamOf("abcdef", 4);  // of four and of two bytes
  for (std::size_t size = 0; size < stream.size(); ++size) {
    EXPECT_EQ(Receive(stream.substr(0, size)), 1) << size;
    EXPECT_EQ(dir.Read("in"), size < 8 ? "" : size < 14 ? "abcd" : "abcdef") << size;
    const bool isInBlock = (size >= 4 && size < 8) || (size >= 12 && size < 14) || size >= 22;
    EXPECT_EQ(message.substr(0, 24),
              isInBlock ? "Unable to get full block" : "Unable to get block size")
        << size;
  }
  EXPECT_EQ(Receive(stream), 0);
}

TEST_F(Files, HostileStreamsAreRefused) {
  EXPECT_EQ(Receive("$   abcd    !   5"), 1);
  EXPECT_EQ(message, "Wrong byte count in GetFile");
  EXPECT_EQ(dir.Read("in"), "abcd");
  EXPECT_EQ(Receive(Header(8193) + Sized(8193)), 1);
  EXPECT_EQ(message, "Unable to get full block");
  for (const char* header : {"\x9f```abc", "\x1f   x    !   1"}) {
    EXPECT_EQ(Receive(header), 1);
    EXPECT_EQ(message, "Unable to get full block");
  }
}

TEST_F(Files, LocalFailuresTellWhy) {
  TASocket ours;
  const RawPeer peer(ours, StreamOf("abc", 8188));
  for (const VorString& path : {Path("missing"), VorString(dir.Path())}) {
    EXPECT_EQ(ours.PutFile(path), 1);
    EXPECT_STREQ(ours.GetErrMsg(), "Unable to read file for TASocket::PutFile");
  }
  for (const char* path : {"missing/in", "/dev/full"}) {
    EXPECT_EQ(ours.GetFile(path, 0), 1);
    EXPECT_STREQ(ours.GetErrMsg(), "Unable to write in file for TASocket::GetFile");
  }
  ours.Close();
  EXPECT_EQ(peer.ReceiveAll(), "");
}
