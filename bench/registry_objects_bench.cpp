// Values read through the registry objects, beside the settings classes of other libraries on the
// same data: a thousand texts and a thousand numbers, ten of each in a key. "HeldObject" asks one
// object after another for its values, as the peers are asked, and "FreshObject" makes one for each
// value, from a plain path or from one with a variable.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "ltlib/ltlib.h"

#ifdef LTLIB_BENCH_GLIB_2_0
#include <glib.h>
#endif
#ifdef LTLIB_BENCH_QT5CORE
#include <QSettings>
#include <QTemporaryDir>
#endif

namespace {

constexpr enumRegRoot kRoot = REG_ROOT_CURRENT_USER;
constexpr int kKeys = 100;
constexpr int kNamesOfKey = 10;

struct Place {
  std::size_t index;  // of the key
  std::string key;    // below the root of all
  std::string text;
  std::string number;
};

// In an order that no cache knows.
std::vector<Place> places() {
  std::vector<Place> all;
  for (int i = 0; i < kKeys * kNamesOfKey; ++i) {
    const std::string index = std::to_string(i);
    const int key = i / kNamesOfKey;
    all.push_back({static_cast<std::size_t>(key), "Key " + std::to_string(key), "Text " + index,
                   "Number " + index});
  }
  std::shuffle(all.begin(), all.end(), std::mt19937(1));
  return all;
}

const std::vector<Place>& allPlaces() {
  static const std::vector<Place> s_all = places();
  return s_all;
}

constexpr char kText[] = "the text of a setting";
constexpr unsigned long kNumber = 123456;

template <class Read>
void eachPlace(benchmark::State& state, Read read) {
  const std::vector<Place>& all = allPlaces();
  std::size_t next = 0;
  for (auto _ : state) {
    read(all[next]);
    next = next + 1 < all.size() ? next + 1 : 0;
  }
}

void demand(bool holds) {
  if (!holds) {
    throw std::runtime_error("a measured operation failed");
  }
}

class Folder {
 public:
  Folder() {
    std::random_device random;
    do {
      m_path = std::filesystem::temp_directory_path() / ("ltlib_bench_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(m_path));
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  [[nodiscard]] std::string assignment(const char* root) const {
    return std::string(root) + '=' + (m_path / root).string();
  }

 private:
  std::filesystem::path m_path;
};

// The plain path of all keys, with their values in it.
const std::string& prepared() {
  static const std::string s_root = [] {
    // Stores that are not there yet, in a folder of their own.
    static const Folder s_folder;
    static std::string s_assignments[] = {s_folder.assignment("HKEY_CURRENT_USER"),
                                          s_folder.assignment("HKEY_LOCAL_MACHINE")};
    for (std::string& assignment : s_assignments) {
      ::putenv(assignment.data());
    }
    std::string root = "%SharedRoot%";
    demand(QSExpandString(root) == 0);
    for (const Place& place : allPlaces()) {
      CQSRegValue value(kRoot, (root + '\\' + place.key).c_str(), nullptr);
      demand(value.Write(place.text.c_str(), kText) == 0);
      demand(value.Write(place.number.c_str(), kNumber) == 0);
    }
    return root;
  }();
  return s_root;
}

std::vector<std::string> pathsBelow(const std::string& root) {
  std::vector<std::string> paths;
  for (const Place& place : allPlaces()) {
    paths.push_back(root + '\\' + place.key);
  }
  return paths;
}

void readTextOfHeldObject(benchmark::State& state) {
  std::vector<CQSRegValue> values(static_cast<std::size_t>(kKeys));
  for (std::size_t key = 0; key < values.size(); ++key) {
    demand(values[key].SetKey(kRoot, (prepared() + "\\Key " + std::to_string(key)).c_str()) == 0);
  }
  eachPlace(state, [&](const Place& place) {
    char* text = nullptr;
    CQSRegValue& value = values[place.index];
    demand(value.Read(place.text.c_str(), text) == 0);
    benchmark::DoNotOptimize(text);
  });
}

void readNumberOfHeldObject(benchmark::State& state) {
  std::vector<CQSRegValue> values(static_cast<std::size_t>(kKeys));
  for (std::size_t key = 0; key < values.size(); ++key) {
    demand(values[key].SetKey(kRoot, (prepared() + "\\Key " + std::to_string(key)).c_str()) == 0);
  }
  eachPlace(state, [&](const Place& place) {
    unsigned long number = 0;
    CQSRegValue& value = values[place.index];
    demand(value.Read(place.number.c_str(), number) == 0);
    benchmark::DoNotOptimize(number);
  });
}

void readTextOfFreshObject(benchmark::State& state, const std::string& root) {
  const std::vector<std::string> paths = pathsBelow(root);
  std::size_t next = 0;
  eachPlace(state, [&](const Place& place) {
    CQSRegValue value(kRoot, paths[next].c_str(), place.text.c_str());
    char* text = nullptr;
    demand(value.Read(text) == 0);
    benchmark::DoNotOptimize(text);
    next = next + 1 < paths.size() ? next + 1 : 0;
  });
}

void readTextOfFreshObjectByPlainPath(benchmark::State& state) {
  readTextOfFreshObject(state, prepared());
}

void readTextOfFreshObjectByVariable(benchmark::State& state) {
  (void)prepared();
  readTextOfFreshObject(state, "%SharedRoot%");
}

BENCHMARK(readTextOfHeldObject);
BENCHMARK(readNumberOfHeldObject);
BENCHMARK(readTextOfFreshObjectByPlainPath);
BENCHMARK(readTextOfFreshObjectByVariable);

#ifdef LTLIB_BENCH_GLIB_2_0
GKeyFile& keyFile() {
  static GKeyFile* const s_file = [] {
    GKeyFile* file = g_key_file_new();
    for (const Place& place : allPlaces()) {
      const std::string group = prepared() + '\\' + place.key;
      g_key_file_set_string(file, group.c_str(), place.text.c_str(), kText);
      g_key_file_set_integer(file, group.c_str(), place.number.c_str(), kNumber);
    }
    return file;
  }();
  return *s_file;
}

void readTextOfKeyFile(benchmark::State& state) {
  const std::vector<std::string> groups = pathsBelow(prepared());
  std::size_t next = 0;
  eachPlace(state, [&](const Place& place) {
    gchar* text =
        g_key_file_get_string(&keyFile(), groups[next].c_str(), place.text.c_str(), nullptr);
    demand(text != nullptr);
    benchmark::DoNotOptimize(text);
    g_free(text);
    next = next + 1 < groups.size() ? next + 1 : 0;
  });
}

void readNumberOfKeyFile(benchmark::State& state) {
  const std::vector<std::string> groups = pathsBelow(prepared());
  std::size_t next = 0;
  eachPlace(state, [&](const Place& place) {
    const int number =
        g_key_file_get_integer(&keyFile(), groups[next].c_str(), place.number.c_str(), nullptr);
    demand(number == kNumber);
    next = next + 1 < groups.size() ? next + 1 : 0;
  });
}

BENCHMARK(readTextOfKeyFile);
BENCHMARK(readNumberOfKeyFile);
#endif

#ifdef LTLIB_BENCH_QT5CORE
class QtStore {
 public:
  QtStore() : m_settings(m_folder.filePath("settings.ini"), QSettings::IniFormat) {
    for (const Place& place : allPlaces()) {
      m_settings.setValue(keyOf(place, place.text), QString::fromUtf8(kText));
      m_settings.setValue(keyOf(place, place.number), static_cast<uint>(kNumber));
    }
  }

  static QString keyOf(const Place& place, const std::string& name) {
    std::string key = prepared() + '/' + place.key + '/' + name;
    std::replace(key.begin(), key.end(), '\\', '/');
    return QString::fromStdString(key);
  }

  const QSettings& settings() const { return m_settings; }

 private:
  QTemporaryDir m_folder;
  QSettings m_settings;
};

template <class Take>
void readOfQt(benchmark::State& state, std::string Place::*name, Take take) {
  const QtStore store;
  std::vector<QString> keys;
  for (const Place& place : allPlaces()) {
    keys.push_back(QtStore::keyOf(place, place.*name));
  }
  std::size_t next = 0;
  eachPlace(state, [&](const Place&) {
    take(store.settings().value(keys[next]));
    next = next + 1 < keys.size() ? next + 1 : 0;
  });
}

void readTextOfQSettings(benchmark::State& state) {
  readOfQt(state, &Place::text, [](const QVariant& value) {
    const QString text = value.toString();
    demand(!text.isEmpty());
    benchmark::DoNotOptimize(text.constData());
  });
}

void readNumberOfQSettings(benchmark::State& state) {
  readOfQt(state, &Place::number, [](const QVariant& value) { demand(value.toUInt() == kNumber); });
}

BENCHMARK(readTextOfQSettings);
BENCHMARK(readNumberOfQSettings);
#endif

}  // namespace
