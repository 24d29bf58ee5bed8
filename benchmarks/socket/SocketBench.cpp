#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <stdlib.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "base/VorString.h"
#include "socket/TASocket.h"

// The same bytes from one end of a connection on loopback to the other, by the library and by a
// plain loop of system calls.

namespace {

constexpr std::size_t kPiece = 1 << 16;      // of the plain loops
constexpr std::size_t kFileSize = 64 << 20;  // bytes

void Check(bool condition) {
  if (!condition) abort();
}

/// A connection with a plain descriptor at one end or both.
class Connection {
 public:
  Connection() {
    Check(_server.OpenServer(0) == 0);
    left = Connect();
    Check(_server.GetQuery(right) == 0);
  }
  ~Connection() { close(left); }

  int left = -1;
  TASocket right;

 private:
  int Connect() const {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(_server.GetPort()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    Check(connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0);
    return fd;
  }

  TASocket _server;
};

/// A connection with plain descriptors at both ends.
class PlainConnection {
 public:
  PlainConnection() {
    const int server = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    Check(bind(server, generic, size) == 0 && listen(server, 1) == 0);
    Check(getsockname(server, generic, &size) == 0);
    left = socket(AF_INET, SOCK_STREAM, 0);
    Check(connect(left, generic, size) == 0);
    right = accept(server, nullptr, nullptr);
    close(server);
  }
  ~PlainConnection() {
    close(left);
    close(right);
  }

  int left = -1;
  int right = -1;
};

/// A file of kFileSize bytes in the cache of the system.
class File {
 public:
  File() {
    std::string pattern = "/tmp/vor_bench_XXXXXX";
    const int fd = mkstemp(pattern.data());
    path = pattern;
    const std::vector<char> content(kFileSize, 'x');
    Check(write(fd, content.data(), kFileSize) == static_cast<ssize_t>(kFileSize));
    close(fd);
  }
  ~File() { unlink(path.c_str()); }

