#ifndef VOR_PROCESS_PROCESSINFO_H
#define VOR_PROCESS_PROCESSINFO_H

#include <ctime>

#include "base/VorString.h"
#include "process/TAProcess.h"

/// One command of a TAProcessList, a plain record.
struct processInfo {
  VorString command;
  TAProcess process;
  int status = 0;            ///< 0 waiting, 1 running, 2 done
  std::time_t deadline = 0;  ///< seconds since the epoch after which it is killed; 0: no limit
  int timeout = 0;           ///< seconds it may run; 0: no limit
  int returnCode = 0;        ///< folded status of its end; 99 if it was killed for its time limit
};

#endif  // VOR_PROCESS_PROCESSINFO_H
