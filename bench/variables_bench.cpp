// Expansion of variables beside plain single-pass replacement, which knows neither nesting nor
// cycles.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#include "ltlib/ltlib.h"

#ifdef LTLIB_BENCH_ABSL_STRINGS
#include <absl/strings/str_replace.h>
#endif

namespace {

QSREGISTRYVARIABLE s_table[] = {
    {"Alpha", "first"}, {"Beta", "second value"}, {"Gamma", "g"}, {nullptr, nullptr}};
const QSVariableRegistrar s_registrar(s_table);

std::string references(std::int64_t count) {
  static const char* const kReferences[] = {"%Alpha%/", "%Beta%/", "text %Gamma%/"};
  std::string text;
  for (std::int64_t i = 0; i < count; ++i) {
    text += kReferences[i % 3];
  }
  return text;
}

// Each reference is a leaf, so that the peers do the same work.
void expandLeaves(benchmark::State& state) {
  const std::string source = references(state.range(0));
  for (auto _ : state) {
    std::string text = source;
    benchmark::DoNotOptimize(QSExpandString(text));
    benchmark::DoNotOptimize(text.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

std::string replacedOnce(const std::map<std::string, std::string, std::less<>>& table,
                         std::string_view text) {
  std::string made;
  std::size_t from = 0;
  for (;;) {
    const std::size_t first = text.find('%', from);
    const std::size_t second = text.find('%', first + 1);
    if (first == std::string_view::npos || second == std::string_view::npos) {
      return made.append(text, from);
    }
    made.append(text, from, first - from);
    made.append(table.find(text.substr(first + 1, second - first - 1))->second);
    from = second + 1;
  }
}

void replaceOnceByHand(benchmark::State& state) {
  const std::map<std::string, std::string, std::less<>> table = {
      {"Alpha", "first"}, {"Beta", "second value"}, {"Gamma", "g"}};
  const std::string source = references(state.range(0));
  for (auto _ : state) {
    std::string text = replacedOnce(table, source);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(expandLeaves)->Name("expandLeaves<QSExpandString>")->Arg(1)->Arg(100)->Arg(100000);
BENCHMARK(replaceOnceByHand)->Name("expandLeaves<by hand>")->Arg(1)->Arg(100)->Arg(100000);

#ifdef LTLIB_BENCH_ABSL_STRINGS
void replaceAllByAbsl(benchmark::State& state) {
  const std::string source = references(state.range(0));
  for (auto _ : state) {
    std::string text = absl::StrReplaceAll(
        source, {{"%Alpha%", "first"}, {"%Beta%", "second value"}, {"%Gamma%", "g"}});
    benchmark::DoNotOptimize(text.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(replaceAllByAbsl)
    ->Name("expandLeaves<absl::StrReplaceAll>")
    ->Arg(1)
    ->Arg(100)
    ->Arg(100000);
#endif

// The path of a class, as the registry objects ask for it: six levels deep.
void expandClassPath(benchmark::State& state) {
  for (auto _ : state) {
    std::string text = "%CLASSID%\\{0F5A1C2E}";
    benchmark::DoNotOptimize(QSExpandString(text));
  }
}
BENCHMARK(expandClassPath)->ThreadRange(1, 2)->UseRealTime();

void passPlainPath(benchmark::State& state) {
  std::string text = "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared";
  for (auto _ : state) {
    benchmark::DoNotOptimize(QSExpandString(text));
  }
}
BENCHMARK(passPlainPath);

// A nested name comes back again and again.
void expandNestedNames(benchmark::State& state) {
  std::string source;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    source += "%SharedRoot%;";
  }
  for (auto _ : state) {
    std::string text = source;
    benchmark::DoNotOptimize(QSExpandString(text));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(expandNestedNames)->Arg(100)->Arg(100000);

// Reader-writer locks, alone and beside a second reader.
struct StandardLock {
  void readLock() { lock.lock_shared(); }
  void writeLock() { lock.lock(); }
  void unlockRead() { lock.unlock_shared(); }
  void unlockWrite() { lock.unlock(); }
  std::shared_mutex lock;
};

struct OwnLock {
  void readLock() { lock.readLock(); }
  void writeLock() { lock.writeLock(); }
  void unlockRead() { lock.unlock(); }
  void unlockWrite() { lock.unlock(); }
  LTLib::RWLock lock;
};

template <class Lock>
void readPair(benchmark::State& state) {
  static Lock s_lock;
  for (auto _ : state) {
    s_lock.readLock();
    s_lock.unlockRead();
  }
}

template <class Lock>
void writePair(benchmark::State& state) {
  static Lock s_lock;
  for (auto _ : state) {
    s_lock.writeLock();
    s_lock.unlockWrite();
  }
}

BENCHMARK(readPair<OwnLock>)->ThreadRange(1, 2)->UseRealTime();
BENCHMARK(readPair<StandardLock>)->ThreadRange(1, 2)->UseRealTime();
BENCHMARK(writePair<OwnLock>)->ThreadRange(1, 2)->UseRealTime();
BENCHMARK(writePair<StandardLock>)->ThreadRange(1, 2)->UseRealTime();

}  // namespace
