#include <gtest/gtest.h>
#include <time.h>
#include <unistd.h>

#include <climits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/ScopedLock.h"
#include "base/VorListValVorString.h"
#include "perfo/PerfoFormat.h"
#include "perfo/TAPerfoAv.h"
#include "perfo/TAPerfoLoad.h"
#include "support/InProcess.h"

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
  for (const int count : {INT_MAX, 2}) counter.Count(count);
  EXPECT_EQ(Line(counter), "bytes -2147483647 in 0s");  // wraps round
}

// A full pipe: while a line is being written, other threads count and make counters.
struct FullPipe : std::streambuf {
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    std::thread([this] { counter.Count(1); }).join();
    std::thread([] { TAPerfo(); }).join();
    writes.emplace_back(text, static_cast<std::size_t>(size));
    return size;
  }

  TAPerfoAv counter{"pipe"};
  std::vector<std::string> writes;
};

TEST(TAPerfo, ReportsAllFromTheLastToTheFirstWithoutALock) {
  FullPipe pipe;
  std::ostream out(&pipe);
  const TAPerfo last("last");
  { const TAPerfo gone("gone"); }
  EXPECT_EQ(TAPerfo::globalList.Size(), 3);
  TAPerfo::GlobalReport(out);
  ASSERT_EQ(pipe.writes.size(), 3u);  // a write for each line
  EXPECT_EQ(pipe.writes[0], "last 0 in 0s\n");
  EXPECT_EQ(pipe.writes[1], "pipe 0 per 1m, 1 in 0s\n");
}

// A counter whose report destroys another one, and whose Reset holds the lock.
struct Custom : TAPerfo {
  void Report(VorString& line) override {
    other.reset();
    TAPerfo::Report(line);
  }
  void Reset() override {
    const vor::ScopedLock holder(_lock);
    TAPerfo::Reset();
    SetName(GetName() + "!");
  }

  std::unique_ptr<TAPerfo> other;
};

TEST(TAPerfo, OverridesMayHoldTheLockAndDestroyOthers) {
  auto other = std::make_unique<TAPerfo>();
  Custom counter;
  counter.other = std::move(other);
  counter.Reset();
  VorListValVorString lines;
  TAPerfo::GlobalReport(lines);
  EXPECT_EQ(lines.Size(), 2);  // with the static one
  EXPECT_EQ(lines[1], "no-name! 0 in 0s");
}

TEST(TAPerfo, CountsFromSeveralThreads) {
  TAPerfo plain;
  TAPerfoLoad load("load", 20);
  const auto work = [&] {
    for (int i = 0; i < 2000; ++i) {
      plain.Count(1);
      load.Count(1);
      Line(load);
    }
  };
  std::thread other(work);
  work();
  other.join();
  now += 1;
  EXPECT_EQ(Line(plain), "no-name 3.9k in 1s");
  EXPECT_EQ(Line(load), "load 3.9k in last 20s, 3.9k in 1s");
}

TEST(TAPerfo, CanBeMadeInAForkedChildOfAThreadedProcess) {
  const auto makeCounter = [] {
    alarm(30);
    TAPerfo();
    return 0;
  };
  const std::jthread maker([](const std::stop_token& stop) {
    while (!stop.stop_requested()) TAPerfo();
  });
  for (int i = 0; i < 20; ++i) EXPECT_EQ(InProcess(makeCounter), 0);
}

TEST(TAPerfoLoad, SumsTheLastTwentySlotsWithoutTheCurrentOne) {
  TAPerfoLoad counter("c", 60);  // slots of three seconds
  counter.Count(7);
  EXPECT_EQ(Line(counter), "c 0 in last 1m, 7 in 0s");
  now += 3;
  counter.Count(5);
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
  now += 100;  // 100 slots, of which one call passes 16 + 21 and the next one 21
  counter.Count(3);
  EXPECT_EQ(Line(counter), "c 0 in last 20s, 3 in 1m40s");
}

TEST(TAPerfoAv, ReportsTheRateSinceTheStart) {
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
