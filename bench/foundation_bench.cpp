// The foundation's locks, one-time initialisation and identifiers, each beside its peers.
#include <benchmark/benchmark.h>

#include <latch>
#include <mutex>
#include <thread>

#include "ltlib/ltlib.h"

#if __has_include(<sys/file.h>)
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif
#ifdef LTLIB_BENCH_UUID
#include <uuid.h>
#endif

namespace {

template <class Lock>
void lockPair(benchmark::State& state) {
  static Lock s_lock;
  for (auto _ : state) {
    s_lock.lock();
    s_lock.unlock();
  }
}

// A second thread changes what the peer does: alone in its process, it saves the atomic steps.
template <class Lock>
void lockPairBesideAThread(benchmark::State& state) {
  std::latch done(1);
  std::thread other([&] { done.wait(); });
  lockPair<Lock>(state);
  done.count_down();
  other.join();
}

template <class Lock>
void lockPairNested(benchmark::State& state) {
  static Lock s_lock;
  s_lock.lock();
  for (auto _ : state) {
    s_lock.lock();
    s_lock.unlock();
  }
  s_lock.unlock();
}

BENCHMARK(lockPair<LTLib::Mutex>);
BENCHMARK(lockPair<std::recursive_mutex>);
BENCHMARK(lockPairBesideAThread<LTLib::Mutex>);
BENCHMARK(lockPairBesideAThread<std::recursive_mutex>);
BENCHMARK(lockPairNested<LTLib::Mutex>);
BENCHMARK(lockPairNested<std::recursive_mutex>);
BENCHMARK(lockPair<LTLib::Mutex>)->Threads(2)->UseRealTime();
BENCHMARK(lockPair<std::recursive_mutex>)->Threads(2)->UseRealTime();

void initialised(benchmark::State& state) {
  static constinit ltDoOnce_t s_once;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ltDoOnce(s_once, [] {}));
  }
}

void initialisedByStandard(benchmark::State& state) {
  static std::once_flag s_once;
  for (auto _ : state) {
    std::call_once(s_once, [] {});
    benchmark::ClobberMemory();
  }
}

BENCHMARK(initialised);
BENCHMARK(initialisedByStandard);

void namedMutexPair(benchmark::State& state) {
  LTLib::NamedMutex mutex("ltlib-bench");
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}

BENCHMARK(namedMutexPair);

#if __has_include(<sys/file.h>)
// The least that a lock between processes can cost here: no name, no owner, no re-entry.
void flockPair(benchmark::State& state) {
  char path[] = "/dev/shm/ltlib-bench-XXXXXX";
  const int descriptor = mkostemp(path, O_CLOEXEC);
  unlink(path);
  for (auto _ : state) {
    flock(descriptor, LOCK_EX);
    flock(descriptor, LOCK_UN);
  }
  close(descriptor);
}

BENCHMARK(flockPair);
#endif

void uidGenerate(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(UID::Generate());
  }
}

BENCHMARK(uidGenerate);

#ifdef LTLIB_BENCH_UUID
void uuidGenerateRandom(benchmark::State& state) {
  uuid_t value;
  for (auto _ : state) {
    uuid_generate_random(value);
    benchmark::DoNotOptimize(value);
  }
}

BENCHMARK(uuidGenerateRandom);
#endif

}  // namespace
