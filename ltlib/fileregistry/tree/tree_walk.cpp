#include "ltlib/fileregistry/tree/tree_walk.h"

#include "ltlib/fileregistry/tree/key_path.h"

namespace LTLib::detail {

QSCfgDataSection* findSection(QSFileKeyHandle& key) {
  const QSCfgTree& tree = *cfgRootOf(key.root()).tree;
  if (QSCfgDataSection* remembered = key.remembered(tree); remembered != nullptr) {
    return remembered;
  }
  QSCfgDataSection* const found = tree.findPath(key.path());
  if (found != nullptr) {
    key.remember(tree, *found);
  }
  return found;
}

MadeWay::MadeWay(QSCfgTree& tree, std::string_view path)
    : m_tree(tree), m_tip(&tree.top()), m_joint(nullptr) {
  try {
    if (lacksFirstComponent(path)) {
      // Such a section is new each time, so that none can be found.
      if (const std::string_view name = bracketedName(path); !name.empty()) {
        m_joint = m_tip;
        m_tip = &tree.addSection(*m_tip, name);
        m_section = m_tip;
      }
    } else if (splitKeyPath(path, [&](std::string_view name) {
                 goOn(name);
                 return true;
               })) {
      m_section = m_tip;
    }
  } catch (...) {
    takeBack();
    throw;
  }
}

MadeWay::~MadeWay() {
  takeBack();
}

void MadeWay::goOn(std::string_view name) {
  QSCfgDataSection* found = m_joint == nullptr ? m_tree.findSection(*m_tip, name) : nullptr;
  if (found == nullptr) {
    found = &m_tree.addSection(*m_tip, name);
    m_joint = m_joint == nullptr ? m_tip : m_joint;
  }
  m_tip = found;
}

void MadeWay::takeBack() noexcept {
  while (m_joint != nullptr && m_tip != m_joint) {
    QSCfgDataSection& last = *m_tip;
    m_tip = last.parent();
    m_tree.removeSection(last);
  }
}

bool removeSectionOf(QSFileKeyHandle& key) {
  QSCfgTree& tree = *cfgRootOf(key.root()).tree;
  QSCfgDataSection* const section =
      lacksFirstComponent(key.path()) ? tree.findSection(tree.top(), key.path()) : findSection(key);
  if (section == nullptr || section->sectionCount() != 0) {
    return false;
  }
  tree.removeSection(*section);
  return true;
}

}  // namespace LTLib::detail
