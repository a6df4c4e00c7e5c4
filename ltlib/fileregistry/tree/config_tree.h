// The nodes of the tree that the file registry works on: sections are keys, fields are values.
//
// Names and texts are byte strings without a NUL. All nodes are guarded by the one lock of the
// tree (roots.h); they carry no locks of their own, since nobody reaches a node without it.
#ifndef LTLIB_FILEREGISTRY_TREE_CONFIG_TREE_H
#define LTLIB_FILEREGISTRY_TREE_CONFIG_TREE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/tree/node_list.h"

/// What a field is; the numbers stand in no file.
enum QSCfgTypeCode : unsigned int {
  kCfgULong = 0,       // a number as decimal text
  kCfgString = 1,      // a text
  kCfgDir = 2,         // a text; only a file makes such a field
  kCfgBinary = 3,      // bytes as far as the first NUL
  kCfgListString = 4,  // quoted elements, joined
};

/// The base of all nodes: a name in the letter case of its first arrival.
class QSFirstClass {
 public:
  explicit QSFirstClass(std::string_view name) : m_name(name) {}
  virtual ~QSFirstClass() = default;
  QSFirstClass(const QSFirstClass&) = delete;
  QSFirstClass& operator=(const QSFirstClass&) = delete;

  [[nodiscard]] const std::string& name() const { return m_name; }

  // Kept by the list that holds the node: its place there, and the next node of its name.
  [[nodiscard]] std::size_t place() const { return m_place; }
  void setPlace(std::size_t place) { m_place = static_cast<std::uint32_t>(place); }
  [[nodiscard]] QSFirstClass* nextNamesake() const { return m_nextNamesake; }
  void setNextNamesake(QSFirstClass* next) { m_nextNamesake = next; }

 private:
  const std::string m_name;
  QSFirstClass* m_nextNamesake = nullptr;
  std::uint32_t m_place = 0;  // a longer list would have 2^32 nodes of 88 bytes and more
};

/// A named value: a type code, set once, and a text.
class QSCfgDataField : public QSFirstClass {
 public:
  QSCfgDataField(std::string_view name, QSCfgTypeCode type) : QSFirstClass(name), m_type(type) {}

  [[nodiscard]] QSCfgTypeCode type() const { return m_type; }

  /// Does nothing here.
  virtual void setValue(const std::string& text);

  /// One shared empty text here.
  [[nodiscard]] virtual const std::string& getValue() const;

 private:
  const QSCfgTypeCode m_type;
};

/// The one concrete field.
class QSCfgDataFieldString final : public QSCfgDataField {
 public:
  QSCfgDataFieldString(std::string_view name, QSCfgTypeCode type, std::string text)
      : QSCfgDataField(name, type), m_value(std::move(text)) {}

  void setValue(const std::string& text) override { m_value = text; }
  [[nodiscard]] const std::string& getValue() const override { return m_value; }

 private:
  std::string m_value;
};

/// A key: child sections and fields, in order of arrival. An operation that runs out of memory
/// leaves the section as it was; no removal needs any.
class QSCfgDataSection final : public QSFirstClass {
 public:
  explicit QSCfgDataSection(std::string_view name) : QSFirstClass(name) {}
  ~QSCfgDataSection() override;

  /// The section that this one is a child of; null for the top of a tree.
  [[nodiscard]] QSCfgDataSection* parent() const { return m_parent; }

  /// The first child of that name, or null.
  [[nodiscard]] QSCfgDataSection* findSection(std::string_view name) const {
    return m_subsections.find(name);
  }
  /// A new child, whether or not there is one of that name.
  QSCfgDataSection& addSection(std::string_view name);
  /// The first child of that name, added if it is missing.
  QSCfgDataSection& findOrAddSection(std::string_view name);
  /// Takes a whole section over, as a child.
  QSCfgDataSection& adoptSection(std::unique_ptr<QSCfgDataSection> section);
  /// Takes all children out.
  std::vector<std::unique_ptr<QSCfgDataSection>> releaseSections() noexcept {
    return m_subsections.releaseAll();
  }
  /// Destroys the first child of that name and its fields. False if there is none or it has
  /// subsections.
  bool removeSection(std::string_view name);
  /// Destroys a child without subsections that is the first of its name.
  void removeSection(QSCfgDataSection& child) noexcept { m_subsections.take(child); }

  /// The first field of that name, or null.
  [[nodiscard]] QSCfgDataField* findField(std::string_view name) const {
    return m_fields.find(name);
  }
  /// Appends a field, whether or not there is one of that name.
  void addField(std::unique_ptr<QSCfgDataField> field);
  /// Destroys the first field of that name; false if there is none.
  bool removeField(std::string_view name);
  /// Takes all fields out.
  std::vector<std::unique_ptr<QSCfgDataField>> releaseFields() noexcept {
    return m_fields.releaseAll();
  }

  /// Makes room for all that another section holds, which `takeOver` then moves here.
  void reserveFor(const QSCfgDataSection& other);
  void takeOver(QSCfgDataSection& other) noexcept;

  [[nodiscard]] std::size_t sectionCount() const { return m_subsections.size(); }
  [[nodiscard]] QSCfgDataSection& sectionAt(std::size_t i) const { return m_subsections.at(i); }
  [[nodiscard]] std::size_t fieldCount() const { return m_fields.size(); }
  [[nodiscard]] QSCfgDataField& fieldAt(std::size_t i) const { return m_fields.at(i); }

 private:
  QSCfgDataSection* m_parent = nullptr;
  LTLib::detail::NodeList<QSCfgDataSection> m_subsections;
  LTLib::detail::NodeList<QSCfgDataField> m_fields;
};

#endif  // LTLIB_FILEREGISTRY_TREE_CONFIG_TREE_H
