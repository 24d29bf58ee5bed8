#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "VorToolsInfrastructure.h"
#include "campaign/RunTool.h"
#include "support/TempDir.h"

using testing::HasSubstr;
using testing::Not;

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
  ~Server() { End(); }

  void Interrupt() const { kill(_pid, SIGINT); }

  Outcome End() {
    if (_stream != nullptr) {
      _end.output = ReadAll(_stream);
      _end.status = WEXITSTATUS(pclose(_stream));
      _stream = nullptr;
    }
    return _end;
  }

  std::string Address() const { return "--host 127.0.0.1 --port " + std::to_string(_port) + " "; }
  Outcome Request(const std::string& arguments, const std::string& before = "") const {
    return Campaign("request " + Address() + arguments, before);
  }
  void Connect(TASocket& client) const { ASSERT_EQ(client.OpenClient("127.0.0.1", _port), 0); }

 private:
  FILE* _stream;
  int _pid = 0;
  int _port = 0;
  Outcome _end;
};

class CampaignServe : public testing::Test {
 protected:
  std::string Tests(const std::string& content) const {
    return "--tests " + _dir.Write("tests.list", content) + " ";
  }
  std::string File(const char* name) const { return _dir / name + " "; }

  TempDir _dir;
};

}  // namespace

TEST_F(CampaignServe, DeliversResultsAndFilesInEveryMode) {
  const std::string tests = Tests(
      "unit/bytes head -c 300000 /dev/zero\nunit/lines printf \"a\\r\\nb\"\n"
      "unit/fails sh -c \"echo why; exit 3\"\nunit/hangs sleep 1000\nother/quiet true\n");
  for (const std::string& serving : {std::string(), kCompressed}) {
    for (const std::string& asking : {std::string(), kCompressed}) {
      Server server(tests + "--requests 3 --timeout 1 --jobs 4", serving);
      Outcome answer = server.Request("--out " + File("out") + "'unit/*'", asking);
      EXPECT_EQ(answer.status, 1);
      EXPECT_THAT(answer.output, HasSubstr("unit/fails  failed (3) "));
      EXPECT_THAT(answer.output, HasSubstr("unit/hangs  timed out (99) "));
      EXPECT_THAT(answer.output, HasSubstr("4 tests: 2 passed, 1 failed, 1 timed out, in "));
      EXPECT_EQ(_dir.Read("out/unit/bytes.log"), std::string(300000, '\0'));
      EXPECT_EQ(_dir.Read("out/unit/lines.log"), "a\r\nb");
      EXPECT_EQ(_dir.Read("out/unit/fails.log"), "why\n");
      EXPECT_EQ(server.Request("'other/*'", asking).status, 0);
      answer = server.Request("'none/*'", asking);
      EXPECT_EQ(answer.status, 2);
      EXPECT_EQ(answer.output, "campaign: 'none/*' selects no test of the server\n");
      const Outcome end = server.End();
      EXPECT_EQ(end.status, 0);
      EXPECT_THAT(end.output, HasSubstr("\ntests run 5 in "));
      EXPECT_THAT(end.output, Not(HasSubstr("request failed")));
    }
  }
}

TEST_F(CampaignServe, RunsNothingWithoutTheToken) {
  const std::string mark = _dir / "ran";
  const std::string token = "--token " + _dir.Write("token", "open sesame\n") + " ";
  Server server(Tests("a touch " + mark + "\n") + token + "--requests 5");
  for (const char* wrong : {"open", "open sesame2", "open sesamE", "x"}) {
    const std::string other = wrong[0] == 'x' ? "" : "--token " + _dir.Write("wrong", wrong) + " ";
    EXPECT_EQ(server.Request(other + "'*'").status, 3) << wrong;
  }
  EXPECT_NE(access(mark.c_str(), F_OK), 0);
  EXPECT_EQ(server.Request(token + "'*'").status, 0);
  EXPECT_EQ(access(mark.c_str(), F_OK), 0);
  EXPECT_THAT(server.End().output, HasSubstr("refused, it does not carry the token\n"));
}

