// The tree that the file registry works on: sections are keys, fields are values.
//
// Names and texts are byte strings without a NUL. All nodes are guarded by the one lock of the trees
// (tree_lock.h); they carry no locks of their own, since nobody reaches a node without it. What
// only reads changes nothing, so that readers may go side by side.
#ifndef LTLIB_FILEREGISTRY_TREE_CONFIG_TREE_H
#define LTLIB_FILEREGISTRY_TREE_CONFIG_TREE_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ltlib/fileregistry/tree/data_field.h"
#include "ltlib/fileregistry/tree/folded_name.h"
#include "ltlib/fileregistry/tree/gap_list.h"
#include "ltlib/fileregistry/tree/hash_slots.h"
#include "ltlib/fileregistry/tree/text_store.h"

class QSCfgTree;

/// A key: a name in the letter case of its first arrival, child sections and fields, in order of
/// arrival. Sections are made and removed by their tree, which knows the way to each.
class QSCfgDataSection {
 public:
  [[nodiscard]] std::string_view name() const {
    return {text() + m_textSize - m_nameSize, m_nameSize};
  }
  /// The section that this one is a child of; null for the top of a tree.
  [[nodiscard]] QSCfgDataSection* parent() const { return m_parent; }

  /// The names from below the top to here, joined by backslashes. `held` holds it where the section has
  /// it not at hand.
  [[nodiscard]] std::string_view path(std::string& held) const;

  /// Whether a path of that text leads here, if it has as many names as the section lies deep.
  [[nodiscard]] bool isAt(std::string_view path) const;

  [[nodiscard]] std::size_t sectionCount() const { return m_children.size(); }
  [[nodiscard]] QSCfgDataSection& sectionAt(std::size_t position) const {
    return *m_children.at(position);
  }

  /// As those of GapList, for the children.
  [[nodiscard]] bool lacksCount(std::size_t position) const {
    return m_children.lacksCount(position);
  }
  void countPlaces() noexcept { m_children.countPlaces(); }

  [[nodiscard]] LTLib::detail::FieldList& fields() { return m_fields; }
  [[nodiscard]] const LTLib::detail::FieldList& fields() const { return m_fields; }

  /// Whether the key's header has a form in a file, as far as that is known: it stays, as the names of
  /// a path do. Plain is a path whose names hold nothing that the reader seeks in a header.
  enum class Form : std::uint8_t { kUnknown, kPlain, kHas, kLacks };
  [[nodiscard]] Form form() const { return m_form; }
  void noteForm(Form form) { m_form = form; }

  QSCfgDataSection(const QSCfgDataSection&) = delete;
  QSCfgDataSection& operator=(const QSCfgDataSection&) = delete;
  ~QSCfgDataSection() = default;
  static void operator delete(void* memory) { ::operator delete(memory); }

 private:
  friend class QSCfgTree;

  // Beyond that a path is compared name by name: each section of a deep branch would have it once more.
  static constexpr std::size_t kLongestPath = 256;

  // Makes a section with its text behind it, in one block: its path, or where that is long its name.
  static std::unique_ptr<QSCfgDataSection> make(QSCfgDataSection* parent, std::string_view name,
                                                const LTLib::detail::PathHash& hash);
  QSCfgDataSection(QSCfgDataSection* parent, const LTLib::detail::PathHash& hash)
      : m_parent(parent), m_hash(hash) {}
  static void* operator new(std::size_t size, std::size_t textSize) {
    return ::operator new(size + textSize);
  }
  static void operator delete(void* memory, std::size_t /*textSize*/) { ::operator delete(memory); }

  [[nodiscard]] const char* text() const { return reinterpret_cast<const char*>(this + 1); }

