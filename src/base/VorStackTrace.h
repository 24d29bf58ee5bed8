#ifndef VOR_BASE_VORSTACKTRACE_H
#define VOR_BASE_VORSTACKTRACE_H

#include <stdio.h>

#include "Export.h"

/// The return addresses of the calls of one thread, in printable form.
///
/// Threads: fill and print one object from one thread; distinct objects are independent.
class VOR_API VorBasicStackTrace {
 public:
  /// Prints one line for each frame, innermost first: the number, the address, the C++ name of the
  /// function, the offset in it, and the file that it was loaded from.  A function without a name
  /// in the dynamic symbol table is shown by its offset in that file; link a tool with -rdynamic to
  /// see the names of its own functions.
  ///
  /// Skips the \a skip innermost frames and prints at most \a limit; 0 means all of them.
  void Print(FILE* stream, int skip, int limit) const;

 protected:
  VorBasicStackTrace() = default;
  ~VorBasicStackTrace() = default;

  static constexpr int kMaxFrames = 128;

  void* _frames[kMaxFrames] = {};
  int _count = 0;
};

/// The stack trace of the calling thread: construct it, call GetTrace, then Print.
class VOR_API VorStackTrace : public VorBasicStackTrace {
 public:
  /// Fills the object with the frames of the calling thread, the caller's own first.
  void GetTrace();
};

#endif  // VOR_BASE_VORSTACKTRACE_H
