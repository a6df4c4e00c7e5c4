#include "bench/store_peers.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#ifdef LTLIB_BENCH_BOOST_PROPERTY_TREE_PTREE_HPP
#include <boost/property_tree/info_parser.hpp>
#include <boost/property_tree/ini_parser.hpp>
#endif
#ifdef LTLIB_BENCH_RAPIDJSON_DOCUMENT_H
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif

// No save of any peer waits for the device: these stand in for the system's calls in the program
// and all its libraries.
extern "C" {
__attribute__((visibility("default"))) int fsync(int /*descriptor*/) {
  return 0;
}
__attribute__((visibility("default"))) int fdatasync(int /*descriptor*/) {
  return 0;
}
}

namespace LTLib::Bench {
namespace {

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

std::string readFile(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::string text(std::filesystem::file_size(file), '\0');
  in.read(text.data(), static_cast<std::streamsize>(text.size()));
  demand(!in.fail());
  return text;
}

// As whoever cares for the file does: beside it first, and then in its place.
void replaceFile(const std::string& file, std::string_view text) {
  const std::string fresh = file + "_new";
  std::FILE* out = std::fopen(fresh.c_str(), "wb");
  demand(out != nullptr);
  std::setvbuf(out, nullptr, _IONBF, 0);
  demand(std::fwrite(text.data(), 1, text.size(), out) == text.size());
  demand(std::fclose(out) == 0);
  demand(std::rename(fresh.c_str(), file.c_str()) == 0);
}

QSRegistryManager& manager() {
  return *QSRegistryManager::GetInstance();
}

class OpenKey {
 public:
  OpenKey(void* root, const std::string& path) {
    demand(manager().regOpenKeyEx(root, path.c_str(), 0, KEY_READ, &m_key) == 0);
  }
  ~OpenKey() { manager().regCloseKey(m_key); }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  [[nodiscard]] void* get() const { return m_key; }

