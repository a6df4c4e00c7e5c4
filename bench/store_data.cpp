#include "bench/store_data.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <stdexcept>

namespace LTLib::Bench {
namespace {

// Five levels, of which the last four have up to as many names as the count of keys calls for.
std::string deepPath(std::size_t key, std::size_t keys) {
  std::size_t width = 1;
  while (width * width * width * width < keys) {
    ++width;
  }
  std::string path;
  for (int level = 0; level < 4; ++level) {
    path = "\\Section " + std::to_string(key % width) + path;
    key /= width;
  }
  return "Software" + path;
}

std::string pathOf(std::string_view shape, std::size_t value, std::size_t count) {
  if (shape == "deep") {
    return deepPath(value / 10, (count + 9) / 10);
  }
  if (shape == "siblings") {
    return "Software\\Example\\Section " + std::to_string(value);
  }
  demand(shape == "wide");
  return "Software\\Example";
}

std::string chain(std::size_t depth) {
  std::string path = "Software";
  for (std::size_t level = 0; level < depth; ++level) {
    path += "\\a";
  }
  return path;
}

}  // namespace

std::vector<Place> placesOf(std::string_view shape, std::size_t count) {
  if (shape == "chain") {
    return {{chain(count), "Value", "text"}};
  }
  std::vector<Place> places;
  places.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    places.push_back({pathOf(shape, i, count), "Value" + number, "text of value " + number});
  }
  return places;
}

std::vector<Place> besides(std::vector<Place> places) {
  for (Place& place : places) {
    place.name += "New";
  }
  return places;
}

std::vector<Place> someOf(const std::vector<Place>& places, std::size_t count) {
  std::vector<std::size_t> order(places.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::shuffle(order.begin(), order.end(), std::mt19937(1));
  std::vector<Place> some;
  for (std::size_t i = 0; i < std::min(order.size(), count); ++i) {
    some.push_back(places[order[i]]);
  }
  return some;
}

void demand(bool holds) {
  if (!holds) {
    throw std::runtime_error("a measured operation failed");
  }
}

}  // namespace LTLib::Bench
