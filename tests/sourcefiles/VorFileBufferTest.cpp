#include "sourcefiles/VorFileBuffer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "sourcefiles/TACallbackSubscriber.h"
#include "sourcefiles/VorFileBufferPool.h"
#include "sourcefiles/VorFileBufferPoolThread.h"
#include "support/Eventually.h"
#include "support/InProcess.h"
#include "support/TempDir.h"

namespace {

// Adds up the sizes of the texts that are released.
struct Listener : TACallbackSubscriber {
  int ReceiveCallback(TACallbackPublisher* publisher, const TAEvent*) override {
    auto* const buffer = static_cast<VorFileBuffer*>(publisher);
    size += buffer->getBufferSize();
    if (then) then(*buffer);
    return 0;
  }

  std::atomic<int> size{0};
  std::function<void(VorFileBuffer&)> then;
};

struct LastReference {
  void operator()(VorFileBuffer* buffer) const { EXPECT_EQ(buffer->Release(), 0); }
};
using Buffer = std::unique_ptr<VorFileBuffer, LastReference>;

Buffer MakeBuffer(const std::string& path) {
  return Buffer(new VorFileBuffer(path.c_str()));
}

bool GetsLoaded(const Buffer& buffer) {
  return Eventually([&buffer] { return buffer->isLoaded() == 1; });
}

}  // namespace

TEST(VorFileBuffer, LoadsOnDemand) {
  const TempDir dir;
  const std::string content = std::string(1'500'000, 'x') + '\0' + "end";
  const Buffer buffer = MakeBuffer(dir.Write("file", content));
  EXPECT_EQ(buffer->getFileName(), dir / "file");
  EXPECT_EQ(buffer->isLoaded(), 0);
  ASSERT_EQ(buffer->getBufferSize(), static_cast<int>(content.size()));
  EXPECT_EQ(std::string(buffer->getBuffer(), content.size() + 1), content + '\0');
  EXPECT_EQ(buffer->isLoaded(), 1);

  const std::string missing = dir / "missing", huge = dir.Write("huge", "");
  ASSERT_EQ(truncate(huge.c_str(), 0x7FFFFFFF), 0);  // without the NUL
  for (const char* name : {missing.c_str(), huge.c_str(), static_cast<const char*>(nullptr)}) {
    const Buffer unreadable(new VorFileBuffer(name));
    EXPECT_EQ(unreadable->getBuffer(), nullptr);
    dir.Write("missing", "too late");
    EXPECT_EQ(unreadable->getBuffer(), nullptr);
    EXPECT_EQ(unreadable->getBufferSize(), 0);
  }
}

TEST(VorFileBuffer, SendsTheEventBeforeItReleasesTheText) {
  const TempDir dir;
  const std::string file = dir.Write("file", "12345");
  Listener listener, added;
  listener.then = [&](VorFileBuffer& buffer) {
    EXPECT_EQ(buffer.isDestroyed(), 1);
    EXPECT_STREQ(buffer.getBuffer(), "12345");
    buffer.AddSubscriber(&added);
  };
  Buffer released = MakeBuffer(file), destroyed = MakeBuffer(file), unread = MakeBuffer(file);
  for (const Buffer* buffer : {&released, &destroyed, &unread}) {
    (*buffer)->AddSubscriber(&listener);
    (*buffer)->AddRef();
    if (buffer != &unread) (*buffer)->loadFile();
  }
  EXPECT_EQ(released->Release(), 1);
  EXPECT_EQ(listener.size, 0);
  released.reset();
  EXPECT_EQ(listener.size, 5);
  for (const Buffer* buffer : {&destroyed, &unread}) {
    (*buffer)->destroy();
    EXPECT_EQ((*buffer)->getBuffer(), nullptr);
    EXPECT_EQ((*buffer)->getBufferSize(), 0);
    EXPECT_EQ((*buffer)->isLoaded(), 1);
  }
  EXPECT_EQ(listener.size, 10) << "nothing is announced without a text";
  EXPECT_EQ(added.size, 10);
}

