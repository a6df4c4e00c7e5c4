// Changes that are not to be made, for --dry-run.
#ifndef LTREG_REGISTRY_REHEARSAL_H
#define LTREG_REGISTRY_REHEARSAL_H

#include <optional>
#include <string>
#include <unordered_map>

#include "ltreg/registry/difference.h"

namespace ltreg {

/// Keeps what was there ahead of the first change of each key and value, and what is behind the last.
class Rehearsal {
 public:
  [[nodiscard]] bool knows(const std::string& path) const;

  /// `wasThere` counts for a key that is not known yet.
  void noteKey(const std::string& path, bool wasThere, bool isThere);

  /// `before` counts for a value that is not known yet; none in `after` deletes it. Requires: the key
  /// is known.
  void noteValue(const std::string& path, const std::string& name, std::optional<Value> before,
                 std::optional<Value> after);

  /// What a value is now that is known; null for any other.
  [[nodiscard]] const std::optional<NamedValue>* value(const std::string& path,
                                                       const std::string& name) const;

  /// What became different, in the order of the first changes; once, at the end.
  [[nodiscard]] Difference takeDifference();

 private:
  struct Place {
    std::size_t key = 0;
    std::unordered_map<std::string, std::size_t> values;
  };

  Difference m_keys;  // the unchanged ones as well
  std::unordered_map<std::string, Place> m_places;
};

}  // namespace ltreg

#endif  // LTREG_REGISTRY_REHEARSAL_H
