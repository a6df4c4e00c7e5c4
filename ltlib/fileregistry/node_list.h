// Named nodes in order of arrival, with a quick way from a name to the first node that bears it.
//
// Several nodes may bear one name; look-ups and removals act on the first. Positions count from 0
// and close up behind a removal. Short lists are searched as they stand; longer ones get an index.
#ifndef LTLIB_FILEREGISTRY_NODE_LIST_H
#define LTLIB_FILEREGISTRY_NODE_LIST_H

#include <cstddef>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/folded_name.h"

namespace LTLib::detail {

template <class Node>
class NodeList {
 public:
  [[nodiscard]] std::size_t size() const { return m_nodes.size() - m_gone; }
  [[nodiscard]] bool empty() const { return size() == 0; }
  [[nodiscard]] Node& at(std::size_t position) const { return *m_nodes[m_gone + position]; }

  [[nodiscard]] Node* find(std::string_view name) const {
    if (m_index != nullptr) {
      const auto found = m_index->find(name);
      return found != m_index->end() ? found->second.first : nullptr;
    }
    for (std::size_t i = m_gone; i < m_nodes.size(); ++i) {
      if (equalNames(m_nodes[i]->name(), name)) {
        return m_nodes[i].get();
      }
    }
    return nullptr;
  }

  Node& append(std::unique_ptr<Node> node) {
    Node& added = *node;
    m_nodes.push_back(std::move(node));
    if (m_index != nullptr) {
      enter(added);
    } else if (size() > kIndexedFrom) {
      buildIndex();
    }
    return added;
  }

  /// Takes out a node of this list. It must be the first of its name.
  std::unique_ptr<Node> take(Node& node) {
    if (m_index != nullptr) {
      leave(node);
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
    return std::exchange(m_nodes, {});
  }

  void clear() { releaseAll(); }

 private:
  static constexpr std::size_t kIndexedFrom = 8;

  struct Namesakes {
    Node* first;
    Node* last;
  };
  using Index = std::unordered_map<std::string_view, Namesakes, NameHash, NameEqual>;

  void buildIndex() {
    m_index = std::make_unique<Index>();
    for (std::size_t i = m_gone; i < m_nodes.size(); ++i) {
      enter(*m_nodes[i]);
    }
  }

  void enter(Node& node) {
    node.setNextNamesake(nullptr);
    const auto [place, isNew] = m_index->try_emplace(node.name(), Namesakes{&node, &node});
    if (!isNew) {
      place->second.last->setNextNamesake(&node);
      place->second.last = &node;
    }
  }

  // The index looks at the name of the first namesake, so that the next one takes its place.
  void leave(Node& node) {
    const auto place = m_index->find(node.name());
    const Namesakes rest{static_cast<Node*>(node.nextNamesake()), place->second.last};
    m_index->erase(place);
    if (rest.first != nullptr) {
      m_index->try_emplace(rest.first->name(), rest);
    }
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
  std::unique_ptr<Index> m_index;
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_NODE_LIST_H
