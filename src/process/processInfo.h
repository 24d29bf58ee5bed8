#ifndef VOR_PROCESS_PROCESSINFO_H
#define VOR_PROCESS_PROCESSINFO_H

#include <chrono>
#include <ctime>
#include <memory>

#include "../base/Export.h"
#include "../base/VorListPtr.h"
#include "../base/VorListValVorString.h"
#include "../base/VorString.h"
#include "TAProcess.h"
#include "TAProcessEnd.h"
#include "TAProcessOptions.h"

/// One command of a TAProcessList, a plain record.
struct processInfo {
  using Clock = std::chrono::steady_clock;

  VorString command;
  std::unique_ptr<const VorListValVorString> arguments;  ///< instead of the command, unless null
  std::unique_ptr<const TAProcessOptions> options;       ///< null: Start without options
  TAProcess process;
  int status = 0;            ///< a TAProcessList::Status
  std::time_t deadline = 0;  ///< seconds since the epoch after which it is stopped; 0: no limit
  Clock::time_point stopTime = Clock::time_point::max();  ///< when it is stopped or killed: the end
                                                          ///< of its milliseconds or its grace time
  int timeout = 0;                                        ///< seconds it may run; 0: no limit
  int limitMs = 0;     ///< milliseconds it may run; 0 or less: no limit
  int returnCode = 0;  ///< see TAProcessList::GetReturnCode
  TAProcessEnd end;    ///< how it ended; NotEnded before
  TAProcessEnd::Kind reason = TAProcessEnd::NotEnded;  ///< TimedOut or Cancelled from then on
  bool isInGrace = false;                              ///< has got SIGTERM
  bool rootEnded = false;  ///< in its grace time: its own process has ended
};

/// A list of pointers, which it does not own.
class VOR_API VorListPtrprocessInfo : public VorListPtr<processInfo> {
 public:
  using VorListPtr::VorListPtr;
};

#endif  // VOR_PROCESS_PROCESSINFO_H
