#ifndef VOR_BASE_VORSTACKTRACE_H
#define VOR_BASE_VORSTACKTRACE_H

#include <stdio.h>

#include "base/Export.h"

/// Return addresses of one thread's calls, and their readable print.
///
/// Threads: fill and print one object from one thread; distinct objects are independent.
class VOR_API VorBasicStackTrace {
 public:
  /// Prints one line for each frame, innermost first: number, address, function with its C++ name
  /// and the offset in it, and the file it was loaded from.  A function whose name is not in the
  /// dynamic symbol table (link tools with -rdynamic) is shown by its offset in that file.
  ///
  /// Leaves out the \a skip innermost frames and prints at most \a limit; 0 means all of them.
  void Print(FILE* stream, int skip, int limit) const;

 protected:
  VorBasicStackTrace() = default;
  ~VorBasicStackTrace() = default;

  static constexpr int kMaxFrames = 128;

  void* _frames[kMaxFrames] = {};
  int _count = 0;
};

/// A stack trace made on the stack: construct it, call GetTrace, then Print.
class VOR_API VorStackTrace : public VorBasicStackTrace {
 public:
  /// Fills the object with the frames of the calling thread, the caller's own first.
  void GetTrace();
};

#endif  // VOR_BASE_VORSTACKTRACE_H
