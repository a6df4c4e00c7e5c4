#include "ltreg/exchange/document.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

constexpr char kDefaultName[] = "Default";

// Collects keys, each once, with the last of the values that bear one name.
class Collection {
 public:
  void add(const std::string& below, std::vector<ValueEntry> entries) {
    // A key comes with its parents, which a document need not name.
    for (std::size_t end = 0; end != std::string::npos && !below.empty();
         end = below.find('\\', end + 1)) {
      placeOf(below.substr(0, end));
    }
    std::vector<NamedValue>& values = m_branch[placeOf(below)].values;
    values.reserve(values.size() + entries.size());
    std::unordered_map<std::string, std::size_t> places;
    for (std::size_t i = 0; i < values.size(); ++i) {
      places.emplace(foldedName(values[i].name), i);
    }
    std::unordered_set<std::string> gone;
    for (ValueEntry& entry : entries) {
      const std::string folded = foldedName(entry.name);
      if (!entry.value) {
        gone.insert(folded);
        continue;
      }
      const auto [found, isNew] = places.emplace(folded, values.size());
      if (isNew) {
        values.emplace_back();
      }
      values[found->second] = {std::move(entry.name), std::move(*entry.value)};
      gone.erase(folded);
    }
    std::erase_if(values, [&](const NamedValue& value) {
      return !gone.empty() && gone.contains(foldedName(value.name));
    });
  }

  void remove(const std::string& below) {
    std::erase_if(m_branch, [&](const KeyContent& key) { return isAtOrBelow(key.below, below); });
    m_places.clear();
    for (std::size_t i = 0; i < m_branch.size(); ++i) {
      m_places.emplace(foldedName(m_branch[i].below), i);
    }
  }

  [[nodiscard]] Branch take() { return std::move(m_branch); }

 private:
  std::size_t placeOf(const std::string& below) {
    const auto [found, isNew] = m_places.emplace(foldedName(below), m_branch.size());
    if (isNew) {
      m_branch.push_back({below, {}});
    }
    return found->second;
  }

  Branch m_branch;
  std::unordered_map<std::string, std::size_t> m_places;
};

}  // namespace

std::string placeIn(const std::string& file, std::size_t line) {
  return escapeControls(file) + ':' + (line != 0 ? std::to_string(line) + ": " : " ");
}

void throwBadLine(const std::string& file, std::size_t line, const std::string& what) {
  throw Failure(ExitCode::kBadInput, placeIn(file, line) + what + "; nothing was changed",
                {file, line});
}

std::string nameInDocument(std::string name, bool onFiles) {
  return onFiles && sameName(name, kDefaultName) ? std::string() : std::move(name);
}

std::string nameInBackend(const std::string& name, bool onFiles) {
  return onFiles && name.empty() ? kDefaultName : name;
}

Branch readContent(Session& session, const std::string& path) {
  Branch branch = readBranch(session, path);
  for (KeyContent& content : branch) {
    for (NamedValue& value : content.values) {
      value.name = nameInDocument(std::move(value.name), session.onFiles());
    }
  }
  return branch;
}

Document documentOf(const KeyArgument& key, Branch branch) {
  Document document;
  for (KeyContent& content : branch) {
    KeyEntry entry{{key.root, joinPaths(key.path, content.below)}, {}, false, 0};
    for (NamedValue& value : content.values) {
      entry.values.push_back({std::move(value.name), std::move(value.value), 0});
    }
    document.push_back(std::move(entry));
  }
  return document;
}

Document partOf(Document document, const KeyArgument& key) {
  const bool severalRoots = std::any_of(
      document.begin(), document.end(),
      [&](const KeyEntry& entry) { return entry.key.root != document.front().key.root; });
  std::erase_if(document, [&](const KeyEntry& entry) {
    return (severalRoots && entry.key.root != key.root) || !isAtOrBelow(entry.key.path, key.path);
  });
  for (KeyEntry& entry : document) {
    entry.key.root = key.root;
  }
  return document;
}

Document patchOf(const KeyArgument& top, Difference difference) {
  Document patch;
  for (KeyDifference& key : difference) {
    KeyEntry entry{{top.root, joinPaths(top.path, key.below)}, {}, !key.isThere, 0};
    for (ValueDifference& value : key.values) {
      if (value.after) {
        entry.values.push_back({std::move(value.after->name), std::move(value.after->value), 0});
      } else if (key.isThere) {
        entry.values.push_back({std::move(value.before->name), std::nullopt, 0});
      }
    }
    // A key that goes takes all below it along.
    const bool isTold = entry.deleted && !patch.empty() && patch.back().deleted &&
                        isAtOrBelow(entry.key.path, patch.back().key.path);
    if (!isTold) {
      patch.push_back(std::move(entry));
    }
  }
  return patch;
}

Branch branchOf(Document document, const std::string& top) {
  Collection keys;
  for (KeyEntry& entry : document) {
    const std::string below = pathBelow(entry.key.path, top);
    if (entry.deleted) {
      keys.remove(below);
    } else {
      keys.add(below, std::move(entry.values));
    }
  }
  return keys.take();
}

}  // namespace ltreg
