// One look into one table leads to a section, however deep it lies, and one comparison tells that it is
// the right one: a path's text says which names it holds, as long as none holds a backslash.
#include "ltlib/fileregistry/tree/config_tree.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/tree/folded_name.h"
#include "ltlib/fileregistry/tree/key_path.h"

namespace {

using LTLib::detail::equalNames;
using LTLib::detail::PathHash;

std::uint64_t nextGeneration() {
  constinit static std::atomic<std::uint64_t> s_last{0};
  return s_last.fetch_add(1, std::memory_order_relaxed) + 1;
}

// How many names a path holds; 0 for one that leads nowhere.
std::uint32_t namesIn(std::string_view path) {
  std::uint32_t count = 0;
  return LTLib::detail::splitKeyPath(path,
                                     [&](std::string_view /*name*/) {
                                       ++count;
                                       return true;
                                     })
             ? count
             : 0;
}

PathHash hashBelow(const QSCfgDataSection& parent, const PathHash& hash, std::string_view name) {
  PathHash below = hash;
  if (parent.parent() != nullptr) {
    below.add("\\");
  }
  below.add(name);
  return below;
}

}  // namespace

std::unique_ptr<QSCfgDataSection> QSCfgDataSection::make(QSCfgDataSection* parent,
                                                         std::string_view name,
                                                         const PathHash& hash) {
  std::string_view above;  // what stands in the path ahead of the name, but for its backslash
  bool hasPath = true;
  if (parent != nullptr && parent->m_parent != nullptr) {
    hasPath = parent->m_hasPath && parent->m_textSize + 1 + name.size() <= kLongestPath;
    above = hasPath ? std::string_view(parent->text(), parent->m_textSize) : std::string_view();
  }
  const std::size_t size = above.size() + (above.empty() ? 0 : 1) + name.size();
  std::unique_ptr<QSCfgDataSection> made(new (size) QSCfgDataSection(parent, hash));
  char* to = std::copy(above.begin(), above.end(), const_cast<char*>(made->text()));
  if (!above.empty()) {
    *to++ = '\\';
  }
  std::copy(name.begin(), name.end(), to);
  made->m_textSize = static_cast<std::uint32_t>(size);
  made->m_nameSize = static_cast<std::uint32_t>(name.size());
  made->m_depth = parent != nullptr ? parent->m_depth + 1 : 0;
  made->m_hasPath = hasPath;
  made->m_hasBackslash = name.find('\\') != std::string_view::npos;
  return made;
}

std::string_view QSCfgDataSection::path(std::string& held) const {
  if (m_hasPath) {
    return {text(), m_textSize};
  }
  std::vector<const QSCfgDataSection*> way;
  const QSCfgDataSection* at = this;
  for (; !at->m_hasPath; at = at->m_parent) {
    way.push_back(at);
  }
  held.assign(at->text(), at->m_textSize);
  for (; !way.empty(); way.pop_back()) {
    held.append("\\").append(way.back()->name());
  }
  return held;
}

bool QSCfgDataSection::isAt(std::string_view path) const {
  const QSCfgDataSection* at = this;
  for (; !at->m_hasPath; at = at->m_parent) {
    const std::string_view name = at->name();
    if (path.size() <= name.size() || path[path.size() - name.size() - 1] != '\\' ||
        !equalNames(path.substr(path.size() - name.size()), name)) {
      return false;
    }
    path.remove_suffix(name.size() + 1);
  }
  return equalNames(path, {at->text(), at->m_textSize});
}

namespace LTLib::detail {

template <class Walk, class Step>
QSCfgDataSection* LastWalk::follow(std::string_view path, Walk walk, Step step) {
  if (m_inUse.exchange(true, std::memory_order_acquire)) {
    return walk();
  }
  QSCfgDataSection* found = m_section;
  if (found == nullptr || path != m_path) {
    const std::string_view name = nameBelow(path);
    found = found == nullptr || name.empty() ? walk() : step(*found, name);
    remember(path, found);
  }
  m_inUse.store(false, std::memory_order_release);
  return found;
}

// Empty if the path leads elsewhere, or further.
std::string_view LastWalk::nameBelow(std::string_view path) const {
  const std::size_t start = m_path.size() + 1;
  if (path.size() <= start || path[start - 1] != '\\' || !path.starts_with(m_path)) {
    return {};
  }
  const std::string_view name = path.substr(start);
  return name.find('\\') == std::string_view::npos ? name : std::string_view();
}

// The part of the path that both have in common is not copied again.
void LastWalk::remember(std::string_view path, QSCfgDataSection* section) noexcept {
  const bool goesOn = path.starts_with(m_path);
  const std::size_t shared = goesOn ? m_path.size() : 0;
  m_section = nullptr;
  if (section == nullptr || path.find("\\\\", shared) != std::string_view::npos) {
    return;
  }
  try {
    m_path.resize(shared);
    m_path.append(path.substr(shared));
    m_section = section;
  } catch (const std::bad_alloc&) {
    m_path.clear();
  }
}

// Whoever deletes a branch goes on with the key above, unless that lies right below the top, where no
// path leads. A walk that is in use while something changes is one that a fork has cut off.
void LastWalk::leave(const QSCfgDataSection& section) noexcept {
  if (!m_inUse.load(std::memory_order_relaxed) && m_section == &section) {
    m_path.resize(m_path.rfind('\\'));
    m_section = m_path.find('\\') != std::string::npos ? section.parent() : nullptr;
  }
}

}  // namespace LTLib::detail

