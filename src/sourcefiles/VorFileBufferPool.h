#ifndef VOR_SOURCEFILES_VORFILEBUFFERPOOL_H
#define VOR_SOURCEFILES_VORFILEBUFFERPOOL_H

#include <atomic>
#include <memory>

#include "../base/Export.h"
#include "../base/VorListPtr.h"

class VorFileBuffer;
class VorFileBufferPoolThread;

/// Reads file buffers ahead of their use, on one thread in the background.
///
///     VorFileBufferPool pool;
///     for (VorFileBuffer* buffer : buffers) pool.append(buffer);
///     for (VorFileBuffer* buffer : buffers) Use(buffer->getBuffer());
///
/// A consumer that needs a text before the thread has read it reads the file itself.  The thread
/// reads about 64 MiB of text ahead; then it waits until buffers are released.  It reads regular
/// files only: a pipe or a device would keep it waiting, so these are left to their consumers.  A
/// child made by fork has no such thread: there a pool of its parent does nothing.
///
/// Ownership: holds references to the buffers that wait to be read.  Buffers may outlive the pool.
/// Errors:    none; files that the thread does not read are read by their consumers.
/// Threads:   append may be called from any thread and does not wait for a file.  The pool must not
///            be destroyed in a callback of one of its buffers.
class VOR_API VorFileBufferPool {
 public:
  VorFileBufferPool() noexcept;
  VorFileBufferPool(const VorFileBufferPool&) = delete;
  VorFileBufferPool& operator=(const VorFileBufferPool&) = delete;
  /// Ends the thread, after it has finished the file that it is reading.
  ~VorFileBufferPool();

  /// Queues \a buffer for the thread.  Ignored for null and in a pool without a thread.
  void append(VorFileBuffer* buffer);

  /// Pools constructed from now on have no thread; existing pools keep theirs.  Returns 1.
  static int disableMultiThread();

 private:
  static std::atomic<int> _isMonoThread;  // -1: not decided

  std::unique_ptr<VorFileBufferPoolThread> _thread;  // null: the consumers read
};

/// A list of pointers, which it does not own.
class VOR_API VorListPtrVorFileBufferPool : public VorListPtr<VorFileBufferPool> {
 public:
  using VorListPtr::VorListPtr;
};

#endif  // VOR_SOURCEFILES_VORFILEBUFFERPOOL_H
