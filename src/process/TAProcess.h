#ifndef VOR_PROCESS_TAPROCESS_H
#define VOR_PROCESS_TAPROCESS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "../base/Export.h"
#include "../base/VorString.h"
#include "TAContainment.h"
#include "TAProcessEnd.h"

class TAProcessOptions;
class VorListValVorString;
namespace vor {
class Container;
class LateFailure;
class OutputPipe;
struct ChildRequest;
struct StartFailure;
}  // namespace vor

/// One child process: starts it, polls or waits for its end, kills it alone or with every process
/// descended from it.
///
/// Call Start, then Check or Wait; or Run, which waits and returns the output.  An object
/// constructed with an identifier controls a process that was started elsewhere.
///
/// Check and Wait report an end as a folded status: c for an exit with code c, s for a death by
/// signal s (s plus 128 if it left a core file).  The two ranges overlap; callers' logs and limits
/// rely on it.  GetEnd distinguishes them.
///
/// Once a child has been reaped, the system may give its identifier to another process.  From then
/// on, until the next Start, the object uses it no more and acts as one without a child; only the
/// processes that SetContainment keeps track of can still be killed.  Before each signal to its own
/// child, an object checks that the child was not reaped elsewhere.  An identifier of 0 or less,
/// which would mean whole groups of processes, is no child either.
///
/// Ownership: the destructor does nothing to the child, and neither does the next Start to an
///            earlier child.  A running child continues.  A child that is not reaped stays in the
///            process table until this process ends, unless ZombiClean was called.
/// Errors:    reported by the results below; GetErrMsg keeps the text of the last one.
/// Threads:   one object belongs to one thread at a time; several threads may start children at
///            once.  Everything works in the forked child of a threaded process, too.
/// Limits:    after the first Start this process keeps two descriptors in reserve, so that it can
///            still read the process table and kill trees when it has used up its limit.
class VOR_API TAProcess {
 public:
  TAProcess();
  /// Controls the process \a pid, which is only read.  Check and Wait report the ends of children
  /// of this process only.
  explicit TAProcess(int& pid);
  TAProcess(const TAProcess&) = delete;
  TAProcess& operator=(const TAProcess&) = delete;
  ~TAProcess();

  /// Standard output and standard error of the next child go to \a file, which is truncated or
  /// created; if it is empty, to those of this process.  Returns 0.
  ///
  /// A file that cannot be opened is ignored: the child then writes to the output of this process,
  /// and no result reports it.  If the file matters, check it before Start.
  int SetOutput(const VorString& file);
  /// Standard input of the next child comes from \a file; if it is empty or cannot be opened, from
  /// that of this process.  Returns 0.
  int SetInput(const VorString& file);

  /// Starts \a command as a child process; \a flag has no effect.  Returns 0 if there is a child
  /// now, 1 if fork failed.
  ///
  /// The command is split at blanks; no shell reads it.  The first word is the program, searched in
  /// PATH unless it holds a "/".  From the second word on, words between a pair of double quotes
  /// are one argument, joined by one blank each and without the quotes.  Quotes count only at the
  /// ends of words, and a phrase that is never closed is dropped.
  ///
  /// If the program cannot be run, or the command has no words, Start returns 0 and the child exits
  /// with code 1; GetEnd reports the reason.
  ///
  /// The child has the signal mask of the calling thread.  SIGPIPE and SIGCHLD are at their
  /// defaults; other ignored signals stay ignored.  The time of a start does not grow with the
  /// memory of this process.
  int Start(const VorString& command, int flag);

  /// Starts \a command, split as above, with \a options; SetOutput and SetInput have no effect on
  /// it.  Returns 0 if the command runs now; 1 if it could not be started, for the reason in GetEnd
  /// and GetErrMsg, and then there is no child.  If one of the files is a named pipe, Start does
  /// not wait until its other end is opened, so perhaps only Check or Wait notices a failure.
  int Start(const VorString& command, const TAProcessOptions& options) noexcept;
  /// The same for a program and its arguments, which are passed as they are; an empty list and a
  /// NUL in an argument are failures (EINVAL).
  int Start(const VorListValVorString& arguments, const TAProcessOptions& options) noexcept;

