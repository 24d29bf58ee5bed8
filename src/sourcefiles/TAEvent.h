#ifndef VOR_SOURCEFILES_TAEVENT_H
#define VOR_SOURCEFILES_TAEVENT_H

#include "base/Export.h"

/// What a publisher tells its subscribers.
///
/// Subscribers recognise an event by its name, compared with strcmp, and not by its class.
///
/// Ownership: belongs to the publisher; valid during the delivery only.  Never deleted through this
///            class.
/// Threads:   carries no data that could change.
class VOR_API TAEvent {
 public:
  /// The NUL-terminated name of the kind of event, valid for ever.
  virtual const char* GetEventName() const = 0;

 protected:
  ~TAEvent() = default;
};

#endif  // VOR_SOURCEFILES_TAEVENT_H
