// Slots in order of arrival, from which one can be taken anywhere at the same cost.
//
// Positions count from 0 and close up behind a removal. What is taken leaves a gap, which is closed
// once half of the list is gaps, so that closing costs no more than the removals that made the gaps.
// Places count the gaps, positions do not; what leads from one to the other among gaps is counted
// when somebody asks. No lock: readers may go side by side, a change excludes
// all others.
#ifndef LTLIB_FILEREGISTRY_TREE_GAP_LIST_H
#define LTLIB_FILEREGISTRY_TREE_GAP_LIST_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/tree/taken_places.h"

namespace LTLib::detail {

/// A `Slot` is moved without exceptions, and compares as true with null when it holds nothing.
template <class Slot>
class GapList {
 public:
  [[nodiscard]] std::size_t size() const { return m_slots.size() - m_gaps; }
  [[nodiscard]] Slot& at(std::size_t position) { return m_slots[placeOf(position)]; }
  [[nodiscard]] const Slot& at(std::size_t position) const { return m_slots[placeOf(position)]; }

  [[nodiscard]] std::size_t places() const { return m_slots.size(); }
  /// The slot at a place; empty in a gap.
  [[nodiscard]] Slot& slot(std::size_t place) { return m_slots[place]; }
  [[nodiscard]] const Slot& slot(std::size_t place) const { return m_slots[place]; }

  /// The place of a position. Requires: there is one.
  [[nodiscard]] std::size_t placeOf(std::size_t position) const {
    return m_gaps == 0 ? position : placeAmongGaps(position);
  }

  /// Whether `placeOf` would have to go through the list.
  [[nodiscard]] bool lacksCount(std::size_t position) const {
    return m_gaps != 0 && position != 0 && m_taken == nullptr;
  }
  /// Spares `placeOf` that, unless there is no memory for it.
  void countPlaces() noexcept {
    try {
      auto taken = std::make_unique<TakenPlaces>();
      taken->makeRoom(m_slots.size());
      for (const Slot& slot : m_slots) {
        taken->append(!isGap(slot));
      }
      m_taken = std::move(taken);
    } catch (const std::bad_alloc&) {
      m_taken = nullptr;
    }
  }

  /// Makes room for so many slots more, whose `append` then cannot fail.
  void makeRoom(std::size_t more = 1) {
    if (m_taken != nullptr) {
      m_taken->makeRoom(more);
    }
    // The first room is exact, since most lists are filled once.
    if (const std::size_t size = m_slots.size() + more; size > m_slots.capacity()) {
      m_slots.reserve(m_slots.empty() ? size : std::max(size, 2 * m_slots.size()));
    }
  }

  void append(Slot slot) noexcept {
    m_slots.push_back(std::move(slot));
    if (m_taken != nullptr) {
      m_taken->append(true);
    }
  }

  /// Takes out what is at a place, and calls `moved` for each place whose slot is another then.
  /// Needs no memory, so that what has to go can go when there is none.
  template <class Moved>
  Slot take(std::size_t place, Moved moved) noexcept {
    Slot taken = std::exchange(m_slots[place], Slot());
    ++m_gaps;
    if (m_taken != nullptr) {
      m_taken->free(place);
    }
    dropLastGaps();
    if (2 * m_gaps > m_slots.size()) {
      closeGaps();
      for (std::size_t i = 0; i < m_slots.size(); ++i) {
        moved(i);
      }
    }
    m_first = m_slots.empty() ? 0 : m_first;
    while (m_first < m_slots.size() && isGap(m_slots[m_first])) {
      ++m_first;
    }
    return taken;
  }

  /// Destroys the last slot. Requires: the list is not empty.
  void dropLast() noexcept {
    take(m_slots.size() - 1, [](std::size_t) {});
  }

 private:
  static bool isGap(const Slot& slot) { return slot == nullptr; }

  void dropLastGaps() noexcept {
    while (!m_slots.empty() && isGap(m_slots.back())) {
      m_slots.pop_back();
      --m_gaps;
    }
    if (m_taken != nullptr) {
      m_taken->shrink(m_slots.size());
    }
  }

  void closeGaps() noexcept {
    std::erase_if(m_slots, isGap);
    m_gaps = 0;
    m_first = 0;
    m_taken.reset();
  }

  std::size_t placeAmongGaps(std::size_t position) const {
    if (m_taken != nullptr) {
      return m_taken->at(position);
    }
    std::size_t place = m_first;
    for (std::size_t passed = 0; passed < position || isGap(m_slots[place]); ++place) {
      passed += isGap(m_slots[place]) ? 0 : 1;
    }
    return place;
  }

  std::vector<Slot> m_slots;  // the last is no gap
  std::uint32_t m_gaps = 0;   // no list has more places than fit in here
  std::uint32_t m_first = 0;  // the place of the first slot that is no gap; 0 in an empty list
  std::unique_ptr<TakenPlaces> m_taken;  // null unless there are gaps and a position was asked for
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_GAP_LIST_H
