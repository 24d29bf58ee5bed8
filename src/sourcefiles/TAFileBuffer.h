#ifndef VOR_SOURCEFILES_TAFILEBUFFER_H
#define VOR_SOURCEFILES_TAFILEBUFFER_H

#include <atomic>

#include "base/Export.h"

class TAFileName;
class TAThreadLock;
class VorListPtrTAFileBuffer;

/// The whole text of one file, read when it is first asked for; and a loop that reads such buffers
/// in the background, which a tool runs on a thread of its own:
///
///     TAFileBuffer::ASyncLoadList = &list;
///     TAFileBuffer::ASyncLoadRunning = 1;
///     TAThread loop(TAFileBuffer::ASyncLoad);
///     loop.Start();
///     ...
///     TAFileBuffer::ASyncCleanup();
///
/// New code takes VorFileBuffer and VorFileBufferPool.
///
/// Ownership: the text belongs to the buffer.  A buffer that was in the list of the loop is deleted
///            when the loop is past it or has ended.
/// Errors:    told by the results.  A folder, and a file of 2 GB or more, cannot be opened.
/// Threads:   a buffer may be asked by several threads, without a lock: callers rely on never
///            waiting for each other.  While one of them reads the file, the others get no text and
///            size 0.
class VOR_API TAFileBuffer {
 public:
  /// The number is accepted for callers of the older form and has no effect.
  TAFileBuffer(const char* name, int);
  TAFileBuffer(const TAFileBuffer&) = delete;
  TAFileBuffer& operator=(const TAFileBuffer&) = delete;
  ~TAFileBuffer();

  /// Reads the file, in the first call only.  Returns 1 if it cannot be opened, in that call only;
  /// else 0.
  int LoadFile() noexcept;

  /// Reads the file if need be.  The NUL-terminated text; null if the file could not be opened.
  char* GetBuffer();
  /// Reads the file if need be.  The bytes of the text, its NUL not counted.
  int GetSize();

  /// Writes the text to the file \a name, in place of what is in it.  Returns 1 if that cannot be
  /// opened for writing, else 0, also if not all could be written.
  int SaveAs(TAFileName& name);

  /// The loop: loads the first buffer of the list, which the tool then removes.  While the list is
  /// empty it is parked and ASyncLoadRunning is -1; a tool that has filled the list releases
  /// ASyncPause.  When more than 10,240,000 bytes have been read it sets ASyncOverloadFlag and
  /// waits for ASyncOverloadLock, until the tool has lowered ASyncBufferSize and released that
  /// lock.  It returns when ASyncLoadRunning is 0.
  static void ASyncLoad(int, const char**);
  /// Ends the loop if it is parked; called in the process of the loop when it exits, too.
  static void ASyncCleanup();

  /// Bytes read by all calls of LoadFile.  The library only increases it.
  static std::atomic<int> ASyncBufferSize;
  /// 1 once the loop has waited because of overload.
  static std::atomic<int> ASyncOverloadFlag;
  /// Not 0: the loop may run; -1: it is parked; 0: it is to stop.
  static std::atomic<int> ASyncLoadRunning;

  // The locks live as long as the process, so that a loop may outlast the static objects.

  /// Guards the list and the counters.
  static TAThreadLock& ASyncLock;
  /// Held while the loop is parked.  Waiters sleep.
  static TAThreadLock& ASyncPause;
  /// What an overloaded loop waits for.  Waiters sleep.
  static TAThreadLock& ASyncOverloadLock;

  /// The buffers to load; belongs to the tool.  Null counts as empty, and is what it is when the
  /// process exits.
  static VorListPtrTAFileBuffer* ASyncLoadList;
  /// For the use of tools.
  static int ASyncFirstFile;

 private:
  char* const _name;                   // from strdup; may be null
  std::atomic<bool> _isLoaded{false};  // set before the file is read
  std::atomic<char*> _text{nullptr};   // from malloc; there before its size
  std::atomic<int> _size{0};           // bytes
};

#endif  // VOR_SOURCEFILES_TAFILEBUFFER_H
