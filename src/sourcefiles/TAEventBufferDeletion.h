#ifndef VOR_SOURCEFILES_TAEVENTBUFFERDELETION_H
#define VOR_SOURCEFILES_TAEVENTBUFFERDELETION_H

#include "../base/Export.h"
#include "TAEvent.h"

/// Sent by a VorFileBuffer that is about to release its text.  Subscribers drop their pointers into
/// that text.
class VOR_API TAEventBufferDeletion final : public TAEvent {
 public:
  /// "EventBufferDeletion".
  const char* GetEventName() const override;
};

#endif  // VOR_SOURCEFILES_TAEVENTBUFFERDELETION_H