QSCfgTree::QSCfgTree(std::string_view name)
    : m_top(QSCfgDataSection::make(nullptr, name, {})), m_generation(nextGeneration()) {}

// A tree can be as deep as its file says, so that its end must not recurse; and it may come while
// an exception for want of memory passes, so that it must not ask for any.
QSCfgTree::~QSCfgTree() {
  for (QSCfgDataSection* at = m_top.get(); at != nullptr;) {
    if (at->sectionCount() != 0) {
      at = at->m_children.slot(at->m_children.places() - 1).get();
    } else {
      at = at->m_parent;
      if (at != nullptr) {
        at->m_children.dropLast();
      }
    }
  }
}

QSCfgDataSection* QSCfgTree::findPath(std::string_view path) const {
  return path.size() < LTLib::detail::LastWalk::kShortest
             ? walk(path)
             : m_lastWalk.follow(
                   path, [&] { return walk(path); },
                   [&](const QSCfgDataSection& from, std::string_view name) {
                     return findSection(from, name);
                   });
}

// Where no name holds a backslash the text alone says where a path leads, but that none leads right below
// the top; where one does, the names are counted as well.
QSCfgDataSection* QSCfgTree::walk(std::string_view path) const {
  PathHash hash;
  hash.add(path);
  return m_index.find(hash.value(), [&](const QSCfgDataSection* candidate) {
    return candidate->isAt(path) && (candidate->m_hasBackslash ? namesIn(path) == candidate->m_depth
                                                               : candidate->m_depth > 1);
  });
}

QSCfgDataSection* QSCfgTree::find(const QSCfgDataSection& parent, std::string_view name,
                                  const PathHash& hash) const {
  return m_index.find(hash.value(), [&](const QSCfgDataSection* candidate) {
    return candidate->m_parent == &parent && equalNames(candidate->name(), name);
  });
}

QSCfgDataSection* QSCfgTree::findSection(const QSCfgDataSection& parent,
                                         std::string_view name) const {
  return find(parent, name, hashBelow(parent, parent.m_hash, name));
}

QSCfgDataSection& QSCfgTree::addSection(QSCfgDataSection& parent, std::string_view name) {
  const PathHash hash = hashBelow(parent, parent.m_hash, name);
  return add(parent, name, hash, find(parent, name, hash) == nullptr);
}

QSCfgDataSection& QSCfgTree::findOrAddSection(QSCfgDataSection& parent, std::string_view name) {
  const PathHash hash = hashBelow(parent, parent.m_hash, name);
  QSCfgDataSection* const found = find(parent, name, hash);
  return found != nullptr ? *found : add(parent, name, hash, true);
}

QSCfgDataSection& QSCfgTree::add(QSCfgDataSection& parent, std::string_view name,
                                 const PathHash& hash, bool isFirst) {
  constexpr std::size_t kMost = std::numeric_limits<std::uint32_t>::max();
  if (name.size() > kMost - 1 - QSCfgDataSection::kLongestPath ||
      parent.m_children.places() == kMost) {
    throw std::length_error("a key of the file registry has too long a name or too many sub-keys");
  }
  std::unique_ptr<QSCfgDataSection> made = QSCfgDataSection::make(&parent, name, hash);
  QSCfgDataSection& section = *made;
  m_index.makeRoom(1);
  parent.m_children.makeRoom(1);
  section.m_place = static_cast<std::uint32_t>(parent.m_children.places());
  parent.m_children.append(std::move(made));
  if (isFirst) {
    m_index.enter(hash.value(), &section);
  } else {
    parent.m_hasNamesakes = true;
  }
  return section;
}

// The next section of a name that repeats is sought along the row: only children of the top can be
// such, made one by one.
void QSCfgTree::removeSection(QSCfgDataSection& section) noexcept {
  QSCfgDataSection& parent = *section.m_parent;
  auto& children = parent.m_children;
  const bool isFirst = findSection(parent, section.name()) == &section;
  if (isFirst) {
    m_index.leave(section.m_hash.value(), &section);
  }
  m_generation = nextGeneration();
  m_lastWalk.leave(section);
  const auto gone = children.take(section.m_place, [&](std::size_t place) {
    children.slot(place)->m_place = static_cast<std::uint32_t>(place);
  });
  for (std::size_t place = 0; isFirst && parent.m_hasNamesakes && place < children.places();
       ++place) {
    QSCfgDataSection* const other = children.slot(place).get();
    if (other != nullptr && equalNames(other->name(), gone->name())) {
      m_index.enter(other->m_hash.value(), other);
      return;
    }
  }
}
