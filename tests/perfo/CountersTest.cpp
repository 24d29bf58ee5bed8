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

namespace {

time_t now = 1000;

}  // namespace

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
  const struct {
    int count;
    const char* text;
  } rows[] = {{0, "0"},         {-5, "-5"},        {999, "999"},       {1000, "1000"},
              {1001, "0.97k"},  {1024, "1k"},      {1536, "1.5k"},     {1090, "1.06k"},
              {11000, "10.7k"}, {102450, "100k"},  {1024000, "1000k"}, {1025024, "0.97M"},
              {2097152, "2M"},  {INT_MAX, "1.99T"}};
  for (const auto& row : rows) EXPECT_EQ(countToStr(row.count), row.text);
}

TEST(PerfoFormat, Times) {
  const struct {
    long seconds;
    const char* text;
  } rows[] = {{0, "0s"},
              {59, "59s"},
              {60, "1m"},
              {3600, "1h"},
              {3725, "1h2m5s"},
              {86400, "1d"},
              {86461, "1d1m1s"},
              {90061, "1d1h"},
              {90000, "1d1h"},
              {7199, "1h59m59s"},
              {8640000000, "100000d"}};
  for (const auto& row : rows) EXPECT_EQ(lengthToStr(row.seconds), row.text);
}

TEST(TAPerfo, ReportsCountAndTime) {
  TAPerfo counter;
  EXPECT_EQ(Line(counter), "no-name 0 in 0s");
  counter.SetName("bytes");
  counter.Count(1000);
  counter.Count(536);
  now += 61;
  EXPECT_EQ(Line(counter), "bytes 1.5k in 1m1s");
  counter.Reset();
  EXPECT_EQ(Line(counter), "bytes 0 in 0s");
  counter.Count(INT_MAX);
  counter.Count(2);
  EXPECT_EQ(Line(counter), "bytes -2147483647 in 0s");  // wraps round
}

TEST(TAPerfo, ReportsAllFromTheLastToTheFirst) {
  const TAPerfo first("first");
  TAPerfoAv second("second");
  { const TAPerfo gone("gone"); }
  VorListValVorString lines;
  lines.Append("kept");
  TAPerfo::GlobalReport(lines);
  ASSERT_EQ(lines.Size(), 4);
  EXPECT_EQ(lines[1], "kept");
  EXPECT_EQ(lines[2], "second 0 per 1m, 0 in 0s");
  EXPECT_EQ(lines[3], "first 0 in 0s");
  EXPECT_EQ(lines[4].FindPosition("static 0 in "), 0);
  std::ostringstream out;
  TAPerfo::GlobalReport(out);
  EXPECT_EQ(out.str().find("second 0 per 1m, 0 in 0s\nfirst 0 in 0s\nstatic "), 0u);
}

// A counter whose report destroys another one.
class Ending : public TAPerfo {
 public:
  explicit Ending(std::unique_ptr<TAPerfo>& other) : _other(other) {}
  void Report(VorString& line) override {
    _other.reset();
    TAPerfo::Report(line);
  }
  using TAPerfo::Report;

 private:
  std::unique_ptr<TAPerfo>& _other;
};

TEST(TAPerfo, ReportsEachOnceWhileOthersGo) {
  std::unique_ptr<TAPerfo> first = std::make_unique<TAPerfo>("first");
  std::unique_ptr<TAPerfo> second = std::make_unique<TAPerfo>("second");
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
