// Creating and releasing an instance of a class that is loaded already, among many classes whose
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
#ifdef LTLIB_BENCH_GOBJECT_2_0
#include <glib-object.h>
#endif

namespace {

std::vector<std::string> shuffledIds(int classes) {
  std::vector<std::string> ids;
  for (int i = 0; i < classes; ++i) {
    ids.push_back(peerClass(i));
  }
  std::shuffle(ids.begin(), ids.end(), std::mt19937(1));
  return ids;
}

// One class after the other, by the ways that follow.
template <class Way, int classes>
void instanceAmong(benchmark::State& state) {
  static const std::vector<std::string> s_ids = shuffledIds(classes);
  static Way s_way(s_ids);
  std::size_t at = 0;
  for (auto _ : state) {
    s_way.createAndRelease(s_ids[at]);
    at = at + 1 < s_ids.size() ? at + 1 : 0;
  }
}

// The registrars sit in the program itself; the first creation of each class loads it.
class Library {
 public:
  explicit Library(const std::vector<std::string>& ids) {
    for (const std::string& id : ids) {
      CQSRegValue(REG_ROOT_LOCAL_MACHINE, ("%CLASSID%\\" + id).c_str(), "InprocServer")
          .Write(LTLIB_BENCH_LIBRARY);
      m_registrars.push_back(std::make_unique<iqsDllLoader::Registrar>(id.c_str(), create));
      createAndRelease(id);
    }
  }

  static void createAndRelease(const std::string& id) {
    void* out = nullptr;
    if (iqs_CoCreateInstance(nullptr, id.c_str(), &out) != 0) {
      std::fputs("no instance\n", stderr);
      std::exit(EXIT_FAILURE);
    }
    static_cast<iqsUnknown*>(out)->Release();
  }

  void renewRegistrar(std::size_t at, const std::string& id) {
    m_registrars[at].reset();
    m_registrars[at] = std::make_unique<iqsDllLoader::Registrar>(id.c_str(), create);
  }

 private:
  static QSResult create(iqsUnknown* outer, iqsCUnknown** out) {
    *out = new iqsCUnknown(outer);
    return LTLib::kSuccess;
  }

  std::vector<std::unique_ptr<iqsDllLoader::Registrar>> m_registrars;
};

// The least that a creation by name can cost: no library, no lock, one count.
struct BareObject {
  virtual ~BareObject() = default;
  std::atomic<std::uint32_t> count{1};
};

struct BareFactory {
  virtual ~BareFactory() = default;
  virtual BareObject* create() { return new BareObject; }
};

template <template <class...> class Map>
class Bare {
 public:
  explicit Bare(const std::vector<std::string>& ids) {
    for (const std::string& id : ids) {
      m_factories[id] = std::make_unique<BareFactory>();
    }
  }

  // What the compiler is not told, it cannot leave out.
  void createAndRelease(const std::string& id) {
    BareFactory* factory = m_factories.find(id)->second.get();
    benchmark::DoNotOptimize(factory);
    BareObject* object = factory->create();
    benchmark::DoNotOptimize(object);
    if (--object->count == 0) {
      delete object;
    }
  }

 private:
  Map<std::string, std::unique_ptr<BareFactory>> m_factories;
};

using BareTree = Bare<std::map>;
using BareHash = Bare<std::unordered_map>;

#ifdef LTLIB_BENCH_PEER_LIBRARY
class PocoClassLoader {
 public:
  explicit PocoClassLoader(const std::vector<std::string>& /*ids*/) {
    m_loader.loadLibrary(LTLIB_BENCH_PEER_LIBRARY);
  }

  void createAndRelease(const std::string& id) {
    PeerObject* object = m_loader.create(id);
    benchmark::DoNotOptimize(object);
    delete object;
  }

 private:
  Poco::ClassLoader<PeerObject> m_loader;
};
#endif

#ifdef LTLIB_BENCH_GOBJECT_2_0
// One type for each name.
class GObjectTypes {
 public:
  explicit GObjectTypes(const std::vector<std::string>& ids) {
    for (const std::string& id : ids) {
      g_type_register_static_simple(G_TYPE_OBJECT, typeName(id).c_str(), sizeof(GObjectClass),
                                    nullptr, sizeof(GObject), nullptr, GTypeFlags());
      m_names[id] = typeName(id);
    }
  }

  void createAndRelease(const std::string& id) const {
    const GType type = g_type_from_name(m_names.find(id)->second.c_str());
    auto* object = static_cast<GObject*>(g_object_new(type, nullptr));
    benchmark::DoNotOptimize(object);
    g_object_unref(object);
  }

 private:
  // A dot is no letter of its names.
  static std::string typeName(std::string id) {
    std::replace(id.begin(), id.end(), '.', '_');
    return id;
  }

  std::unordered_map<std::string, std::string> m_names;
};
#endif

BENCHMARK(instanceAmong<Library, kPeerClasses>);
BENCHMARK(instanceAmong<BareTree, kPeerClasses>);
BENCHMARK(instanceAmong<BareHash, kPeerClasses>);
BENCHMARK(instanceAmong<Library, kPeerClasses>)->Threads(2)->UseRealTime();
#ifdef LTLIB_BENCH_PEER_LIBRARY
BENCHMARK(instanceAmong<PocoClassLoader, kPeerClasses>);
BENCHMARK(instanceAmong<PocoClassLoader, kPeerClasses>)->Threads(2)->UseRealTime();
#endif
#ifdef LTLIB_BENCH_GOBJECT_2_0
BENCHMARK(instanceAmong<GObjectTypes, kPeerClasses>);
#endif
BENCHMARK(instanceAmong<Library, 100000>);
BENCHMARK(instanceAmong<BareHash, 100000>);

// A registrar goes and comes again among that many.
template <int classes>
void registrarAmong(benchmark::State& state) {
  static const std::vector<std::string> s_ids = shuffledIds(classes);
  static Library s_library(s_ids);
  std::size_t at = 0;
  for (auto _ : state) {
    s_library.renewRegistrar(at, s_ids[at]);
    at = at + 1 < s_ids.size() ? at + 1 : 0;
  }
}

BENCHMARK(registrarAmong<kPeerClasses>);
BENCHMARK(registrarAmong<100000>);

}  // namespace
