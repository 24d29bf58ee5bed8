#ifndef VOR_SOURCEFILES_TACALLBACKPUBLISHER_H
#define VOR_SOURCEFILES_TACALLBACKPUBLISHER_H

#include <memory>

#include "../base/Export.h"

class TACallbackSubscriber;
class TAEvent;
class VorListPtrTACallbackSubscriber;

/// Sends events to its subscribers, in the order in which they were added.
///
/// Subscribers may be added and removed while an event is delivered.  Callers rely on two effects.
/// A subscriber that is added also receives this event.  If the subscriber that is being called, or
/// an earlier one, is removed, the next one is skipped.
///
/// Ownership: the subscribers belong to others.  Remove a subscriber before it is destroyed.
/// Errors:    running out of memory ends the process.
/// Threads:   not synchronised.  A derived class whose objects are shared by threads locks the
///            list, as VorFileBuffer does.
class VOR_API TACallbackPublisher {
 public:
  TACallbackPublisher();
  TACallbackPublisher(const TACallbackPublisher&) = delete;
  TACallbackPublisher& operator=(const TACallbackPublisher&) = delete;
  virtual ~TACallbackPublisher();

  /// A subscriber that is added twice is called twice.
  void AddSubscriber(TACallbackSubscriber* subscriber) noexcept;
  /// Removes \a subscriber, however often it was added.
  void RemoveSubscriber(TACallbackSubscriber* subscriber);

  /// Calls ReceiveCallback of every subscriber and returns 0.  Returns 1 if there is no subscriber.
  int SendCallback(const TAEvent* event);

 private:
  std::unique_ptr<VorListPtrTACallbackSubscriber> _subscribers;  // null until the first is added
};

#endif  // VOR_SOURCEFILES_TACALLBACKPUBLISHER_H
