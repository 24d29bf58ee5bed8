#ifndef VOR_SOURCEFILES_VORFILEBUFFERPOOLTHREAD_H
#define VOR_SOURCEFILES_VORFILEBUFFERPOOLTHREAD_H

#include <memory>

#include "base/Export.h"
#include "sourcefiles/TACallbackSubscriber.h"
#include "thread/VorThreads.h"

class VorFileBuffer;

/// The thread of a VorFileBufferPool: loads the buffers that are appended to it, in that order, and
/// sleeps while there are none.
///
/// It takes what was appended in batches.  Before a batch it waits until the texts that it has
/// loaded and that were not released since are smaller than the ceiling; a batch that was begun is
/// loaded whole, whatever its size.
///
/// In a child made by fork, which has no such thread, append, Stop and the destructor do nothing.
///
/// Ownership: holds a reference to each buffer that waits to be loaded, and none to a loaded one.
///            It is subscribed to the loaded ones to hear of their release, until it ends.
/// Errors:    a buffer whose file cannot be read is passed over.
/// Threads:   append, Stop and ReceiveCallback may be called from any thread; Stop neither on this
///            one nor in a callback of one of its buffers.
class VOR_API VorFileBufferPoolThread : public VorThreads, public TACallbackSubscriber {
 public:
  /// \a ceiling in bytes.
  explicit VorFileBufferPoolThread(int ceiling);

  /// Loads until Stop; returns 0.
  int Begin(void*) override;

  /// Stops the thread and waits for it.
  ~VorFileBufferPoolThread() override;

  /// Ends the thread after the file that it is reading, and gives back the buffers that wait.
  void Stop() override;

  /// Hears of the release of a text and counts it off.
  int ReceiveCallback(TACallbackPublisher* publisher, const TAEvent* event) override;

  /// Ignored for null, and after Stop.
  void append(VorFileBuffer* buffer);

 private:
  friend class VorFileBuffer;
  struct State;

  bool _pass();
  bool _takeIncoming();
  bool _loadBatch();
  void _leaveBuffers();
  void _countText(VorFileBuffer* buffer, int size) noexcept;
  void _forgetText(VorFileBuffer* buffer);

  std::unique_ptr<State> _state;
};

#endif  // VOR_SOURCEFILES_VORFILEBUFFERPOOLTHREAD_H
