#ifndef VOR_SOURCEFILES_TAFILEBUFFER_H
#define VOR_SOURCEFILES_TAFILEBUFFER_H

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "../base/Export.h"
#include "../base/VorListPtr.h"

class TAFileName;
class TAThreadLock;
class VorListPtrTAFileBuffer;
namespace vor {
class FileDescriptor;
}

/// The whole text of one file, read at its first use.  A loop can read such buffers in the
/// background; the tool runs the loop on a thread of its own:
///
///     TAFileBuffer::ASyncLoadList = &list;
///     TAFileBuffer::ASyncLoadRunning = 1;
///     TAThread loop(TAFileBuffer::ASyncLoad);
///     loop.Start();
///     ...
///     TAFileBuffer::ASyncCleanup();
///
/// Kept for tools that use its loop.  In new code, use VorFileBuffer and VorFileBufferPool: they
/// share buffers, announce their release and need no loop.
///
/// Ownership: the text belongs to the buffer.  Delete a buffer that was in the loop's list only
///            after the loop has moved past it or ended.
/// Errors:    reported by the results.  A directory and a file of 2 GB or more cannot be read.
/// Threads:   several threads may use one buffer.  The first one reads the file; the others do not
///            wait for it, and callers rely on that.  They get the text read so far, in whole
///            chunks.  Such a thread must call GetSize first, then GetBuffer, and use no more bytes
///            than that size.  SaveAs does wait, for ever if the file is a pipe that stays open.
class VOR_API TAFileBuffer {
 public:
  /// The second argument has no effect; it is accepted for older callers.
  TAFileBuffer(const char* name, int);
  TAFileBuffer(const TAFileBuffer&) = delete;
  TAFileBuffer& operator=(const TAFileBuffer&) = delete;
  ~TAFileBuffer();

  /// Reads the file, in the first call only, and counts each chunk in ASyncBufferSize.  Returns 1
  /// if the file cannot be opened or read to its end, in that call only; else 0.
  int LoadFile() noexcept;

  /// Reads the file unless a read has begun.  Returns the NUL-terminated text read so far; null
  /// before that and if the file could not be opened.  It stays valid as long as the buffer lives.
  char* GetBuffer();
  /// Reads the file unless a read has begun.  Returns the number of bytes read so far, without the
  /// NUL.
  int GetSize();

  /// Writes the text to the file \a name, in place of its content.  If another thread is reading
  /// the text, waits for the end of that first.  Returns 0, even if not all bytes could be written.
  ///
  /// Returns 1 if \a name cannot be opened for writing.  Returns 1 and keeps the content of \a name
  /// if the text could not be read to its end, also in a child made by fork while its parent was
  /// reading it.  The text of a file that could not be opened is empty.
  int SaveAs(TAFileName& name);

  /// The loop: loads the first buffer of the list, which the tool then removes.  It returns when
  /// ASyncLoadRunning is 0.
  ///
  /// While the list is empty the loop is parked and ASyncLoadRunning is -1; a tool that has filled
  /// the list releases ASyncPause.  When more than 10,240,000 bytes have been read the loop sets
  /// ASyncOverloadFlag and waits for ASyncOverloadLock, until the tool has lowered ASyncBufferSize
  /// and released that lock.
  static void ASyncLoad(int, const char**);
  /// Ends the loop if it is parked.  Also called when the process that runs the loop exits.
  static void ASyncCleanup();

  // The library reads and writes these three atomically, with ASyncLock and without.  A tool that
  // uses them while a loop runs or a file is loaded does so through std::atomic_ref.

  /// Bytes read by all calls of LoadFile.  The library only increases it.
  static int ASyncBufferSize;
  /// 1 once the loop has waited because of an overload.
  static int ASyncOverloadFlag;
  /// Not 0: the loop may run; -1: it is parked; 0: it is to stop.
  static int ASyncLoadRunning;

  // The locks live as long as the process, so that a loop may outlast the static objects.

  /// Guards the list.  A fork waits for it, unless the thread that forks holds it.
  static TAThreadLock& ASyncLock;
  /// Held while the loop is parked.  Waiters sleep.
  static TAThreadLock& ASyncPause;
  /// An overloaded loop waits for it.  Waiters sleep.
  static TAThreadLock& ASyncOverloadLock;

  /// The buffers to load; belongs to the tool.  Null counts as empty.  It becomes null when the
  /// process that runs the loop exits.
  static VorListPtrTAFileBuffer* ASyncLoadList;
  /// For the use of tools.
  static int ASyncFirstFile;

 private:
  bool _read(const vor::FileDescriptor& file);
  bool _growTo(std::size_t bytes, std::size_t size);
  bool _waitUntilRead() const;

  std::optional<const std::string> _name;        // none if it was given as null
  std::atomic<pid_t> _state{0};                  // one of the states in the source
  std::vector<std::unique_ptr<char[]>> _blocks;  // all that were published, the last one in use
  std::atomic<char*> _text{nullptr};             // the last block; stored before the size
  std::atomic<int> _size{0};                     // bytes
};

/// A list of pointers, which it does not own.
class VOR_API VorListPtrTAFileBuffer : public VorListPtr<TAFileBuffer> {
 public:
  using VorListPtr::VorListPtr;
};

#endif  // VOR_SOURCEFILES_TAFILEBUFFER_H
