#ifndef VOR_THREAD_VORTHREADS_H
#define VOR_THREAD_VORTHREADS_H

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "../base/Export.h"

/// One thread that executes an operation of a derived class.
///
///     class Writer : public VorThreads { ... int Begin(void* queue) override; ... };
///     Writer writer("Writer");
///     writer.Start(&queue);
///     writer.Stop();
///     writer.Wait();
///
/// The thread is started at most once.  Use this class rather than TAThread in new code: it waits
/// without spinning and does not affect the child processes of the tool.
///
/// Ownership: an object belongs to its creator.  A derived class that may be destroyed while its
///            thread runs must stop the thread and wait for it in its own destructor, since the
///            thread uses the members of the derived class.
/// Errors:    see the results of the operations.
/// Threads:   one thread at a time calls Start and Wait; any thread calls Stop.  Begin is called
///            after Start has done its work: it may call Wait and may destroy the object.
class VOR_API VorThreads {
 public:
  /// Debuggers show the first 15 bytes of \a name.
  explicit VorThreads(const char* name);
  VorThreads(const VorThreads&) = delete;
  VorThreads& operator=(const VorThreads&) = delete;

  /// The thread executes this with the argument of Start.  The result is not used.
  virtual int Begin(void* argument) = 0;

  /// Waits for the thread as Wait does.  A thread that destroys its own object continues to run.
  virtual ~VorThreads();

  /// Requests that Begin return soon, and does not wait for it.  Does nothing here; a derived class
  /// whose Begin may run for long overrides it.
  virtual void Stop();

  /// Starts the thread.  Returns 0, or 1 if it was started before or the system cannot create a
  /// thread.
  int Start(void* argument = nullptr) noexcept;

  /// Waits until the thread has ended.  Returns 0.  Returns 1 at once if no thread was started, if
  /// it was waited for already, if the thread calls it itself, and in a child made by fork.
  int Wait();

  /// 1 if services of this library may start threads on their own.  Always returns 1 on the systems
  /// that the library supports; each such service has its own switch.
  static int IsMultiThreadingAllowed();

 protected:
  /// True in a child made by fork after Start: only the parent has the thread.  In the child, a
  /// lock that the thread held stays locked for ever.
  bool IsParents() const;

 private:
  std::string _name;
  std::unique_ptr<std::thread> _thread;  // null before Start and after Wait
  std::atomic<pid_t> _starter{0};        // the process that started it; 0: none did
};

#endif  // VOR_THREAD_VORTHREADS_H
