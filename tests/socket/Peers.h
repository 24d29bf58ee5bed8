#ifndef VOR_TESTS_SOCKET_PEERS_H
#define VOR_TESTS_SOCKET_PEERS_H

#include <netinet/in.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "base/VorListValVorString.h"
#include "socket/SocketBytes.h"
#include "socket/TASocket.h"

inline constexpr const char* kNoHeader = "Unable to get block size ";
inline constexpr const char* kNoSize = "Unable to get block size";
inline constexpr const char* kNotFull = "Unable to get full block";
inline constexpr const char* kNotFlushed = "Unable to flush buffer";
inline constexpr const char* kTimedOut =
    "Error reading from stream socket (select): Connection timed out";

/// The tested end of a connection.  Keeps the last value that was read of each kind.
class Ours : public TASocket {
 public:
  using TASocket::TASocket;
  ~Ours() { free(_data); }

  int Text() { return GetBlock(_text = "before", 0); }
  int List() {
    _list.Append("before");
    return GetBlock(_list, 0);
  }
  int Binary() { return GetBinBlock(&_size, &_data, 0); }  // once
  int String() { return Read(_text, 0); }
  int Number() { return Read(_number, 0); }
  int File() { return GetFile("/dev/null", 0); }

  std::string Value() const {
    std::string all(_text.View());
    for (int i = 1; i <= _list.Size(); ++i) all += std::string(_list[i].View()) + "|";
    if (_data != nullptr) all.append(static_cast<char*>(_data), static_cast<std::size_t>(_size));
    return _number == 0 ? all : all + std::to_string(_number);
  }
  std::string Message() const { return GetErrMsg(); }
  std::pair<std::string, int> LastFailure() const { return {GetErrMsg(), GetErrno()}; }

 private:
  VorString _text;
  VorListValVorString _list;
  void* _data = nullptr;
  int _size = -1, _number = 0;
};

using Reading = int (Ours::*)();
using Failure = std::pair<std::string, int>;  // a message and an errno

/// The other end as a plain socket, which shows the bytes themselves.
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
  /// Connects, sends \a bytes and ends the stream.
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

  /// The next bytes, at most \a size.
  std::string Receive(std::size_t size) const {
    std::string bytes(size, '\0');
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(recv(_fd, bytes.data(), size, 0), 0)));
    return bytes;
  }

  /// Everything until the other end closes.
  std::string ReceiveAll() const {
    std::string all, piece;
    while (!(piece = Receive(65536)).empty()) all += piece;
    return all;
  }

 private:
  int _fd = -1;
};

/// All bytes that \a write sends on a connection of its own.
template <typename Write>
std::string BytesOf(TASocket& ours, Write write) {
  const RawPeer peer(ours);
  const std::jthread writing([&] {
    write();
    ours.Close();
  });
  return peer.ReceiveAll();
}

inline std::string Header(int size) {
  unsigned char header[4];
  SetSize(header, size);
  return {header, header + 4};
}

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

/// The start of a compressed block.
inline const std::string kMark = "\x9f```";

#endif  // VOR_TESTS_SOCKET_PEERS_H
