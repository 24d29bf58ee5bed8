#include "sourcefiles/VorFileBufferPool.h"

#include "sourcefiles/VorFileBufferPoolThread.h"

namespace {

constexpr int kCeiling = 0x4000000;  // bytes

}  // namespace

std::atomic<int> VorFileBufferPool::_isMonoThread{-1};

VorFileBufferPool::VorFileBufferPool() noexcept {
  int undecided = -1;
  _isMonoThread.compare_exchange_strong(undecided,
                                        VorThreads::IsMultiThreadingAllowed() != 0 ? 0 : 1);
  if (_isMonoThread != 0) return;
  _thread = std::make_unique<VorFileBufferPoolThread>(kCeiling);
  if (_thread->Start() != 0) _thread.reset();  // no thread to be had: the consumers read
}

VorFileBufferPool::~VorFileBufferPool() = default;  // the thread's destructor stops it

void VorFileBufferPool::append(VorFileBuffer* buffer) {
  if (_thread != nullptr) _thread->append(buffer);
}

int VorFileBufferPool::disableMultiThread() {
  _isMonoThread = 1;
  return 1;
}
