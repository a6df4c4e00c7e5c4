// The data that the registry and its peers are measured on.
#ifndef LTLIB_BENCH_STORE_DATA_H
#define LTLIB_BENCH_STORE_DATA_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace LTLib::Bench {

/// The place of one value.
struct Place {
  std::string path;  // the names of the keys, joined by backslashes
  std::string name;
  std::string text;
};

/// The places of that many values, key by key, in one of the shapes
/// - deep: ten in each key, five levels deep,
/// - wide: all in one key,
/// - siblings: one in each of many keys under one parent,
/// - chain: one value, below as many keys as the count says.
[[nodiscard]] std::vector<Place> placesOf(std::string_view shape, std::size_t count);

/// That many new places in the keys of the given ones.
[[nodiscard]] std::vector<Place> besides(std::vector<Place> places);

/// At most that many of the places, from all over the data, so that no cache holds just the one
/// that is asked for.
[[nodiscard]] std::vector<Place> someOf(const std::vector<Place>& places, std::size_t count);

/// Throws unless it holds: what failed must not be measured.
void demand(bool holds);

/// Hands each run of values of one key to `take`, by its ends.
template <class Take>
void eachKey(const std::vector<Place>& places, Take take) {
  for (std::size_t first = 0; first < places.size();) {
    std::size_t last = first;
    while (last < places.size() && places[last].path == places[first].path) {
      ++last;
    }
    take(first, last);
    first = last;
  }
}

/// Hands each name of a path to `take`, from the root on.
template <class Take>
void eachName(std::string_view path, Take take) {
  for (std::size_t end = 0; end != std::string_view::npos; path.remove_prefix(end + 1)) {
    end = path.find('\\');
    take(path.substr(0, end));
    if (end == std::string_view::npos) {
      return;
    }
  }
}

}  // namespace LTLib::Bench

#endif  // LTLIB_BENCH_STORE_DATA_H
