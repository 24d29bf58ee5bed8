#include "thread/TAThreadLongLock.h"

#include "thread/SpinWord.h"

TAThreadLongLock::TAThreadLongLock() = default;

TAThreadLongLock::~TAThreadLongLock() = default;

int TAThreadLongLock::GetLock() {
  vor::TakeSpinWord(_longLockWord);
  return 1;
}

int TAThreadLongLock::ReleaseLock() {
  vor::ReleaseSpinWord(_longLockWord);
  return 1;
}