  /// Runs a program until it ends, at most \a limitMs milliseconds (0 or less: no limit), and
  /// stores in \a output what it wrote to standard output and standard error, as far as the options
  /// name no files for these.  A program that reaches the limit is killed as by KillTree.  \a end
  /// becomes how it ended, which GetEnd returns, too.
  ///
  /// Returns
  /// - 0 if \a output is all that it wrote, however it ended;
  /// - 1 if it could not be started;
  /// - 2 if it wrote more than \a maxBytes; the rest was read and dropped.
  ///
  /// A process that the program leaves behind may hold its output open.  What such a process writes
  /// later is not waited for; it gets SIGPIPE.
  int Run(const VorListValVorString& arguments, const TAProcessOptions& options, VorString& output,
          TAProcessEnd& end, int limitMs = 0, std::size_t maxBytes = SIZE_MAX) noexcept;

  /// Polls the child without blocking.  Returns 0 while it runs, its identifier when it has ended,
  /// -1 if there is no such child of this process.  \a status becomes the folded status of an end,
  /// otherwise 0.
  ///
  /// A stop is no end.  A program that asks to be traced by this process (PTRACE_TRACEME) stops at
  /// its next signal; a Check or Wait on the thread that started it lets it go on untraced.
  int Check(int& status);

  /// Blocks until the child has ended and stores its folded status, 0 if there is no such child.
  /// Returns 0.
  int Wait(int& status);

  /// The same, for at most \a limitMs milliseconds; without limit if that is less than 0.  Returns
  /// 1 if the child still runs then.
  int Wait(int& status, int limitMs) noexcept;

  /// Runs \a command through the shell and blocks until it ends.  Returns what system() returns if
  /// that is below 257, else that divided by 256: callers rely on 256 for an exit with 1, on c for
  /// an exit with a higher code c and on s for a death of the shell by signal s.  -1 if no process
  /// can be made, and also if the command ran while SIGCHLD was ignored (see ZombiClean).  127 if
  /// there is no shell.
  int Exec(const VorString& command);

  /// Kills the child with the shell's kill and returns what system() returns (-1 while SIGCHLD is
  /// ignored); 256, as for a process that has gone, if there is no child.  If the command cannot
  /// run or fails, the child gets signal 9 directly.
  ///
  /// The command has no blank between the identifier and the redirection, and callers rely on it.
  /// Some shells read the identifier as the number of a descriptor, so the command fails.
  /// KillWithSig needs no shell.
  int Kill();

  /// Sends signal 9 if \a hard is non-zero, else 15.  Returns 0, also if the process has gone or
  /// belongs to another user; 1 with a message on standard output if the signal could not be sent.
  int KillWithSig(int hard);

  /// Kills the child and its descendants with one command of the shell, the last found first and
  /// the child last.  The value of the environment variable whence_ro, if set, goes before the
  /// command; if KVR_UXT_NULL is set, the shell sends the messages of kill to what it names.
  ///
  /// First all of them are stopped (SIGSTOP), and the process table is read again until it shows no
  /// further descendant, so that none can start another process in place of one that dies.  At the
  /// end they get SIGCONT.  Signals and cancellation of the calling thread are deferred meanwhile.
  /// If this process is killed all the same, by SIGKILL or by a signal to another thread, the
  /// processes not yet killed stay stopped until they get SIGCONT.  A handler of SIGCHLD sees the
  /// child stop unless it is installed with SA_NOCLDSTOP.
  ///
  /// If the command cannot run or fails, they get signal 9 directly, in the same order.  Two kinds
  /// of processes survive: those whose parent had ended before, and those of other users that this
  /// process must not signal.
  ///
  /// Returns what system() returns: -1 while SIGCHLD is ignored, 256 also if there is no child.  A
  /// tree too large for one command line is killed by several, and the first result that is not 0
  /// is returned.  If the process table cannot be read, only the child is killed.
  int KillTree() noexcept;

