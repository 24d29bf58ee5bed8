#ifndef VOR_SOURCEFILES_VORFILEBUFFER_H
#define VOR_SOURCEFILES_VORFILEBUFFER_H

#include <sys/types.h>

#include <atomic>
#include <thread>

#include "base/Export.h"
#include "base/VorMutex.h"
#include "sourcefiles/TACallbackPublisher.h"
#include "sourcefiles/TAEventBufferDeletion.h"

class VorFileBufferPoolThread;

/// The whole text of one file, read when it is first asked for and shared by reference count.
///
/// Before the text is released, by the last Release or by destroy, a TAEventBufferDeletion is sent
/// to the subscribers, with the buffer as the publisher.  A VorFileBufferPool reads texts ahead.
///
/// Ownership: made with new and deleted by the last Release; it counts 1 at the start.  The text
///            belongs to the buffer.
/// Errors:    a file that cannot be read, a folder, and a file of 2 GB or more count as loaded with
///            no text; no second attempt is made.
/// Threads:   every operation may be called from any thread that holds a reference; the file is
///            read once, and others wait for it.  The event is sent while the buffer is locked: a
///            ReceiveCallback may add and remove subscribers of the buffer and ask for its text,
///            size and name, but must not call its AddRef, Release, destroy or loadFile, append it
///            to a pool, nor end a pool that has loaded it.
class VOR_API VorFileBuffer : public TACallbackPublisher {
 public:
  explicit VorFileBuffer(const char* name);
  ~VorFileBuffer() override;

  /// 1 once the file was read or turned out to be unreadable, else 0.
  int isLoaded() const { return _isLoaded.load(std::memory_order_acquire); }
  /// 1 once the text was or is being released for good, else 0.
  int isDestroyed() const { return _isDestroyed; }
  /// As it was given, null included.
  const char* getFileName() const { return _name; }

  /// The NUL-terminated text, read if need be; null if there is none.  It may hold NUL bytes.
  char* getBuffer();
  /// The bytes of the text, its NUL not counted; 0 if there is none.
  int getBufferSize();
  /// Reads the file, unless that was done or the buffer is destroyed.  If there is no memory for
  /// the text, a message is printed on standard output.
  void loadFile() noexcept;

  /// The list of subscribers is guarded by the buffer's lock, which the base class does not know:
  /// outside of a callback, these are not called through it.
  void AddSubscriber(TACallbackSubscriber* subscriber);
  void RemoveSubscriber(TACallbackSubscriber* subscriber);

  void AddRef();
  /// Gives one reference back.  Returns how many are left; at 0 the buffer is deleted.
  int Release();
  /// Releases the text, even if others still hold references, and then one reference.  The others
  /// keep an object without text.
  void destroy();

 private:
  friend class VorFileBufferPoolThread;

  bool _addRefIfAlive();
  void _addLoader(VorFileBufferPoolThread* loader);
  void _removeLoader(VorFileBufferPoolThread* loader);
  void _dropText();
  void _leaveLoader();
  void _leaveParentsLoader();

  // What is read without the lock is atomic.  The text and its size are there before the flag that
  // says so.
  std::atomic<int> _count{1};
  TAEventBufferDeletion _deletion;
  std::atomic<int> _isLoaded{0};
  std::atomic<int> _isDestroyed{0};
  char* const _name;                          // from strdup; may be null
  std::atomic<char*> _text{nullptr};          // from malloc
  std::atomic<int> _size{0};                  // bytes
  VorMutex _mutex;                            // guards all of the above and the subscribers
  VorFileBufferPoolThread* _loader{};         // the pool thread that counts the text; null if none
  pid_t _loaderProcess{};                     // where that thread runs
  std::atomic<std::thread::id> _announcer{};  // the thread that sends the event just now
};

#endif  // VOR_SOURCEFILES_VORFILEBUFFER_H
