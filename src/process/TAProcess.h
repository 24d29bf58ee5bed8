#ifndef VOR_PROCESS_TAPROCESS_H
#define VOR_PROCESS_TAPROCESS_H

#include "base/Export.h"
#include "base/VorString.h"

class VorListValVorString;

/// One child process: starts it, asks for or waits for its end, kills it alone or with every
/// process descended from it.
///
/// SetOutput and SetInput, where wanted, come first, then Start, then Check or Wait.  An object
/// made from an identifier controls a process that was started elsewhere.
///
/// An end is told as a folded status: an exit with code c gives c, a death by signal s gives s (s
/// plus 128 if it left a core file).  The two ranges overlap; callers' logs and limits rely on it.
///
/// Once Check or Wait has collected the end, the system may give the identifier to a stranger.  The
/// object therefore acts from then on as one without a child: it signals, waits for and searches
/// nothing until the next Start.  The same holds for an identifier of 0 or less, which would mean
/// whole groups of processes.
///
/// Ownership: the destructor does nothing to the child.  A child that still runs goes on; a child
///            that nobody collects stays in the process table until this process ends, unless
///            ZombiClean was called.  Start lets go of the child of an earlier Start likewise.
/// Errors:    told by the results below; the text of the last one is kept for GetErrMsg.
/// Threads:   one object belongs to one thread at a time; several threads may start children at
///            once.
class VOR_API TAProcess {
 public:
  TAProcess();
  /// Controls the process \a pid, which is only read.  Check and Wait tell ends of children of this
  /// process only.
  explicit TAProcess(int& pid);
  TAProcess(const TAProcess&) = delete;
  TAProcess& operator=(const TAProcess&) = delete;
  ~TAProcess();

  /// Standard output and standard error of the next child go to \a file, which is emptied first or
  /// created; empty for those of this process.  A file that cannot be opened changes nothing.
  /// Returns 0.
  int SetOutput(const VorString& file);
  /// Standard input of the next child comes from \a file, in the same way.  Returns 0.
  int SetInput(const VorString& file);

  /// Starts \a command as a child process; \a flag has no effect.  Returns 0 if there is a child
  /// now, 1 if there is none.
  ///
  /// The command is split at blanks; no shell reads it.  The first word is the program, searched in
  /// PATH unless it holds a "/".  From the second word on, words between a pair of double quotes
  /// are one argument, joined by one blank each and without the quotes.  Quotes count only at the
  /// ends of words, and a phrase that is never closed is dropped.
  ///
  /// That the program cannot be run shows only in the exit code 1 of the child, as does a command
  /// without words.  The child has the signal mask of the calling thread; SIGPIPE and SIGCHLD are
  /// at their defaults, other ignored signals stay ignored.  The time this takes does not grow with
  /// the memory of this process.
  int Start(const VorString& command, int flag);

  /// Asks without blocking whether the child has ended: 0 while it runs, its identifier when it has
  /// ended, -1 if there is no such child of this process.  \a status is the folded status of an
  /// end, otherwise 0.
  int Check(int& status);

  /// Blocks until the child has ended and stores its folded status, 0 if there is no such child.
  /// Returns 0.
  int Wait(int& status);

  /// Runs \a command through the shell and blocks until it ends.  Returns what system() returns if
  /// that is below 257, else that divided by 256: callers rely on 256 for an exit with 1, on c for
  /// an exit with a higher code c and on s for a death of the shell by signal s.  -1 if the shell
  /// cannot be started, and also when the command ran while SIGCHLD is ignored (see ZombiClean).
  int Exec(const VorString& command);

  /// Kills the child with the shell's kill and returns what system() returns (-1 while SIGCHLD is
  /// ignored); 256, as for a process that has gone, if there is no child.
  ///
  /// The command has no blank between the identifier and the redirection, and stays so.  A shell
  /// that takes all these digits for a descriptor, as some do, kills nothing; KillWithSig does
  /// without a shell.
  int Kill();

  /// Sends signal 9 if \a hard is non-zero, else 15.  Returns 0, also if the process has gone or
  /// may not be signalled by this user; 1 with a message on standard output if the signal could not
  /// be sent to a process that was there just before.
  int KillWithSig(int hard);

  /// Kills the child and its descendants with one command of the shell, the last found first and
  /// the child last.  The value of the environment variable whence_ro, if set, goes before the
  /// command; if KVR_UXT_NULL is set, the shell sends the messages of kill to what it names.
  ///
  /// Returns what system() returns: -1 while SIGCHLD is ignored, 256 also if there is no child.  A
  /// tree too large for one command line is killed by several, and the first result that is not 0
  /// is returned.  Where the process table cannot be read, for want of descriptors for instance,
  /// only the child is killed.
  int KillTree() noexcept;

  /// Sends signal 9 if \a hard is non-zero, else 15, to the same processes one by one; a message on
  /// standard output for each that could not be sent.  Returns 0.
  int KillTreeWithSig(int hard) noexcept;

  /// Adds the identifiers of the child's descendants to \a pids.  An empty list gets that of the
  /// child first; in a list that is not empty, the descendants of all its entries are looked for,
  /// and of no other process.  Returns 0, -1 if there never was a child, 1 if the process table
  /// cannot be read.
  ///
  /// The table is read once in its own order: a process that stands there before its parent is
  /// missed, as callers know it.
  int GetProcessTree(VorListValVorString& pids) const noexcept;

  /// Has the system collect ended children from now on, and collects one that has ended already.
  /// Returns 0.  For the whole process: afterwards Check and Wait tell the end of a child as -1
  /// and 0 with the status 0, and system() returns -1 although the command ran.
  static int ZombiClean();

  /// The identifier of this process.
  static int Getpid();

  /// The identifier of the last child, ended or not; 0 if there is none.
  int ChildPid() const { return _pid; }

  /// Why the last Start failed, or "no error".
  const VorString& GetErrMsg() const { return _errMsg; }

 private:
  bool HasChild() const { return _pid > 0 && !_collected; }
  bool HasGone(int waited) const;

  VorString _errMsg;
  VorString _output;        // empty: inherited
  VorString _input;         // empty: inherited
  int _pid = 0;             // 0: none
  bool _isOwn = false;      // started by this object
  bool _collected = false;  // the end was told: _pid may be anybody's by now
};

#endif  // VOR_PROCESS_TAPROCESS_H
