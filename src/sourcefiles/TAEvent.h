#ifndef VOR_SOURCEFILES_TAEVENT_H
#define VOR_SOURCEFILES_TAEVENT_H

#include "../base/Export.h"

/// An event that a publisher sends to its subscribers.
///
/// Subscribers recognise an event by its name, compared with strcmp, not by its class.
///
/// Ownership: belongs to the publisher and is valid only while it is delivered.  Never deleted
///            through this class.
/// Threads:   an event holds no data that could change.
class VOR_API TAEvent {
 public:
  /// The NUL-terminated name of this kind of event, valid until the process ends.
  virtual const char* GetEventName() const = 0;

 protected:
  ~TAEvent() = default;
};

#endif  // VOR_SOURCEFILES_TAEVENT_H