  std::string path;
};

void SendPlain(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t sent = send(fd, data, size, MSG_NOSIGNAL);
    Check(sent > 0);
    data += sent;
    size -= static_cast<std::size_t>(sent);
  }
}

void Drain(int fd, std::size_t size, int out = -1) {
  static thread_local std::vector<char> piece(kPiece);
  while (size > 0) {
    const ssize_t got = recv(fd, piece.data(), std::min(size, kPiece), 0);
    Check(got > 0);
    if (out >= 0) Check(write(out, piece.data(), static_cast<std::size_t>(got)) == got);
    size -= static_cast<std::size_t>(got);
  }
}

// The bytes of a file on the wire: its blocks, the empty one, and the count.
std::size_t WireSize(std::size_t size) {
  const std::size_t blocks = (size + 8187) / 8188;
  return size + 4 * blocks + 4 + 4 + std::to_string(size).size();
}

template <typename Send, typename Receive>
void Transfer(benchmark::State& state, std::size_t bytes, Send send, Receive receive) {
  for (auto _ : state) {
    std::thread other(receive);
    send();
    other.join();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

// Sending a file to a peer that discards it.

void PutFileOurs(benchmark::State& state) {
  const File file;
  Connection connection;
  Transfer(
      state, kFileSize,
      [&] {
        Check(connection.right.PutFile(VorString(file.path)) == 0);
        Check(connection.right.Flush() == 0);
      },
      [&] { Drain(connection.left, WireSize(kFileSize)); });
}

void PutFileReadSend(benchmark::State& state) {
  const File file;
  const PlainConnection connection;
  std::vector<char> piece(kPiece);
  Transfer(
      state, kFileSize,
      [&] {
        const int in = open(file.path.c_str(), O_RDONLY);
        for (ssize_t got; (got = read(in, piece.data(), kPiece)) > 0;) {
          SendPlain(connection.right, piece.data(), static_cast<std::size_t>(got));
        }
        close(in);
      },
      [&] { Drain(connection.left, kFileSize); });
}

void PutFileSendfile(benchmark::State& state) {
  const File file;
  const PlainConnection connection;
  Transfer(
      state, kFileSize,
      [&] {
        const int in = open(file.path.c_str(), O_RDONLY);
        off_t at = 0;
        while (at < static_cast<off_t>(kFileSize)) {
          Check(sendfile(connection.right, in, &at, kFileSize) > 0);
        }
        close(in);
      },
      [&] { Drain(connection.left, kFileSize); });
}

// From one file to another.

void CopyFileOurs(benchmark::State& state) {
  const File from, to;
  TASocket server, left, right;
  server.OpenServer(0);
  left.OpenClient("127.0.0.1", server.GetPort());
  server.GetQuery(right);
  Transfer(
      state, kFileSize,
      [&] {
        Check(left.PutFile(VorString(from.path)) == 0);
        Check(left.Flush() == 0);
      },
      [&] { Check(right.GetFile(VorString(to.path), 0) == 0); });
}

void CopyFileLoops(benchmark::State& state) {
  const File from, to;
  const PlainConnection connection;
  std::vector<char> piece(kPiece);
  Transfer(
      state, kFileSize,
      [&] {
        const int in = open(from.path.c_str(), O_RDONLY);
        for (ssize_t got; (got = read(in, piece.data(), kPiece)) > 0;) {
          SendPlain(connection.left, piece.data(), static_cast<std::size_t>(got));
        }
        close(in);
      },
      [&] {
        const int out = open(to.path.c_str(), O_WRONLY | O_TRUNC);
        Drain(connection.right, kFileSize, out);
        close(out);
      });
}

// Texts of 8,000 bytes and binary blocks of 16 MB.

constexpr int kTexts = 5000;
constexpr int kTextSize = 8000;
constexpr int kBinarySize = 16000000;

void TextsOurs(benchmark::State& state) {
  TASocket server, left, right;
  server.OpenServer(0);
  left.OpenClient("127.0.0.1", server.GetPort());
  server.GetQuery(right);
  const VorString text(std::string(kTextSize, 't'));
  Transfer(
      state, std::size_t{kTexts} * kTextSize,
      [&] {
        for (int i = 0; i < kTexts; ++i) Check(left.PutBlock(text) == 0);
        left.Flush();
      },
      [&] {
        VorString received;
        for (int i = 0; i < kTexts; ++i) Check(right.GetBlock(received, 0) == 0);
      });
}

void BinaryOurs(benchmark::State& state) {
  TASocket server, left, right;
  server.OpenServer(0);
  left.OpenClient("127.0.0.1", server.GetPort());
  server.GetQuery(right);
  const std::vector<char> data(kBinarySize, 'b');
  Transfer(
      state, kBinarySize, [&] { Check(left.PutBinBlock(kBinarySize, data.data()) == 0); },
      [&] {
        int size = 0;
        void* received = nullptr;
        Check(right.GetBinBlock(&size, &received, 0) == 0);
        free(received);
      });
}

// Sends pieces of a size, and receives them into memory of the same size.
void Plain(benchmark::State& state, std::size_t size, int count) {
  const PlainConnection connection;
  const std::vector<char> data(size, 'p');
  Transfer(
      state, size * static_cast<std::size_t>(count),
      [&] {
        for (int i = 0; i < count; ++i) SendPlain(connection.left, data.data(), size);
      },
      [&] {
        for (int i = 0; i < count; ++i) {
          char* const received = static_cast<char*>(malloc(size));
          for (std::size_t got = 0; got < size;) {
            const ssize_t n = recv(connection.right, received + got, size - got, 0);
            Check(n > 0);
            got += static_cast<std::size_t>(n);
          }
          benchmark::DoNotOptimize(received);
          free(received);
        }
      });
}

void TextsPlain(benchmark::State& state) {
  Plain(state, kTextSize, kTexts);
}

void BinaryPlain(benchmark::State& state) {
  Plain(state, kBinarySize, 1);
}

BENCHMARK(PutFileOurs)->Name("BM_PutFile/ours")->Arg(64)->UseRealTime();
BENCHMARK(PutFileReadSend)->Name("BM_PutFile/read_send")->Arg(64)->UseRealTime();
BENCHMARK(PutFileSendfile)->Name("BM_PutFile/sendfile")->Arg(64)->UseRealTime();
BENCHMARK(CopyFileOurs)->Name("BM_CopyFile/ours")->Arg(64)->UseRealTime();
BENCHMARK(CopyFileLoops)->Name("BM_CopyFile/loops")->Arg(64)->UseRealTime();
BENCHMARK(TextsOurs)->Name("BM_TextBlocks/ours")->Arg(kTexts)->UseRealTime();
BENCHMARK(TextsPlain)->Name("BM_TextBlocks/send_recv")->Arg(kTexts)->UseRealTime();
BENCHMARK(BinaryOurs)->Name("BM_BinaryBlock/ours")->Arg(16)->UseRealTime();
BENCHMARK(BinaryPlain)->Name("BM_BinaryBlock/send_recv")->Arg(16)->UseRealTime();

}  // namespace
