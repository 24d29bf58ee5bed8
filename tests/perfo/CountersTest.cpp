#include <gtest/gtest.h>
#include <time.h>

#include <climits>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "base/VorListValVorString.h"
#include "perfo/PerfoFormat.h"
#include "perfo/TAPerfo.h"
#include "perfo/TAPerfoAv.h"
#include "perfo/TAPerfoLoad.h"

static time_t now = 1000;

// Takes the place of the C library's clock in this process, the library under test included.
extern "C" time_t time(time_t* out) {
  if (out != nullptr) *out = now;
  return now;
}

namespace {

std::string Line(TAPerfo& counter) {
  VorString line;
  counter.Report(line);
  return static_cast<const char*>(line);
}

TAPerfo staticCounter("static");  // made before main

}  // namespace

TEST(PerfoFormat, Counts) {
  const std::pair<int, const char*> rows[] = {
      {0, "0"},           {-5, "-5"},         {999, "999"},    {1000, "1000"},    {1001, "0.97k"},
      {1024, "1k"},       {1536, "1.5k"},     {1090, "1.06k"}, {11000, "10.7k"},  {102450, "100k"},
      {1024000, "1000k"}, {1025024, "0.97M"}, {2097152, "2M"}, {INT_MAX, "1.99T"}};
  for (const auto& [count, text] : rows) EXPECT_EQ(countToStr(count), text);
}

TEST(PerfoFormat, Times) {
  const std::pair<long, const char*> rows[] = {{0, "0s"},          {59, "59s"},
                                               {60, "1m"},         {3600, "1h"},
                                               {3725, "1h2m5s"},   {86400, "1d"},
                                               {86461, "1d1m1s"},  {90061, "1d1h"},
                                               {7199, "1h59m59s"}, {8640000000, "100000d"}};
  for (const auto& [seconds, text] : rows) EXPECT_EQ(lengthToStr(seconds), text);
}

TEST(TAPerfo, ReportsCountAndTime) {
  TAPerfo counter;
  EXPECT_EQ(Line(counter), "no-name 0 in 0s");
  counter.SetName("bytes");
  for (const int count : {1000, 536}) counter.Count(count);
  now += 61;
  EXPECT_EQ(Line(counter), "bytes 1.5k in 1m1s");
  counter.Reset();
  EXPECT_EQ(Line(counter), "bytes 0 in 0s");
  for (const int count : {INT_MAX, 2}) counter.Count(count);
  EXPECT_EQ(Line(counter), "bytes -2147483647 in 0s");  // wraps round
}

TEST(TAPerfo, ReportsAllFromTheLastToTheFirst) {
  const TAPerfo first("first");
  TAPerfoAv second("second");
  { const TAPerfo gone("gone"); }
  VorListValVorString lines;
  lines.Append("kept");
  TAPerfo::GlobalReport(lines);
  EXPECT_EQ(lines.Size(), 4);
  EXPECT_TRUE(lines[1] == "kept" && lines[2] == "second 0 per 1m, 0 in 0s");
  std::ostringstream out;
  TAPerfo::GlobalReport(out);
  EXPECT_EQ(out.str().find("second 0 per 1m, 0 in 0s\nfirst 0 in 0s\nstatic 0 in "), 0u);
}

// A counter whose report destroys another one.
struct Ending : TAPerfo {
  explicit Ending(std::unique_ptr<TAPerfo>& ended) : other(ended) {}
  void Report(VorString& line) override {
    other.reset();
    TAPerfo::Report(line);
  }
  using TAPerfo::Report;

  std::unique_ptr<TAPerfo>& other;
};

TEST(TAPerfo, ReportsEachOnceWhileOthersGo) {
  auto first = std::make_unique<TAPerfo>("first"), second = std::make_unique<TAPerfo>("second");
  const Ending endsFirst(first), endsSecond(second);
  VorListValVorString lines;
  TAPerfo::GlobalReport(lines);
  EXPECT_EQ(lines.Size(), 3);  // with the static one
}

TEST(TAPerfo, CountsFromSeveralThreads) {
  TAPerfo plain;
  TAPerfoLoad load("load", 20);
  const auto work = [&] {
    for (int i = 0; i < 2000; ++i) plain.Count(1), load.Count(1), Line(load);
  };
  std::thread other(work);
  work();
  other.join();
  now += 1;
  EXPECT_EQ(Line(plain), "no-name 3.9k in 1s");
  EXPECT_EQ(Line(load), "load 3.9k in last 20s, 3.9k in 1s");
}

TEST(TAPerfoLoad, SumsTheLastTwentySlotsWithoutTheCurrentOne) {
  TAPerfoLoad counter("c", 60);  // slots of three seconds
  counter.Count(7);
  EXPECT_EQ(Line(counter), "c 0 in last 1m, 7 in 0s");
  now += 3;
  counter.Count(5);
  EXPECT_EQ(Line(counter), "c 7 in last 1m, 12 in 3s");
  now += 57;
  EXPECT_EQ(Line(counter), "c 12 in last 1m, 12 in 1m");
  now += 3;
  EXPECT_EQ(Line(counter), "c 5 in last 1m, 12 in 1m3s");
  now -= 100;  // a clock that was set back
  counter.Count(1);
  counter.SetLength(20);
  EXPECT_EQ(Line(counter), "c 0 in last 20s, 0 in 0s");
}

TEST(TAPerfoLoad, SlotsShorterThanASecondKeepTheWindow) {
  TAPerfoLoad counter("c", 10);
  for (int second = 0; second < 30; ++second, ++now) counter.Count(1);
  EXPECT_EQ(Line(counter), "c 10 in last 10s, 30 in 30s");
}

TEST(TAPerfoLoad, CatchesUpSlowlyAfterALongSilence) {
  TAPerfoLoad counter("c", 20);
  now += 100;  // 100 slots: 16 and 21 of them are passed at once
  counter.Count(3);
  EXPECT_EQ(Line(counter), "c 0 in last 20s, 3 in 1m40s");  // passing 63 % 21 + 21 more
  EXPECT_EQ(Line(counter), "c 0 in last 20s, 3 in 1m40s");
}

TEST(TAPerfoAv, TellsTheRateSinceTheStart) {
  TAPerfoAv counter("c", 60);
  counter.Count(2000000000);
  EXPECT_EQ(Line(counter), "c 0 per 1m, 1.86T in 0s");
  now += 120;
  EXPECT_EQ(Line(counter), "c 953M per 1m, 1.86T in 2m");  // the product needs 64 bits
  counter.Reset();
  now += 60;
  EXPECT_EQ(Line(counter), "c 1.86T per 1m, 1.86T in 1m");
  EXPECT_EQ(TAPerfoAv("zero", 0).GetName(), "zero");
}
