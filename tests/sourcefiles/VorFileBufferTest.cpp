#include "sourcefiles/VorFileBuffer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
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

// Counts the deletions that it hears of.
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

bool GetsLoaded(const VorFileBuffer* buffer) {
  return Eventually([buffer] { return buffer->isLoaded() == 1; });
}

std::vector<VorFileBuffer*> MakeBuffers(const std::string& path, std::size_t count) {
  std::vector<VorFileBuffer*> buffers;
  while (buffers.size() < count) buffers.push_back(new VorFileBuffer(path.c_str()));
  return buffers;
}

}  // namespace

TEST(VorFileBuffer, LoadsOnDemand) {
  const TempDir dir;
  const std::string content = std::string(1'500'000, 'x') + '\0' + "end";
  auto* const buffer = new VorFileBuffer(dir.Write("file", content).c_str());
  EXPECT_EQ(buffer->getFileName(), dir / "file");
  EXPECT_TRUE(buffer->isLoaded() == 0 && buffer->isDestroyed() == 0);
  ASSERT_EQ(buffer->getBufferSize(), static_cast<int>(content.size()));
  EXPECT_EQ(std::string(buffer->getBuffer(), content.size() + 1), content + '\0');
  EXPECT_EQ(buffer->isLoaded(), 1);
  EXPECT_EQ(buffer->Release(), 0);

  const std::string missing = dir / "missing", huge = dir.Write("huge", "");
  ASSERT_EQ(truncate(huge.c_str(), 0x7FFFFFFF), 0);  // without the NUL
  for (const char* name : {missing.c_str(), huge.c_str(), static_cast<const char*>(nullptr)}) {
    auto* const unreadable = new VorFileBuffer(name);
    EXPECT_TRUE(unreadable->getBuffer() == nullptr && unreadable->getBufferSize() == 0);
    dir.Write("missing", "too late");
    EXPECT_EQ(unreadable->getBuffer(), nullptr);
    unreadable->Release();
  }
}

TEST(VorFileBuffer, TellsOfTheReleaseWhileTheTextIsThere) {
  const TempDir dir;
  const std::vector<VorFileBuffer*> buffers = MakeBuffers(dir.Write("file", "12345"), 3);
  Listener listener, added;
  listener.then = [&](VorFileBuffer& buffer) {
    EXPECT_EQ(buffer.isDestroyed(), 1);
    EXPECT_STREQ(buffer.getBuffer(), "12345");
    buffer.AddSubscriber(&added);
  };
  for (VorFileBuffer* buffer : buffers) {
    buffer->AddSubscriber(&listener);
    buffer->AddRef();
    if (buffer != buffers[2]) buffer->loadFile();
  }
  EXPECT_EQ(buffers[0]->Release(), 1);
  EXPECT_EQ(listener.size, 0);
  EXPECT_EQ(buffers[0]->Release(), 0);
  EXPECT_EQ(listener.size, 5);

  buffers[1]->destroy();
  buffers[2]->destroy();  // has no text to tell of
  for (VorFileBuffer* buffer : {buffers[1], buffers[2]}) {
    EXPECT_TRUE(buffer->getBuffer() == nullptr && buffer->getBufferSize() == 0);
    EXPECT_TRUE(buffer->isLoaded() == 1 && buffer->isDestroyed() == 1);
    EXPECT_EQ(buffer->Release(), 0);
  }
  EXPECT_TRUE(listener.size == 10 && added.size == 10);
}

TEST(VorFileBufferPool, LoadsAheadAndWithoutAThreadNot) {
  const TempDir dir;
  const std::vector<VorFileBuffer*> buffers = MakeBuffers(dir.Write("file", "12345"), 3);
  auto pool = std::make_unique<VorFileBufferPool>();
  pool->append(nullptr);
  pool->append(buffers[0]);
  EXPECT_TRUE(GetsLoaded(buffers[0]));  // and the thread sleeps
  pool->append(buffers[1]);
  EXPECT_TRUE(GetsLoaded(buffers[1]));
  // A child neither waits for the thread of its parent nor tells it anything.
  EXPECT_EQ(InProcess([&] {
              pool->append(buffers[2]);
              pool.reset();
              return buffers[0]->Release() + buffers[2]->Release();
            }),
            0);
  pool.reset();
  EXPECT_EQ(buffers[0]->getBufferSize(), 5);  // outlives the pool
  EXPECT_EQ(InProcess([&] {
              if (VorFileBufferPool::disableMultiThread() != 1) return 1;
              VorFileBufferPool().append(buffers[2]);
              // Nobody else holds a reference.
              return buffers[2]->getBufferSize() == 5 && buffers[2]->Release() == 0 ? 0 : 2;
            }),
            0);
  for (VorFileBuffer* buffer : buffers) EXPECT_EQ(buffer->Release(), 0);
}

TEST(VorFileBufferPoolThread, WaitsAtTheCeilingUntilTextsAreReleased) {
  const TempDir dir;
  const std::vector<VorFileBuffer*> buffers = MakeBuffers(dir.Write("file", "0123456789"), 6);
  Listener skipper;
  skipper.then = [&skipper](VorFileBuffer& buffer) { buffer.RemoveSubscriber(&skipper); };
  VorFileBufferPoolThread thread(20);
  buffers[1]->AddSubscriber(&skipper);  // so the thread is passed over when this one is released
  for (int i = 0; i < 3; ++i) thread.append(buffers[static_cast<std::size_t>(i)]);
  ASSERT_EQ(thread.Start(), 0);
  EXPECT_TRUE(GetsLoaded(buffers[2]));  // of one batch, beyond the ceiling

  thread.append(buffers[3]);
  buffers[0]->destroy();  // 20 bytes are left
  for (int i = 0; i < 1000; ++i) std::this_thread::yield();
  EXPECT_EQ(buffers[3]->isLoaded(), 0);
  buffers[1]->destroy();
  EXPECT_TRUE(GetsLoaded(buffers[3]));

  thread.append(buffers[4]);
  thread.Stop();
  thread.append(buffers[5]);
  EXPECT_EQ(thread.Wait(), 0);
  for (const std::size_t i : {2u, 3u, 4u, 5u}) EXPECT_EQ(buffers[i]->Release(), 0);
}

// Buffers are used, released and destroyed at every moment, while their pools load and end.
TEST(VorFileBufferPool, SurvivesAllOrdersOfReleaseAndStop) {
  const TempDir dir;
  const std::string path = dir.Write("file", std::string(1000, 'x'));
  Listener listener;
  listener.then = [](VorFileBuffer&) { std::this_thread::yield(); };  // others see it half done
  for (unsigned round = 0; round < 100; ++round) {
    const std::vector<VorFileBuffer*> buffers = MakeBuffers(path, 40);
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
          EXPECT_TRUE(random() % 4 != 0 || buffer->getBufferSize() % 1000 == 0);
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
