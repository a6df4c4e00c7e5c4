#include "ltreg/registry/difference.h"

#include <unordered_map>
#include <utility>

#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

using Places = std::unordered_map<std::string, std::size_t>;

// Finds the values of a key by their names.
Places placesOf(const std::vector<NamedValue>& values) {
  Places places;
  for (std::size_t i = 0; i < values.size(); ++i) {
    places.emplace(foldedName(values[i].name), i);
  }
  return places;
}

bool areSame(const std::vector<NamedValue>& one, const std::vector<NamedValue>& other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](const NamedValue& a, const NamedValue& b) {
                      return sameName(a.name, b.name) && sameValue(a.value, b.value);
                    });
}

std::vector<ValueDifference> compareValues(std::vector<NamedValue> before,
                                           std::vector<NamedValue> after) {
  std::vector<ValueDifference> differences;
  // Most keys are as they were, in the same order.
  if (areSame(before, after)) {
    return differences;
  }
  const Places places = placesOf(after);
  std::vector<bool> isKnown(after.size());
  for (NamedValue& value : before) {
    const auto found = places.find(foldedName(value.name));
    if (found == places.end()) {
      differences.push_back({std::move(value), std::nullopt});
      continue;
    }
    isKnown[found->second] = true;
    if (NamedValue& now = after[found->second]; !sameValue(value.value, now.value)) {
      differences.push_back({std::move(value), std::move(now)});
    }
  }
  for (std::size_t i = 0; i < after.size(); ++i) {
    if (!isKnown[i]) {
      differences.push_back({std::nullopt, std::move(after[i])});
    }
  }
  return differences;
}

}  // namespace

Difference differenceOf(Branch before, Branch after) {
  Places places;
  for (std::size_t i = 0; i < after.size(); ++i) {
    places.emplace(foldedName(after[i].below), i);
  }
  Difference difference;
  std::vector<bool> isKnown(after.size());
  for (KeyContent& content : before) {
    const auto found = places.find(foldedName(content.below));
    const bool isThere = found != places.end();
    std::vector<NamedValue> now;
    if (isThere) {
      isKnown[found->second] = true;
      now = std::move(after[found->second].values);
    }
    std::vector<ValueDifference> values = compareValues(std::move(content.values), std::move(now));
    if (!isThere || !values.empty()) {
      difference.push_back({std::move(content.below), true, isThere, std::move(values)});
    }
  }
  for (std::size_t i = 0; i < after.size(); ++i) {
    if (!isKnown[i]) {
      difference.push_back(
          {std::move(after[i].below), false, true, compareValues({}, std::move(after[i].values))});
    }
  }
  return difference;
}

}  // namespace ltreg
