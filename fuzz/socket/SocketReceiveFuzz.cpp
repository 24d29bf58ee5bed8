#include <netinet/in.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/VorListValVorString.h"
#include "socket/TASocket.h"

namespace {

void Expect(bool condition) {
  if (!condition) abort();
}

TASocket& Server() {
  static TASocket server;
  if (!server.IsOpen()) Expect(server.OpenServer(0) == 0);
  return server;
}

// A peer that sends the bytes and closes.
void Connect(TASocket& client, const std::uint8_t* data, std::size_t size) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<in_port_t>(Server().GetPort()));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int peer = socket(AF_INET, SOCK_STREAM, 0);
  // Closing resets the connection and frees its port at once; otherwise ports would run out.
  const linger reset = {1, 0};
  Expect(connect(peer, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0);
  Expect(Server().GetQuery(client) == 0);
  Expect(send(peer, data, size, 0) == static_cast<ssize_t>(size));
  Expect(shutdown(peer, SHUT_WR) == 0);
  setsockopt(peer, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  static int previous = -1;
  if (previous >= 0) close(previous);
  previous = peer;  // closed when its bytes have been read
}

int ReadOne(int kind, int largest, TASocket& socket) {
  VorString text;
  VorListValVorString list;
  int result = 0, n = 0;
  void* data = nullptr;
  switch (kind) {
    case 0:
      result = socket.GetBlock(text, 0);
      Expect(text.Length() <= largest);
      return result;
    case 1:
      return socket.GetBlock(list, 0);
    case 2:
      result = socket.GetBinBlock(&n, &data, 0);
      Expect((data != nullptr) == (result == 0));
      free(data);
      return result;
    case 3:
      return socket.Read(text, 0);
    case 4:
      return socket.Read(n, 0);
    case 5:
      return socket.GetFile("/dev/null", 0);
    default:
      return socket.GetFileASCII("/dev/null", 0);
  }
}

}  // namespace

// Input: a byte for each of up to eight reads, then a newline, then the bytes of the peer.  A byte
// above 127 limits its read.  Whatever the bytes are, each read succeeds or fails with a message.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto* const kindsEnd = static_cast<const std::uint8_t*>(memchr(data, '\n', size));
  if (kindsEnd == nullptr || kindsEnd - data > 8 || size > 60000) return 0;
  TASocket client;
  const std::uint8_t* const bytes = kindsEnd + 1;
  Connect(client, bytes, size - static_cast<std::size_t>(bytes - data));
  for (const std::uint8_t* kind = data; kind < kindsEnd; ++kind) {
    const int bound = *kind > 127 ? 100 : 0;
    client.SetReadLimits(bound, bound);
    const int result = ReadOne(*kind % 7, bound > 0 ? bound : TASocket::kLargestBlock, client);
    Expect(result == 0 || result == 1);
    if (result == 1) Expect(strcmp(client.GetErrMsg(), "no error on socket") != 0);
  }
  client.Close();
  return 0;
}
