#include "sourcefiles/TAEventBufferDeletion.h"

const char* TAEventBufferDeletion::GetEventName() const {
  return "EventBufferDeletion";
}
