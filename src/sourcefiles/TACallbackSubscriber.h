#ifndef VOR_SOURCEFILES_TACALLBACKSUBSCRIBER_H
#define VOR_SOURCEFILES_TACALLBACKSUBSCRIBER_H

#include "base/Export.h"

class TACallbackPublisher;
class TAEvent;

/// Receives the events of the publishers to which it was added.
///
/// It does not remove itself from them when it is destroyed: its owner calls RemoveSubscriber
/// before.
class VOR_API TACallbackSubscriber {
 public:
  TACallbackSubscriber();
  virtual ~TACallbackSubscriber();

  /// Called by \a publisher on the thread that sends the event.  Publishers do not look at what it
  /// returns.
  virtual int ReceiveCallback(TACallbackPublisher* publisher, const TAEvent* event) = 0;
};

#endif  // VOR_SOURCEFILES_TACALLBACKSUBSCRIBER_H
