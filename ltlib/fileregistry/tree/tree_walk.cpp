// Programs ask for one key again and again, or for one after its parent, so that a walk remembers
// where it ended (QSCfgLastWalk). It is written under the tree's lock, by walks that only read as
// well.
#include "ltlib/fileregistry/tree/tree_walk.h"

#include <string>
#include <utility>

#include "ltlib/fileregistry/tree/key_path.h"

namespace LTLib::detail {
namespace {

// Whether the same path leads to the same section again, and a longer one on from there. A walk that
// ends in a backslash, or adds a section each time, has to be made each time. Behind two backslashes
// in a row the rest is one name, so that such a path is the start of no other.
bool leadsBack(std::string_view path) {
  return path.back() != '\\' && !lacksFirstComponent(path) &&
         path.find("\\\\") == std::string_view::npos;
}

// The name by which a path goes on from another one; empty if it leads elsewhere, or further.
std::string_view nameBelow(std::string_view above, std::string_view path) {
  const std::size_t start = above.size() + 1;
  if (path.size() <= start || path[start - 1] != '\\' || !path.starts_with(above)) {
    return {};
  }
  const std::string_view name = path.substr(start);
  return name.find('\\') == std::string_view::npos ? name : std::string_view{};
}

// Keeps the remembered walk off a section that goes. A key goes ahead of the one above it when a
// whole branch goes, so that the next walk most often ends there. No walk leads to a child of the
// root.
void stepUp(QSCfgLastWalk& last) {
  last.path.resize(last.path.rfind('\\'));
  last.section = lacksFirstComponent(last.path) ? nullptr : last.section->parent();
}

}  // namespace

bool Branch::go(std::string_view name, bool create) {
  if (QSCfgDataSection* found = m_tip->findSection(name); found != nullptr) {
    m_tip = found;
    return true;
  }
  if (create) {
    add(name);
  }
  return create;
}

void Branch::add(std::string_view name) {
  auto section = std::make_unique<QSCfgDataSection>(name);
  // Only the topmost new section stays apart; those below it hang from it already.
  if (m_added != nullptr) {
    m_tip = &m_tip->adoptSection(std::move(section));
  } else {
    m_joint = m_tip;
    m_added = std::move(section);
    m_tip = m_added.get();
  }
}

void Branch::join() {
  if (m_added != nullptr) {
    m_joint->adoptSection(std::move(m_added));
  }
}

bool cfgResolveSection(std::string_view path, Branch& branch, bool create) {
  if (!lacksFirstComponent(path)) {
    return splitKeyPath(path, [&](std::string_view name) { return branch.go(name, create); });
  }
  // Such a section is new each time, so that none can be found.
  const std::string_view name = create ? bracketedName(path) : std::string_view{};
  if (!name.empty()) {
    branch.add(name);
  }
  return !name.empty();
}

KeyWalk::KeyWalk(const QSFileKeyHandle& key, bool create) : m_branch(*cfgRootOf(key.root).section) {
  QSCfgLastWalk& last = cfgRootOf(key.root).lastWalk;
  if (last.section != nullptr && last.path == key.path) {
    m_section = last.section;
    return;
  }
  const std::string_view name = nameBelow(last.path, key.path);
  const bool goesOn = last.section != nullptr && !name.empty();
  if (goesOn) {
    m_branch = Branch(*last.section);
  }
  if (goesOn ? m_branch.go(name, create) : cfgResolveSection(key.path, m_branch, create)) {
    m_section = &m_branch.tip();
    if (goesOn || leadsBack(key.path)) {
      remember(last, key.path, goesOn ? last.path.size() : 0);
    }
  }
}

// Nothing is remembered if this fails, or if the walk is given up: the section comes in last, when
// it hangs in the tree. The part of the path that both have in common keeps its memory.
void KeyWalk::remember(QSCfgLastWalk& last, std::string_view path, std::size_t shared) {
  last.section = nullptr;
  last.path.resize(shared);
  last.path.append(path.substr(shared));
  m_remembered = &last;
}

void KeyWalk::join() {
  m_branch.join();
  if (m_remembered != nullptr) {
    m_remembered->section = m_section;
  }
}

bool removeSectionOf(const QSFileKeyHandle& key) {
  QSCfgRoot& root = cfgRootOf(key.root);
  if (lacksFirstComponent(key.path)) {
    return root.section->removeSection(key.path);
  }
  KeyWalk walk(key, false);
  walk.join();
  QSCfgDataSection* section = walk.section();
  if (section == nullptr || section->sectionCount() != 0) {
    return false;
  }
  if (root.lastWalk.section == section) {
    stepUp(root.lastWalk);
  }
  section->parent()->removeSection(*section);
  return true;
}

}  // namespace LTLib::detail
