#ifndef VOR_SOURCEFILES_VORFILEBUFFERPOOLTHREAD_H
#define VOR_SOURCEFILES_VORFILEBUFFERPOOLTHREAD_H

#include <memory>

#include "../base/Export.h"
#include "../thread/VorThreads.h"
#include "TACallbackSubscriber.h"

class VorFileBuffer;

/// The thread of a VorFileBufferPool: loads the buffers that are appended to it, in that order, and
/// sleeps while there are none.
///
/// It loads in batches: all buffers that were appended since the last batch.  Before a batch it
/// waits until the total size of loaded and not yet released texts is below the ceiling.  Then it
/// loads the whole batch, whatever its size.
///
/// It opens regular files and directories only.  Pipes and devices are left to their consumers.
///
/// A child made by fork has no such thread: there append, Stop and the destructor do nothing.
///
/// Ownership: holds a reference to each buffer that waits to be loaded, and none to a loaded one.
///            It subscribes to each buffer that it has loaded, and unsubscribes when it ends.
/// Errors:    a buffer whose file cannot be read counts as loaded, with no text and size 0.
/// Threads:   append, Stop and ReceiveCallback may be called from any thread, except that Stop
///            must not be called on this thread or in a callback of one of its buffers.  Stop waits
///            for the file that is being read.
class VOR_API VorFileBufferPoolThread : public VorThreads, public TACallbackSubscriber {
 public:
  /// \a ceiling in bytes.
  explicit VorFileBufferPoolThread(int ceiling);

  /// Loads until Stop; returns 0.
  int Begin(void*) override;

  /// Stops the thread and waits for it.
  ~VorFileBufferPoolThread() override;

  /// Ends the thread after the file that it is reading, and releases the waiting buffers.
  void Stop() override;

  /// Subtracts the size of a text that is being released from the total.
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