  QSCfgDataSection* const m_parent;
  const LTLib::detail::PathHash m_hash;
  std::uint32_t m_textSize = 0;
  std::uint32_t m_nameSize = 0;
  std::uint32_t m_depth = 0;  // 0 for the top
  std::uint32_t m_place = 0;  // among the parent's children
  Form m_form = Form::kUnknown;
  bool m_hasPath = true;        // whether the text is the whole path; of the top it is the name
  bool m_hasBackslash = false;  // in its name, as only one that ends a path can
  bool m_hasNamesakes = false;  // whether two children did ever bear one name
  LTLib::detail::GapList<std::unique_ptr<QSCfgDataSection>> m_children;
  LTLib::detail::FieldList m_fields;
};

namespace LTLib::detail {

/// The last walk along a long path, from which the next one goes on: whoever goes through a deep branch
/// key by key would otherwise walk the whole way for each. Readers share it by giving it up: whoever
/// finds it in use does without. A section that goes is told of.
class LastWalk {
 public:
  /// How long a path has to be for this to cost less than the walk.
  static constexpr std::size_t kShortest = 256;

  /// Where the path leads: as `walk` tells, or one step on from here, by `step`.
  template <class Walk, class Step>
  QSCfgDataSection* follow(std::string_view path, Walk walk, Step step);

  void leave(const QSCfgDataSection& section) noexcept;

 private:
  [[nodiscard]] std::string_view nameBelow(std::string_view path) const;
  void remember(std::string_view path, QSCfgDataSection* section) noexcept;

  std::atomic<bool> m_inUse{false};
  std::string m_path;  // without two backslashes in a row, behind which the rest is one name
  QSCfgDataSection* m_section = nullptr;
};

}  // namespace LTLib::detail

/// The tree of one root, with the texts that a file brought and one index of all its sections. An
/// operation that runs out of memory leaves the tree as it was; no removal needs any.
class QSCfgTree {
 public:
  explicit QSCfgTree(std::string_view name);
  ~QSCfgTree();
  QSCfgTree(const QSCfgTree&) = delete;
  QSCfgTree& operator=(const QSCfgTree&) = delete;

  [[nodiscard]] QSCfgDataSection& top() const { return *m_top; }
  [[nodiscard]] LTLib::detail::TextStore& texts() { return m_texts; }

  /// The first child of that name, or null.
  [[nodiscard]] QSCfgDataSection* findSection(const QSCfgDataSection& parent,
                                              std::string_view name) const;
  /// The section that a key path leads to, or null.
  [[nodiscard]] QSCfgDataSection* findPath(std::string_view path) const;

  /// A new child, whether or not there is one of that name.
  QSCfgDataSection& addSection(QSCfgDataSection& parent, std::string_view name);
  QSCfgDataSection& findOrAddSection(QSCfgDataSection& parent, std::string_view name);

  /// Destroys a section without children, and its fields.
  void removeSection(QSCfgDataSection& section) noexcept;

  /// A number that no tree had before and that another one follows whenever a section goes: what was
  /// found while it was the same is still there.
  [[nodiscard]] std::uint64_t generation() const { return m_generation; }

 private:
  [[nodiscard]] QSCfgDataSection* walk(std::string_view path) const;
  [[nodiscard]] QSCfgDataSection* find(const QSCfgDataSection& parent, std::string_view name,
                                       const LTLib::detail::PathHash& hash) const;
  QSCfgDataSection& add(QSCfgDataSection& parent, std::string_view name,
                        const LTLib::detail::PathHash& hash, bool isFirst);

  LTLib::detail::TextStore m_texts;
  std::unique_ptr<QSCfgDataSection> m_top;
  // By the hash of the whole path; of several sections of one path, the first. It is true at any time:
  // sections come and go in addSection and removeSection alone.
  LTLib::detail::HashSlots<std::uint64_t, QSCfgDataSection*> m_index;
  mutable LTLib::detail::LastWalk m_lastWalk;
  std::uint64_t m_generation;
};

#endif  // LTLIB_FILEREGISTRY_TREE_CONFIG_TREE_H
