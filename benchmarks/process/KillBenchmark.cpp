#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "base/VorListValVorString.h"
#include "process/TAProcess.h"
#include "process/TAProcessOptions.h"

// The time from the start of a kill until 1,000 descendants of a command have gone.

namespace {

// A command with 1,000 children, all of which hold a pipe open.
class Family {
 public:
  explicit Family(TAContainment containment) {
    if (pipe(_pipe) != 0) abort();
    fcntl(_pipe[0], F_SETFD, FD_CLOEXEC);
    const std::string script =
        "i=0; while [ $i -lt 1000 ]; do sleep 1000 & i=$((i+1)); done; echo >/dev/fd/" +
        std::to_string(_pipe[1]) + "; wait";
    TAProcessOptions options;
    options.SetGroup(TAProcessOptions::OwnGroup);  // for the peer
    process.SetContainment(containment);
    if (process.Start(VorListValVorString{"sh", "-c", script}, options) != 0) abort();
    close(_pipe[1]);
    ReadByte();
  }
  Family(const Family&) = delete;
  Family& operator=(const Family&) = delete;
  ~Family() { close(_pipe[0]); }

  // Also returns when no process holds the pipe.
  void WaitUntilGone() {
    int status;
    process.Wait(status);
    ReadByte();
  }

  TAProcess process;

 private:
  void ReadByte() {
    char byte;
    while (read(_pipe[0], &byte, 1) < 0) {
    }
  }

  int _pipe[2];
};

template <TAContainment containment, typename Kill>
void RunKill(benchmark::State& state, Kill killAll) {
  for (auto step : state) {
    Family family(containment);
    const auto start = std::chrono::steady_clock::now();
    killAll(family.process);
    family.WaitUntilGone();
    const std::chrono::duration<double> used = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(used.count());
  }
}

template <TAContainment containment>
void KillOurs(benchmark::State& state) {
  RunKill<containment>(state, [](TAProcess& process) { process.KillTree(); });
}

void KillPeer(benchmark::State& state) {
  RunKill<TAContainment::Tree>(
      state, [](const TAProcess& process) { kill(-process.ChildPid(), SIGKILL); });
}

void Kills(benchmark::internal::Benchmark* benchmark) {
  benchmark->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
}

}  // namespace

BENCHMARK_TEMPLATE(KillOurs, TAContainment::Tree)->Name("BM_Kill1000/ours/Tree")->Apply(Kills);
BENCHMARK(KillPeer)->Name("BM_Kill1000/killpg/Tree")->Apply(Kills);
BENCHMARK_TEMPLATE(KillOurs, TAContainment::Group)->Name("BM_Kill1000/ours/Group")->Apply(Kills);
BENCHMARK(KillPeer)->Name("BM_Kill1000/killpg/Group")->Apply(Kills);
BENCHMARK_TEMPLATE(KillOurs, TAContainment::Everything)
    ->Name("BM_Kill1000/ours/Everything")
    ->Apply(Kills);
BENCHMARK(KillPeer)->Name("BM_Kill1000/killpg/Everything")->Apply(Kills);
