#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <functional>
#include <string>
#include <thread>

#include "base/VorListValVorString.h"
#include "socket/RawPeer.h"
#include "socket/TASocket.h"
#include "support/InProcess.h"

namespace {

const char* const kTimedOut = "Error reading from stream socket (select): Connection timed out";

}  // namespace

TEST(Connections, AQueryIsAsked) {
  TASocket server, client, peer;
  ASSERT_EQ(server.OpenServer(0), 0);
  for (int round = 0; round < 3; ++round) {  // the second one closes what is left of the first
    ASSERT_EQ(client.OpenClient("localhost", server.GetPort(), 10), 0);
    client.PutBlock("the query");
    client.Flush();
    VorString query;
    // A limit below zero is none.
    const int result = round == 0 ? server.GetQuery(10, query, peer)
                                  : server.GetQuery(10, query, peer, round == 1 ? 10 : -1);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(query, "the query");
    EXPECT_STREQ(peer.GetErrMsg(), "no error on socket");
    if (round > 0) {
      EXPECT_EQ(client.Close(), 0);
    }
  }
  EXPECT_NE(server.GetPort(), 0);
}

TEST(Connections, ClosedSocketsRefuseEverything) {
  const char* const kNoPut = "Socket not opened, unable to put data block";
  const char* const kNoGet = "Socket not opened, unable to get data block";
  const char* const kNoQuery = "Server socket not openend, unable to get client query";
  VorString text;
  VorListValVorString list;
  int n;
  void* data;
  TASocket other;
  const struct {
    std::function<int(TASocket&)> call;
    const char* message;
  } rows[] = {
      {[&](TASocket& s) { return s.PutBlock("x"); }, kNoPut},
      {[&](TASocket& s) { return s.PutBlock(list); }, kNoPut},
      {[&](TASocket& s) { return s.PutBinBlock(1, "x"); }, kNoPut},
      {[&](TASocket& s) { return s.Write(1); }, kNoPut},
      {[&](TASocket& s) { return s.Write(text); }, kNoPut},
      {[&](TASocket& s) { return s.PutFile("/dev/null"); }, kNoPut},
      {[&](TASocket& s) { return s.GetBlock(text, 1); }, kNoGet},
      {[&](TASocket& s) { return s.GetBlock(list, 1); }, kNoGet},
      {[&](TASocket& s) { return s.GetBinBlock(&n, &data, 1); }, kNoGet},
      {[&](TASocket& s) { return s.Read(n, 1); }, kNoGet},
      {[&](TASocket& s) { return s.Read(text, 1); }, kNoGet},
      {[&](TASocket& s) { return s.GetFile("/dev/null", 1); }, kNoGet},
      {[&](TASocket& s) { return s.GetFileASCII("/dev/null", 1); }, kNoGet},
      {[&](TASocket& s) { return s.GetQuery(other); }, kNoQuery},
      {[&](TASocket& s) { return s.GetQuery(1, text, other); }, kNoQuery},
      {[&](TASocket& s) { return s.GetQuery(1, text, other, 1); }, kNoQuery},
      {[&](TASocket& s) { return s.Close(); }, "unable to close not opened socket"},
  };
  for (const auto& row : rows) {
    TASocket closed;
    EXPECT_STREQ(closed.GetErrMsg(), "no error on socket");
    EXPECT_EQ(row.call(closed), 1) << row.message;
    EXPECT_STREQ(closed.GetErrMsg(), row.message);
    EXPECT_TRUE(!closed.IsOpen() && closed.GetPort() == 0);
  }
}

TEST(Connections, FailuresToOpenTellWhy) {
  TASocket first, second;
  ASSERT_EQ(first.OpenServer(0), 0);
  for (const int port : {first.GetPort(), -1, 65536}) {
    EXPECT_EQ(second.OpenServer(port), 1);
    EXPECT_STREQ(second.GetErrMsg(), "unable to bind server socket");
  }
  for (const char* host : {"", "no.such.host.invalid"}) {
    EXPECT_EQ(second.OpenClient(host, 1), 1);
    EXPECT_STREQ(second.GetErrMsg(), "unknown host: check name and existence of the host");
  }
  const int port = first.GetPort();
  first.Close();
  EXPECT_EQ(second.OpenClient("127.0.0.1", port, 1), 1);  // one attempt more at most
  EXPECT_STREQ(second.GetErrMsg(), "unable to connect client socket to server");
  EXPECT_FALSE(second.IsOpen());
}

TEST(Connections, ServersThatComeLateAreFound) {
  TASocket server, client;
  server.OpenServer(0);
  const int port = server.GetPort();
  server.Close();
  std::thread late([&] {
    usleep(300000);
    server.OpenServer(port);
  });
  EXPECT_EQ(client.OpenClient("127.0.0.1", port, 20), 0);
  late.join();
}

