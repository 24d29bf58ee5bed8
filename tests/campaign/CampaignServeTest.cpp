#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <string>
#include <thread>
#include <utility>

#include "VorToolsInfrastructure.h"
#include "campaign/RunTool.h"

using testing::HasSubstr;

namespace {

const std::string kCompressed = "TASocketCompress=1 ";

// A server that runs in the background until it has served what it should.
class Server {
 public:
  explicit Server(const std::string& arguments, const std::string& before = "")
      : _stream(popen(
            ("echo $$; " + before + "exec " VOR_CAMPAIGN " serve --port 0 " + arguments + " 2>&1")
                .c_str(),
            "r")) {
    EXPECT_EQ(fscanf(_stream, "%d serving %*d tests on port %d", &_pid, &_port), 2);
  }
  ~Server() {
    if (_stream != nullptr) End();
  }

  std::string NextLine() const {
    char line[256] = "";
    return fgets(line, sizeof line, _stream) != nullptr ? line : "";
  }
  void Interrupt() const { kill(_pid, SIGINT); }

  Outcome End() { return ::End(std::exchange(_stream, nullptr)); }
  Outcome Request(const std::string& arguments, const std::string& before = "") const {
    return Campaign("request --host localhost --port " + std::to_string(_port) + " " + arguments,
                    before);
  }
  void Connect(TASocket& client) const { ASSERT_EQ(client.OpenClient("127.0.0.1", _port), 0); }

 private:
  FILE* _stream;
  int _pid = 0;
  int _port = 0;
};

using CampaignServe = CampaignTest;

}  // namespace

TEST_F(CampaignServe, DeliversResultsAndFilesInEveryMode) {
  const std::string tests = Tests(
      "unit/bytes head -c 300000 /dev/zero\nunit/lines printf \"a\\r\\nb\"\n"
      "unit/fails sh -c \"echo why; exit 99\"\nunit/hangs sleep 1000\nother/quiet true\n"
      "unit/absent /no/such/program\n");
  for (const std::string& serving : {std::string(), kCompressed}) {
    for (const std::string& asking : {std::string(), kCompressed}) {
      Server server(tests + "--requests 3 --timeout 1 --jobs 4", serving);
      Outcome answer = server.Request("--out " + _dir / "out" + " 'unit/*'", asking);
      EXPECT_EQ(answer.status, 1);
      EXPECT_THAT(answer.output, HasSubstr("unit/fails   failed (99) "));
      EXPECT_THAT(answer.output, HasSubstr("unit/hangs   timed out (99) "));
      EXPECT_THAT(answer.output,
                  HasSubstr("5 tests: 2 passed, 1 failed, 1 timed out, 1 not found, in "));
      EXPECT_EQ(_dir.Read("out/unit/bytes.log"), std::string(300000, '\0'));
      EXPECT_EQ(_dir.Read("out/unit/lines.log"), "a\r\nb");
      EXPECT_EQ(_dir.Read("out/unit/fails.log"), "why\n");
      EXPECT_EQ(_dir.Read("out/unit/absent.log"), "campaign: not found (/no/such/program)\n");
      EXPECT_EQ(server.Request("'other/*'", asking).status, 0);
      answer = server.Request("'none/*'", asking);
      EXPECT_EQ(answer.status, 2);
      EXPECT_EQ(answer.output, "campaign: 'none/*' selects no test of the server\n");
      const Outcome end = server.End();
      EXPECT_EQ(end.status, 0);
      EXPECT_THAT(end.output, HasSubstr("\ntests run 6 in "));
    }
  }
}

TEST_F(CampaignServe, RunsNothingWithoutTheToken) {
  const std::string token = "--token " + _dir.Write("token", "open sesame\n") + " ";
  Server server(Tests("a touch " + _dir / "ran" + "\n") + token + "--requests 5");
  for (const char* wrong : {"open", "open sesame2", "open sesamE", "x"}) {
    const std::string other = wrong[0] == 'x' ? "" : "--token " + _dir.Write("wrong", wrong) + " ";
    EXPECT_EQ(server.Request(other + "'*'").status, 3) << wrong;
  }
  EXPECT_FALSE(Exists("ran"));
  EXPECT_EQ(server.Request(token + "'*'").status, 0);
  EXPECT_TRUE(Exists("ran"));
  EXPECT_THAT(server.End().output, HasSubstr("request failed: it does not carry the token\n"));
}

