// Named nodes in order of arrival, with a quick way from a name to the first node that bears it.
//
// Several nodes may bear one name; look-ups and removals act on the first. Positions count from 0
// and close up behind a removal. What is removed leaves a gap, which is closed once half of the
// list is gaps, so that a removal costs the same wherever it happens: closing half a list costs as
// much as the removals that made the gaps. Places count the gaps, positions do not.
//
// Short lists are searched as they stand; longer ones get an index at their first look-up. A look-up
// may thus change the list's own state, as may asking for a position: both need the lock that a
// change needs, even of a reader among readers, and may run out of memory, which leaves the nodes
// alone.
#ifndef LTLIB_FILEREGISTRY_TREE_NODE_LIST_H
#define LTLIB_FILEREGISTRY_TREE_NODE_LIST_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/tree/folded_name.h"
#include "ltlib/fileregistry/tree/name_index.h"
#include "ltlib/fileregistry/tree/taken_places.h"

namespace LTLib::detail {

template <class Node>
class NodeList {
 public:
  [[nodiscard]] std::size_t size() const { return m_nodes.size() - m_gaps; }
  [[nodiscard]] bool empty() const { return m_nodes.empty(); }
  [[nodiscard]] Node& at(std::size_t position) const {
    return *m_nodes[m_gaps == 0 ? position : places().at(position)];
  }
  /// Requires: the list is not empty.
  [[nodiscard]] Node& last() const { return *m_nodes.back(); }

  [[nodiscard]] Node* find(std::string_view name) const {
    if (size() > kIndexedFrom) {
      return names().find(name);
    }
    for (const std::unique_ptr<Node>& node : m_nodes) {
      if (node != nullptr && equalNames(node->name(), name)) {
        return node.get();
      }
    }
    return nullptr;
  }

  /// On failure the list is as it was, and the node is gone.
  Node& append(std::unique_ptr<Node> node) {
    node->setPlace(m_nodes.size());
    m_nodes.push_back(std::move(node));
    return *m_nodes.back();
  }

  /// Makes room for so many nodes more, whose `append` then cannot fail.
  void reserveFor(std::size_t more) { m_nodes.reserve(m_nodes.size() + more); }

  /// Takes out a node of this list. It must be the first of its name. Allocates nothing, so that
  /// what has to go can go when memory has run out.
  std::unique_ptr<Node> take(Node& node) noexcept {
    const std::size_t place = node.place();
    if (m_aids != nullptr) {
      m_aids->leave(node, place);
    }
    std::unique_ptr<Node> taken = std::move(m_nodes[place]);
    ++m_gaps;
    dropLastGaps();
    if (2 * m_gaps > m_nodes.size()) {
      closeGaps();
    }
    return taken;
  }

  /// Destroys the last node, whatever its name. Requires: the list is not empty.
  void dropLast() noexcept {
    // The last node need not be the first of its name, as the index would have it.
    m_aids.reset();
    take(last());
  }

  /// Takes all nodes out, in order.
  std::vector<std::unique_ptr<Node>> releaseAll() noexcept {
    if (m_gaps != 0) {
      closeGaps();
    }
    m_aids.reset();
    return std::exchange(m_nodes, {});
  }

 private:
  // Comparing so few names, mostly by their lengths, costs less than hashing one.
  static constexpr std::size_t kIndexedFrom = 8;

  // What a list needs only once it is long or has gaps: most lists never do, and pay one pointer.
  // Each part knows how many places from the front it covers, and is brought up to date when it is
  // asked, so that nodes which are only appended cost nothing here. What keeps both true: a place
  // within what is covered changes in `take` alone, which tells them, and places move in closeGaps
  // alone, which counts anew.
  struct Aids {
    std::optional<NameIndex<Node>> names;
    std::size_t indexed = 0;  // the nodes of so many places from the front are in the index
    TakenPlaces places;

    void leave(Node& node, std::size_t place) noexcept {
      if (place < indexed) {
        names->leave(node);
      }
      if (place < places.size()) {
        places.free(place);
      }
    }
  };

  Aids& aids() const {
    if (m_aids == nullptr) {
      m_aids = std::make_unique<Aids>();
    }
    return *m_aids;
  }

  const NameIndex<Node>& names() const {
    Aids& aids = this->aids();
    if (!aids.names) {
      aids.names.emplace(size());
    }
    for (; aids.indexed < m_nodes.size(); ++aids.indexed) {
      if (const std::unique_ptr<Node>& node = m_nodes[aids.indexed]; node != nullptr) {
        aids.names->enter(*node);
      }
    }
    return *aids.names;
  }

  const TakenPlaces& places() const {
    TakenPlaces& places = aids().places;
    while (places.size() < m_nodes.size()) {
      places.append(m_nodes[places.size()] != nullptr);
    }
    return places;
  }

  void dropLastGaps() noexcept {
    while (!m_nodes.empty() && m_nodes.back() == nullptr) {
      m_nodes.pop_back();
      --m_gaps;
    }
    if (m_aids != nullptr) {
      m_aids->indexed = std::min(m_aids->indexed, m_nodes.size());
      m_aids->places.shrink(m_nodes.size());
    }
  }

  // The index goes by nodes and stays; only the count of places that it covers is another then.
  void closeGaps() noexcept {
    if (m_aids != nullptr) {
      const auto indexedEnd = m_nodes.begin() + static_cast<std::ptrdiff_t>(m_aids->indexed);
      m_aids->indexed -= static_cast<std::size_t>(std::count(m_nodes.begin(), indexedEnd, nullptr));
      m_aids->places = {};
    }
    std::erase(m_nodes, nullptr);
    m_gaps = 0;
    for (std::size_t place = 0; place < m_nodes.size(); ++place) {
      m_nodes[place]->setPlace(place);
    }
  }

  std::vector<std::unique_ptr<Node>> m_nodes;  // null in a gap; the last is none
  std::size_t m_gaps = 0;
  mutable std::unique_ptr<Aids> m_aids;  // null until a look-up in a long list, or gaps, want it
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_NODE_LIST_H
