#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "base/VorListValVorString.h"
#include "process/TAProcess.h"
#include "process/TAProcessOptions.h"

// Single children and the process tree, each beside what a tool would use instead.

namespace {

constexpr char kProgram[] = "/bin/true";
char* const kArguments[] = {const_cast<char*>(kProgram), nullptr};

pid_t SpawnWithPosix() {
  pid_t pid = -1;
  posix_spawn(&pid, kProgram, nullptr, nullptr, kArguments, environ);
  return pid;
}

pid_t SpawnWithFork() {
  const pid_t pid = fork();
  if (pid == 0) {
    execv(kProgram, kArguments);
    _exit(1);
  }
  return pid;
}

// The argument is the resident size of this process in MB.
template <typename Action>
void RunWithResidentSize(benchmark::State& state, Action startAndWait) {
  const std::vector<char> resident(static_cast<std::size_t>(state.range(0)) << 20, 'x');
  benchmark::DoNotOptimize(resident.data());
  for (auto step : state) startAndWait();
}

void StartOurs(benchmark::State& state) {
  RunWithResidentSize(state, [] {
    TAProcess process;
    int status;
    process.Start(kProgram, 0);
    process.Wait(status);
  });
}

void StartWithOptions(benchmark::State& state) {
  const TAProcessOptions options = TAProcessOptions()
                                       .SetDirectory("/")
                                       .SetVariable("A", "1")
                                       .SetInput("/dev/null")
                                       .SetOutput("/dev/null")
                                       .SetLimit(TAProcessOptions::CoreBytes, 0)
                                       .SetGroup(TAProcessOptions::OwnGroup);
  const VorListValVorString arguments = {kProgram};
  RunWithResidentSize(state, [&] {
    TAProcess process;
    int status;
    if (process.Start(arguments, options) != 0) state.SkipWithError(process.GetErrMsg());
    process.Wait(status);
  });
}

// What posix_spawn offers of these options.
pid_t SpawnWithAttributes() {
  pid_t pid = -1;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_t actions;
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY | O_CREAT | O_TRUNC, 0666);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  posix_spawn_file_actions_addchdir_np(&actions, "/");
  posix_spawn(&pid, kProgram, &actions, &attributes, kArguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return pid;
}

template <pid_t (*start)()>
void StartPeer(benchmark::State& state) {
  RunWithResidentSize(state, [] { waitpid(start(), nullptr, 0); });
}

// Idle children, which form a tree to look up.
class IdleChildren {
 public:
  explicit IdleChildren(std::int64_t count) {
    for (std::int64_t number = 0; number < count; ++number) {
      _children.push_back(std::make_unique<TAProcess>());
      _children.back()->Start("sleep 1000", 0);
    }
  }
  ~IdleChildren() {
    int status;
    for (const auto& child : _children) child->KillWithSig(1);
    for (const auto& child : _children) child->Wait(status);
  }

 private:
  std::vector<std::unique_ptr<TAProcess>> _children;
};

// The argument is the number of children.
void TreeOurs(benchmark::State& state) {
  const IdleChildren children(state.range(0));
  int self = getpid();
  const TAProcess process(self);
  for (auto step : state) {
    VorListValVorString pids;
    process.GetProcessTree(pids);
    if (pids.Size() < state.range(0)) state.SkipWithError("children are missing");
  }
}

void TreeFromPipe(benchmark::State& state) {
  const IdleChildren children(state.range(0));
  for (auto step : state) {
    FILE* const pipe = popen("ps -ef", "r");
    char line[4096];
    int pid;
    int parent;
    int found = 0;
    while (fgets(line, sizeof line, pipe) != nullptr) {
      if (sscanf(line, "%*s %d %d", &pid, &parent) == 2 && parent == getpid()) ++found;
    }
    pclose(pipe);
    if (found < state.range(0)) state.SkipWithError("children are missing");
  }
}

void ResidentSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(10)->Arg(1024)->Iterations(100)->UseRealTime()->Unit(benchmark::kMicrosecond);
}

void TreeSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(10)->Arg(1000)->UseRealTime()->Unit(benchmark::kMicrosecond);
}

}  // namespace

BENCHMARK(StartOurs)->Name("BM_StartChild/ours")->Apply(ResidentSizes);
BENCHMARK_TEMPLATE(StartPeer, SpawnWithPosix)
    ->Name("BM_StartChild/posix_spawn")
    ->Apply(ResidentSizes);
BENCHMARK_TEMPLATE(StartPeer, SpawnWithFork)->Name("BM_StartChild/fork_exec")->Apply(ResidentSizes);
BENCHMARK(StartWithOptions)->Name("BM_StartWithOptions/ours")->Apply(ResidentSizes);
BENCHMARK_TEMPLATE(StartPeer, SpawnWithAttributes)
    ->Name("BM_StartWithOptions/posix_spawn")
    ->Apply(ResidentSizes);
BENCHMARK(TreeOurs)->Name("BM_ProcessTree/ours")->Apply(TreeSizes);
BENCHMARK(TreeFromPipe)->Name("BM_ProcessTree/ps_pipe")->Apply(TreeSizes);
