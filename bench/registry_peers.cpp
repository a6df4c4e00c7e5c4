#include "bench/registry_peers.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <stdexcept>

#include "ltlib/fileregistry/file_registry_manager.h"
#include "ltlib/fileregistry/store/store.h"
#include "ltlib/fileregistry/tree/roots.h"
#include "ltlib/fileregistry/tree/tree_lock.h"
#include "ltlib/platform/files.h"

#ifdef LTLIB_BENCH_GLIB_2_0
#include <glib.h>
#endif
#ifdef LTLIB_BENCH_PTREE
#include <boost/property_tree/info_parser.hpp>
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#endif

namespace LTLib::Bench {
namespace {

constexpr enumRegRoot kRoot = REG_ROOT_LOCAL_MACHINE;

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

  [[nodiscard]] std::string file(const char* name) const { return (m_path / name).string(); }

 private:
  std::filesystem::path m_path;
};

std::string fileOf(const char* name) {
  static const Folder s_folder;
  return s_folder.file(name);
}

// Five levels, of which the last four have up to as many names as the count of keys calls for.
std::string treePath(std::size_t key, std::size_t keys) {
  std::size_t width = 1;
  while (width * width * width * width < keys) {
    ++width;
  }
  std::string path;
  for (int level = 0; level < 4; ++level) {
    path = "\\Section " + std::to_string(key % width) + path;
    key /= width;
  }
  return "Software" + path;
}

std::string pathOf(Shape shape, std::size_t value, std::size_t count) {
  switch (shape) {
    case kOneKey:
      return "Software\\Example";
    case kSiblings:
      return "Software\\Section " + std::to_string(value);
    case kTree:
      break;
  }
  return treePath(value / 10, (count + 9) / 10);
}

// Hands each run of values of one key to `take`, by its ends.
template <class Take>
void eachKey(const std::vector<Place>& places, Take take) {
  for (std::size_t first = 0; first < places.size();) {
    std::size_t last = first;
    while (last < places.size() && places[last].path == places[first].path) {
      ++last;
    }
    take(first, last);
    first = last;
  }
}

void writeSections(const std::string& file, const std::vector<Place>& places, const char* opening,
                   const char* middle, const char* closing) {
  std::ofstream out(file, std::ios::binary);
  eachKey(places, [&](std::size_t first, std::size_t last) {
    out << '[' << places[first].path << "]\n";
    for (std::size_t i = first; i < last; ++i) {
      out << opening << places[i].name << middle << places[i].text << closing;
    }
    out << '\n';
  });
}

}  // namespace

std::vector<Place> placesOf(Shape shape, std::size_t count) {
  std::vector<Place> places;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    places.push_back({pathOf(shape, i, count), "Value" + number, "text of value " + number});
  }
  return places;
}

namespace {

std::string storeFile() {
  return fileOf("HKEY_LOCAL_MACHINE.cfg");
}

QSFileRegistryManager& manager() {
  static QSFileRegistryManager s_manager;
  return s_manager;
}

class OpenKey {
 public:
  explicit OpenKey(const std::string& path) {
    manager().regOpenKeyEx(predefinedRootHandle(kRoot), path.c_str(), 0, KEY_READ, &m_key);
  }
  ~OpenKey() { manager().regCloseKey(m_key); }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  [[nodiscard]] void* get() const { return m_key; }

 private:
  void* m_key = nullptr;
};

// Saves with other file calls than usual.
void saveWith(const std::function<void(Platform::FileCalls&)>& change) {
  const Platform::FileCalls usual = Platform::fileCalls();
  change(Platform::fileCalls());
  std::string pathname = storeFile();
  const QSResult result = detail::cfgSaveFile(kRoot, pathname);
  Platform::fileCalls() = usual;
  demand(result == 0);
}

void turnOffFlushing(Platform::FileCalls& calls) {
  calls.flush = [](Platform::File&) { return Platform::FileResult::kDone; };
  calls.flushDirectory = [](const char*) { return Platform::FileResult::kDone; };
}

Platform::FileResult (*s_usualWrite)(Platform::File&, const char*, std::size_t);

Platform::FileResult writeLines(Platform::File& file, const char* bytes, std::size_t count) {
  Platform::FileResult result = Platform::FileResult::kDone;
  while (count > 0 && result == Platform::FileResult::kDone) {
    const void* end = std::memchr(bytes, '\n', count);
    const std::size_t length =
        end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - bytes) + 1
                       : count;
    result = s_usualWrite(file, bytes, length);
    bytes += length;
    count -= length;
  }
  return result;
}

}  // namespace

void Store::writeFile(const std::vector<Place>& places) {
  writeSections(storeFile(), places, "\"", "\"=string:\"", "\"\n");
}

void Store::load() {
  const detail::TreeWriting writing;
  detail::makeTrees();
  QSCfgRoot& root = detail::cfgRootOf(predefinedRootHandle(kRoot));
  root.touched = true;
  root.loaded = detail::cfgLoadFile(root, storeFile()) == detail::ReadResult::kWhole;
  demand(root.loaded);
}

void Store::forget() {
  const detail::TreeWriting writing;
  QSCfgRoot fresh;
  fresh.root = kRoot;
  detail::cfgRootOf(predefinedRootHandle(kRoot)) = std::move(fresh);
}

