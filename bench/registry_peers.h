// The file registry and its peers behind one set of operations, and the data that all of them get.
//
// Each peer is a type with the static operations of Store, so that one template measures them all.
#ifndef LTLIB_BENCH_REGISTRY_PEERS_H
#define LTLIB_BENCH_REGISTRY_PEERS_H

#include <cstddef>
#include <string>
#include <vector>

#ifdef LTLIB_BENCH_BOOST_PROPERTY_TREE_PTREE_HPP
#define LTLIB_BENCH_PTREE 1
#endif

namespace LTLib::Bench {

/// How the values of a store lie in it.
enum Shape : int {
  kOneKey,    // all in one key
  kSiblings,  // one in each of many keys under one parent
  kTree,      // ten in each key, five levels deep
};

/// The place of one value.
struct Place {
  std::string path;  // the names of the keys, joined by backslashes
  std::string name;
  std::string text;
};

/// The places of that many values, key by key.
[[nodiscard]] std::vector<Place> placesOf(Shape shape, std::size_t count);

/// The file registry.
struct Store {
  static void writeFile(const std::vector<Place>& places);
  static void load();
  static void forget();
  [[nodiscard]] static std::size_t read(const Place& place);
  static void set(const Place& place, const std::string& text);
  /// Reads all names and texts of a key; gives their number.
  [[nodiscard]] static std::size_t enumerate(const std::string& path);
  static void removeKey(const std::string& path);
  /// Without bringing the file to the device.
  static void save();
};

/// The file registry with a save that lasts.
struct StoreToDevice : Store {
  static void save();
};

/// The file registry with a call of the system for each line that is saved.
struct StoreLineByLine : Store {
  static void save();
};

#ifdef LTLIB_BENCH_GLIB_2_0
/// GLib's key file: groups that bear the whole path.
struct KeyFile {
  static void writeFile(const std::vector<Place>& places);
  static void load();
  static void forget();
  [[nodiscard]] static std::size_t read(const Place& place);
  static void set(const Place& place, const std::string& text);
  [[nodiscard]] static std::size_t enumerate(const std::string& path);
  static void save();
};
#endif

#ifdef LTLIB_BENCH_PTREE
/// Boost's property tree, from its own format INFO.
struct PropertyTree {
  static void writeFile(const std::vector<Place>& places);
  static void load();
  static void forget();
  [[nodiscard]] static std::size_t read(const Place& place);
  static void set(const Place& place, const std::string& text);
  [[nodiscard]] static std::size_t enumerate(const std::string& path);
  static void save();
};

/// Its load from an INI file, which has one level of sections.
struct PropertyTreeIni : PropertyTree {
  static void writeFile(const std::vector<Place>& places);
  static void load();
};
#endif

}  // namespace LTLib::Bench

#endif  // LTLIB_BENCH_REGISTRY_PEERS_H
