#include "thread/TAThreadLock.h"

#include "thread/IrixLockDriver.h"
#include "thread/SpinWord.h"

TAThreadLock::TAThreadLock() {
  irixLockDriver.ActivateDriver();
}

TAThreadLock::~TAThreadLock() = default;

int TAThreadLock::GetLock() {
  vor::TakeSpinWord(_lockWord);
  return 1;
}

int TAThreadLock::ReleaseLock() {
  vor::ReleaseSpinWord(_lockWord);
  return 1;
}

bool TAThreadLock::TryLock() {
  return vor::TrySpinWord(_lockWord);
}