// The size first and then the data, as the registry objects do.
std::size_t Store::read(const Place& place) {
  const OpenKey key(place.path);
  char* name = const_cast<char*>(place.name.c_str());  // which the call leaves alone
  unsigned int type = 0;
  unsigned int size = 0;
  demand(manager().regQueryValueEx(key.get(), name, &type, nullptr, &size) == 0);
  std::array<unsigned char, 64> data{};
  demand(manager().regQueryValueEx(key.get(), name, &type, data.data(), &size) == 0);
  return size;
}

void Store::set(const Place& place, const std::string& text) {
  const OpenKey key(place.path);
  demand(manager().regSetValueEx(key.get(), place.name.c_str(), REG_SZ,
                                 reinterpret_cast<const unsigned char*>(text.c_str()),
                                 static_cast<unsigned int>(text.size() + 1)) == 0);
}

std::size_t Store::enumerate(const std::string& path) {
  const OpenKey key(path);
  for (unsigned int i = 0;; ++i) {
    std::array<char, 64> name;
    std::array<unsigned char, 64> data;
    unsigned int nameSize = name.size();
    unsigned int type = 0;
    unsigned int dataSize = data.size() - 1;
    if (manager().regEnumValue(key.get(), i, name.data(), &nameSize, nullptr, &type, data.data(),
                               &dataSize) != 0) {
      return i;
    }
  }
}

void Store::removeKey(const std::string& path) {
  demand(manager().regDeleteKey(predefinedRootHandle(kRoot), path.c_str()) == 0);
}

void Store::save() {
  saveWith(turnOffFlushing);
}

void StoreToDevice::save() {
  saveWith([](Platform::FileCalls&) {});
}

void StoreLineByLine::save() {
  saveWith([](Platform::FileCalls& calls) {
    turnOffFlushing(calls);
    s_usualWrite = calls.write;
    calls.write = writeLines;
  });
}

#ifdef LTLIB_BENCH_GLIB_2_0
namespace {

GKeyFile* s_keyFile = nullptr;

}  // namespace

void KeyFile::writeFile(const std::vector<Place>& places) {
  writeSections(fileOf("key_file"), places, "", "=", "\n");
}

void KeyFile::load() {
  s_keyFile = g_key_file_new();
  demand(g_key_file_load_from_file(s_keyFile, fileOf("key_file").c_str(), G_KEY_FILE_NONE,
                                   nullptr) != 0);
}

void KeyFile::forget() {
  g_key_file_free(s_keyFile);
}

std::size_t KeyFile::read(const Place& place) {
  gchar* text = g_key_file_get_string(s_keyFile, place.path.c_str(), place.name.c_str(), nullptr);
  demand(text != nullptr);
  const std::size_t size = std::strlen(text);
  g_free(text);
  return size;
}

void KeyFile::set(const Place& place, const std::string& text) {
  g_key_file_set_string(s_keyFile, place.path.c_str(), place.name.c_str(), text.c_str());
}

std::size_t KeyFile::enumerate(const std::string& path) {
  gsize count = 0;
  gchar** names = g_key_file_get_keys(s_keyFile, path.c_str(), &count, nullptr);
  for (gsize i = 0; i < count; ++i) {
    g_free(g_key_file_get_string(s_keyFile, path.c_str(), names[i], nullptr));
  }
  g_strfreev(names);
  return count;
}

// Its own saving would flush.
void KeyFile::save() {
  gsize size = 0;
  gchar* text = g_key_file_to_data(s_keyFile, &size, nullptr);
  std::ofstream(fileOf("key_file_saved"), std::ios::binary)
      .write(text, static_cast<std::streamsize>(size));
  g_free(text);
}
#endif

#ifdef LTLIB_BENCH_PTREE
namespace {

using boost::property_tree::ptree;

ptree* s_tree = nullptr;

ptree::path_type treePlace(const std::string& path) {
  return {path, '\\'};
}

}  // namespace

void PropertyTree::writeFile(const std::vector<Place>& places) {
  ptree tree;
  eachKey(places, [&](std::size_t first, std::size_t last) {
    ptree& section = tree.put_child(treePlace(places[first].path), ptree());
    for (std::size_t i = first; i < last; ++i) {
      section.push_back({places[i].name, ptree(places[i].text)});
    }
  });
  write_info(fileOf("property_tree"), tree);
}

void PropertyTree::load() {
  s_tree = new ptree;
  read_info(fileOf("property_tree"), *s_tree);
}

void PropertyTree::forget() {
  delete s_tree;
}

std::size_t PropertyTree::read(const Place& place) {
  return s_tree->get_child(treePlace(place.path)).get<std::string>(place.name).size();
}

void PropertyTree::set(const Place& place, const std::string& text) {
  s_tree->get_child(treePlace(place.path)).put(place.name, text);
}

std::size_t PropertyTree::enumerate(const std::string& path) {
  std::size_t count = 0;
  for (const auto& [name, child] : s_tree->get_child(treePlace(path))) {
    const std::string copies[] = {name, child.data()};
    count += copies[0].empty() ? 0 : 1;
  }
  return count;
}

void PropertyTree::save() {
  write_info(fileOf("property_tree_saved"), *s_tree);
}

void PropertyTreeIni::writeFile(const std::vector<Place>& places) {
  writeSections(fileOf("property_tree_ini"), places, "", "=", "\n");
}

void PropertyTreeIni::load() {
  s_tree = new ptree;
  read_ini(fileOf("property_tree_ini"), *s_tree);
}
#endif

}  // namespace LTLib::Bench
