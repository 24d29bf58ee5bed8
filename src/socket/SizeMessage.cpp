#include "socket/SizeMessage.h"

#include <stdio.h>

#include <cstddef>
#include <mutex>

#include "base/ForkSafeLock.h"

namespace vor {
namespace {

constexpr std::size_t kKept = 1024;

struct Message {
  long long size = 0;
  char text[72] = {};  // enough for every size
};

constinit Message messages[kKept];
constinit std::size_t made = 0;  // replaced ones included

constinit ForkSafeMutex mutex(ForkStage::kLeaf);  // for the two above
const ForkRegistration registration(mutex);

}  // namespace

const char* SizeMessage(long long size) {
  const std::lock_guard held(mutex);
  for (std::size_t i = 0; i < made && i < kKept; ++i) {
    if (messages[i].size == size) return messages[i].text;
  }
  Message& message = messages[made++ % kKept];
  message.size = size;
  // A thread may still read the replaced text: its last byte stays a NUL.
  snprintf(message.text, sizeof message.text, "Unable to put block in buffer (block size is %lld)",
           size);
  return message.text;
}

}  // namespace vor
