// The file registry beside its peers, on the same data: loading, reading, setting, enumerating,
// removing and saving. Times are processor times; "per_value" and its kin are seconds for each
// value.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>

#include "bench/registry_peers.h"

using namespace LTLib::Bench;

namespace {

std::size_t countOf(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(1));
}

// The data that the first two arguments of the benchmark ask for.
template <class Peer>
std::vector<Place> prepare(const benchmark::State& state) {
  std::vector<Place> places = placesOf(static_cast<Shape>(state.range(0)), countOf(state));
  Peer::writeFile(places);
  return places;
}

void reportPerValue(benchmark::State& state) {
  state.counters["per_value"] = benchmark::Counter(
      static_cast<double>(countOf(state)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

template <class Peer>
void load(benchmark::State& state) {
  prepare<Peer>(state);
  for (auto _ : state) {
    Peer::load();
    state.PauseTiming();
    Peer::forget();
    state.ResumeTiming();
  }
  reportPerValue(state);
}

// Places all over the data, so that no cache holds just the one that is asked for.
std::vector<Place> someOf(std::vector<Place> places) {
  std::shuffle(places.begin(), places.end(), std::mt19937(1));
  places.resize(std::min<std::size_t>(places.size(), 1000));
  return places;
}

template <class Peer>
void read(benchmark::State& state) {
  const std::vector<Place> places = someOf(prepare<Peer>(state));
  Peer::load();
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Peer::read(places[next]));
    next = next + 1 < places.size() ? next + 1 : 0;
  }
  Peer::forget();
}

template <class Peer>
void set(benchmark::State& state) {
  const std::vector<Place> places = someOf(prepare<Peer>(state));
  Peer::load();
  std::size_t next = 0;
  for (auto _ : state) {
    Peer::set(places[next], "another text");
    next = next + 1 < places.size() ? next + 1 : 0;
  }
  Peer::forget();
}

template <class Peer>
void enumerate(benchmark::State& state) {
  const std::vector<Place> places = prepare<Peer>(state);
  Peer::load();
  for (auto _ : state) {
    if (Peer::enumerate(places.front().path) != countOf(state)) {
      state.SkipWithError("the enumeration is not whole");
    }
  }
  Peer::forget();
  reportPerValue(state);
}

// A key goes from among its siblings, and comes again behind them.
void renewKey(benchmark::State& state) {
  const std::vector<Place> places = someOf(prepare<Store>(state));
  Store::load();
  std::size_t next = 0;
  for (auto _ : state) {
    Store::removeKey(places[next].path);
    Store::set(places[next], places[next].text);
    next = next + 1 < places.size() ? next + 1 : 0;
  }
  Store::forget();
}

template <class Peer>
void save(benchmark::State& state) {
  prepare<Peer>(state);
  Peer::load();
  for (auto _ : state) {
    Peer::save();
  }
  Peer::forget();
  reportPerValue(state);
}

void shapesToLoad(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"shape", "values"})->Unit(benchmark::kMillisecond);
  for (const Shape shape : {kOneKey, kSiblings, kTree}) {
    for (const int values : {1'000, 10'000, 100'000}) {
      bench->Args({shape, values});
    }
  }
}

void sizesOfTree(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"shape", "values"});
  for (const int values : {10, 1'000, 100'000}) {
    bench->Args({kTree, values});
  }
}

void sizesOfKey(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"shape", "values"});
  for (const int values : {100, 1'000, 10'000}) {
    bench->Args({kOneKey, values});
  }
}

void largeTree(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"shape", "values"})->Args({kTree, 100'000})->Unit(benchmark::kMillisecond);
}

#ifdef LTLIB_BENCH_GLIB_2_0
#define WITH_KEY_FILE(function, sizes) BENCHMARK(function<KeyFile>)->Apply(sizes);
#else
#define WITH_KEY_FILE(function, sizes)
#endif
#ifdef LTLIB_BENCH_PTREE
#define WITH_PTREE(function, sizes) BENCHMARK(function<PropertyTree>)->Apply(sizes);
#else
#define WITH_PTREE(function, sizes)
#endif
#define WITH_PEERS(function, sizes)         \
  BENCHMARK(function<Store>)->Apply(sizes); \
  WITH_KEY_FILE(function, sizes)            \
  WITH_PTREE(function, sizes)

WITH_PEERS(load, shapesToLoad)
BENCHMARK(load<Store>)
    ->ArgNames({"shape", "values"})
    ->Args({kTree, 1'000'000})
    ->Unit(benchmark::kMillisecond);
#ifdef LTLIB_BENCH_PTREE
BENCHMARK(load<PropertyTreeIni>)->Apply(shapesToLoad);
#endif
WITH_PEERS(read, sizesOfTree)
WITH_PEERS(set, sizesOfTree)
WITH_PEERS(enumerate, sizesOfKey)
WITH_PEERS(save, largeTree)
BENCHMARK(renewKey)
    ->ArgNames({"shape", "values"})
    ->Args({kSiblings, 1'000})
    ->Args({kSiblings, 1'000'000});
BENCHMARK(save<StoreLineByLine>)->Apply(largeTree);
BENCHMARK(save<StoreToDevice>)->Apply(largeTree);

}  // namespace
