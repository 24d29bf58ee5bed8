#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>

#include "socket/Peers.h"
#include "support/Eventually.h"
#include "support/InProcess.h"

namespace {

constexpr const char* kUnknownHost = "unknown host: check name and existence of the host";

std::function<void()> afterConnect = [] {};
int acceptError = 0;  // takes the place of the next connection that is accepted

}  // namespace

__attribute__((visibility("default"))) int connect(int fd, const sockaddr* address,
                                                   socklen_t size) {
  const long result = syscall(SYS_connect, fd, address, size);
  const int error = errno;
  afterConnect();
  errno = error;
  return static_cast<int>(result);
}
__attribute__((visibility("default"))) int accept4(int fd, sockaddr* address, socklen_t* size,
                                                   int flags) {
  const int accepted = static_cast<int>(syscall(SYS_accept4, fd, address, size, flags));
  if (accepted < 0 || acceptError == 0) return accepted;
  close(accepted);
  errno = std::exchange(acceptError, 0);
  return -1;
}

TEST(Connections, ClosedSocketsRefuseEverything) {
  Ours s, other;
  const auto refuses = [&s](std::initializer_list<int> results, const char* message) {
    for (const int result : results) EXPECT_EQ(result, 1) << message;
    EXPECT_EQ(s.LastFailure(), Failure(message, 0));
  };
  VorString text;
  refuses({s.PutBlock("x"), s.PutBlock(VorListValVorString()), s.PutBinBlock(1, "x"),
           s.PutFile("/dev/null"), s.Write(text), s.Write(1)},
          "Socket not opened, unable to put data block");
  refuses({s.Text(), s.List(), s.Binary(), s.Number(), s.String(), s.File(),
           s.GetFileASCII("/dev/null", 1)},
          "Socket not opened, unable to get data block");
  refuses({s.GetQuery(other), s.GetQuery(1, text, other), s.GetQuery(1, text, other, 1)},
          "Server socket not openend, unable to get client query");
  refuses({s.Close()}, "unable to close not opened socket");
  EXPECT_FALSE(s.IsOpen());
  EXPECT_EQ(s.GetPort(), 0);
}

TEST(Connections, FailuresToOpenReportTheReason) {
  TASocket first;
  Ours second;
  ASSERT_EQ(first.OpenServer(0), 0);
  for (const int port : {first.GetPort(), -1, 65536}) {
    EXPECT_EQ(second.OpenServer(port), 1);
    EXPECT_EQ(second.LastFailure(), Failure("unable to bind server socket",
                                            port == first.GetPort() ? EADDRINUSE : EINVAL));
  }
  for (const char* host : {"", "no.such.host.invalid"}) {
    EXPECT_EQ(second.OpenClient(host, 1), 1);
    EXPECT_EQ(second.LastFailure(), Failure(kUnknownHost, 0));
  }
  const int port = first.GetPort();
  first.Close();
  EXPECT_EQ(second.OpenClient("127.0.0.1", port, 1), 1);  // one attempt more at most
  EXPECT_EQ(second.LastFailure(),
            Failure("unable to connect client socket to server", ECONNREFUSED));
  EXPECT_FALSE(second.IsOpen());
  afterConnect = [&] { first.OpenServer(port); };  // late
  EXPECT_EQ(second.OpenClient("127.0.0.1", port, 20), 0);
  afterConnect = [] {};
}

TEST(Connections, LostBeforeTheyAreAcceptedAreSkipped) {
  for (const int error : {ENETDOWN, EPROTO, ENOPROTOOPT, EHOSTDOWN, ENONET, EHOSTUNREACH,
                          EOPNOTSUPP, ENETUNREACH, ECONNABORTED}) {
    Ours server, lost, client, peer;
    VorString query;
    server.OpenServer(0);
    lost.OpenClient("localhost", server.GetPort());
    acceptError = error;
    EXPECT_EQ(server.GetQuery(1, query, peer, 0), 2);
    EXPECT_EQ(server.LastFailure(), Failure("Query time-out", ETIMEDOUT));
    for (Ours* next : {&lost, &client}) next->OpenClient("localhost", server.GetPort());
    acceptError = error;
    EXPECT_EQ(server.GetQuery(peer), 0) << server.Message();
  }
}