TEST_F(CampaignServe, RequestersThatDisappearCostTheirRequestOnly) {
  Server server(Tests("big head -c 3000000 /dev/zero\n") + "--requests 4");
  {
    TASocket silent;
    server.Connect(silent);
  }
  {
    TASocket hasty;
    server.Connect(hasty);
    hasty.PutBlock("*");
  }
  {
    TASocket half;
    server.Connect(half);
    half.PutBlock("*");
    VorListValVorString answer;
    EXPECT_EQ(half.GetBlock(answer, 30), 0);
    EXPECT_EQ(answer.Size(), 3);
  }
  EXPECT_EQ(server.Request("'*'").status, 0);
  const Outcome end = server.End();
  EXPECT_EQ(end.status, 0);
  EXPECT_THAT(end.output, HasSubstr("request failed: Unable to get block size"));
  EXPECT_THAT(end.output, HasSubstr("request failed: Unable to flush buffer"));
}

TEST_F(CampaignServe, RefusesWhatItCannotReadOrAnswer) {
  const std::string mark = _dir / "ran";
  std::string tests = "small touch " + mark + "\n";
  for (int i = 0; i < 5000; ++i) {
    tests += std::string(200, 'x') + std::to_string(i) + " touch " + mark + "\n";
  }
  Server server(Tests(tests) + "--requests 3");
  EXPECT_EQ(server.Request("'*'").status, 3);
  {
    TASocket endless(1 << 22);
    server.Connect(endless);
    endless.PutBlock(VorString(std::string(1 << 20, '*')));
    VorListValVorString answer;
    EXPECT_EQ(endless.GetBlock(answer, 30), 1);
  }
  EXPECT_NE(access(mark.c_str(), F_OK), 0);
  EXPECT_EQ(server.Request("small").status, 0);
  const Outcome end = server.End();
  EXPECT_THAT(end.output, HasSubstr("refused, the results are more than an answer can hold"));
  EXPECT_THAT(end.output, HasSubstr("request failed: Unable to get full block"));
}

TEST_F(CampaignServe, AnswersOfAHostileServerStayInTheFolder) {
  TASocket server;
  ASSERT_EQ(server.OpenServer(0), 0);
  const std::string request = "request --host localhost --port " +
                              std::to_string(server.GetPort()) + " --out " + File("out") + "'*'";
  const std::string whole = "a 0 1.0";
  const std::vector<std::string> answers = {"../evil 0 1.0",
                                            "/tmp/evil 0 1.0",
                                            "a",
                                            "a x 1.0",
                                            "a 0 inf",
                                            "a 0 nan",
                                            "a 0 -1.0",
                                            "a\xc2\x9b"
                                            "31m 0 1.0",
                                            whole + " " + whole,
                                            whole};
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
    EXPECT_THAT(run.output, HasSubstr(answer == whole ? "the output of a did not arrive"
                                                      : "gave an answer that is none"));
  }
  EXPECT_NE(access((_dir / "evil.log").c_str(), F_OK), 0);
}

TEST_F(CampaignServe, InterruptEndsIt) {
  Server server(Tests("a true\n"));
  server.Interrupt();
  EXPECT_EQ(server.End().status, 1);
}

TEST_F(CampaignServe, RefusesBadInputInOneLine) {
  TASocket used;
  used.OpenServer(0);
  const std::string taken = std::to_string(used.GetPort());
  const std::string serve = "serve " + Tests("a true\n");
  const std::string ask = "request --host localhost --port ";
  const struct {
    std::string arguments;
    int status;
    const char* message;
  } rows[] = {
      {serve, 2, "--port PORT is missing"},
      {serve + "--port 65536", 2, "--port takes a whole number from 0 to 65535, not '65536'"},
      {serve + "--port " + taken, 2, "unable to bind server socket"},
      {serve + "--port 0 '*'", 2, "serve takes no expression"},
      {serve + "--port 0 --junit x", 2, "unknown option --junit"},
      {serve + "--port 0 --token " + _dir.Write("empty", "\n"), 2, "does not hold a token"},
      {serve + "--port 0 --token " + _dir / "missing", 2, "missing: No such file"},
      {"serve --port 0 --tests " + _dir / "missing", 2, "missing: No such file"},
      {ask + "1", 2, "the expression is missing"},
      {ask + "1 '*'", 3, "unable to connect client socket to server"},
      {"request --host no.such.host.invalid --port 1 '*'", 3, "unknown host"},
  };
  for (const auto& row : rows) {
    const Outcome run = Campaign(row.arguments);
    EXPECT_EQ(run.status, row.status) << row.arguments;
    EXPECT_THAT(run.output, HasSubstr(row.message)) << row.arguments;
    EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << run.output;
  }
}
