#ifndef VOR_THREAD_TAMUTEX_H
#define VOR_THREAD_TAMUTEX_H

#include <atomic>

#include "../base/Export.h"
#include "../base/VorString.h"
#include "../filenames/TAFileName.h"

/// A named mutex, shared by the processes of one machine.
///
/// It is in the file /tmp/TAMutexNAME of 64 bytes.  The first object of that name makes the file;
/// later ones only map it.  The file appears complete: no process sees a half-written mutex, and of
/// several first users one creates it.  The mutex is not recursive.
///
/// Any local user can disturb it: every user may write to the file (mode 0777), so any of them can
/// hold the mutex for ever or overwrite it, and the first user owns the file.  Use it only between
/// programs that trust all users of the machine; otherwise lock a file in a directory of your own.
///
/// If its owner dies, the next thread that locks the mutex gets it.  The data that it guards may
/// then be half changed.
///
/// Ownership: the file stays when the objects and processes are gone.  If an object is destroyed
///            while it is locked, the mutex stays locked until the thread that locked it ends.
/// Errors:    results, and messages on standard output and standard error; see the operations.
/// Threads:   any thread of any process may call Lock.  Only the thread that locked the mutex may
///            call Unlock.
class VOR_API TAMutex {
 public:
  /// Creates or finds the mutex of that name.  On failure it prints a message; Lock and Unlock then
  /// fail.
  explicit TAMutex(const VorString& name);
  TAMutex(const TAMutex&) = delete;
  TAMutex& operator=(const TAMutex&) = delete;

  virtual ~TAMutex();

  /// Creates the file if it does not exist; the constructor has called it already.  Returns 1 if
  /// the file exists now.  Returns -1, with a message on standard error, if it could not be created
  /// or its name is taken by something else.
  int CreateSharedMemory();

  /// Waits for the mutex and takes it.  Returns 0 or the error number of pthread_mutex_lock.
  /// Returns -1, with a message on standard output, if the constructor failed.
  virtual int Lock();
  /// Releases it.  Returns 0 or the error number of pthread_mutex_unlock; -1 as Lock.
  virtual int Unlock();

 private:
  void Open();

  void* _mutex = nullptr;            // a mapped pthread_mutex_t; null if mapping failed
  std::atomic<bool> _isHeld{false};  // locked through this object
  TAFileName _path;
};

#endif  // VOR_THREAD_TAMUTEX_H
