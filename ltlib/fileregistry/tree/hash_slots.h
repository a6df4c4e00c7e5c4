// An open hash table of items by their hashes; what an item is called only its owner knows.
//
// It holds one item for each name, and none twice: whoever enters an item has found that it is not
// there. The hash stands in the slot as well, so that neither growing nor probing touches the memory
// of other items. No lock: readers may go side by side, a change excludes all others.
#ifndef LTLIB_FILEREGISTRY_TREE_HASH_SLOTS_H
#define LTLIB_FILEREGISTRY_TREE_HASH_SLOTS_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

namespace LTLib::detail {

/// The default value of `Item` is none that is entered.
template <class Hash, class Item>
class HashSlots {
 public:
  /// The item of that hash for which `matches` gives true, or the default value.
  template <class Matches>
  [[nodiscard]] Item find(Hash hash, Matches matches) const {
    if (m_slots.empty()) {
      return Item();
    }
    std::size_t place = homeOf(hash);
    while (m_slots[place].item != Item() &&
           (m_slots[place].hash != hash || !matches(m_slots[place].item))) {
      place = next(place);
    }
    return m_slots[place].item;
  }

  /// Makes room for so many items more, whose `enter` then cannot fail.
  void makeRoom(std::size_t more) {
    // Beyond three quarters the runs of taken slots, which each search goes through, get long.
    if (const std::size_t fewest = (m_used + more) / 3 * 4 + 4; fewest > m_slots.size()) {
      const std::vector<Slot> slots =
          std::exchange(m_slots, std::vector<Slot>(std::bit_ceil(fewest)));
      for (const Slot& slot : slots) {
        if (slot.item != Item()) {
          m_slots[freeFor(slot.hash)] = slot;
        }
      }
    }
  }

  void enter(Hash hash, Item item) noexcept {
    m_slots[freeFor(hash)] = {hash, item};
    ++m_used;
  }

  /// Takes out an item that is there.
  void leave(Hash hash, Item item) noexcept {
    std::size_t place = homeOf(hash);
    while (m_slots[place].item != item) {
      place = next(place);
    }
    m_slots[place] = {};
    --m_used;
    closeGap(place);
  }

  /// Takes all items out, and keeps the room.
  void clear() noexcept {
    std::fill(m_slots.begin(), m_slots.end(), Slot());
    m_used = 0;
  }

 private:
  struct Slot {
    Hash hash{};
    Item item{};
  };

  [[nodiscard]] std::size_t homeOf(Hash hash) const {
    return static_cast<std::size_t>(hash) & (m_slots.size() - 1);
  }

  [[nodiscard]] std::size_t next(std::size_t place) const {
    return (place + 1) & (m_slots.size() - 1);
  }

  [[nodiscard]] std::size_t freeFor(Hash hash) const {
    std::size_t place = homeOf(hash);
    while (m_slots[place].item != Item()) {
      place = next(place);
    }
    return place;
  }

  // A search ends at a free slot, so that none may lie between an item and its home, the slot that its
  // hash asks for. Each item of the run whose way from home leads over the gap is moved into it, which
  // opens the next gap. A mark in place of the gap would be quicker, but would fill up tables in which
  // keys come and go.
  void closeGap(std::size_t gap) noexcept {
    for (std::size_t place = next(gap); m_slots[place].item != Item(); place = next(place)) {
      const std::size_t mask = m_slots.size() - 1;
      const std::size_t wayFromHome = (place - homeOf(m_slots[place].hash)) & mask;
      if (wayFromHome >= ((place - gap) & mask)) {
        m_slots[gap] = std::exchange(m_slots[place], {});
        gap = place;
      }
    }
  }

  std::vector<Slot> m_slots;  // empty, or a power of two, so that a mask stands for a division
  std::size_t m_used = 0;
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_HASH_SLOTS_H
