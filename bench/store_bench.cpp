// Measures one work of the registry or of a peer, in a process of its own:
//
//   store_bench PEER SHAPE COUNT FOLDER WORK [--once]
//
// The work "prepare" writes the peer's file into the folder; every other one loads it and prints
// lines of a name and a number. Times are nanoseconds for each operation or, of a load, a save or a
// walk, for each value: processor time of the process, but of threads the time that passed.
#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

#include "bench/store_peers.h"

namespace LTLib::Bench {
namespace {

constexpr std::size_t kManyPlaces = 10'000;
constexpr std::size_t kFirstLookups = 1'000;

struct Task {
  std::string shape;
  std::size_t count;
  std::string file;
  double least = 50e6;  // nanoseconds that a repeated operation is measured for
};

double now(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

template <class Work>
double timeOf(Work work) {
  const double begin = now(CLOCK_PROCESS_CPUTIME_ID);
  work();
  return now(CLOCK_PROCESS_CPUTIME_ID) - begin;
}

void report(const char* what, double number) {
  std::printf("%s %.6g\n", what, number);
}

// The time of one pass, from as many as it takes; the first one warms up.
template <class Pass>
double timeOfPass(const Task& task, Pass pass) {
  pass();
  double passes = 0;
  double sum = 0;
  while (passes == 0 || sum < task.least) {
    sum += timeOf(pass);
    ++passes;
  }
  return sum / passes;
}

template <class Step>
void eachOf(const std::vector<Place>& places, Step step) {
  for (const Place& place : places) {
    step(place);
  }
}

template <class Step>
void reportSteps(const Task& task, const char* what, const std::vector<Place>& places, Step step) {
  report(what,
         timeOfPass(task, [&] { eachOf(places, step); }) / static_cast<double>(places.size()));
}

// The time of a pass over everything, for each value.
template <class Pass>
void reportWhole(const Task& task, const char* what, Pass pass) {
  report(what, timeOfPass(task, pass) / static_cast<double>(task.count));
}

// For steps that cannot be done twice.
template <class Step>
void reportOnce(const char* what, const std::vector<Place>& places, Step step) {
  report(what, timeOf([&] { eachOf(places, step); }) / static_cast<double>(places.size()));
}

// Never freed: what is allocated next would sort all the pieces.
const std::vector<Place>& allOf(const Task& task) {
  static const auto& s_all = *new std::vector<Place>(placesOf(task.shape, task.count));
  return s_all;
}

std::vector<Place> manyOf(const Task& task) {
  return someOf(allOf(task), kManyPlaces);
}

std::vector<Place> halfOf(const Task& task) {
  return someOf(allOf(task), std::min(kManyPlaces, task.count / 2));
}

// What the system says about the memory of this process, in bytes.
double memory(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field + ':')) {
      return std::strtod(line.c_str() + field.size() + 1, nullptr) * 1024;
    }
  }
  return 0;
}

// Pages that the process has already, and does not give back.
void warmPages(const Task& task) {
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  std::vector<std::vector<char>> blocks;
  for (std::size_t i = 0; i < task.count; ++i) {
    blocks.emplace_back(1000, 'x');
  }
}

// The load alone, and with the first look-ups, which may have to build what the load put off.
template <class Peer>
void load(const Task& task) {
  const double each = static_cast<double>(task.count);
  std::optional<Peer> peer;
  const double resident = memory("VmRSS");
  const double loaded = timeOf([&] { peer.emplace(task.file); });
  report("process", now(CLOCK_PROCESS_CPUTIME_ID) / each);
  report("load", loaded / each);
  report("memory", (memory("VmRSS") - resident) / each);
  report("peak", (memory("VmHWM") - resident) / each);
  if constexpr (requires(Place place) { peer->read(place); }) {
    const std::vector<Place> places = someOf(allOf(task), kFirstLookups);
    const double looked =
        timeOf([&] { eachOf(places, [&](const Place& place) { demand(peer->read(place) > 0); }); });
    report("load_and_look", (loaded + looked) / each);
  }
}

template <class Peer>
void loadWarm(const Task& task) {
  warmPages(task);
  report("load", timeOf([&] { Peer peer(task.file); }) / static_cast<double>(task.count));
}

void readByThreads(const Task& task, const char* what, const std::vector<Registry>& roots,
                   std::size_t threads) {
  const std::vector<Place> places = manyOf(task);
  std::atomic<bool> stop = false;
  std::atomic<std::size_t> done = 0;
  const auto run = [&](std::size_t number) {
    const Registry& root = roots[number % roots.size()];
    std::size_t count = 0;
    for (std::size_t at = number * places.size() / threads; !stop.load(); ++count) {
      demand(root.read(places[at]) > 0);
      at = at + 1 < places.size() ? at + 1 : 0;
    }
    done += count;
  };
  const double begin = now(CLOCK_MONOTONIC);
  std::vector<std::jthread> running;
  for (std::size_t i = 0; i < threads; ++i) {
    running.emplace_back(run, i);
  }
  std::this_thread::sleep_for(std::chrono::nanoseconds(static_cast<long>(task.least) * 4));
  stop = true;
  running.clear();
  const double passed = now(CLOCK_MONOTONIC) - begin;
  report((what + std::to_string(threads)).c_str(), passed / static_cast<double>(done.load()));
}

void readByThreads(const Task& task) {
  std::vector<Registry> roots;
  roots.emplace_back(task.file);
  readByThreads(task, "same", roots, 1);  // warms up
  for (const std::size_t threads : {1, 2, 4}) {
    readByThreads(task, "same", roots, threads);
  }
  for (const enumRegRoot root : {REG_ROOT_CURRENT_USER, REG_ROOT_USERS, REG_ROOT_CURRENT_CONFIG}) {
    roots.emplace_back(task.file, root);
  }
  for (const std::size_t threads : {1, 2, 4}) {
    readByThreads(task, "roots", roots, threads);
  }
}

