#ifndef VOR_SOCKET_CONNECTION_H
#define VOR_SOCKET_CONNECTION_H

#include "base/PosixFile.h"

namespace vor {

/// The state that a TASocket shares with its reader and its writer.
struct Connection {
  FileDescriptor fd;
  bool isListening = false;                    // else connected, if open
  bool isCompressed = false;                   // in both directions, after the first such block
  int stallLimit = 0;                          // seconds; 0 for none
  const char* message = "no error on socket";  // of the last failure
  int error = 0;                               // errno of it; 0 for none

  bool IsOpen() const { return fd.IsOpen(); }

  /// Records a failure and returns 1.  \a reason is a text of static lifetime, \a code a value of
  /// errno or 0.
  int Fail(const char* reason, int code) {
    message = reason;
    error = code;
    return 1;
  }
};

}  // namespace vor

#endif  // VOR_SOCKET_CONNECTION_H
