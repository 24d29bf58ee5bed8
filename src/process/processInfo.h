#ifndef VOR_PROCESS_PROCESSINFO_H
#define VOR_PROCESS_PROCESSINFO_H

#include <ctime>

#include "../base/Export.h"
#include "../base/VorListPtr.h"
#include "../base/VorString.h"
#include "TAProcess.h"
#include "TAProcessEnd.h"

/// One command of a TAProcessList, a plain record.
struct processInfo {
  VorString command;
  TAProcess process;
  int status = 0;            ///< a TAProcessList::Status
  std::time_t deadline = 0;  ///< seconds since the epoch after which it is killed; 0: no limit
  int timeout = 0;           ///< seconds it may run; 0: no limit
  int returnCode = 0;        ///< see TAProcessList::GetReturnCode
  TAProcessEnd end;          ///< how it ended; NotEnded before
};

/// A list of pointers, which it does not own.
class VOR_API VorListPtrprocessInfo : public VorListPtr<processInfo> {
 public:
  using VorListPtr::VorListPtr;
};

#endif  // VOR_PROCESS_PROCESSINFO_H
