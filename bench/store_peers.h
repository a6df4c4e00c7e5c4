// The registry and its peers behind one set of operations, so that one template measures them all.
//
// Constructing a peer loads its file. A peer lacks what it has no operation for; a program without
// the peer's library lacks the peer.
#ifndef LTLIB_BENCH_STORE_PEERS_H
#define LTLIB_BENCH_STORE_PEERS_H

#include <cstddef>
#include <string>
#include <vector>

#include "bench/store_data.h"
#include "ltlib/ltlib.h"

#ifdef LTLIB_BENCH_GLIB_2_0
#include <glib.h>
#endif
#ifdef LTLIB_BENCH_QT5CORE
#include <QSettings>
#endif
#ifdef LTLIB_BENCH_BOOST_PROPERTY_TREE_PTREE_HPP
#include <boost/property_tree/ptree.hpp>
#endif
#ifdef LTLIB_BENCH_RAPIDJSON_DOCUMENT_H
#include <rapidjson/document.h>
#endif

namespace LTLib::Bench {

/// The registry, through its interface.
class Registry {
 public:
  static void writeFile(const std::string& file, const std::vector<Place>& places);
  explicit Registry(const std::string& file, enumRegRoot root = REG_ROOT_LOCAL_MACHINE);

  /// The size first and then the data; gives the size, as the peers do.
  [[nodiscard]] std::size_t read(const Place& place) const;
  /// The same by an object for each value.
  [[nodiscard]] std::size_t readByObject(const Place& place) const;
  void set(const Place& place, const char* text) const;
  void removeValue(const Place& place) const;
  void removeKey(const std::string& path) const;
  void removeBranch(const std::string& path) const;
  /// Reads all names and texts of a key, or the names of its sub-keys; gives their number.
  [[nodiscard]] std::size_t walkValues(const std::string& path) const;
  [[nodiscard]] std::size_t walkKeys(const std::string& path) const;
  void save(const std::string& file) const;

 private:
  enumRegRoot m_root;
  void* m_rootKey;
};

/// A file of bytes that are known already: the least that a save can cost.
class Bytes {
 public:
  static void writeFile(const std::string& file, const std::vector<Place>& places);
  explicit Bytes(const std::string& file);
  void save(const std::string& file) const;

 private:
  std::string m_text;
};

#ifdef LTLIB_BENCH_GLIB_2_0
/// GLib's key file: groups that bear the whole path.
class KeyFile {
 public:
  static void writeFile(const std::string& file, const std::vector<Place>& places);
  explicit KeyFile(const std::string& file);
  ~KeyFile() { g_key_file_free(m_file); }
  KeyFile(const KeyFile&) = delete;
  KeyFile& operator=(const KeyFile&) = delete;

  [[nodiscard]] std::size_t read(const Place& place) const;
  void set(const Place& place, const char* text);
  void removeValue(const Place& place);
  void removeKey(const std::string& path);
  [[nodiscard]] std::size_t walkValues(const std::string& path) const;
  [[nodiscard]] std::size_t walkKeys(const std::string& path) const;
  void save(const std::string& file) const;

 private:
  GKeyFile* m_file;
};
#endif

#ifdef LTLIB_BENCH_QT5CORE
/// Qt's settings in an INI file: one map over the whole path.
class Settings {
 public:
  static void writeFile(const std::string& file, const std::vector<Place>& places);
  explicit Settings(const std::string& file);
  [[nodiscard]] std::size_t read(const Place& place) const;
  void set(const Place& place, const char* text);
  void removeValue(const Place& place);
  [[nodiscard]] std::size_t walkValues(const std::string& path);
  [[nodiscard]] std::size_t walkKeys(const std::string& path);

 private:
  QSettings m_settings;
};
#endif

#ifdef LTLIB_BENCH_BOOST_PROPERTY_TREE_PTREE_HPP
/// Boost's property tree, from its own format INFO.
class PropertyTree {
 public:
  static void writeFile(const std::string& file, const std::vector<Place>& places);
  explicit PropertyTree(const std::string& file);
  [[nodiscard]] std::size_t read(const Place& place) const;
  void set(const Place& place, const char* text);
  void removeValue(const Place& place);
  void removeKey(const std::string& path);
  [[nodiscard]] std::size_t walkValues(const std::string& path) const;
  [[nodiscard]] std::size_t walkKeys(const std::string& path) const;
  void save(const std::string& file) const;

 private:
  boost::property_tree::ptree m_tree;
};

/// Its load from an INI file, which has one level of sections.
class PropertyTreeIni {
 public:
  static void writeFile(const std::string& file, const std::vector<Place>& places);
  explicit PropertyTreeIni(const std::string& file);

 private:
  boost::property_tree::ptree m_tree;
};
#endif

#ifdef LTLIB_BENCH_RAPIDJSON_DOCUMENT_H
/// A document of nested objects, whose members it goes through one by one.
class Json {
 public:
  static void writeFile(const std::string& file, const std::vector<Place>& places);
  explicit Json(const std::string& file);
  [[nodiscard]] std::size_t read(const Place& place) const;
  void set(const Place& place, const char* text);
  void removeValue(const Place& place);
  [[nodiscard]] std::size_t walkValues(const std::string& path) const;
  [[nodiscard]] std::size_t walkKeys(const std::string& path) const;
  void save(const std::string& file) const;

 private:
  [[nodiscard]] const rapidjson::Value& at(const std::string& path) const;
  rapidjson::Document m_document;
};
#endif

}  // namespace LTLib::Bench

#endif  // LTLIB_BENCH_STORE_PEERS_H