 private:
  void* m_key = nullptr;
};

}  // namespace

void Registry::writeFile(const std::string& file, const std::vector<Place>& places) {
  writeSections(file, places, "\"", "\"=string:\"", "\"\n");
}

// The first touch loads; this one looks nothing up that is there.
Registry::Registry(const std::string& file, enumRegRoot root)
    : m_root(root), m_rootKey(predefinedRootHandle(root)) {
  demand(::setenv(registryRootName(root), file.c_str(), 1) == 0);
  const OpenKey key(m_rootKey, "Nothing");
  char name[] = "Nothing";
  demand(manager().regQueryValueEx(key.get(), name, nullptr, nullptr, nullptr) != 0);
}

std::size_t Registry::read(const Place& place) const {
  const OpenKey key(m_rootKey, place.path);
  char* name = const_cast<char*>(place.name.c_str());  // which the call leaves alone
  unsigned int type = 0;
  unsigned int size = 0;
  demand(manager().regQueryValueEx(key.get(), name, &type, nullptr, &size) == 0);
  std::array<unsigned char, 64> data;
  demand(manager().regQueryValueEx(key.get(), name, &type, data.data(), &size) == 0);
  return size;
}

std::size_t Registry::readByObject(const Place& place) const {
  CQSRegValue value(m_root, place.path.c_str(), place.name.c_str());
  char* text = nullptr;
  demand(value.Read(text) == 0);
  return std::strlen(text);
}

void Registry::set(const Place& place, const char* text) const {
  const OpenKey key(m_rootKey, place.path);
  demand(manager().regSetValueEx(key.get(), place.name.c_str(), REG_SZ,
                                 reinterpret_cast<const unsigned char*>(text),
                                 static_cast<unsigned int>(std::strlen(text) + 1)) == 0);
}

void Registry::removeValue(const Place& place) const {
  const OpenKey key(m_rootKey, place.path);
  demand(manager().regDeleteValue(key.get(), place.name.c_str()) == 0);
}

void Registry::removeKey(const std::string& path) const {
  demand(manager().regDeleteKey(m_rootKey, path.c_str()) == 0);
}

void Registry::removeBranch(const std::string& path) const {
  demand(CQSRegKey(m_root, path.c_str()).DeleteKey(true) == 0);
}

std::size_t Registry::walkValues(const std::string& path) const {
  const OpenKey key(m_rootKey, path);
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

std::size_t Registry::walkKeys(const std::string& path) const {
  const OpenKey key(m_rootKey, path);
  for (unsigned int i = 0;; ++i) {
    std::array<char, 64> name;
    unsigned int size = name.size();
    if (manager().regEnumKeyEx(key.get(), i, name.data(), &size) != 0) {
      return i;
    }
  }
}

void Registry::save(const std::string& file) const {
  std::string pathname = file;
  demand(manager().saveConfiguration(m_root, pathname) == 0);
}

void Bytes::writeFile(const std::string& file, const std::vector<Place>& places) {
  Registry::writeFile(file, places);
}

Bytes::Bytes(const std::string& file) : m_text(readFile(file)) {}

void Bytes::save(const std::string& file) const {
  replaceFile(file, m_text);
}

#ifdef LTLIB_BENCH_GLIB_2_0
void KeyFile::writeFile(const std::string& file, const std::vector<Place>& places) {
  writeSections(file, places, "", "=", "\n");
}

KeyFile::KeyFile(const std::string& file) : m_file(g_key_file_new()) {
  demand(g_key_file_load_from_file(m_file, file.c_str(), G_KEY_FILE_NONE, nullptr) != 0);
}

std::size_t KeyFile::read(const Place& place) const {
  gchar* text = g_key_file_get_string(m_file, place.path.c_str(), place.name.c_str(), nullptr);
  demand(text != nullptr);
  const std::size_t size = std::strlen(text);
  g_free(text);
  return size;
}

void KeyFile::set(const Place& place, const char* text) {
  g_key_file_set_string(m_file, place.path.c_str(), place.name.c_str(), text);
}

void KeyFile::removeValue(const Place& place) {
  demand(g_key_file_remove_key(m_file, place.path.c_str(), place.name.c_str(), nullptr) != 0);
}

void KeyFile::removeKey(const std::string& path) {
  demand(g_key_file_remove_group(m_file, path.c_str(), nullptr) != 0);
}

std::size_t KeyFile::walkValues(const std::string& path) const {
  gsize count = 0;
  gchar** names = g_key_file_get_keys(m_file, path.c_str(), &count, nullptr);
  for (gsize i = 0; i < count; ++i) {
    g_free(g_key_file_get_string(m_file, path.c_str(), names[i], nullptr));
  }
  g_strfreev(names);
  return count;
}

// All groups: it has one level of them.
std::size_t KeyFile::walkKeys(const std::string& /*path*/) const {
  gsize count = 0;
  g_strfreev(g_key_file_get_groups(m_file, &count));
  return count;
}

void KeyFile::save(const std::string& file) const {
  gsize size = 0;
  gchar* text = g_key_file_to_data(m_file, &size, nullptr);
  replaceFile(file, {text, size});
  g_free(text);
}
#endif

#ifdef LTLIB_BENCH_QT5CORE
namespace {

QString slashed(const std::string& path) {
  return QString::fromStdString(path).replace('\\', '/');
}

QString keyOf(const Place& place) {
  return slashed(place.path) + '/' + QString::fromStdString(place.name);
}

}  // namespace

void Settings::writeFile(const std::string& file, const std::vector<Place>& places) {
  QSettings settings(QString::fromStdString(file), QSettings::IniFormat);
  for (const Place& place : places) {
    settings.setValue(keyOf(place), QString::fromStdString(place.text));
  }
}

Settings::Settings(const std::string& file)
    : m_settings(QString::fromStdString(file), QSettings::IniFormat) {
  demand(m_settings.status() == QSettings::NoError && !m_settings.contains("Nothing"));
}

std::size_t Settings::read(const Place& place) const {
  const QString text = m_settings.value(keyOf(place)).toString();
  demand(!text.isEmpty());
  return static_cast<std::size_t>(text.size());
}

void Settings::set(const Place& place, const char* text) {
  m_settings.setValue(keyOf(place), QString::fromUtf8(text));
}

void Settings::removeValue(const Place& place) {
  m_settings.remove(keyOf(place));
}

std::size_t Settings::walkValues(const std::string& path) {
  m_settings.beginGroup(slashed(path));
  const QStringList names = m_settings.childKeys();
  for (const QString& name : names) {
    demand(!m_settings.value(name).toString().isEmpty());
  }
  m_settings.endGroup();
  return static_cast<std::size_t>(names.size());
}

std::size_t Settings::walkKeys(const std::string& path) {
  m_settings.beginGroup(slashed(path));
  const QStringList names = m_settings.childGroups();
  m_settings.endGroup();
  return static_cast<std::size_t>(names.size());
}
#endif

#ifdef LTLIB_BENCH_BOOST_PROPERTY_TREE_PTREE_HPP
namespace {

using boost::property_tree::ptree;

ptree::path_type treePlace(const std::string& path) {
  return {path, '\\'};
}

}  // namespace

void PropertyTree::writeFile(const std::string& file, const std::vector<Place>& places) {
  ptree tree;
  eachKey(places, [&](std::size_t first, std::size_t last) {
    ptree& section = tree.put_child(treePlace(places[first].path), ptree());
    for (std::size_t i = first; i < last; ++i) {
      section.push_back({places[i].name, ptree(places[i].text)});
    }
  });
  write_info(file, tree);
}

PropertyTree::PropertyTree(const std::string& file) {
  read_info(file, m_tree);
}

std::size_t PropertyTree::read(const Place& place) const {
  return m_tree.get_child(treePlace(place.path)).get<std::string>(place.name).size();
}

void PropertyTree::set(const Place& place, const char* text) {
  m_tree.get_child(treePlace(place.path)).put(place.name, text);
}

void PropertyTree::removeValue(const Place& place) {
  demand(m_tree.get_child(treePlace(place.path)).erase(place.name) == 1);
}

void PropertyTree::removeKey(const std::string& path) {
  const std::size_t end = path.rfind('\\');
  demand(m_tree.get_child(treePlace(path.substr(0, end))).erase(path.substr(end + 1)) == 1);
}

std::size_t PropertyTree::walkValues(const std::string& path) const {
  std::size_t count = 0;
  for (const auto& [name, child] : m_tree.get_child(treePlace(path))) {
    const std::string copies[] = {name, child.data()};
    count += copies[0].empty() ? 0 : 1;
  }
  return count;
}

std::size_t PropertyTree::walkKeys(const std::string& path) const {
  std::size_t count = 0;
  for (const auto& [name, child] : m_tree.get_child(treePlace(path))) {
    const std::string copy = name;
    count += copy.empty() ? 0 : 1;
  }
  return count;
}

void PropertyTree::save(const std::string& file) const {
  write_info(file, m_tree);
}

void PropertyTreeIni::writeFile(const std::string& file, const std::vector<Place>& places) {
  writeSections(file, places, "", "=", "\n");
}

PropertyTreeIni::PropertyTreeIni(const std::string& file) {
  read_ini(file, m_tree);
}
#endif

#ifdef LTLIB_BENCH_RAPIDJSON_DOCUMENT_H
namespace {

rapidjson::Value borrowed(std::string_view text) {
  return rapidjson::Value(rapidjson::StringRef(text.data(), text.size()));
}

std::vector<std::string_view> namesOf(const std::string& path) {
  std::vector<std::string_view> names;
  eachName(path, [&](std::string_view name) { names.push_back(name); });
  return names;
}

}  // namespace

void Json::writeFile(const std::string& file, const std::vector<Place>& places) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  std::vector<std::string_view> open;
  writer.StartObject();
  eachKey(places, [&](std::size_t first, std::size_t last) {
    const std::vector<std::string_view> names = namesOf(places[first].path);
    std::size_t common = 0;
    while (common < open.size() && open[common] == names[common]) {
      ++common;
    }
    for (std::size_t i = common; i < open.size(); ++i) {
      writer.EndObject();
    }
    for (std::size_t i = common; i < names.size(); ++i) {
      writer.Key(names[i].data(), static_cast<rapidjson::SizeType>(names[i].size()));
      writer.StartObject();
    }
    for (std::size_t i = first; i < last; ++i) {
      writer.Key(places[i].name.c_str());
      writer.String(places[i].text.c_str());
    }
    open = names;
  });
  for (std::size_t i = 0; i <= open.size(); ++i) {
    writer.EndObject();
  }
  replaceFile(file, {buffer.GetString(), buffer.GetSize()});
}

Json::Json(const std::string& file) {
  demand(!m_document.Parse(readFile(file).c_str()).HasParseError());
}

const rapidjson::Value& Json::at(const std::string& path) const {
  const rapidjson::Value* found = &m_document;
  eachName(path, [&](std::string_view name) {
    const auto member = found->FindMember(borrowed(name));
    demand(member != found->MemberEnd());
    found = &member->value;
  });
  return *found;
}

// The text is copied, as every other reader does it.
std::size_t Json::read(const Place& place) const {
  const rapidjson::Value& object = at(place.path);
  const auto member = object.FindMember(borrowed(place.name));
  demand(member != object.MemberEnd());
  std::array<char, 64> data;
  const rapidjson::SizeType size = member->value.GetStringLength();
  demand(size < data.size());
  std::memcpy(data.data(), member->value.GetString(), size + 1);
  return size;
}

void Json::set(const Place& place, const char* text) {
  auto& object = const_cast<rapidjson::Value&>(at(place.path));
  auto& allocator = m_document.GetAllocator();
  rapidjson::Value value(text, allocator);
  const auto member = object.FindMember(borrowed(place.name));
  if (member != object.MemberEnd()) {
    member->value = value;
  } else {
    object.AddMember(rapidjson::Value(place.name.c_str(), allocator), value, allocator);
  }
}

void Json::removeValue(const Place& place) {
  auto& object = const_cast<rapidjson::Value&>(at(place.path));
  demand(object.RemoveMember(borrowed(place.name)));
}

std::size_t Json::walkValues(const std::string& path) const {
  std::size_t count = 0;
  for (const auto& member : at(path).GetObject()) {
    const std::string copies[] = {member.name.GetString(), member.value.GetString()};
    count += copies[0].empty() ? 0 : 1;
  }
  return count;
}

std::size_t Json::walkKeys(const std::string& path) const {
  std::size_t count = 0;
  for (const auto& member : at(path).GetObject()) {
    const std::string copy = member.name.GetString();
    count += copy.empty() ? 0 : 1;
  }
  return count;
}

void Json::save(const std::string& file) const {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  demand(m_document.Accept(writer));
  replaceFile(file, {buffer.GetString(), buffer.GetSize()});
}
#endif

}  // namespace LTLib::Bench
