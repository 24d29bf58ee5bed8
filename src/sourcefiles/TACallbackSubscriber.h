#ifndef VOR_SOURCEFILES_TACALLBACKSUBSCRIBER_H
#define VOR_SOURCEFILES_TACALLBACKSUBSCRIBER_H

#include "../base/Export.h"
#include "../base/VorListPtr.h"

class TACallbackPublisher;
class TAEvent;

/// Receives the events of the publishers to which it was added.
///
/// The destructor does not remove it from them: its owner must call RemoveSubscriber first.
class VOR_API TACallbackSubscriber {
 public:
  TACallbackSubscriber();
  virtual ~TACallbackSubscriber();

  /// Called by \a publisher on the thread that sends the event.  Publishers ignore the result.
  virtual int ReceiveCallback(TACallbackPublisher* publisher, const TAEvent* event) = 0;
};

/// A list of pointers, which it does not own.
class VOR_API VorListPtrTACallbackSubscriber : public VorListPtr<TACallbackSubscriber> {
 public:
  using VorListPtr::VorListPtr;
};

#endif  // VOR_SOURCEFILES_TACALLBACKSUBSCRIBER_H
