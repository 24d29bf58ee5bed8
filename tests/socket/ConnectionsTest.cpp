#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <initializer_list>
#include <string>
#include <thread>

#include "socket/Peers.h"
#include "support/InProcess.h"

TEST(Connections, ClosedSocketsRefuseEverything) {
  const auto refuses = [](const Ours& closed, std::initializer_list<int> results,
                          const char* message) {
    for (const int result : results) EXPECT_EQ(result, 1) << message;
    EXPECT_EQ(closed.Message(), message);
  };
  Ours s, other;
  VorString text;
  EXPECT_EQ(s.Message(), "no error on socket");
  refuses(s,
          {s.PutBlock("x"), s.PutBlock(VorListValVorString()), s.PutBinBlock(1, "x"),
           s.PutFile("/dev/null"), s.Write(text), s.Write(1)},
          "Socket not opened, unable to put data block");
  refuses(s,
          {s.Text(), s.List(), s.Binary(), s.Number(), s.String(), s.File(),
           s.GetFileASCII("/dev/null", 1)},
          "Socket not opened, unable to get data block");
  refuses(s, {s.GetQuery(other), s.GetQuery(1, text, other), s.GetQuery(1, text, other, 1)},
          "Server socket not openend, unable to get client query");
  refuses(s, {s.Close()}, "unable to close not opened socket");
  EXPECT_TRUE(!s.IsOpen() && s.GetPort() == 0);
}

TEST(Connections, FailuresToOpenTellWhy) {
  TASocket first;
  Ours second;
  ASSERT_EQ(first.OpenServer(0), 0);
  for (const int port : {first.GetPort(), -1, 65536}) {
    EXPECT_EQ(second.OpenServer(port), 1);
    EXPECT_EQ(second.Message(), "unable to bind server socket");
  }
  for (const char* host : {"", "no.such.host.invalid"}) {
    EXPECT_EQ(second.OpenClient(host, 1), 1);
    EXPECT_EQ(second.Message(), "unknown host: check name and existence of the host");
  }
  const int port = first.GetPort();
  first.Close();
  EXPECT_EQ(second.OpenClient("127.0.0.1", port, 1), 1);  // one attempt more at most
  EXPECT_EQ(second.Message(), "unable to connect client socket to server");
  EXPECT_FALSE(second.IsOpen());
  // A server that comes late is found.
  std::thread late([&] {
    usleep(300000);
    first.OpenServer(port);
  });
  EXPECT_EQ(second.OpenClient("127.0.0.1", port, 20), 0);
  late.join();
}

TEST(Connections, APeerThatHasGoneIsAnErrorAndNoSignal) {
  Ours ours;
  { const RawPeer peer(ours); }
  int result = 0;
  for (int i = 0; i < 50 && result == 0; ++i, usleep(1000)) {
    ours.PutBlock("lost");
    result = ours.Flush();
  }
  EXPECT_EQ(result, 1);
  EXPECT_EQ(ours.Message(), kNotFlushed);
  ours.PutBlock("lost");
  EXPECT_EQ(ours.Text(), 1);  // which sends first
  EXPECT_EQ(ours.Message(), kNotFlushed);
  ours.PutBlock("lost");
  EXPECT_EQ(ours.Close(), 0);
}

TEST(Connections, AreWaitedForAboveDescriptor1024WhateverSignalsCome) {
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
      EXPECT_EQ(server.GetQuery(1, query, peer, 0), 2);
      EXPECT_EQ(server.Message(), "Query time-out");
      for (const int wait : {0, 10, -1}) {  // each closes what is left of the one before
        EXPECT_EQ(client.OpenClient("localhost", server.GetPort(), 10), 0);
        client.PutBlock("the query");
        client.Flush();
        EXPECT_EQ(
            wait == 0 ? server.GetQuery(9, query, peer) : server.GetQuery(9, query, peer, wait), 0);
        EXPECT_EQ(query, "the query");
      }
      EXPECT_EQ(client.GetBlock(query, 1), 2);
      EXPECT_EQ(client.Message(), kTimedOut);
      client.OpenClient("localhost", server.GetPort());
      EXPECT_EQ(server.GetQuery(1, query, peer), 1);
      EXPECT_EQ(peer.Message(), kTimedOut);
      server.OpenServer(0);  // gives up the first one
      for (int fd = next; fd < next + 3; ++fd) EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
      close(next + 1);  // behind the back of the client
      EXPECT_EQ(client.GetBlock(query, 1), 1);
      EXPECT_EQ(client.Message(), "Error reading from stream socket (select)");
    }
    EXPECT_EQ(dup(0), next);
    return testing::Test::HasFailure() ? 1 : 0;
  });
  EXPECT_EQ(result, 0);
}
