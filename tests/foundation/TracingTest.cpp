#include "foundation/Tracing.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <climits>
#include <string>

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

TEST_F(Tracing, FatalPrintsABannerOnStandardErrorAndTheStackOnStandardOutput) {
  EXPECT_EXIT((close(STDOUT_FILENO), FATAL(-1, "it broke")), testing::KilledBySignal(SIGABRT),
              testing::ContainsRegex("FATAL INTERNAL ERROR ------------------------\n"
                                     "it broke\n"
                                     "STACK ---------------------------------------\n$"));
  // Here the child sends standard output where the death test looks, and standard error elsewhere.
  EXPECT_EXIT((dup2(STDERR_FILENO, STDOUT_FILENO), close(STDERR_FILENO), FATAL(1, "it broke")),
              testing::KilledBySignal(SIGABRT), testing::ContainsRegex("^#0 .*FATAL.*\n#1 "));
}
