// The way from a name to the first node that bears it.
//
// An open table of one slot for each name. Nodes of one name form a ring in order of arrival, and
// the slot knows the last of them, whose next one is the first. The hash stands in the slot, so
// that neither growing nor probing looks at nodes of other names.
#ifndef LTLIB_FILEREGISTRY_TREE_NAME_INDEX_H
#define LTLIB_FILEREGISTRY_TREE_NAME_INDEX_H

#include <bit>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/tree/folded_name.h"

namespace LTLib::detail {

template <class Node>
class NameIndex {
 public:
  /// With room for that many names.
  explicit NameIndex(std::size_t names) : m_slots(std::bit_ceil(2 * names)) {}

  /// The first node of that name, or null.
  [[nodiscard]] Node* find(std::string_view name) const {
    Node* last = m_slots[placeOf(name, hashOfName(name))].last;
    return last != nullptr ? nextOf(*last) : nullptr;
  }

  /// Enters a node as the last of its name.
  void enter(Node& node) {
    if (4 * (m_used + 1) > 3 * m_slots.size()) {
      grow();
    }
    const std::size_t hash = hashOfName(node.name());
    Slot& slot = m_slots[placeOf(node.name(), hash)];
    if (slot.last == nullptr) {
      ++m_used;
      node.setNextNamesake(&node);
    } else {
      node.setNextNamesake(slot.last->nextNamesake());
      slot.last->setNextNamesake(&node);
    }
    slot = {&node, hash};
  }

  /// Takes out a node that is the first of its name.
  void leave(Node& node) {
    const std::size_t place = placeOf(node.name(), hashOfName(node.name()));
    if (m_slots[place].last != &node) {
      m_slots[place].last->setNextNamesake(node.nextNamesake());
      return;
    }
    --m_used;
    m_slots[place].last = nullptr;
    closeGap(place);
  }

 private:
  struct Slot {
    Node* last = nullptr;
    std::size_t hash = 0;
  };

  static Node* nextOf(const Node& node) { return static_cast<Node*>(node.nextNamesake()); }

  [[nodiscard]] std::size_t next(std::size_t place) const {
    return (place + 1) & (m_slots.size() - 1);
  }

  // The slot of a name, or the free one that it would get.
  [[nodiscard]] std::size_t placeOf(std::string_view name, std::size_t hash) const {
    std::size_t place = hash & (m_slots.size() - 1);
    while (m_slots[place].last != nullptr &&
           (m_slots[place].hash != hash || !equalNames(m_slots[place].last->name(), name))) {
      place = next(place);
    }
    return place;
  }

  void grow() {
    const std::vector<Slot> slots = std::exchange(m_slots, std::vector<Slot>(2 * m_slots.size()));
    for (const Slot& slot : slots) {
      if (slot.last != nullptr) {
        std::size_t place = slot.hash & (m_slots.size() - 1);
        while (m_slots[place].last != nullptr) {
          place = next(place);
        }
        m_slots[place] = slot;
      }
    }
  }

  // A search ends at a free slot, so that no name may stand behind one that its search would meet.
  void closeGap(std::size_t gap) {
    for (std::size_t place = next(gap); m_slots[place].last != nullptr; place = next(place)) {
      const std::size_t mask = m_slots.size() - 1;
      const std::size_t wayFromHome = (place - m_slots[place].hash) & mask;
      if (wayFromHome >= ((place - gap) & mask)) {
        m_slots[gap] = std::exchange(m_slots[place], {});
        gap = place;
      }
    }
  }

  std::vector<Slot> m_slots;  // always a power of two
  std::size_t m_used = 0;
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_NAME_INDEX_H
