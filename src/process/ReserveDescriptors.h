#ifndef VOR_PROCESS_RESERVEDESCRIPTORS_H
#define VOR_PROCESS_RESERVEDESCRIPTORS_H

#include <errno.h>

namespace vor {

/// Reserves two descriptors, unless they are reserved already: a process that has used up its limit
/// must still be able to read the process table and kill what it started.
void KeepDescriptorsInReserve();

/// Frees the reserved descriptors for as long as the object lives.  One thread at a time holds such
/// an object; others wait.
class ReserveReleased {
 public:
  ReserveReleased();
  ReserveReleased(const ReserveReleased&) = delete;
  ReserveReleased& operator=(const ReserveReleased&) = delete;
  ~ReserveReleased();
};

/// Returns the result of \a action, which returns false and sets errno on a failure.  If it fails
/// because no descriptor is free, it is repeated with those in reserve.
template <typename Action>
bool WithReserve(Action action) {
  if (action()) return true;
  if (errno != EMFILE && errno != ENFILE) return false;
  const ReserveReleased released;
  return action();
}

}  // namespace vor

#endif  // VOR_PROCESS_RESERVEDESCRIPTORS_H
