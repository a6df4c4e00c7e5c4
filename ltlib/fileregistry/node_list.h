// Named nodes in order of arrival, with a quick way from a name to the first node that bears it.
//
// Several nodes may bear one name; look-ups and removals act on the first. Positions count from 0
// and close up behind a removal. Short lists are searched as they stand; longer ones get an index
// at their first look-up. A look-up may thus change the list's own state: it needs the lock as
// well.
#ifndef LTLIB_FILEREGISTRY_NODE_LIST_H
#define LTLIB_FILEREGISTRY_NODE_LIST_H

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/folded_name.h"
#include "ltlib/fileregistry/name_index.h"

namespace LTLib::detail {

template <class Node>
class NodeList {
 public:
  [[nodiscard]] std::size_t size() const { return m_nodes.size() - m_gone; }
  [[nodiscard]] bool empty() const { return size() == 0; }
  [[nodiscard]] Node& at(std::size_t position) const { return *m_nodes[m_gone + position]; }

  [[nodiscard]] Node* find(std::string_view name) const {
    if (size() > kIndexedFrom) {
      return wholeIndex().find(name);
    }
    for (std::size_t i = m_gone; i < m_nodes.size(); ++i) {
      if (equalNames(m_nodes[i]->name(), name)) {
        return m_nodes[i].get();
      }
    }
    return nullptr;
  }

  Node& append(std::unique_ptr<Node> node) {
    m_nodes.push_back(std::move(node));
    return *m_nodes.back();
  }

  /// Takes out a node of this list. It must be the first of its name.
  std::unique_ptr<Node> take(Node& node) {
    if (m_index != nullptr) {
      wholeIndex().leave(node);
      --m_indexed;
    }
    std::size_t place = m_gone;
    while (m_nodes[place].get() != &node) {
      ++place;
    }
    std::unique_ptr<Node> taken = std::move(m_nodes[place]);
    if (place == m_gone) {
      dropFront();
    } else {
      m_nodes.erase(m_nodes.begin() + static_cast<std::ptrdiff_t>(place));
    }
    return taken;
  }

  /// Takes all nodes out, in order.
  std::vector<std::unique_ptr<Node>> releaseAll() {
    m_nodes.erase(m_nodes.begin(), m_nodes.begin() + static_cast<std::ptrdiff_t>(m_gone));
    m_gone = 0;
    m_index.reset();
    m_indexed = 0;
    return std::exchange(m_nodes, {});
  }

  void clear() { releaseAll(); }

 private:
  static constexpr std::size_t kIndexedFrom = 8;

  // Brought up to date at each look-up, so that nodes which are only appended cost nothing here.
  NameIndex<Node>& wholeIndex() const {
    if (m_index == nullptr) {
      m_index = std::make_unique<NameIndex<Node>>(size());
    }
    for (; m_indexed < size(); ++m_indexed) {
      m_index->enter(at(m_indexed));
    }
    return *m_index;
  }

  // Deleting a whole list from its front must not move all the others each time.
  void dropFront() {
    ++m_gone;
    if (2 * m_gone >= m_nodes.size()) {
      m_nodes.erase(m_nodes.begin(), m_nodes.begin() + static_cast<std::ptrdiff_t>(m_gone));
      m_gone = 0;
    }
  }

  std::vector<std::unique_ptr<Node>> m_nodes;
  std::size_t m_gone = 0;  // empty places at the front
  mutable std::unique_ptr<NameIndex<Node>> m_index;
  mutable std::size_t m_indexed = 0;  // so many nodes from the front are in the index
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_NODE_LIST_H
