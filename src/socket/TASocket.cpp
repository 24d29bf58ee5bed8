#include "socket/TASocket.h"

#include <errno.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "socket/ReceivedWords.h"
#include "socket/SocketIo.h"

namespace {

constexpr int kDefaultBuffer = 8192;
constexpr int kSmallestBuffer = 5;  // a header, and one byte so that it is never full
constexpr int kBacklog = 8;

constexpr const char* kCannotConnect = "unable to connect client socket to server";

bool IsPort(int port) {
  return port >= 0 && port <= 65535;
}

sockaddr_in AddressOf(in_addr host, int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr = host;
  address.sin_port = htons(static_cast<in_port_t>(port));
  return address;
}

// The first IPv4 address of a host.
bool Resolve(const char* host, in_addr& address) {
  addrinfo hints = {};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (*host == '\0' || getaddrinfo(host, nullptr, &hints, &found) != 0) return false;
  address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr;
  freeaddrinfo(found);
  return true;
}

// After a signal the connection goes on being made; the result comes when it can be written to.
bool FinishConnect(int fd) {
  pollfd polled = {fd, POLLOUT, 0};
  while (poll(&polled, 1, -1) < 0) {
    if (errno != EINTR) return false;
  }
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

bool Connect(int fd, const sockaddr_in& address) {
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return true;
  return errno == EINTR && FinishConnect(fd);
}

void SleepSeconds(time_t seconds) {
  timespec left = {seconds, 0};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

}  // namespace

TASocket::TASocket() noexcept : TASocket(kDefaultBuffer) {}

TASocket::TASocket(int bufferSize) noexcept
    : _bufferSize(static_cast<std::size_t>(std::max(bufferSize, kSmallestBuffer))),
      _writeBuffer(std::make_unique_for_overwrite<char[]>(_bufferSize)),
      _receivedWords(std::make_unique<vor::ReceivedWords>()),
      _received(std::make_unique<vor::ReceiveBuffer>()) {
  signal(SIGPIPE, SIG_IGN);
}

TASocket::~TASocket() {
  if (IsOpen()) Close();
}

int TASocket::Fail(const char* message) {
  _errMsg = message;
  return 1;
}

// Gives up a socket that could not be opened.
int TASocket::Abandon(const char* message) {
  close(_fd);
  _fd = 0;
  _state = kClosed;
  return Fail(message);
}

int TASocket::OpenSocket(const char* message) {
  if (IsOpen()) Close();
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return Fail(message);
  _fd = fd;
  return 0;
}

int TASocket::OpenServer(int port) noexcept {
  if (OpenSocket("unable to create server socket") != 0) return 1;
  const sockaddr_in address = AddressOf({INADDR_ANY}, port);
  if (!IsPort(port) ||
      bind(_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return Abandon("unable to bind server socket");
  }
  if (listen(_fd, kBacklog) != 0) return Abandon("unable to listen on server socket");
  _state = kOpen;
  _listens = true;
  return 0;
}

int TASocket::OpenClient(const VorString& host, int port) noexcept {
  if (OpenSocket("unable to create client socket") != 0) return 1;
  in_addr address;
  if (!Resolve(host, address)) {
    return Abandon("unknown host: check name and existence of the host");
  }
  if (!IsPort(port) || !Connect(_fd, AddressOf(address, port))) return Abandon(kCannotConnect);
  TakeOver(_fd);
  return 0;
}

int TASocket::OpenClient(const VorString& host, int port, int timeout) noexcept {
  constexpr time_t kPause = 2;
  const time_t start = time(nullptr);
  int result = OpenClient(host, port);
  while (result != 0) {
    SleepSeconds(kPause);
    if (start + timeout < time(nullptr)) break;
    result = OpenClient(host, port);
  }
  return result;
}

// Begins a connection.
void TASocket::TakeOver(int fd) {
  _fd = fd;
  _state = kOpen;
  _listens = false;
  ApplyStallLimit();
}

// What comes before waiting for a connection.
int TASocket::PrepareAccept(TASocket& client) {
  if (client.IsOpen()) client.Close();
  if (!IsOpen()) return Fail("Server socket not openend, unable to get client query");
  return 0;
}

int TASocket::Accept(TASocket& client) {
  for (;;) {
    const int fd = accept4(_fd, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd >= 0) {
      client.TakeOver(fd);
      return 0;
    }
    // A peer that has gone meanwhile is not an error of this socket.
    if (errno != EINTR && errno != ECONNABORTED) {
      return Fail("unable to accept connection on socket");
    }
  }
}

int TASocket::GetQuery(TASocket& client) {
  return PrepareAccept(client) != 0 ? 1 : Accept(client);
}

int TASocket::GetQuery(int readTimeout, VorString& query, TASocket& client) noexcept {
  if (GetQuery(client) != 0) return 1;
  return client.GetBlock(query, readTimeout) != 0;
}

int TASocket::GetQuery(int readTimeout, VorString& query, TASocket& client,
                       int acceptTimeout) noexcept {
  if (PrepareAccept(client) != 0) return 1;
  if (vor::WaitForInput(_fd, acceptTimeout) == vor::Wait::kTimeOut) {
    Fail("Query time-out");
    return 2;
  }
  if (Accept(client) != 0) return 1;
  return client.GetBlock(query, readTimeout) != 0;
}

int TASocket::Close() {
  if (!IsOpen()) return Fail("unable to close not opened socket");
  Flush();
  close(_fd);
  _fd = 0;
  _state = kClosed;
  _sentWords.Reset();
  _receivedWords->Clear();
  _received->Clear();
  return 0;
}

int TASocket::GetPort() const {
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  if (!IsOpen() || getsockname(_fd, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  return ntohs(address.sin_port);
}

void TASocket::SetStallLimit(int seconds) {
  _stallLimit = std::max(seconds, 0);
  if (IsOpen() && !_listens) ApplyStallLimit();
}

void TASocket::SetReadLimits(int seconds, int bytes) {
  _readSeconds = std::max(seconds, 0);
  _readBytes = std::max(bytes, 0);
}

void TASocket::ApplyStallLimit() const {
  const timeval limit = {_stallLimit, 0};
  setsockopt(_fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  setsockopt(_fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

void TASocket::SetPerfo(TAPerfo* readPerfo, TAPerfo* writePerfo) {
  _readPerfo = readPerfo;
  _writePerfo = writePerfo;
}
