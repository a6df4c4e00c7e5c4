// The way from a name to the first node that bears it.
//
// An open table of one slot for each name, not for each node: a file may bring a name any number of
// times, and only the first of them is ever asked for. Nodes of one name form a ring in order of
// arrival. The slot knows the last of them, behind which the next one is entered; the one after the
// last is the first, which a look-up wants. The hash stands in the slot as well, so that neither
// growing nor probing touches the memory of other nodes.
//
// The index holds what its list has entered and stays true as long as the list tells it of each
// node that goes (NodeList::take); names never change. It has no lock: enter, leave and the list's
// bringing it up to date need the same lock as a change of the tree.
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
  /// With room for that many names before it grows; a power of two lets a mask stand for a division.
  explicit NameIndex(std::size_t names) : m_slots(std::bit_ceil(2 * names)) {}

  /// The first node of that name, or null.
  [[nodiscard]] Node* find(std::string_view name) const {
    Node* last = m_slots[placeOf(name, hashOfName(name))].last;
    return last != nullptr ? nextOf(*last) : nullptr;
  }

  /// Enters a node as the last of its name.
  void enter(Node& node) {
    // Beyond three quarters the runs of taken slots, which each search goes through, get long.
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

  /// Takes out a node that is the first of its name; from inside the ring there would be no way to
  /// the one before it.
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

  // A search ends at a free slot, so that none may lie between a name and its home, the slot that its
  // hash asks for. Each name of the run whose way from home leads over the gap is moved into it, which
  // opens the next gap. A mark in place of the gap would be quicker, but would fill up tables in which
  // keys come and go.
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
