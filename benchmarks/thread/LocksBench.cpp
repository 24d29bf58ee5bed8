#include <benchmark/benchmark.h>

#include <mutex>
#include <shared_mutex>
#include <thread>

#include "thread/TAThreadLock.h"
#include "thread/TAThreadRWLock.h"

// One of two threads takes and releases a free lock.

namespace {

// In a process with one thread, the C library skips the atomic operations of a mutex.  Two threads
// make the comparison fair.
struct SecondThread {
  SecondThread() : thread([this] { mutex.lock(); }) {}
  ~SecondThread() {
    mutex.unlock();
    thread.join();
  }
  std::mutex mutex;
  std::unique_lock<std::mutex> held{mutex};
  std::thread thread;
} secondThread;

void Lock(benchmark::State& state) {
  TAThreadLock lock;
  for (auto _ : state) {
    lock.GetLock();
    benchmark::ClobberMemory();
    lock.ReleaseLock();
  }
}

void StdMutex(benchmark::State& state) {
  std::mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    benchmark::ClobberMemory();
    mutex.unlock();
  }
}

void ReadLock(benchmark::State& state) {
  TAThreadRWLock lock;
  for (auto _ : state) {
    lock.GetLock();
    benchmark::ClobberMemory();
    lock.ReleaseLock();
  }
}

void StdSharedRead(benchmark::State& state) {
  std::shared_mutex mutex;
  for (auto _ : state) {
    mutex.lock_shared();
    benchmark::ClobberMemory();
    mutex.unlock_shared();
  }
}

void WriteLock(benchmark::State& state) {
  TAThreadRWLock lock;
  for (auto _ : state) {
    lock.GetWriteLock();
    benchmark::ClobberMemory();
    lock.ReleaseWriteLock();
  }
}

void StdSharedWrite(benchmark::State& state) {
  std::shared_mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    benchmark::ClobberMemory();
    mutex.unlock();
  }
}

BENCHMARK(Lock)->Name("BM_Lock/ours")->Arg(1);
BENCHMARK(StdMutex)->Name("BM_Lock/std_mutex")->Arg(1);
BENCHMARK(ReadLock)->Name("BM_ReadLock/ours")->Arg(1);
BENCHMARK(StdSharedRead)->Name("BM_ReadLock/shared_mutex")->Arg(1);
BENCHMARK(WriteLock)->Name("BM_WriteLock/ours")->Arg(1);
BENCHMARK(StdSharedWrite)->Name("BM_WriteLock/shared_mutex")->Arg(1);

}  // namespace
