#ifndef VOR_SOURCEFILES_VORFILEBUFFERPOOL_H
#define VOR_SOURCEFILES_VORFILEBUFFERPOOL_H

#include <atomic>
#include <memory>

#include "base/Export.h"

class VorFileBuffer;
class VorFileBufferPoolThread;

/// Reads file buffers ahead of their use, on one thread in the background.
///
///     VorFileBufferPool pool;
///     for (VorFileBuffer* buffer : buffers) pool.append(buffer);
///     for (VorFileBuffer* buffer : buffers) Use(buffer->getBuffer());
///
/// A consumer that is faster than the thread reads the file itself.  About 64 MiB of text are read
/// ahead; then the thread waits until buffers are released.  A child made by fork has no such
/// thread: there a pool of its parent does nothing.
///
/// Ownership: holds references to the buffers that wait to be read.  Buffers may outlive the pool.
/// Errors:    none; what the thread does not read, the consumers do.
/// Threads:   append may be called from any thread.  The pool is not destroyed in a callback of one
///            of its buffers.
class VOR_API VorFileBufferPool {
 public:
  VorFileBufferPool() noexcept;
  VorFileBufferPool(const VorFileBufferPool&) = delete;
  VorFileBufferPool& operator=(const VorFileBufferPool&) = delete;
  /// Ends the thread, after the file that it is reading.
  ~VorFileBufferPool();

  /// Has \a buffer read.  Ignored for null and in a pool without a thread.
  void append(VorFileBuffer* buffer);

  /// Has all pools that are made from now on do without a thread.  Returns 1.
  static int disableMultiThread();

 private:
  static std::atomic<int> _isMonoThread;  // -1: not decided

  std::unique_ptr<VorFileBufferPoolThread> _thread;  // null: the consumers read
};

#endif  // VOR_SOURCEFILES_VORFILEBUFFERPOOL_H