TEST(Connections, WaitsEndAtTheirLimitWhateverSignalsCome) {
  struct sigaction ignoring = {}, before;
  ignoring.sa_handler = [](int) {};
  sigaction(SIGALRM, &ignoring, &before);
  const itimerval often = {{0, 20000}, {0, 20000}}, never = {};
  setitimer(ITIMER_REAL, &often, nullptr);
  TASocket server, client, peer;
  server.OpenServer(0);
  VorString text;
  EXPECT_EQ(server.GetQuery(1, text, peer, 0), 2);
  EXPECT_STREQ(server.GetErrMsg(), "Query time-out");
  client.OpenClient("localhost", server.GetPort());
  EXPECT_EQ(server.GetQuery(1, text, peer), 1);
  EXPECT_STREQ(peer.GetErrMsg(), kTimedOut);
  EXPECT_EQ(client.GetBlock(text, 1), 2);
  EXPECT_STREQ(client.GetErrMsg(), kTimedOut);
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);
}

TEST(Connections, AStalledTransferEnds) {
  TASocket ours;
  const RawPeer peer(ours);
  ours.SetStallLimit(1);
  peer.Send("#   a");
  VorString text;
  EXPECT_EQ(ours.GetBlock(text, 5), 1);
  EXPECT_STREQ(ours.GetErrMsg(), "Unable to get full block");
}

TEST(Connections, AListeningSocketIsNotStalled) {
  EXPECT_EQ(InProcess([] {
              const int lowest = dup(0);
              close(lowest);
              TASocket server;
              server.OpenServer(0);
              server.SetStallLimit(1);
              timeval limit = {-1, 0};
              socklen_t size = sizeof limit;
              if (getsockopt(lowest, SOL_SOCKET, SO_RCVTIMEO, &limit, &size) != 0) return 1;
              return limit.tv_sec == 0 ? 0 : 2;
            }),
            0);
}

TEST(Connections, APeerThatHasGoneIsAnErrorAndNoSignal) {
  TASocket ours;
  { const RawPeer peer(ours); }
  int result = 0;
  for (int i = 0; i < 50 && result == 0; ++i) {
    ours.PutBlock("lost");
    result = ours.Flush();
    usleep(1000);
  }
  EXPECT_EQ(result, 1);
  EXPECT_STREQ(ours.GetErrMsg(), "Unable to flush buffer");
  ours.PutBlock("lost");
  VorString text;
  EXPECT_EQ(ours.GetBlock(text, 1), 1);  // which sends first
  EXPECT_STREQ(ours.GetErrMsg(), "Unable to flush buffer");
  EXPECT_EQ(ours.PutBinBlock(1, "x"), 1);
  ours.PutBlock("lost");
  EXPECT_EQ(ours.Close(), 0);
}

TEST(Connections, DescriptorsAbove1024AreWaitedFor) {
  EXPECT_EQ(InProcess([] {
              const rlimit many = {4096, 4096};
              if (setrlimit(RLIMIT_NOFILE, &many) != 0) return 1;
              for (int fd = 0; fd < 1100; fd = dup(0)) {
              }
              TASocket server, client, peer;
              VorString query;
              if (server.OpenServer(0) != 0 || server.GetQuery(1, query, peer, 0) != 2) return 2;
              if (client.OpenClient("localhost", server.GetPort()) != 0) return 3;
              client.PutBlock("over here");
              client.Flush();
              if (server.GetQuery(10, query, peer, 10) != 0 || query != "over here") return 4;
              return client.GetBlock(query, 1) == 2 ? 0 : 5;
            }),
            0);
}

TEST(Connections, DescriptorsAreClosedAndLostOnesNoticed) {
  EXPECT_EQ(
      InProcess([] {
        const int lowest = dup(0);
        close(lowest);
        {
          TASocket server, client, peer;
          server.OpenServer(0);
          client.OpenClient("localhost", server.GetPort());
          server.GetQuery(peer);
          server.OpenServer(0);  // gives up the first one
          for (int fd = lowest; fd < lowest + 3; ++fd) {
            if (fcntl(fd, F_GETFD) != FD_CLOEXEC) return 1;
          }
          close(lowest + 1);  // behind the back of the client
          VorString text;
          if (client.GetBlock(text, 1) != 1) return 2;
          if (std::string(client.GetErrMsg()) != "Error reading from stream socket (select)") {
            return 3;
          }
        }
        return dup(0) == lowest ? 0 : 4;
      }),
      0);
}
