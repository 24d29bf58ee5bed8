#include "thread/VorThreads.h"

#include <pthread.h>

#include <exception>

namespace {

constexpr std::size_t kLongestName = 15;  // bytes; the system refuses longer ones

}  // namespace

VorThreads::VorThreads(const char* name) : _name(name == nullptr ? "" : name, 0, kLongestName) {}

VorThreads::~VorThreads() {
  Wait();
}

void VorThreads::Stop() {}

int VorThreads::Start(void* argument) noexcept {
  if (_isStarted) return 1;
  try {
    _thread = std::thread([this, argument] { Begin(argument); });
  } catch (const std::exception&) {  // no thread or no memory for it
    return 1;
  }
  _isStarted = true;
  pthread_setname_np(_thread.native_handle(), _name.c_str());
  return 0;
}

int VorThreads::Wait() {
  if (!_thread.joinable() || _thread.get_id() == std::this_thread::get_id()) return 1;
  _thread.join();
  return 0;
}

int VorThreads::IsMultiThreadingAllowed() {
  return 1;
}
