// The foundation's locks, one-time initialisation and identifiers, each beside its peers.
#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <latch>
#include <new>
#include <string>
#include <thread>

#include "bench/lock_peers.h"
#include "ltlib/ltlib.h"

#ifdef LTLIB_BENCH_UUID
#include <uuid.h>
#endif
#ifdef LTLIB_BENCH_BOOST_UUID_RANDOM_GENERATOR_HPP
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/string_generator.hpp>
#include <boost/uuid/uuid_io.hpp>
#endif

namespace {

using namespace LTLib::Bench;

template <class Lock>
void lockPair(benchmark::State& state) {
  static Lock& s_lock = *new Lock;
  for (auto _ : state) {
    s_lock.lock();
    s_lock.unlock();
  }
}

// A second thread changes what some do: alone in its process, they save the atomic steps.
template <class Lock>
void lockPairBesideAThread(benchmark::State& state) {
  std::latch done(1);
  const std::jthread other([&] { done.wait(); });
  lockPair<Lock>(state);
  done.count_down();
}

template <class Lock>
void readPair(benchmark::State& state) {
  static Lock& s_lock = *new Lock;
  for (auto _ : state) {
    s_lock.lock_shared();
    s_lock.unlock_shared();
  }
}

// In this process and in a child, both at it at the same time.
template <class Lock>
void lockPairInTwoProcesses(benchmark::State& state) {
  constexpr int kPairs = 20'000;  // long enough for both to run at once on a busy machine
  void* const shared = mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  auto& ready = *new (shared) std::atomic<int>;
  for (auto _ : state) {
    ready = 0;
    const pid_t child = fork();
    Lock lock;
    ++ready;
    while (ready < 2) {
    }
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < kPairs; ++i) {
      lock.lock();
      lock.unlock();
    }
    if (child == 0) {
      std::_Exit(EXIT_SUCCESS);
    }
    waitpid(child, nullptr, 0);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    state.SetIterationTime(passed.count() / (2 * kPairs));
  }
  munmap(shared, sizeof(std::atomic<int>));
}

#define THREAD_LOCK(Lock)                 \
  BENCHMARK(lockPair<Lock>);              \
  BENCHMARK(lockPairBesideAThread<Lock>); \
  BENCHMARK(lockPair<Lock>)->Threads(2)->UseRealTime();
#define READER_WRITER_LOCK(Lock) \
  THREAD_LOCK(Lock)              \
  BENCHMARK(readPair<Lock>);     \
  BENCHMARK(readPair<Lock>)->Threads(2)->UseRealTime();
#define PROCESS_LOCK(Lock)   \
  BENCHMARK(lockPair<Lock>); \
  BENCHMARK(lockPairInTwoProcesses<Lock>)->UseManualTime()->Iterations(1)->Repetitions(3);

THREAD_LOCK(LTLib::Mutex)
THREAD_LOCK(std::mutex)
THREAD_LOCK(std::recursive_mutex)
THREAD_LOCK(PthreadMutex)
READER_WRITER_LOCK(OwnRWLock)
READER_WRITER_LOCK(std::shared_mutex)
READER_WRITER_LOCK(PthreadRWLock)
#ifdef LTLIB_BENCH_GLIB_2_0
THREAD_LOCK(GLibMutex)
READER_WRITER_LOCK(GLibRWLock)
#endif
#ifdef LTLIB_BENCH_QT5CORE
THREAD_LOCK(QMutex)
THREAD_LOCK(QRecursiveMutex)
READER_WRITER_LOCK(QtRWLock)
#endif
PROCESS_LOCK(OwnNamedMutex)
PROCESS_LOCK(Flock)
#ifdef LTLIB_BENCH_BOOST_INTERPROCESS_SYNC_NAMED_MUTEX_HPP
PROCESS_LOCK(BoostNamedMutex)
#endif

void onceByLibrary(benchmark::State& state) {
  static constinit ltDoOnce_t s_once;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ltDoOnce(s_once, [] {}));
  }
}

void onceByCallOnce(benchmark::State& state) {
  static std::once_flag s_once;
  for (auto _ : state) {
    std::call_once(s_once, [] {});
    benchmark::ClobberMemory();
  }
}

int madeAtRunTime() {
  static const int s_made = std::rand();
  return s_made;
}

void onceByStatic(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(madeAtRunTime());
    benchmark::ClobberMemory();
  }
}

BENCHMARK(onceByLibrary);
BENCHMARK(onceByCallOnce);
BENCHMARK(onceByStatic);

// The identifiers of the library and of its peers.
struct OwnIdentifier {
  static constexpr std::size_t kTextSize = 37;
  UID value = UID::Generate();
  void make() { value = UID::Generate(); }
  void print(char* text) const { value.toString(text, static_cast<int>(kTextSize)); }
  void parse(const std::string& text) { value.fromString(text); }
};

#ifdef LTLIB_BENCH_UUID
struct LibuuidIdentifier {
  static constexpr std::size_t kTextSize = UUID_STR_LEN;
  uuid_t value{};
  void make() { uuid_generate_random(value); }
  void print(char* text) const { uuid_unparse(value, text); }
  void parse(const std::string& text) { uuid_parse(text.c_str(), value); }
};
#endif

#ifdef LTLIB_BENCH_BOOST_UUID_RANDOM_GENERATOR_HPP
struct BoostIdentifier {
  static constexpr std::size_t kTextSize = 37;
  boost::uuids::random_generator_pure generate;
  boost::uuids::uuid value{};
  void make() { value = generate(); }
  void print(char* text) const { to_string(value).copy(text, kTextSize - 1); }
  void parse(const std::string& text) { value = boost::uuids::string_generator()(text); }
};
#endif

template <class Identifier>
void makeIdentifier(benchmark::State& state) {
  Identifier identifier;
  for (auto _ : state) {
    identifier.make();
    benchmark::DoNotOptimize(identifier);
  }
}

template <class Identifier>
void printIdentifier(benchmark::State& state) {
  Identifier identifier;
  identifier.make();
  char text[Identifier::kTextSize];
  for (auto _ : state) {
    benchmark::DoNotOptimize(identifier);
    identifier.print(text);
    benchmark::DoNotOptimize(text);
  }
}

template <class Identifier>
void parseIdentifier(benchmark::State& state) {
  Identifier identifier;
  identifier.make();
  char printed[Identifier::kTextSize];
  identifier.print(printed);
  std::string text(printed, Identifier::kTextSize - 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    identifier.parse(text);
    benchmark::DoNotOptimize(identifier);
  }
}

#define IDENTIFIER(Identifier)            \
  BENCHMARK(makeIdentifier<Identifier>);  \
  BENCHMARK(printIdentifier<Identifier>); \
  BENCHMARK(parseIdentifier<Identifier>);

IDENTIFIER(OwnIdentifier)
#ifdef LTLIB_BENCH_UUID
IDENTIFIER(LibuuidIdentifier)
#endif
#ifdef LTLIB_BENCH_BOOST_UUID_RANDOM_GENERATOR_HPP
IDENTIFIER(BoostIdentifier)
#endif

}  // namespace
