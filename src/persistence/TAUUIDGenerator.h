#ifndef VOR_PERSISTENCE_TAUUIDGENERATOR_H
#define VOR_PERSISTENCE_TAUUIDGENERATOR_H

#include <atomic>
#include <cstdint>

#include "../base/Export.h"

/// Makes identifiers that differ between machines, processes and times: 20 printable characters
/// that stand for 15 bytes, the most significant first:
///
/// | bytes | content                                       |
/// |-------|-----------------------------------------------|
/// | 4     | seconds since the epoch                       |
/// | 4     | number of the machine                         |
/// | 1     | 3                                             |
/// | 4     | process id                                    |
/// | 2     | counter of the process, modulo 2^16           |
///
/// A process makes at most 65,536 identifiers within one second of the clock.  A thread that needs
/// another one sleeps until the next second.  If the clock is set back, identifiers of a second
/// that is passed twice can repeat.  Identifiers are predictable: do not use them as secrets.
///
/// Generators have no state of their own; all share the counter of the process.
///
/// Errors:    a machine without a number is reported on standard output and counts as machine 0.
/// Threads:   every function may be called from any thread.  A forked child makes identifiers of
///            its own.
class VOR_API TAUUIDGenerator {
 public:
  TAUUIDGenerator() = default;
  virtual ~TAUUIDGenerator();

  /// A new identifier, NUL-terminated.  Valid until the same thread calls Get again.  After that
  /// thread has ended, valid until any thread calls Get.
  virtual const char* Get();

  /// Determines the number of the machine; Get calls it.  Returns 0 the first time, 1 later.
  static int Init();

  /// A number of this machine, which is the same after a restart.  In a container it changes when
  /// the container or its machine is restarted.  If the machine has none, calls Error and returns
  /// 0.
  static int GetMachineIdent();
  static int GetProcessIdent();
  /// The first value of the counter of a process: 0.
  static int FirstCounter();
  /// Seconds since the epoch, the low 32 bits.
  static int GetTime();

  /// Writes the 15 bytes of \a record as 20 characters and a NUL: six bits each, the most
  /// significant first, as one of + - 0-9 A-Z a-z in this order.
  static void Convert(const unsigned char* record, char* out);

  /// Copies \a n bytes; none if \a n is below 1.
  static void Copy(void* to, const void* from, int n);

  /// Reports on standard output that the machine has no number.
  static void Error();

 private:
  // When an identifier was drawn, and the counter at that moment.
  struct Moment {
    std::uint32_t second;
    std::uint16_t count;
  };
  static Moment Draw();

  static std::atomic<int> machine_ident;
  static std::atomic<std::uint64_t> counter;  // with the second that it belongs to
  static std::atomic<int> init_done;          // 1 once machine_ident is known
};

#endif  // VOR_PERSISTENCE_TAUUIDGENERATOR_H
