#ifndef VOR_THREAD_TATHREAD_H
#define VOR_THREAD_TATHREAD_H

#include <memory>
#include <type_traits>
#include <vector>

#include "../base/Export.h"
#include "../base/VorListPtr.h"

class TAThreadLock;
class VorListPtrTAThread;

/// Runs one function, with an argument vector of its own, on a new thread.  A registry of the
/// process holds all threads that were started so.
///
///     TAThread worker(Compile);
///     worker.SetArgs("main.c", "util.c", nullptr);
///     worker.Start();
///     TAThread::WaitForAll();
///
/// In new code, use VorThreads or std::thread: they are waited for one by one, without spinning,
/// and change nothing else in the process.  Use TAThread only in tools that rely on the registry.
///
/// Child processes: Cleanup, which every constructor and every start calls, makes the process
/// ignore SIGCHLD from then on (see TAProcess::ZombiClean).  The exit codes of child processes are
/// lost after that: TAProcess and TAProcessList report 0 for each, so every command "passes"; only
/// their GetEnd distinguishes these from a success.  Do not create a TAThread in a process that
/// needs exit codes.
///
/// Runs: from before its thread is created until its function has returned, an object holds its run
/// lock.  A second start of the object therefore spins until the first function has returned.  A
/// start that fails leaves the run lock held.  WaitForAll and a further start of that object then
/// wait for ever; callers rely on it for WaitForAll.
///
/// Ownership: an object started with Start belongs to its creator, who may delete it after a
///            WaitForAll.  One started with StartDetach must have been made with new and belongs to
///            the library, which deletes it in a Cleanup or WaitForAll after its function has
///            returned; it must not be started again.  An object whose start failed stays with its
///            creator, who may delete it.
/// Errors:    Start and StartDetach return 1 if they fail.
/// Threads:   one thread at a time sets up and starts an object.  The static operations may be
///            called from any thread, also from running TAThreads.  But a TAThread must not call
///            WaitForAll: it would wait for itself for ever.  A child made by fork starts with no
///            threads running; an object whose thread ran at the moment of the fork must not be
///            started there.
class VOR_API TAThread {
 public:
  /// The function that a thread runs, with the number and the vector of its arguments.
  using Function = void (*)(int argc, const char** argv);

  TAThread();
  explicit TAThread(Function func);
  TAThread(const TAThread&) = delete;
  TAThread& operator=(const TAThread&) = delete;

  void SetFunc(Function func);

  /// Sets the arguments: \a first, even if it is null, and the pointers after it up to the first
  /// null one, which callers must put at the end.  Any pointers may be passed, also pointers to
  /// functions.  The objects that they point to are not copied and must outlive the thread.
  /// Returns the vector, which ends with a null pointer and lives until the next SetArgs or the end
  /// of this object.
  template <typename... Pointers>
  const char** SetArgs(const void* first, Pointers... rest) {
    const void* const all[] = {first, ToPointer(rest)..., nullptr};
    return StoreArgs(all);
  }
  /// The same, and sets the function.
  template <typename... Pointers>
  const char** SetArgs(Function func, const void* first, Pointers... rest) {
    SetFunc(func);
    return SetArgs(first, rest...);
  }

  /// Starts the thread.  Returns 0, or 1 if the system cannot create a thread.
  int Start() noexcept;
  /// The same for an object made with new, which the library deletes after its function has
  /// returned.
  int StartDetach() noexcept;

  /// The new thread executes this: it calls the function, or prints a message on standard output if
  /// there is none, and then leaves the registry.  An override must end with TAThread::Run().
  virtual void Run();

  /// Deletes the detached threads that have finished, and calls TAProcess::ZombiClean.
  static void Cleanup();

  /// Waits, spinning, until every thread that was started has finished.  Then deletes the detached
  /// ones.
  static void WaitForAll();

  /// Marks that the process has begun to exit, and returns 1.  It is called when the static objects
  /// are destroyed.  A thread that finishes after that keeps the registry locked for ever, so that
  /// no other thread uses it.
  static int exitCalled();

  virtual ~TAThread();

  // The registry.  Tools may look into it while they hold its lock, for a few instructions and
  // without starting a thread or forking.  Only the operations above change it.

  /// One entry for each start whose thread has not finished yet, and for each that failed.  An
  /// object that was deleted after a failed start still has its entry.
  static VorListPtrTAThread& running;
  /// Detached threads that have finished and are to be deleted.
  static VorListPtrTAThread& toDelete;
  /// Guards both lists.
  static TAThreadLock& lock;
  /// WaitForAll holds it, taken before lock, while it takes over the objects to delete.
  static TAThreadLock& _lockOnDelete;
  /// 1 after exitCalled, else 0.
  static int exitIsCalled;

 private:
  static const void* ToPointer(const volatile void* pointer) {
    return const_cast<const void*>(pointer);
  }
  template <typename Target>
  requires std::is_function_v<Target>
  static const void* ToPointer(Target* function) { return reinterpret_cast<const void*>(function); }
  // For NULL and 0, which reach a template as numbers.
  static const void* ToPointer(long pointer) { return reinterpret_cast<const void*>(pointer); }

  const char** StoreArgs(const void* const* pointers) noexcept;
  int StartTask(bool isDetached);
  void Leave();

  // Held by a run of this object.  The registry shares it, since it outlives the object there.
  const std::shared_ptr<TAThreadLock> _runLock;
  std::vector<const char*> _argv;  // with the null pointer at the end; empty if there are none
  bool _isDetached = false;        // guarded by lock
  Function _func = nullptr;
};

/// The first function of every new thread: calls Run of the TAThread that \a object points to.
VOR_API void _ThreadEntryPoint(void* object);

/// A list of pointers, which it does not own.
class VOR_API VorListPtrTAThread : public VorListPtr<TAThread> {
 public:
  using VorListPtr::VorListPtr;
};

#endif  // VOR_THREAD_TATHREAD_H
