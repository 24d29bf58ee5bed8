#ifndef VOR_THREAD_VORTHREADS_H
#define VOR_THREAD_VORTHREADS_H

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "base/Export.h"

/// One thread whose body is an operation of a derived class.
///
///     class Writer : public VorThreads { ... int Begin(void* queue) override; ... };
///     Writer writer("Writer");
///     writer.Start(&queue);
///     writer.Stop();
///     writer.Wait();
///
/// The thread is started at most once.
///
/// Ownership: belongs to its creator.  A derived class that may be destroyed while its thread runs
///            stops it and waits for it in its own destructor, since the thread uses it.
/// Errors:    told by the results.
/// Threads:   Start and Wait are called by one thread at a time, Stop by any.  The body sees Start
///            done: it may call Wait, and destroy the object.
class VOR_API VorThreads {
 public:
  /// Debuggers show the first 15 bytes of \a name.
  explicit VorThreads(const char* name);
  VorThreads(const VorThreads&) = delete;
  VorThreads& operator=(const VorThreads&) = delete;

  /// What the thread executes, with the argument of Start.  Nobody looks at what it returns.
  virtual int Begin(void* argument) = 0;

  /// Waits for the thread as Wait does; a thread that destroys its own object runs on.
  virtual ~VorThreads();

  /// Asks Begin to return soon, without waiting for it.  Here it does nothing: a body that may run
  /// for long overrides it.
  virtual void Stop();

  /// Starts the thread.  Returns 0; 1 if it was started before or the system gives no thread.
  int Start(void* argument = nullptr) noexcept;

  /// Waits until the thread has ended.  Returns 0; 1 at once if no thread was started, if it was
  /// waited for already, if it is this very thread that calls, and in a child made by fork.
  int Wait();

  /// 1 if services of this library may start threads of their own accord.  On the systems that the
  /// library runs on they always may; each service has a switch of its own.
  static int IsMultiThreadingAllowed();

 protected:
  /// True in a child made by fork after Start: the thread is its parent's, and what it has locked
  /// stays locked for ever.
  bool IsParents() const;

 private:
  std::string _name;
  std::unique_ptr<std::thread> _thread;  // null before Start and after Wait
  std::atomic<pid_t> _starter{0};        // the process that started it; 0: none did
};

#endif  // VOR_THREAD_VORTHREADS_H
