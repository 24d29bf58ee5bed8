#ifndef VOR_PERSISTENCE_TAUUIDGENERATOR_H
#define VOR_PERSISTENCE_TAUUIDGENERATOR_H

#include <atomic>

#include "base/Export.h"

/// Makes identifiers that differ between machines, processes and times: 20 printable characters
/// that stand for 15 bytes, the most significant first:
///
/// | bytes | what                                          |
/// |-------|-----------------------------------------------|
/// | 4     | seconds since the epoch                       |
/// | 4     | number of the machine                         |
/// | 1     | 3                                             |
/// | 4     | process id                                    |
/// | 2     | how many the process made before, modulo 2^16 |
///
/// The counter has 16 bits: a process that makes more than 65,536 identifiers within one second
/// makes some twice.  They can be guessed, so they are no secrets.
///
/// Generators have no state of their own; all share the counter of the process.
///
/// Errors:    a machine without a number is told on standard output and counts as machine 0.
/// Threads:   every function may be called from any thread.  A process that was forked makes
///            identifiers of its own.
class VOR_API TAUUIDGenerator {
 public:
  TAUUIDGenerator() = default;
  virtual ~TAUUIDGenerator();

  /// A new identifier, NUL-terminated, valid until the thread that asked asks again or ends.
  virtual const char* Get();

  /// Finds the number of the machine; Get calls it.  Returns 0, or 1 if that was done before.
  static int Init();

  /// A number that stays the same from start to start of this machine; 0 after Error() if it has
  /// none.
  static int GetMachineIdent();
  static int GetProcessIdent();
  /// What the counter of a process starts at: 0.
  static int FirstCounter();
  /// Seconds since the epoch, the low 32 bits.
  static int GetTime();

  /// Writes the 15 bytes of \a record as 20 characters and a NUL: six bits each, the most
  /// significant first, as one of + - 0-9 A-Z a-z in this order.
  static void Convert(const unsigned char* record, char* out);

  /// Copies \a n bytes; none if \a n is below 1.
  static void Copy(void* to, const void* from, int n);

  /// Tells on standard output that the machine has no number.
  static void Error();

 private:
  static std::atomic<int> machine_ident;
  static std::atomic<short> counter;  // of the next identifier; wraps
  static std::atomic<int> init_done;  // 1 once machine_ident is known
};

#endif  // VOR_PERSISTENCE_TAUUIDGENERATOR_H
