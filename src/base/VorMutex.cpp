#include "base/VorMutex.h"

VorMutex::VorMutex(int) {}
VorMutex::~VorMutex() = default;

void VorMutex::Lock() {
  _mutex.lock();
}
void VorMutex::Unlock() {
  _mutex.unlock();
}
