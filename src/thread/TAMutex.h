#ifndef VOR_THREAD_TAMUTEX_H
#define VOR_THREAD_TAMUTEX_H

#include <atomic>

#include "base/Export.h"
#include "base/VorString.h"
#include "filenames/TAFileName.h"

/// A mutex by name, shared by the processes of one machine.
///
/// It lives in the file /tmp/TAMutexNAME of 64 bytes, open to every user, which the first object of
/// that name makes and later ones only map.  The file appears at once and whole: no process sees a
/// mutex that is half made, and of several first users one wins.  It is not recursive.
///
/// A mutex whose owner died while holding it goes to the next one that locks it; what it guarded
/// may then be half changed.
///
/// Ownership: the file stays when the objects and processes are gone.  An object that is destroyed
///            while it is locked leaves the mutex locked, for as long as the thread that locked it
///            lives.
/// Errors:    messages on standard output and standard error; see the operations.
/// Threads:   Lock and Unlock may be called from any thread of any process; the thread that locked
///            unlocks.
class VOR_API TAMutex {
 public:
  /// Makes or finds the mutex of that name.  On failure a message is printed, and Lock and Unlock
  /// fail.
  explicit TAMutex(const VorString& name);
  TAMutex(const TAMutex&) = delete;
  TAMutex& operator=(const TAMutex&) = delete;

  virtual ~TAMutex();

  /// Makes the file if there is none.  Returns 1 if it is there now, -1, with a message on standard
  /// error, if it could not be made or something else has its name.  The constructor has called it.
  int CreateSharedMemory();

  /// Waits for the mutex and takes it.  Returns 0 or the error number of pthread_mutex_lock; -1,
  /// with a message on standard output, if the constructor failed.
  virtual int Lock();
  /// Gives it back.  Returns 0 or the error number of pthread_mutex_unlock; -1 as Lock.
  virtual int Unlock();

 private:
  void Open();

  void* _mutex = nullptr;            // a mapped pthread_mutex_t; null if mapping failed
  std::atomic<bool> _isHeld{false};  // locked through this object
  TAFileName _path;
};

#endif  // VOR_THREAD_TAMUTEX_H