// The works of a loaded peer; false for one that is not among them, or that the peer has not.

template <class Peer>
bool workOnValues(const Task& task, std::string_view name, Peer& peer) {
  if (name == "read") {
    reportSteps(task, "read", manyOf(task), [&](const Place& p) { demand(peer.read(p) > 0); });
  } else if (name == "set") {
    reportSteps(task, "set", manyOf(task), [&](const Place& p) { peer.set(p, "another text"); });
  } else if (name == "insert") {
    reportOnce("insert", besides(manyOf(task)),
               [&](const Place& place) { peer.set(place, place.text.c_str()); });
  } else if (name == "remove") {
    reportOnce("remove", halfOf(task), [&](const Place& place) { peer.removeValue(place); });
  } else {
    return false;
  }
  return true;
}

template <class Peer>
bool walk(const Task& task, std::string_view name, Peer& peer) {
  const std::string key = "Software\\Example";
  if (name == "walk_values") {
    reportWhole(task, "walk_values", [&] { demand(peer.walkValues(key) >= task.count); });
  } else if (name == "walk_keys") {
    reportWhole(task, "walk_keys", [&] { demand(peer.walkKeys(key) >= task.count); });
  } else {
    return false;
  }
  return true;
}

template <class Peer>
bool removeKeys(const Task& task, std::string_view name, Peer& peer) {
  std::vector<Place> places;
  if (name == "remove_keys") {
    places = someOf(allOf(task), std::min<std::size_t>(1'000, task.count / 2));
  } else if (name == "remove_keys_from_last") {
    places = allOf(task);
    std::reverse(places.begin(), places.end());
  } else {
    return false;
  }
  reportOnce(std::string(name).c_str(), places,
             [&](const Place& place) { peer.removeKey(place.path); });
  return true;
}

template <class Peer>
bool work(const Task& task, std::string_view name) {
  Peer& peer = *new Peer(task.file);  // for good: the end of some would change their file
  if constexpr (requires(Place place) { peer.read(place); }) {
    if (workOnValues(task, name, peer) || walk(task, name, peer)) {
      return true;
    }
  }
  if constexpr (requires { peer.save(""); }) {
    if (name == "save") {
      reportWhole(task, "save", [&] { peer.save(task.file + ".saved"); });
      return true;
    }
  }
  if constexpr (requires { peer.removeKey(""); }) {
    return removeKeys(task, name, peer);
  }
  return false;
}

bool workOfRegistry(const Task& task, std::string_view name) {
  if (name == "threads") {
    readByThreads(task);
    return true;
  }
  if (name == "read_by_object") {
    const Registry registry(task.file);
    const std::vector<Place> places = manyOf(task);
    reportSteps(task, "read", places, [&](const Place& p) { demand(registry.read(p) > 0); });
    reportSteps(task, "read_by_object", places,
                [&](const Place& p) { demand(registry.readByObject(p) > 0); });
    reportSteps(task, "expand_path", places, [](const Place& p) {
      std::string path = p.path;
      demand(QSExpandString(path) == 0);
    });
    return true;
  }
  if (name == "remove_branch") {
    const Registry registry(task.file);
    report("remove_branch", timeOf([&] { registry.removeBranch("Software\\a"); }));
    return true;
  }
  return work<Registry>(task, name);
}

template <class Peer>
bool run(const Task& task, std::string_view name) {
  if (name == "prepare") {
    Peer::writeFile(task.file, allOf(task));
  } else if (name == "load") {
    load<Peer>(task);
  } else if (name == "load_warm") {
    loadWarm<Peer>(task);
  } else if constexpr (std::is_same_v<Peer, Registry>) {
    return workOfRegistry(task, name);
  } else {
    return work<Peer>(task, name);
  }
  return true;
}

struct Entry {
  std::string_view name;
  bool (*run)(const Task& task, std::string_view name);
};

const Entry kPeers[] = {
    {"ltlib", run<Registry>},
    {"bytes", run<Bytes>},
#ifdef LTLIB_BENCH_GLIB_2_0
    {"glib", run<KeyFile>},
#endif
#ifdef LTLIB_BENCH_QT5CORE
    {"qsettings", run<Settings>},
#endif
#ifdef LTLIB_BENCH_BOOST_PROPERTY_TREE_PTREE_HPP
    {"ptree_info", run<PropertyTree>},
    {"ptree_ini", run<PropertyTreeIni>},
#endif
#ifdef LTLIB_BENCH_RAPIDJSON_DOCUMENT_H
    {"rapidjson", run<Json>},
#endif
};

int usage() {
  std::fputs("usage: store_bench PEER SHAPE COUNT FOLDER WORK [--once]\npeers:", stderr);
  for (const Entry& entry : kPeers) {
    std::printf("%s\n", entry.name.data());
  }
  return 2;
}

}  // namespace
}  // namespace LTLib::Bench

int main(int count, char** words) {
  using namespace LTLib::Bench;
  if (count < 6) {
    return usage();
  }
  const std::string peer = words[1];
  Task task{words[2], std::strtoull(words[3], nullptr, 10), {}};
  task.file = std::string(words[4]) + '/' + peer + '_' + words[2] + '_' + words[3];
  if (count > 6) {
    task.least = 1e6;
  }
  try {
    for (const Entry& entry : kPeers) {
      if (entry.name == peer && entry.run(task, words[5])) {
        return 0;
      }
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return usage();
}
