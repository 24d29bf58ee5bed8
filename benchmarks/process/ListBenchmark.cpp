#include <benchmark/benchmark.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "process/TAProcessList.h"

// Lists of commands: many short ones beside other programs that run commands in parallel, and the
// processor time that a wait for many long ones uses.

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCommands = 10000;

// The argument is the number of commands that run at once.
void RunOurs(benchmark::State& state) {
  for (auto step : state) {
    TAProcessList list(static_cast<int>(state.range(0)));
    for (int number = 0; number < kCommands; ++number) list.Start("true x", 0);
    while (list.NDone() < list.Size()) {
      list.Check();
      list.WaitForChange(-1);
    }
  }
}

// A directory with the same commands as a file of ninja and of ctest.  The path makes the shell of
// ninja run the program, as the others do, and not what it has built in.
class CommandFiles {
 public:
  CommandFiles() {
    std::string pattern = std::filesystem::temp_directory_path() / "vor_bench_XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) abort();
    _path = pattern;
    std::ofstream ninja(_path / "build.ninja");
    std::ofstream ctest(_path / "CTestTestfile.cmake");
    ninja << "rule command\n  command = /bin/true x\n";
    for (int number = 0; number < kCommands; ++number) {
      ninja << "build " << number << ": command\n";
      ctest << "add_test(" << number << " true x)\n";
    }
  }
  CommandFiles(const CommandFiles&) = delete;
  CommandFiles& operator=(const CommandFiles&) = delete;
  ~CommandFiles() { std::filesystem::remove_all(_path); }

  std::string Path() const { return _path; }

 private:
  std::filesystem::path _path;
};

std::string Xargs(const std::string& /*directory*/, const std::string& limit) {
  return "yes x | head -n " + std::to_string(kCommands) + " | xargs -n 1 -P " + limit + " true";
}

std::string Ninja(const std::string& directory, const std::string& limit) {
  return "ninja --quiet -C " + directory + " -j " + limit;
}

std::string Ctest(const std::string& directory, const std::string& limit) {
  return "ctest -Q --test-dir " + directory + " -j " + limit;
}

template <std::string (*commandOf)(const std::string&, const std::string&)>
void RunPeer(benchmark::State& state) {
  const CommandFiles files;
  const std::string command = commandOf(files.Path(), std::to_string(state.range(0)));
  for (auto step : state) {
    if (system(command.c_str()) != 0) state.SkipWithError("the command failed");
  }
}

constexpr int kSleepers = 2000;
constexpr std::chrono::seconds kIdleTime(3);

double ProcessorSeconds() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void ReportIdle(benchmark::State& state, double used) {
  state.SetIterationTime(used);
  state.counters["fraction"] = used / std::chrono::duration<double>(kIdleTime).count();
}

// The argument is the soft limit of descriptors.
void IdleOurs(benchmark::State& state) {
  rlimit before = {};
  getrlimit(RLIMIT_NOFILE, &before);
  rlimit during = before;
  during.rlim_cur = static_cast<rlim_t>(state.range(0));
  if (setrlimit(RLIMIT_NOFILE, &during) != 0) return state.SkipWithError("the limit is too high");
  {
    TAProcessList list(kSleepers);
    for (int number = 0; number < kSleepers; ++number) list.Start("sleep 1000", 0);
    list.Check();
    list.WaitForChange(100);
    for (auto step : state) {
      const double start = ProcessorSeconds();
      const Clock::time_point end = Clock::now() + kIdleTime;
      while (Clock::now() < end) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        list.WaitForChange(static_cast<int>(left.count()));
      }
      ReportIdle(state, ProcessorSeconds() - start);
    }
    if (list.NRunning() != kSleepers) state.SkipWithError("commands are missing");
    for (int position = 1; position <= kSleepers; ++position) {
      kill(list.GetPid(position), SIGKILL);
    }
    while (list.Check(), list.NDone() < list.Size()) list.WaitForChange(-1);
  }
  setrlimit(RLIMIT_NOFILE, &before);
}

// Asks each child every 10 ms whether it has ended.
void IdlePolling(benchmark::State& state) {
  char program[] = "sleep";
  char seconds[] = "1000";
  char* const arguments[] = {program, seconds, nullptr};
  std::vector<pid_t> children(kSleepers);
  for (pid_t& child : children) posix_spawnp(&child, program, nullptr, nullptr, arguments, environ);
  for (auto step : state) {
    const double start = ProcessorSeconds();
    const Clock::time_point end = Clock::now() + kIdleTime;
    while (Clock::now() < end) {
      for (const pid_t child : children) waitpid(child, nullptr, WNOHANG);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ReportIdle(state, ProcessorSeconds() - start);
  }
  for (const pid_t child : children) kill(child, SIGKILL);
  for (const pid_t child : children) waitpid(child, nullptr, 0);
}

void Limits(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(2)->Arg(10)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
}

void DescriptorLimits(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1024)->Arg(16000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMicrosecond);
}

}  // namespace

BENCHMARK(RunOurs)->Name("BM_RunCommands/ours")->Apply(Limits);
BENCHMARK_TEMPLATE(RunPeer, Xargs)->Name("BM_RunCommands/xargs")->Apply(Limits);
BENCHMARK_TEMPLATE(RunPeer, Ninja)->Name("BM_RunCommands/ninja")->Apply(Limits);
BENCHMARK_TEMPLATE(RunPeer, Ctest)->Name("BM_RunCommands/ctest")->Apply(Limits);
BENCHMARK(IdleOurs)->Name("BM_Idle2000/ours")->Apply(DescriptorLimits);
BENCHMARK(IdlePolling)->Name("BM_Idle2000/polling")->Apply(DescriptorLimits);
