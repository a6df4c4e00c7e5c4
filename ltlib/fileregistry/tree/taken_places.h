// From a position among the places of a row that are taken to the place, where others are free.
//
// A tree of sums laid out as an array (a binary indexed tree): the sum at number n, counted from 1,
// covers so many places up to its own as the lowest bit of n tells: at 6 the places 5 and 6, at 8 all
// from 1 to 8. Each operation takes as many steps as the length of the row has bits. It is a cache of
// GapList, which tells it of each place that comes or is freed.
#ifndef LTLIB_FILEREGISTRY_TREE_TAKEN_PLACES_H
#define LTLIB_FILEREGISTRY_TREE_TAKEN_PLACES_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <vector>

namespace LTLib::detail {

class TakenPlaces {
 public:
  [[nodiscard]] std::size_t size() const { return m_sums.size(); }

  /// Makes room for so many places more, whose `append` then cannot fail.
  void makeRoom(std::size_t more) {
    if (const std::size_t wanted = size() + more; wanted > m_sums.capacity()) {
      m_sums.reserve(std::max(wanted, 2 * size()));
    }
  }

  /// Adds a place behind the others.
  void append(bool taken) {
    const std::size_t number = size() + 1;
    std::size_t sum = taken ? 1 : 0;
    for (std::size_t step = 1; (number & step) == 0; step *= 2) {
      sum += m_sums[number - step - 1];
    }
    m_sums.push_back(sum);
  }

  /// Frees a place that is taken.
  void free(std::size_t place) noexcept {
    for (std::size_t number = place + 1; number <= size(); number += number & (0 - number)) {
      --m_sums[number - 1];
    }
  }

  /// Drops the places from `size` on; no sum ahead of them covers any of these.
  void shrink(std::size_t size) noexcept { m_sums.resize(std::min(size, m_sums.size())); }

  /// The place at a position. Requires: so many places are taken.
  [[nodiscard]] std::size_t at(std::size_t position) const noexcept {
    std::size_t place = 0;
    for (std::size_t step = std::bit_floor(size()); step != 0; step /= 2) {
      if (place + step <= size() && m_sums[place + step - 1] <= position) {
        place += step;
        position -= m_sums[place - 1];
      }
    }
    return place;
  }

 private:
  std::vector<std::size_t> m_sums;
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_TAKEN_PLACES_H