TEST(Connections, WithoutFreeDescriptorsReportThat) {
  Ours server, client, peer;
  server.OpenServer(0);
  client.OpenClient("localhost", server.GetPort());
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  const int next = dup(0);
  close(next);
  const auto allowOnly = [&](int count) {
    const rlimit few = {static_cast<rlim_t>(count), limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
  };
  allowOnly(next + 1);
  EXPECT_EQ(peer.OpenClient("localhost", server.GetPort()), 1);  // none is left to look it up
  EXPECT_EQ(peer.LastFailure(), Failure(kUnknownHost, EMFILE));
  allowOnly(next);
  EXPECT_EQ(server.GetQuery(peer), 1);
  EXPECT_EQ(server.LastFailure(), Failure("unable to accept connection on socket", EMFILE));
  allowOnly(static_cast<int>(limit.rlim_cur));
  EXPECT_EQ(server.GetQuery(peer), 0);  // it waited meanwhile
}

TEST(Connections, StayOffClosedStandardDescriptors) {
  const int kept[] = {dup(0), dup(2)};
  for (const int fd : {0, 2}) close(fd);
  TASocket server, client, peer;
  server.OpenServer(0);
  client.OpenClient("localhost", server.GetPort());
  server.GetQuery(peer);
  EXPECT_TRUE(peer.IsOpen());
  for (const int fd : {0, 2}) EXPECT_EQ(fcntl(fd, F_GETFD), -1);
  for (const int i : {0, 1}) dup2(kept[i], 2 * i);
  for (const int fd : kept) close(fd);
}

TEST(Connections, WritingToAClosedPeerFailsWithoutASignal) {
  Ours ours;
  { const RawPeer peer(ours); }
  EXPECT_TRUE(Eventually([&] {
    ours.PutBlock("lost");
    return ours.Flush() == 1;
  }));
  EXPECT_EQ(ours.LastFailure(), Failure(kNotFlushed, EPIPE));
  ours.PutBlock("lost");
  EXPECT_EQ(ours.Text(), 1);  // which sends first
  EXPECT_EQ(ours.Message(), kNotFlushed);
}

TEST(Connections, WorkAboveDescriptor1024AndDuringSignals) {
  const int result = InProcess([] {
    const rlimit many = {4096, 4096};
    setrlimit(RLIMIT_NOFILE, &many);
    int next = 0;
    while (next >= 0 && next <= 1100) next = dup(0);
    close(next);
    struct sigaction ignoring = {};
    ignoring.sa_handler = [](int) {};
    sigaction(SIGALRM, &ignoring, nullptr);
    const itimerval often = {{0, 20000}, {0, 20000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    {
      Ours server, client, peer;
      VorString query;
      server.OpenServer(0);
      for (const int wait : {0, 10, -1}) {  // each closes what is left of the one before
        EXPECT_EQ(client.OpenClient("localhost", server.GetPort(), 10), 0);
        client.PutBlock("the query");
        client.Flush();
        const bool isTimed = wait != 0;
        EXPECT_EQ(isTimed ? server.GetQuery(9, query, peer, wait) : server.GetQuery(9, query, peer),
                  0);
        EXPECT_EQ(query, "the query");
      }
      EXPECT_EQ(client.GetBlock(query, 1), 2);
      client.OpenClient("localhost", server.GetPort());
      EXPECT_EQ(server.GetQuery(1, query, peer), 1);
      EXPECT_EQ(peer.LastFailure(), Failure(kTimedOut, ETIMEDOUT));
      server.OpenServer(0);  // gives up the first one
      for (int fd = next; fd < next + 3; ++fd) EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
      close(next + 1);  // of the client
      EXPECT_EQ(client.GetBlock(query, 1), 1);
      EXPECT_EQ(client.Message(), "Error reading from stream socket (select)");
    }
    EXPECT_EQ(dup(0), next);
    return testing::Test::HasFailure() ? 1 : 0;
  });
  EXPECT_EQ(result, 0);
}
