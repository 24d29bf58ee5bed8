#ifndef VOR_SOURCEFILES_TACALLBACKPUBLISHER_H
#define VOR_SOURCEFILES_TACALLBACKPUBLISHER_H

#include <memory>

#include "base/Export.h"

class TACallbackSubscriber;
class TAEvent;
class VorListPtrTACallbackSubscriber;

/// Sends events to its subscribers, in the order in which they were added.
///
/// Subscribers may be added and removed while an event is delivered.  Callers rely on both effects:
/// one that is added gets this event as well, and when the subscriber that is just being called, or
/// an earlier one, is removed, the next one is skipped.
///
/// Ownership: the subscribers belong to others and must be removed before they go away.
/// Errors:    running out of memory ends the process.
/// Threads:   not synchronised; an object that is used by several threads locks its list, as
///            VorFileBuffer does.
class VOR_API TACallbackPublisher {
 public:
  TACallbackPublisher();
  TACallbackPublisher(const TACallbackPublisher&) = delete;
  TACallbackPublisher& operator=(const TACallbackPublisher&) = delete;
  virtual ~TACallbackPublisher();

  /// A subscriber that is added twice is called twice.
  void AddSubscriber(TACallbackSubscriber* subscriber) noexcept;
  /// Removes it as often as it was added.
  void RemoveSubscriber(TACallbackSubscriber* subscriber);

  /// Calls every subscriber.  Returns 0; 1 if there is none.
  int SendCallback(const TAEvent* event);

 private:
  std::unique_ptr<VorListPtrTACallbackSubscriber> _subscribers;  // null until the first is added
};

#endif  // VOR_SOURCEFILES_TACALLBACKPUBLISHER_H
