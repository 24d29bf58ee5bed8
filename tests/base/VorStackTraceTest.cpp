#include "base/VorStackTrace.h"

#include <gtest/gtest.h>

#include <string>

namespace stacktest {

VOR_API __attribute__((noinline)) std::string TraceOfCaller(int skip, int limit) {
  VorStackTrace trace;
  trace.GetTrace();
  char* text = nullptr;
  std::size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  trace.Print(stream, skip, limit);
  fclose(stream);
  std::string result(text, size);
  free(text);
  return result;
}

// Ends in the call, so the return address is after the function.
[[noreturn]] VOR_API __attribute__((noinline)) void Throw() {
  throw TraceOfCaller(1, 1);
}

}  // namespace stacktest

TEST(VorStackTrace, NamesTheFunctionReadably) {
  const std::string all = stacktest::TraceOfCaller(0, 0);
  EXPECT_EQ(all.rfind("#0 ", 0), 0u) << all;
  EXPECT_LT(all.find("stacktest::TraceOfCaller"), all.find('\n')) << all;
  EXPECT_EQ(stacktest::TraceOfCaller(1, 0).find("stacktest::TraceOfCaller"), std::string::npos);
  const std::string one = stacktest::TraceOfCaller(0, 1);
  EXPECT_EQ(one.find('\n'), one.size() - 1) << one;
  EXPECT_EQ(stacktest::TraceOfCaller(99999, 0), "");
  try {
    stacktest::Throw();
  } catch (const std::string& trace) {
    EXPECT_NE(trace.find("stacktest::Throw"), std::string::npos) << trace;
  }
}
