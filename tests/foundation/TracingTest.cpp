#include "foundation/Tracing.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <climits>
#include <iostream>
#include <string>

#include "support/InProcess.h"
#include "support/TempDir.h"

namespace {

time_t frozenTime = -1;  // -1 for the real time

}  // namespace

// Takes the place of the C library's clock in this process, the library under test included.
extern "C" time_t time(time_t* out) {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  const time_t result = frozenTime == -1 ? now.tv_sec : frozenTime;
  if (out != nullptr) *out = result;
  return result;
}

namespace {

template <typename Number>
concept HasText = requires(Number number) {
  toString(number);
};

static_assert(!HasText<unsigned>);
static_assert(!HasText<double>);

class Tracing : public testing::Test {
 protected:
  Tracing() {
    setenv("TZ", "XYZ-5", 1);  // five hours ahead of Greenwich
    tzset();
    frozenTime = 1767305045;  // 2 January 2026, 03:04:05 there
  }
  ~Tracing() override {
    frozenTime = -1;
    unsetenv("TZ");
    tzset();
  }
};

}  // namespace

TEST_F(Tracing, FormatsLocalTimeIntegersAndTheHostName) {
  EXPECT_EQ(GetDate(), "Fri Jan  2 03:04:05 2026");
  EXPECT_EQ(GetSortDate(), "2026-01-02-03-04-05");
  EXPECT_EQ(GetDay(), "02/01/2026");
  EXPECT_EQ(GetShortDate(), "01-02.03:04");
  EXPECT_EQ(toString(INT_MIN), "-2147483648");
  char name[256] = {};
  ASSERT_EQ(gethostname(name, sizeof name - 1), 0);
  EXPECT_EQ(GetHostName(), name);
}

TEST_F(Tracing, WritesProgressOnStandardOutputAndMessagesOnStandardError) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Trace("100%s done", 0);
  Trace(VorString("start"), 1);
  TraceErr("disk full");
  TraceStdErr("one");
  TraceStdErr(VorString("two"));
  FATAL(0, "unseen");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "   100%s done\n"
            "\n\n## 01-02.03:04 - start\n\n"
            "   ERROR :disk full\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "one\ntwo\n");
}

TEST_F(Tracing, GoesOnAfterAFailedWrite) {
  TempDir dir;
  const std::string out = dir.Write("out", "");
  EXPECT_EQ(InProcess([&] {
              for (const std::string& file : {std::string("/dev/full"), out}) {
                const int fd = open(file.c_str(), O_WRONLY | O_APPEND);
                dup2(fd, STDOUT_FILENO);
                dup2(fd, STDERR_FILENO);
                Trace(file.c_str(), 0);
                TraceErr(file);
                TraceStdErr(file.c_str());
              }
              std::cout.rdbuf(nullptr);  // silent, and throws from now on
              try {
                std::cout.exceptions(std::ios::badbit);
              } catch (const std::ios::failure&) {
                Trace("unseen", 0);
              }
              return 0;
            }),
            0);
  EXPECT_EQ(dir.Read("out"), "   " + out + "\n   ERROR :" + out + "\n" + out + "\n");
}

TEST_F(Tracing, FatalPrintsABannerOnStandardErrorAndTheStackOnStandardOutput) {
  const auto fail = [](bool showsOutput) {  // the death test reads standard error
    if (showsOutput) dup2(STDERR_FILENO, STDOUT_FILENO);
    close(showsOutput ? STDERR_FILENO : STDOUT_FILENO);
    FATAL(-1, "it broke");
  };
  EXPECT_EXIT(fail(false), testing::KilledBySignal(SIGABRT),
              testing::ContainsRegex("FATAL INTERNAL ERROR ------------------------\n"
                                     "it broke\n"
                                     "STACK ---------------------------------------\n$"));
  EXPECT_EXIT(fail(true), testing::KilledBySignal(SIGABRT),
              testing::ContainsRegex("^#0 .*FATAL.*\n#1 "));
}