TEST(VorFileBufferPool, LoadsFilesAheadAndLeavesPipes) {
  const TempDir dir;
  const std::string fifo = dir / "pipe", file = dir.Write("file", "12345");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  Buffer pipe = MakeBuffer(fifo), missing = MakeBuffer(dir / "missing");
  Buffer first = MakeBuffer(file), second = MakeBuffer(file), third = MakeBuffer(file);
  auto pool = std::make_unique<VorFileBufferPool>();
  pool->append(nullptr);
  pool->append(first.get());
  EXPECT_TRUE(GetsLoaded(first)) << "and the thread sleeps";
  for (const auto* buffer : {&pipe, &missing, &second}) pool->append(buffer->get());
  EXPECT_TRUE(GetsLoaded(second));
  EXPECT_EQ(pipe->isLoaded(), 0);
  EXPECT_EQ(missing->isLoaded(), 1);
  const TAEventBufferDeletion event;
  EXPECT_EQ(missing->SendCallback(&event), 0) << "the thread has subscribed";

  // From here on the consumer holds the lock of the pipe.
  std::thread consumer([&pipe] { EXPECT_STREQ(pipe->getBuffer(), "text"); });
  std::ofstream writer(fifo);
  pool->append(pipe.get());
  // A child neither waits for the thread of its parent nor loads on it.
  EXPECT_EQ(InProcess([&] {
              pool->append(third.get());
              pool.reset();
              return first.release()->Release();
            }),
            0);
  pool.reset();
  writer << "text";
  writer.close();
  consumer.join();
  EXPECT_EQ(missing->SendCallback(&event), 1) << "the thread has left";
  EXPECT_EQ(first->getBufferSize(), 5) << "outlives the pool";
  EXPECT_EQ(InProcess([&] {
              VorFileBufferPool::disableMultiThread();
              VorFileBufferPool().append(third.get());
              return third.release()->Release();  // nobody else holds a reference
            }),
            0);
}

TEST(VorFileBufferPoolThread, WaitsAtTheCeilingUntilTextsAreReleased) {
  const TempDir dir;
  std::vector<Buffer> buffers;
  while (buffers.size() < 6) buffers.push_back(MakeBuffer(dir.Write("file", "0123456789")));
  Listener skipper;
  skipper.then = [&skipper](VorFileBuffer& buffer) { buffer.RemoveSubscriber(&skipper); };
  VorFileBufferPoolThread thread(20);
  buffers[1]->AddSubscriber(&skipper);  // so the event of this buffer skips the thread
  for (const std::size_t i : {0u, 1u, 2u}) thread.append(buffers[i].get());
  ASSERT_EQ(thread.Start(), 0);
  EXPECT_TRUE(GetsLoaded(buffers[2])) << "of one batch, beyond the ceiling";

  thread.append(buffers[3].get());
  buffers[0].reset();  // 20 bytes are left
  for (int i = 0; i < 1000; ++i) std::this_thread::yield();
  EXPECT_EQ(buffers[3]->isLoaded(), 0);
  buffers[1].reset();
  EXPECT_TRUE(GetsLoaded(buffers[3]));

  thread.append(buffers[4].get());
  thread.Stop();
  thread.append(buffers[5].get());
  EXPECT_EQ(thread.Wait(), 0);
}

// Buffers are used, released and destroyed at every moment, while their pools load and end.
TEST(VorFileBufferPool, SurvivesAllOrdersOfReleaseAndStop) {
  const TempDir dir;
  const std::string path = dir.Write("file", std::string(1000, 'x'));
  Listener listener;
  listener.then = [](VorFileBuffer&) { std::this_thread::yield(); };  // others see it half done
  for (unsigned round = 0; round < 100; ++round) {
    std::vector<VorFileBuffer*> buffers;
    while (buffers.size() < 40) buffers.push_back(new VorFileBuffer(path.c_str()));
    auto pool = std::make_unique<VorFileBufferPoolThread>(round % 2 == 0 ? 5000 : 1'000'000);
    VorFileBufferPool second;
    pool->Start();
    std::atomic<int> appended{0};
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 4; ++i) {
      for (VorFileBuffer* buffer : buffers) buffer->AddRef();
      threads.emplace_back([&, i] {
        std::mt19937 random(round * 4 + i);
        for (VorFileBuffer* buffer : buffers) {
          if (random() % 4 == 0) buffer->AddSubscriber(&listener);
          pool->append(buffer);
          if (random() % 4 == 0) second.append(buffer);
        }
        ++appended;
        for (VorFileBuffer* buffer : buffers) {
          const int size = random() % 4 == 0 ? buffer->getBufferSize() : 0;
          EXPECT_EQ(size % 1000, 0);
          while (random() % 8 != 0) std::this_thread::yield();
          random() % 8 == 0 ? buffer->destroy() : static_cast<void>(buffer->Release());
        }
      });
    }
    for (VorFileBuffer* buffer : buffers) buffer->Release();
    if (round % 8 == 0) pool->Stop();
    while (appended < 4) std::this_thread::yield();
    for (unsigned i = 0; i < round; ++i) std::this_thread::yield();
    pool.reset();
    for (std::thread& thread : threads) thread.join();
  }
}
