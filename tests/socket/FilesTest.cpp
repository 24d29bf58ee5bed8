#include <errno.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>

#include "socket/Peers.h"
#include "support/TempDir.h"

namespace {

class Files : public testing::Test {
 protected:
  VorString Path(const char* name) const { return VorString(dir / name); }

  // The result of a file that arrives as \a bytes.
  int Receive(const std::string& bytes, bool isText = false) {
    Ours ours;
    const RawPeer peer(ours, bytes);
    const int result = isText ? ours.GetFileASCII(Path("in"), 0) : ours.GetFile(Path("in"), 0);
    failure = ours.LastFailure();
    return result;
  }

  TempDir dir;
  Failure failure;
};

std::string Sized(std::size_t size) {
  std::string content(size, '\0');
  for (std::size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * i / 13);
  return content;
}

// A stream of blocks that fill the buffer; the first has at most \a first bytes.
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

TEST_F(Files, TravelAsBlocksOfTheBufferSize) {
  for (const std::size_t size : {0u, 1u, 8187u, 8188u, 8189u, 16376u, 20000u, 300000u, 16777223u}) {
    const std::string content = Sized(size);
    dir.Write("out", content);
    const bool isHuge = size > 16777215;
    Ours ours(isHuge ? 1 << 25 : 8192);
    const std::string bytes = BytesOf(ours, [&] {
      ours.PutBlock("before");  // takes room of the first block
      EXPECT_EQ(ours.PutFile(Path("out")), 0);
    });
    EXPECT_TRUE(bytes == "&   before" + StreamOf(content, isHuge ? 16777215 : 8178)) << size;
  }

  std::ifstream version("/proc/version");  // has bytes but no size
  const std::string content(std::istreambuf_iterator<char>(version), {});
  Ours ours;
  EXPECT_EQ(BytesOf(ours, [&] { ours.PutFile("/proc/version"); }), StreamOf(content, 8188));
}

TEST_F(Files, ArriveWholeAfterABlock) {
  const std::string content = Sized(1000003);
  Ours ours;
  const RawPeer peer(ours);
  const std::jthread sending(
      [&] { peer.Send(Header(1000003) + content + StreamOf(content, 8188)); });
  EXPECT_EQ(ours.Binary(), 0);
  EXPECT_TRUE(ours.Value() == content);
  EXPECT_EQ(ours.GetFile(Path("in"), 10), 0) << ours.Message();
  EXPECT_TRUE(dir.Read("in") == content);
  ours.Close();  // or the sender waits for ever after a failure
}

TEST_F(Files, ThatChangeSizeDuringATransferEnd) {
  constexpr std::size_t kSize = 16 << 20;  // more than waits between two sockets
  for (const std::size_t later : {kSize + 100000, kSize - 100000}) {
    dir.Write("out", std::string(kSize, '\0'));
    Ours ours;
    const RawPeer peer(ours);
    const std::jthread writing([&] {
      EXPECT_EQ(ours.PutFile(Path("out")), 0);
      ours.Close();
    });
    std::string bytes = peer.Receive(4);  // now it is being sent
    std::filesystem::resize_file(dir / "out", later);
    bytes += peer.ReceiveAll();
    EXPECT_TRUE(bytes == StreamOf(std::string(std::min(kSize, later), '\0'), 8188)) << later;
  }
}

TEST_F(Files, CutShortAtAnyByteKeepWhatArrived) {
  const std::string stream = StreamOf("abcdef", 4);  // of four and of two bytes
  for (std::size_t size = 0; size < stream.size(); ++size) {
    EXPECT_EQ(Receive(stream.substr(0, size)), 1) << size;
    EXPECT_EQ(dir.Read("in"), size < 8 ? "" : size < 14 ? "abcd" : "abcdef") << size;
    const bool isInBlock = (size >= 4 && size < 8) || (size >= 12 && size < 14) || size >= 22;
    const char* const message = isInBlock ? kNotFull : size < 18 ? kNoSize : kNoHeader;
    EXPECT_EQ(failure, Failure(message, 0)) << size;
  }
  EXPECT_EQ(Receive(stream), 0);
  EXPECT_EQ(Receive(StreamOf("a\r\n\rb\r\n", 3), true), 0);
  EXPECT_EQ(dir.Read("in"), "a\nb\n");
}

TEST_F(Files, HostileStreamsAreRefused) {
  const std::pair<std::string, Failure> rows[] = {
      {Header(8193) + Sized(8193), {kNotFull, EMSGSIZE}},
      {kMark + "abc", {kNotFull, EBADMSG}},
      {"$   abcd    !   5", {"Wrong byte count in GetFile", EBADMSG}}};
  for (const auto& [stream, problem] : rows) {
    EXPECT_EQ(Receive(stream), 1);
    EXPECT_EQ(failure, problem);
  }
  EXPECT_EQ(dir.Read("in"), "abcd");
}

TEST_F(Files, LocalFailuresReportTheReason) {
  Ours ours;
  const RawPeer peer(ours, StreamOf("abc", 8188));
  const std::pair<VorString, int> unreadable[] = {{Path("missing"), ENOENT}, {dir.Path(), EISDIR}};
  for (const auto& [path, problem] : unreadable) {
    EXPECT_EQ(ours.PutFile(path), 1);
    EXPECT_EQ(ours.LastFailure(), Failure("Unable to read file for TASocket::PutFile", problem));
  }
  const std::pair<VorString, int> unwritable[] = {{"missing/in", ENOENT}, {"/dev/full", ENOSPC}};
  for (const auto& [path, problem] : unwritable) {
    EXPECT_EQ(ours.GetFile(path, 0), 1);
    EXPECT_EQ(ours.LastFailure(),
              Failure("Unable to write in file for TASocket::GetFile", problem));
  }
  ours.Close();
  EXPECT_EQ(peer.ReceiveAll(), "");
}
