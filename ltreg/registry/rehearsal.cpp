#include "ltreg/registry/rehearsal.h"

#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/key_argument.h"

namespace ltreg {
namespace {

bool isUnchanged(const ValueDifference& value) {
  return value.before && value.after ? sameValue(value.before->value, value.after->value)
                                     : !value.before && !value.after;
}

}  // namespace

bool Rehearsal::knows(const std::string& path) const {
  return m_places.contains(foldedName(path));
}

void Rehearsal::noteKey(const std::string& path, bool wasThere, bool isThere) {
  const auto [found, isNew] = m_places.emplace(foldedName(path), Place{m_keys.size(), {}});
  if (isNew) {
    m_keys.push_back({path, wasThere, isThere, {}});
  }
  m_keys[found->second.key].isThere = isThere;
  // A key comes with its parents.
  for (std::string_view parent = parentPath(path); isThere && !parent.empty();
       parent = parentPath(parent)) {
    if (const auto known = m_places.find(foldedName(parent)); known != m_places.end()) {
      m_keys[known->second.key].isThere = true;
    }
  }
}

void Rehearsal::noteValue(const std::string& path, const std::string& name,
                          std::optional<Value> before, std::optional<Value> after) {
  Place& place = m_places.at(foldedName(path));
  std::vector<ValueDifference>& values = m_keys[place.key].values;
  const auto [found, isNew] = place.values.emplace(foldedName(name), values.size());
  const auto named = [&](std::optional<Value>& value) {
    return value ? std::optional<NamedValue>({name, std::move(*value)}) : std::nullopt;
  };
  if (isNew) {
    values.push_back({named(before), std::nullopt});
  }
  values[found->second].after = named(after);
}

const std::optional<NamedValue>* Rehearsal::value(const std::string& path,
                                                  const std::string& name) const {
  const auto key = m_places.find(foldedName(path));
  if (key == m_places.end()) {
    return nullptr;
  }
  const auto found = key->second.values.find(foldedName(name));
  return found != key->second.values.end() ? &m_keys[key->second.key].values[found->second].after
                                           : nullptr;
}

Difference Rehearsal::takeDifference() {
  for (KeyDifference& key : m_keys) {
    std::erase_if(key.values, isUnchanged);
  }
  std::erase_if(m_keys, [](const KeyDifference& key) {
    return key.values.empty() && key.wasThere == key.isThere;
  });
  return std::move(m_keys);
}

}  // namespace ltreg
