#ifndef VOR_THREAD_TATHREAD_H
#define VOR_THREAD_TATHREAD_H

#include <vector>

#include "base/Export.h"

/// Runs one function, with an argument vector of its own, on a new thread, and keeps account of all
/// threads that were started so.
///
///     TAThread worker(Compile);
///     worker.SetArgs("main.c", "util.c", nullptr);
///     worker.Start();
///     TAThread::WaitForAll();
///
/// A thread is started at most once.  Wait with WaitForAll before an object that was started with
/// Start goes away.
///
/// Cleanup, which every constructor and every start calls, has the system collect ended child
/// processes from then on (see TAProcess::ZombiClean), for the whole process.
///
/// Ownership: an object that was started with Start belongs to its creator.  One that was started
///            with StartDetach must have been made with new and belongs to the library: it is
///            deleted by a Cleanup or WaitForAll after its function has returned.
/// Errors:    told by the results of Start and StartDetach.
/// Threads:   one object is set up and started by one thread; the static operations may be called
///            from any thread, also from running TAThreads, except that one of these that calls
///            WaitForAll waits for itself.
class VOR_API TAThread {
 public:
  /// What a thread runs: gets the number and the vector of its arguments.
  using Function = void (*)(int argc, const char** argv);

  TAThread();
  explicit TAThread(Function func);
  TAThread(const TAThread&) = delete;
  TAThread& operator=(const TAThread&) = delete;

  void SetFunc(Function func);

  /// Sets the arguments: \a first, whatever its value, and the pointers after it up to a null one,
  /// which callers put at the end.  What they point to is not copied and must outlive the thread.
  /// Returns the vector, which ends with a null pointer and lives until the next SetArgs or the end
  /// of this object.
  template <typename... Pointers>
  const char** SetArgs(const void* first, Pointers... rest) {
    const void* const all[] = {first, ToPointer(rest)..., nullptr};
    return StoreArgs(all);
  }
  /// The same, with the function.
  template <typename... Pointers>
  const char** SetArgs(Function func, const void* first, Pointers... rest) {
    SetFunc(func);
    return SetArgs(first, rest...);
  }

  /// Starts the thread.  Returns 0, or 1 if the system gives no thread.  Callers rely on the entry
  /// of a thread that could not be started staying in the account: a WaitForAll after a failure
  /// waits for ever.
  int Start() noexcept;
  /// The same for an object made with new, which the library deletes in the end.
  int StartDetach() noexcept;

  /// What the new thread executes: the function, or a message on standard output if there is none;
  /// then it strikes itself off the account.  An override ends with TAThread::Run().
  virtual void Run();

  /// Deletes the detached threads that have finished, and lets the system collect child processes.
  static void Cleanup();

  /// Waits, spinning, until every thread that was started has finished, and deletes the detached
  /// ones.
  static void WaitForAll();

  /// Says that the process has begun to exit, and returns 1.  Called when the static objects are
  /// destroyed.  A thread that finishes after that keeps the account locked, so that nobody
  /// touches it any more.
  static int exitCalled();

  virtual ~TAThread();

 private:
  static const void* ToPointer(const void* pointer) { return pointer; }
  // For NULL and 0, which reach a template as numbers.
  static const void* ToPointer(long pointer) { return reinterpret_cast<const void*>(pointer); }

  const char** StoreArgs(const void* const* pointers) noexcept;
  int StartTask(bool isDetached);

  std::vector<const char*> _argv;  // with the null pointer at the end; empty if there are none
  bool _isDetached = false;
  Function _func = nullptr;
};

/// What a new thread begins with: calls Run of the TAThread that \a object points to.
VOR_API void _ThreadEntryPoint(void* object);

#endif  // VOR_THREAD_TATHREAD_H