  /// Sends signal 9 if \a hard is non-zero, else 15, to the same processes one by one, in the same
  /// order and with the same stop and SIGCONT around it.  Prints a message on standard output for
  /// each process to which the signal could not be sent.  Returns 0.
  int KillTreeWithSig(int hard) noexcept;

  /// Selects which processes the next child is killed with; Tree by default.  With another
  /// containment, KillTree and KillTreeWithSig signal its processes directly, without a shell and
  /// without messages, also after the child has ended, until the next Start.  KillTree then returns
  /// 0, or 256 if there was none.
  void SetContainment(TAContainment containment);
  /// Whether Check and Wait kill what the next child has left behind when it ends, before they
  /// report its end, and count it in TAProcessEnd::leftBehind; no by default.  Has no effect with
  /// Tree, which does not find such processes.
  void SetLeavesNobody(bool leavesNobody);
  /// The means of the containment that the next start uses: "tree", "group", or for Everything
  /// "cgroup" or "marks"; see TAContainment.
  const char* ContainmentInUse() const;

  /// Adds the identifiers of the child's descendants to \a pids.  An empty list gets that of the
  /// child first.  In a list that is not empty, the descendants of all its entries are looked for,
  /// and of no other process.  Returns 0, -1 if there never was a child, 1 if the process table
  /// cannot be read.
  ///
  /// The table is read once, in its own order.  A process that precedes its parent there is missed;
  /// callers rely on it.
  int GetProcessTree(VorListValVorString& pids) const noexcept;

  /// Sets SIGCHLD to be ignored, so that the system reaps ended children from now on, and reaps one
  /// that has ended already.  Returns 0.
  ///
  /// This holds for the whole process and stays so.  Afterwards the end of a child cannot be
  /// learned: Check returns -1, Wait stores the status 0, GetEnd returns Lost, and system() returns
  /// -1 although the command ran.
  static int ZombiClean();

  /// The identifier of this process.
  static int Getpid();

  /// The identifier of the last child, ended or not; 0 if there is none.
  int ChildPid() const { return _pid; }

  /// How the child ended, as far as it is known:
  /// - NotEnded until one of the calls below has noticed the end;
  /// - NotStarted after Start, or with a named pipe among its files, after Check or Wait;
  /// - Exited or Signalled after Check or Wait;
  /// - Lost after Check, Wait or a kill;
  /// - TimedOut after Run.
  TAProcessEnd GetEnd() const;

  /// Why a Start failed, or "no error".  A later success of Start without options keeps the text.
  const VorString& GetErrMsg() const { return _errMsg; }

 private:
  friend class TAProcessList;

  bool HasChild() const { return _pid > 0 && !_reaped; }
  vor::StartFailure Launch(vor::ChildRequest&& request);
  void NoteStart(int pid, const vor::StartFailure& failure);
  int StartChecked(vor::ChildRequest&& request);
  int Refuse(const std::string& program, const vor::StartFailure& failure);
  bool Collect(vor::OutputPipe& pipe, int limitMs);
  bool HasEnded();
  int Reap(int& status, int flags);
  void NoteEnd(const TAProcessEnd& end);
  void MakeContainer();
  vor::Container& Contained();
  int KillLeft(int flags);
  bool MaySignal();
  int SendSignal(int signal) const;

  VorString _errMsg;
  VorString _output;       // empty: inherited
  VorString _input;        // empty: inherited
  int _pid = 0;            // 0: none
  bool _isOwn = false;     // started by this object
  bool _reaped = false;    // the end was noticed: another process may have _pid
  TAProcessEnd _end;       // what is known of it
  long long _startNs = 0;  // when it started, by CLOCK_BOOTTIME; 0 if not by this object
  TAContainment _containment = TAContainment::Tree;  // of the next child
  bool _leavesNobody = false;                        // of the next child
  TAContainment _contained = TAContainment::Tree;    // of the last child
  bool _killsLeft = false;                           // _leavesNobody of the last child
  std::unique_ptr<vor::Container> _container;        // of the last child; for Tree made when needed
  std::shared_ptr<const vor::LateFailure> _late;     // for _end, once it has ended; or null
};

#endif  // VOR_PROCESS_TAPROCESS_H
