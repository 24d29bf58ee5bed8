#include "socket/TASocket.h"

#include <errno.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <time.h>

#include <algorithm>
#include <chrono>

#include "base/NullText.h"
#include "base/VorListValVorString.h"
#include "socket/BlockFormat.h"
#include "socket/BlockReader.h"
#include "socket/BlockWriter.h"
#include "socket/Connection.h"
#include "socket/FileTransfer.h"
#include "socket/SocketIo.h"

using vor::Connection;

namespace {

constexpr int kDefaultBuffer = 8192;
constexpr int kBacklog = 8;

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

// The first IPv4 address of a host.  Returns false with errno set if it cannot be looked up; errno
// is 0 if the host is unknown.
bool Resolve(const char* host, in_addr& address) {
  addrinfo hints = {};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int result = *host == '\0' ? EAI_NONAME : getaddrinfo(host, nullptr, &hints, &found);
  if (result != 0) {
    if (result != EAI_SYSTEM) errno = result == EAI_MEMORY ? ENOMEM : 0;
    return false;
  }
  address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr;
  freeaddrinfo(found);
  return true;
}

// After a signal, connect() continues in the background.  Its result is available once the socket
// is writable.
bool FinishConnect(int fd) {
  pollfd polled = {fd, POLLOUT, 0};
  while (poll(&polled, 1, -1) < 0) {
    if (errno != EINTR) return false;
  }
  int error = 0;
  socklen_t size = sizeof error;
  if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) != 0) return false;
  errno = error;
  return error == 0;
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

// Closes a socket that could not be opened.
int Abandon(Connection& connection, const char* message, int error) {
  connection.fd.Reset(-1);
  return connection.Fail(message, error);
}

