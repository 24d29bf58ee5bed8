// runner JOBS SECONDS [FILE]: runs the commands in the lines of a file or of standard input, JOBS
// at a time, each for at most SECONDS.  Line 1 prints to line1.log, and so on.  Ctrl-C cancels all.
// No command leaves a process behind.  The exit status is 0 only if all have passed.

#include <VorToolsInfrastructure.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

static volatile sig_atomic_t interrupted = 0;
static TAProcessList* volatile running = nullptr;

static void Interrupt(int) {
  interrupted = 1;
  if (running != nullptr) running->Wake();
}

int main(int argc, char** argv) {
  const int jobs = argc > 2 ? std::atoi(argv[1]) : 0;
  const int seconds = argc > 2 ? std::atoi(argv[2]) : 0;
  std::ifstream input(argc > 3 ? argv[3] : argc > 2 ? "/dev/stdin" : "");
  VorListValVorString commands;
  for (std::string line; std::getline(input, line);) commands.Append(line);
  if (jobs < 1 || seconds < 1 || seconds > 1'000'000 || !input.eof()) {
    std::fputs("usage: runner JOBS SECONDS [FILE]; the file must be readable\n", stderr);
    return 2;
  }

  TAProcessList list(jobs);
  list.SetOrder(TAProcessList::FirstAddedFirst);
  list.SetContainment(TAContainment::Everything);
  list.SetLeavesNobody(true);
  list.SetGrace(2000);       // milliseconds from SIGTERM to SIGKILL
  TAProcessOptions options;  // in sessions of their own, commands do not get Ctrl-C themselves
  options.SetInput("/dev/null").SetGroup(TAProcessOptions::OwnSession);
  for (int i = 1; i <= commands.Size(); ++i) {
    options.SetOutput("line" + std::to_string(i) + ".log");
    list.Start(commands[i], options, seconds * 1000);
  }
  running = &list;
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) signal(number, Interrupt);
  bool allPassed = true;
  for (int i = 1; i <= list.Size(); list.WaitForChange(-1)) {
    if (interrupted) list.CancelAll();
    list.Check();
    for (; i <= list.Size() && list.GetStatus(i) == TAProcessList::Done; ++i) {
      const TAProcessEnd end = list.GetEnd(i);
      allPassed = allPassed && end.Passed();
      std::printf("line%d.log: %s, %.2f s, %ld KiB, left behind: %d\n", i,
                  end.Describe().CastToCharPtr(), end.seconds, end.peakMemoryKiB, end.leftBehind);
    }
    std::fflush(stdout);
  }
  running = nullptr;
  return allPassed ? 0 : 1;
}
