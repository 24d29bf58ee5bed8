#ifndef VOR_SOURCEFILES_TAEVENTBUFFERDELETION_H
#define VOR_SOURCEFILES_TAEVENTBUFFERDELETION_H

#include "base/Export.h"
#include "sourcefiles/TAEvent.h"

/// Says that the buffer which publishes it is about to release its text: whoever kept pointers into
/// that text drops them now.  See VorFileBuffer.
class VOR_API TAEventBufferDeletion final : public TAEvent {
 public:
  /// "EventBufferDeletion".
  const char* GetEventName() const override;
};

#endif  // VOR_SOURCEFILES_TAEVENTBUFFERDELETION_H
