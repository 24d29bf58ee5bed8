#include "thread/VorThreads.h"

#include <pthread.h>
#include <unistd.h>

#include <exception>
#include <latch>
#include <string_view>

#include "base/NullText.h"

namespace {

constexpr std::size_t kLongestName = 15;  // bytes; the system refuses longer ones

}  // namespace

VorThreads::VorThreads(const char* name)
    : _name(std::string_view(vor::TextOrEmpty(name)).substr(0, kLongestName)) {}

VorThreads::~VorThreads() {
  Wait();
  if (_thread == nullptr) return;
  if (IsParents()) {
    static_cast<void>(_thread.release());  // neither to be joined nor detached here
  } else {
    _thread->detach();
  }
}

void VorThreads::Stop() {}

int VorThreads::Start(void* argument) noexcept {
  if (_starter != 0) return 1;
  try {
    // The thread calls Begin when nothing is left to do here, since Begin may destroy this object.
    const auto isSetUp = std::make_shared<std::latch>(1);
    _thread = std::make_unique<std::thread>([this, argument, isSetUp] {
      isSetUp->wait();
      Begin(argument);
    });
    _starter = getpid();
    pthread_setname_np(_thread->native_handle(), _name.c_str());
    isSetUp->count_down();
  } catch (const std::exception&) {  // no thread or no memory for it
    return 1;
  }
  return 0;
}

int VorThreads::Wait() {
  if (_thread == nullptr || IsParents()) return 1;
  if (_thread->get_id() == std::this_thread::get_id()) return 1;
  _thread->join();
  _thread.reset();
  return 0;
}

bool VorThreads::IsParents() const {
  return _starter != 0 && _starter != getpid();
}

int VorThreads::IsMultiThreadingAllowed() {
  return 1;
}
