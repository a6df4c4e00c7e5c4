// Creating and releasing an instance of a class that is loaded already, among 1,000 classes whose
// order is shuffled, beside the peers.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench/component_peer.h"
#include "ltlib/ltlib.h"

#ifdef LTLIB_BENCH_PEER_LIBRARY
#include <Poco/ClassLoader.h>
#endif

namespace {

const std::vector<std::string>& shuffledIds() {
  static const std::vector<std::string> s_ids = [] {
    std::vector<std::string> ids;
    for (int i = 0; i < kPeerClasses; ++i) {
      ids.push_back(peerClass(i));
    }
    std::shuffle(ids.begin(), ids.end(), std::mt19937(1));
    return ids;
  }();
  return s_ids;
}

// Runs `create` for one class after the other.
template <class Create>
void eachClass(benchmark::State& state, Create create) {
  const std::vector<std::string>& ids = shuffledIds();
  std::size_t at = 0;
  for (auto _ : state) {
    create(ids[at]);
    at = at + 1 < ids.size() ? at + 1 : 0;
  }
}

void createAndRelease(const std::string& id) {
  void* out = nullptr;
  if (iqs_CoCreateInstance(nullptr, id.c_str(), &out) != 0) {
    std::fputs("no instance\n", stderr);
    std::exit(EXIT_FAILURE);
  }
  static_cast<iqsUnknown*>(out)->Release();
}

// The registrars of the program itself; each class is loaded by its first creation.
void loadAllClasses() {
  static std::vector<std::unique_ptr<iqsDllLoader::Registrar>> s_registrars;
  if (!s_registrars.empty()) {
    return;
  }
  for (const std::string& id : shuffledIds()) {
    CQSRegValue(REG_ROOT_LOCAL_MACHINE, ("%CLASSID%\\" + id).c_str(), "InprocServer")
        .Write(LTLIB_BENCH_LIBRARY);
    s_registrars.push_back(std::make_unique<iqsDllLoader::Registrar>(
        id.c_str(), [](iqsUnknown* outer, iqsCUnknown** object) -> QSResult {
          *object = new iqsCUnknown(outer);
          return LTLib::kSuccess;
        }));
    createAndRelease(id);
  }
}

void createInstance(benchmark::State& state) {
  if (state.thread_index() == 0) {
    loadAllClasses();
  }
  eachClass(state, createAndRelease);
}

BENCHMARK(createInstance);
BENCHMARK(createInstance)->Threads(2)->UseRealTime();

// The plain form, with its two locks for each creation and each release.
void createPlainInstance(benchmark::State& state) {
  CQSRegValue(REG_ROOT_LOCAL_MACHINE, "%CLASSID%\\Plain", "InprocServer")
      .Write(LTLIB_BENCH_LIBRARY);
  const iqsDllLoader::Registrar registrar(
      "Plain", []() -> void* { return new int(); },
      [](void* made) { delete static_cast<int*>(made); });
  iqsDllLoader::FactoryDll* const record = iqsDllLoader::Load("Plain", nullptr);
  for (auto _ : state) {
    iqsDllLoader::ReleaseInstance(record, iqsDllLoader::CreateInstance(record));
  }
  iqsDllLoader::Unload(record);
}

BENCHMARK(createPlainInstance);

// The least that a creation by name can cost: no library, no lock, one count.
struct BareObject {
  virtual ~BareObject() = default;
  std::atomic<std::uint32_t> count{1};
};

struct BareFactory {
  virtual ~BareFactory() = default;
  virtual BareObject* create() { return new BareObject; }
};

template <class Map>
void bareCreation(benchmark::State& state) {
  static Map s_factories;
  for (const std::string& id : shuffledIds()) {
    s_factories[id] = std::make_unique<BareFactory>();
  }
  eachClass(state, [](const std::string& id) {
    BareFactory* factory = s_factories.find(id)->second.get();
    benchmark::DoNotOptimize(factory);
    BareObject* object = factory->create();
    benchmark::DoNotOptimize(object);
    if (--object->count == 0) {
      delete object;
    }
  });
}

BENCHMARK(bareCreation<std::map<std::string, std::unique_ptr<BareFactory>>>);
BENCHMARK(bareCreation<std::unordered_map<std::string, std::unique_ptr<BareFactory>>>);

#ifdef LTLIB_BENCH_PEER_LIBRARY
void classLoader(benchmark::State& state) {
  static Poco::ClassLoader<PeerObject> s_loader;
  if (state.thread_index() == 0 && !s_loader.isLibraryLoaded(LTLIB_BENCH_PEER_LIBRARY)) {
    s_loader.loadLibrary(LTLIB_BENCH_PEER_LIBRARY);
  }
  eachClass(state, [](const std::string& id) {
    PeerObject* object = s_loader.create(id);
    benchmark::DoNotOptimize(object);
    delete object;
  });
}

BENCHMARK(classLoader);
BENCHMARK(classLoader)->Threads(2)->UseRealTime();
#endif

}  // namespace
