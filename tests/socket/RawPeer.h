#ifndef VOR_TESTS_SOCKET_RAWPEER_H
#define VOR_TESTS_SOCKET_RAWPEER_H

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "socket/TASocket.h"

/// The other end of a connection as a plain socket, which shows the very bytes.
class RawPeer {
 public:
  /// Connects \a ours.
  explicit RawPeer(TASocket& ours) {
    TASocket server;
    server.OpenServer(0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(server.GetPort()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    _fd = socket(AF_INET, SOCK_STREAM, 0);
    if (connect(_fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) abort();
    if (server.GetQuery(ours) != 0) abort();
  }
  /// The same, and has \a bytes ready for it and no more.
  RawPeer(TASocket& ours, std::string_view bytes) : RawPeer(ours) {
    Send(bytes);
    shutdown(_fd, SHUT_WR);
  }
  RawPeer(const RawPeer&) = delete;
  RawPeer& operator=(const RawPeer&) = delete;
  ~RawPeer() { close(_fd); }

  void Send(std::string_view bytes) const {
    if (send(_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0) abort();
  }

  /// Everything until the other end closes.
  std::string ReceiveAll() const {
    std::string all;
    char piece[65536];
    for (ssize_t count; (count = recv(_fd, piece, sizeof piece, 0)) > 0;) {
      all.append(piece, static_cast<std::size_t>(count));
    }
    return all;
  }

 private:
  int _fd = -1;
};

/// The four bytes of a record.
inline std::string Integer(int value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

/// A string record.
inline std::string Word(std::string_view text) {
  return Integer(static_cast<int>(text.size())) + std::string(text);
}

#endif  // VOR_TESTS_SOCKET_RAWPEER_H