void ApplyStallLimit(const Connection& connection) {
  const timeval limit = {connection.stallLimit, 0};
  setsockopt(connection.fd.Get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  setsockopt(connection.fd.Get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

// Begins a connection.
void TakeOver(Connection& connection, int fd) {
  connection.fd.Reset(fd);
  connection.isListening = false;
  ApplyStallLimit(connection);
}

// True for the errors of accept() that concern a lost connection and not the server: see accept(2).
// EAGAIN: another process that shares the server socket accepted the connection first.
bool IsOfConnection(int error) {
  switch (error) {
    case EINTR:
    case EAGAIN:
    case ECONNABORTED:
    case EHOSTDOWN:
    case EHOSTUNREACH:
    case ENETDOWN:
    case ENETUNREACH:
    case ENONET:
    case ENOPROTOOPT:
    case EOPNOTSUPP:
    case EPROTO:
      return true;
    default:
      return false;
  }
}

// Waits for the next connection until \a end.  The server socket is non-blocking, because a
// connection may be lost between poll() and accept().
int Accept(Connection& server, Connection& client, vor::Clock::time_point end) {
  for (;;) {
    if (server.isListening && vor::WaitFor(server.fd.Get(), POLLIN, end) == vor::Wait::kTimeOut) {
      server.Fail("Query time-out", ETIMEDOUT);
      return 2;
    }
    const int fd = vor::AboveStandard(accept4(server.fd.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (fd >= 0) {
      TakeOver(client, fd);
      return 0;
    }
    if (!IsOfConnection(errno)) {
      return server.Fail("unable to accept connection on socket", errno);
    }
  }
}

}  // namespace

static_assert(TASocket::kLargestBlock == vor::kLargestSize);

TASocket::TASocket() noexcept : TASocket(kDefaultBuffer) {}

TASocket::TASocket(int bufferSize) noexcept
    : _connection(std::make_unique<Connection>()),
      _reader(std::make_unique<vor::BlockReader>(*_connection)),
      _writer(std::make_unique<vor::BlockWriter>(*_connection, bufferSize)) {
  signal(SIGPIPE, SIG_IGN);
}

TASocket::~TASocket() {
  if (IsOpen()) Close();
}

bool TASocket::IsOpen() const {
  return _connection->IsOpen();
}

const char* TASocket::GetErrMsg() const {
  return _connection->message;
}

int TASocket::GetErrno() const {
  return _connection->error;
}

// Connections.

int TASocket::Create(int flags, const char* message) {
  if (IsOpen()) Close();
  _connection->fd.Reset(vor::AboveStandard(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0)));
  return IsOpen() ? 0 : _connection->Fail(message, errno);
}

int TASocket::OpenServer(int port) noexcept {
  if (Create(SOCK_NONBLOCK, "unable to create server socket") != 0) return 1;
  constexpr const char* kCannotBind = "unable to bind server socket";
  if (!IsPort(port)) return Abandon(*_connection, kCannotBind, EINVAL);
  const int fd = _connection->fd.Get();
  const sockaddr_in address = AddressOf({INADDR_ANY}, port);
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return Abandon(*_connection, kCannotBind, errno);
  }
  if (listen(fd, kBacklog) != 0) {
    return Abandon(*_connection, "unable to listen on server socket", errno);
  }
  _connection->isListening = true;
  return 0;
}

int TASocket::OpenClient(const VorString& host, int port) noexcept {
  if (Create(0, "unable to create client socket") != 0) return 1;
  in_addr address;
  if (!Resolve(host, address)) {
    return Abandon(*_connection, "unknown host: check name and existence of the host", errno);
  }
  constexpr const char* kCannotConnect = "unable to connect client socket to server";
  if (!IsPort(port)) return Abandon(*_connection, kCannotConnect, EINVAL);
  if (!Connect(_connection->fd.Get(), AddressOf(address, port))) {
    return Abandon(*_connection, kCannotConnect, errno);
  }
  TakeOver(*_connection, _connection->fd.Release());
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

// Waits for at most \a seconds; without limit if that is less than 0.
int TASocket::AcceptFor(int seconds, TASocket& client) {
  if (client.IsOpen()) client.Close();
  if (!IsOpen())
    return _connection->Fail("Server socket not openend, unable to get client query", 0);
  const auto end = seconds < 0 ? vor::kNever : vor::Clock::now() + std::chrono::seconds(seconds);
  return Accept(*_connection, *client._connection, end);
}

int TASocket::GetQuery(TASocket& client) {
  return AcceptFor(-1, client);
}

int TASocket::GetQuery(int readTimeout, VorString& query, TASocket& client) noexcept {
  return GetQuery(readTimeout, query, client, -1);
}

int TASocket::GetQuery(int readTimeout, VorString& query, TASocket& client,
                       int acceptTimeout) noexcept {
  const int result = AcceptFor(acceptTimeout, client);
  if (result != 0) return result;
  return client.GetBlock(query, readTimeout) != 0;
}

int TASocket::Close() {
  if (!IsOpen()) return _connection->Fail("unable to close not opened socket", 0);
  Flush();
  _writer->Clear();
  _reader->Clear();
  _connection->fd.Reset(-1);
  _connection->isCompressed = false;
  return 0;
}

int TASocket::GetPort() const {
  sockaddr_in address = {};
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (!IsOpen() || getsockname(_connection->fd.Get(), generic, &size) != 0) return 0;
  return ntohs(address.sin_port);
}

void TASocket::SetStallLimit(int seconds) {
  _connection->stallLimit = std::max(seconds, 0);
  if (IsOpen() && !_connection->isListening) ApplyStallLimit(*_connection);
}

void TASocket::SetReadLimits(int seconds, int bytes) {
  _reader->SetLimits(seconds, bytes);
}

void TASocket::SetWriteLimits(int seconds, int bytesPerSecond) {
  _writer->SetLimits(seconds, bytesPerSecond);
}

void TASocket::SetPerfo(TAPerfo* readPerfo, TAPerfo* writePerfo) {
  _reader->SetCounter(readPerfo);
  _writer->SetCounter(writePerfo);
}

// Reading.

// Sends the write buffer first: it may hold the request whose reply is read.
template <typename Action>
int TASocket::Get(int timeout, Action read) {
  if (!IsOpen()) return _connection->Fail("Socket not opened, unable to get data block", 0);
  if (!_writer->IsEmpty() && Flush() != 0) return 1;
  const int result = _reader->Begin(timeout);
  return result != 0 ? result : _reader->End(read());
}

int TASocket::GetBlock(VorString& text, int timeout) noexcept {
  return Get(timeout, [&] { return _reader->Text(text); });
}

int TASocket::GetBlock(VorListValVorString& list, int timeout) noexcept {
  list.RemoveAll(VorCollec::KeepMemory);
  const int result = Get(timeout, [&] { return _reader->List(list); });
  if (result != 0) list.RemoveAll(VorCollec::ReleaseMemory);
  return result;
}

int TASocket::GetBinBlock(int* n, void** data, int timeout) noexcept {
  *n = 0;
  *data = nullptr;
  return Get(timeout, [&] { return _reader->Binary(n, data); });
}

int TASocket::Read(int& value, int timeout) noexcept {
  return Get(timeout, [&] { return _reader->Integer(value); });
}

int TASocket::Read(VorString& text, int timeout) noexcept {
  return Get(timeout, [&] { return _reader->String(text); });
}

int TASocket::GetFile(const VorString& file, int timeout) noexcept {
  return Get(timeout, [&] {
    return vor::ReceiveFile(*_connection, *_reader, file, _writer->BufferSize(), false);
  });
}

int TASocket::GetFileASCII(const VorString& file, int timeout) noexcept {
  return Get(timeout, [&] {
    return vor::ReceiveFile(*_connection, *_reader, file, _writer->BufferSize(), true);
  });
}

// Writing.

template <typename Action>
int TASocket::Put(Action write) {
  if (!IsOpen()) return _connection->Fail("Socket not opened, unable to put data block", 0);
  _writer->Begin();
  return write();
}

int TASocket::PutBlock(const char* text) noexcept {
  return Put([&] { return _writer->Text(vor::TextOrEmpty(text)); });
}

int TASocket::PutBlock(const VorString& text) noexcept {
  return PutBlock(text.CastToCharPtr());
}

int TASocket::PutBlock(const VorListValVorString& list) noexcept {
  return Put([&] { return _writer->List(list); });
}

int TASocket::PutBinBlock(int n, const void* data) noexcept {
  return Put([&] { return _writer->Binary(n, data); });
}

int TASocket::Write(int value) {
  return Put([&] { return _writer->Integer(value); });
}

int TASocket::Write(const VorString& text) noexcept {
  return Put([&] { return _writer->String(text.View()); });
}

int TASocket::PutFile(const VorString& file) noexcept {
  return Put([&] { return vor::SendFile(*_connection, *_writer, file); });
}

int TASocket::Flush() {
  if (!IsOpen()) return 0;
  _writer->Begin();
  return _writer->Flush();
}
