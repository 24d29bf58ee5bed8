#include "thread/TAThreadRWLock.h"

#include "thread/SpinWord.h"

using vor::ReleaseSpinWord;
using vor::TakeSpinWord;

TAThreadRWLock::TAThreadRWLock() = default;

TAThreadRWLock::~TAThreadRWLock() = default;

int TAThreadRWLock::GetLock() {
  TakeSpinWord(_turnstile);
  TakeSpinWord(_countLock);
  if (_readers == 0) {
    // Nobody else can become the first reader meanwhile: that takes the turnstile.
    ReleaseSpinWord(_countLock);
    TakeSpinWord(_resourceLock);
    TakeSpinWord(_countLock);
  }
  ++_readers;
  ReleaseSpinWord(_countLock);
  ReleaseSpinWord(_turnstile);
  return 1;
}

int TAThreadRWLock::ReleaseLock() {
  TakeSpinWord(_countLock);
  if (_readers == 1) ReleaseSpinWord(_resourceLock);
  --_readers;
  ReleaseSpinWord(_countLock);
  return 1;
}

int TAThreadRWLock::GetWriteLock() {
  TakeSpinWord(_turnstile);
  TakeSpinWord(_resourceLock);
  return 1;
}

int TAThreadRWLock::ReleaseWriteLock() {
  ReleaseSpinWord(_resourceLock);
  ReleaseSpinWord(_turnstile);
  return 1;
}