TEST_F(CampaignServe, BadRequestsDoNotAffectLaterOnes) {
  std::string tests = "big head -c 3000000 /dev/zero\n";
  for (int i = 0; i < 5000; ++i) {
    tests += std::string(200, 'x') + std::to_string(i) + " touch " + _dir / "ran" + "\n";
  }
  Server server(Tests(tests) + "--requests 6");
  EXPECT_EQ(server.Request("'*'").status, 3);
  // A query, if one is sent, and the result of reading its answer, if it is read.
  const std::pair<std::string, int> rows[] = {
      {"", -1}, {"big", -1}, {"big", 0}, {std::string(1 << 20, '*'), 1}};
  for (const auto& [query, result] : rows) {
    TASocket peer(1 << 22);
    server.Connect(peer);
    if (!query.empty()) peer.PutBlock(VorString(query));
    VorListValVorString answer;
    EXPECT_EQ(result < 0 ? -1 : peer.GetBlock(answer, 30), result);
  }
  EXPECT_FALSE(Exists("ran"));
  EXPECT_EQ(server.Request("big").status, 0);
  const Outcome end = server.End();
  EXPECT_EQ(end.status, 0);
  for (const char* problem :
       {"request failed: its results could exceed the largest answer",
        "request failed: Unable to get block size", "request failed: Unable to flush buffer",
        "request failed: Unable to get full block"}) {
    EXPECT_THAT(end.output, HasSubstr(problem));
  }
}

TEST_F(CampaignServe, AnswersOfAHostileServerStayInTheDirectory) {
  TASocket server;
  ASSERT_EQ(server.OpenServer(0), 0);
  const std::string request = "request --host localhost --port " +
                              std::to_string(server.GetPort()) + " --out " + _dir / "out" + " '*'";
  const std::string whole = "a lost 124 1.0";
  const std::string answers[] = {
      "../evil passed 0 1.0", "/tmp/evil passed 0 1.0", "a\xc2\x9b passed 0 1.0", "a",
      "a passed x 1.0",       "a passed 0 inf",         "a passed 0 -1.0",        "a passed 1 1.0",
      "a lost 0 1.0",         "a well 0 1.0",           whole + " " + whole,      whole};
  for (const std::string& answer : answers) {
    std::thread serving([&] {
      TASocket peer;
      VorString query;
      EXPECT_EQ(server.GetQuery(30, query, peer), 0);
      peer.PutBlock(VorString(answer));
      peer.PutBinBlock(2, "no");  // of a file that never ends
    });
    const Outcome run = Campaign(request);
    serving.join();
    EXPECT_EQ(run.status, 3) << answer;
    EXPECT_THAT(run.output, HasSubstr(answer == whole ? "1 test: 0 passed, 1 lost, in "
                                                      : "sent something other than results"));
  }
  EXPECT_FALSE(Exists("evil.log"));
}

TEST_F(CampaignServe, WaitsWhenNoDescriptorIsFree) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer opens a pipe to check a virtual call";
#endif
  Server server(Tests("a true\n"), "exec sh -c 'exec 3>&-; ulimit -n 4; \"$@\"' sh ");
  TASocket client;
  server.Connect(client);
  EXPECT_EQ(server.NextLine(), "\n");  // the end of the first
  EXPECT_THAT(server.NextLine(), HasSubstr("(Too many open files)"));
  server.Interrupt();
  EXPECT_EQ(server.End().status, 1);
}

TEST_F(CampaignServe, InterruptEndsIt) {
  const std::string log = _dir / "log/pipe.log";
  Server server(Tests("a true\npipe sh -c \"rm " + log + "; mkfifo " + log + "\"\n") +
                "--results " + _dir / "log");
  EXPECT_EQ(server.Request("pipe").status, 0);
  EXPECT_EQ(server.Request("--out " + _dir / "out" + " a").status, 0);
  std::filesystem::create_directories(_dir / "in/a.log");
  for (const std::string& unwritable : {std::string("/dev/null/out"), _dir / "in"}) {
    EXPECT_EQ(server.Request("--out " + unwritable + " a").status, 2) << unwritable;
  }
  server.Interrupt();
  EXPECT_EQ(server.End().status, 1);
}
