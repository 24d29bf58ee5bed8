#ifndef VOR_PROCESS_RESERVEDESCRIPTORS_H
#define VOR_PROCESS_RESERVEDESCRIPTORS_H

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

}  // namespace vor

#endif  // VOR_PROCESS_RESERVEDESCRIPTORS_H
