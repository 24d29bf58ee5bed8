#ifndef VOR_SOURCEFILES_VORFILEBUFFER_H
#define VOR_SOURCEFILES_VORFILEBUFFER_H

#include <sys/types.h>

#include <atomic>
#include <optional>
#include <string>
#include <thread>

#include "../base/Export.h"
#include "../base/VorListPtr.h"
#include "../base/VorMutex.h"
#include "TACallbackPublisher.h"
#include "TAEventBufferDeletion.h"

class VorFileBufferPoolThread;
namespace vor {
class FileDescriptor;
}

/// The whole text of one file, read at its first use and shared by reference count.  In new code,
/// use this class and not the older TAFileBuffer.
///
/// The last Release and destroy release the text.  Before that they send a TAEventBufferDeletion to
/// the subscribers, with the buffer as the publisher.  A VorFileBufferPool reads texts ahead.
///
/// Ownership: create it with new; the last Release deletes it.  The reference count starts at 1.
///            The text belongs to the buffer.
/// Errors:    a file that cannot be read, a directory, and a file of 2 GB or more count as loaded
///            with no text.  No second attempt is made.
/// Threads:   every operation may be called from any thread that holds a reference.  The file is
///            read once, under the lock of the buffer.  Meanwhile AddRef, a Release that is not the
///            last, isLoaded, isDestroyed and getFileName return at once; all others wait, for ever
///            if the file is a pipe that stays open.  A child made by fork must not use a buffer
///            that another thread of its parent was reading.
///
/// The event is sent while the buffer is locked.  A ReceiveCallback may add and remove subscribers
/// of the buffer and ask for its text, size and name.  It must not call loadFile, Release or
/// destroy of the buffer, append it to a pool, or end a pool that has loaded it.
class VOR_API VorFileBuffer : public TACallbackPublisher {
 public:
  explicit VorFileBuffer(const char* name);
  ~VorFileBuffer() override;

  /// 1 once the file was read or turned out to be unreadable, else 0.
  int isLoaded() const { return _isLoaded.load(std::memory_order_acquire); }
  /// 1 once the release of the text has begun, else 0.
  int isDestroyed() const { return _isDestroyed; }
  /// The name passed to the constructor, which may be null.
  const char* getFileName() const { return _name ? _name->c_str() : nullptr; }

  /// The NUL-terminated text, read first if necessary; null if there is none.  It may contain NUL
  /// bytes.
  char* getBuffer();
  /// The bytes of the text, its NUL not counted; 0 if there is none.
  int getBufferSize();
  /// Reads the file, unless it was read before or the buffer is destroyed.  If there is no memory
  /// for the text, a message is printed on standard output.
  void loadFile() noexcept;

  /// The same as in the base class, under the lock of the buffer.  The operations of the base class
  /// do not take that lock: outside a callback, do not call them through the base class.
  void AddSubscriber(TACallbackSubscriber* subscriber);
  void RemoveSubscriber(TACallbackSubscriber* subscriber);

  void AddRef();
  /// Releases one reference and returns how many are left.  At 0 the text is released and the
  /// buffer deleted.
  int Release();
  /// Releases the text, even if others still hold references, and then one reference.  The other
  /// owners keep a buffer without text.
  void destroy();

 private:
  friend class VorFileBufferPoolThread;

  void _read(const vor::FileDescriptor& file);
  void _dropText();
  bool _isAnnouncing() const;
  bool _addRefIfAlive();
  bool _loadAhead() noexcept;
  void _addLoader(VorFileBufferPoolThread* loader);
  void _removeLoader(VorFileBufferPoolThread* loader);
  void _leaveLoader();

  // Members that are read without the lock are atomic.  The text and its size are stored before the
  // flag that announces them.
  std::atomic<int> _count{1};
  TAEventBufferDeletion _deletion;
  std::atomic<int> _isLoaded{0};
  std::atomic<int> _isDestroyed{0};
  std::optional<const std::string> _name;     // none if it was given as null
  std::atomic<char*> _text{nullptr};          // from malloc
  std::atomic<int> _size{0};                  // bytes
  VorMutex _mutex;                            // guards the loading, the release, the subscribers
  VorFileBufferPoolThread* _loader{};         // the pool thread that has loaded it; null if none
  pid_t _loaderProcess{};                     // where that thread runs
  std::atomic<std::thread::id> _announcer{};  // the thread that is sending the event
};

/// A list of pointers, which it does not own.
class VOR_API VorListPtrVorFileBuffer : public VorListPtr<VorFileBuffer> {
 public:
  using VorListPtr::VorListPtr;
};

#endif  // VOR_SOURCEFILES_VORFILEBUFFER_H
