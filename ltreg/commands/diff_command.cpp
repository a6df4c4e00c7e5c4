// What two keys, stores or exported texts do not have in common.
#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <unordered_set>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/exchange/reg_text.h"
#include "ltreg/registry/absent.h"
#include "ltreg/registry/branch.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

constexpr std::string_view kOldVersion = "old:";

std::optional<KeyArgument> keyOf(const std::string& word) {
  try {
    return parseKey(word);
  } catch (const Failure&) {
    return std::nullopt;
  }
}

// One of the two, by what its word says.
struct Side {
  std::string word;
  std::optional<KeyArgument> key;  // none for a file
  std::string file;                // empty for a key of the registry as it is
};

Side sideOf(const Request& request, const std::string& word) {
  Side side{word, keyOf(word), {}};
  const bool old = word.starts_with(kOldVersion);
  if (old) {
    const std::string rest = word.substr(kOldVersion.size());
    side.key = keyOf(rest);
    side.file =
        (side.key ? Backend(request, side.key->root).storeOf(side.key->root) : rest) + "_old";
  } else if (!side.key) {
    side.file = word;
  }
  return side;
}

// Roots that neither side is about, so that files can be read as their stores. There are two at least.
std::vector<enumRegRoot> spareRoots(const Side& one, const Side& other) {
  std::vector<enumRegRoot> spare{REG_ROOT_USERS, REG_ROOT_CLASSES_ROOT, REG_ROOT_CURRENT_CONFIG,
                                 REG_ROOT_CURRENT_USER};
  std::erase_if(spare, [&](enumRegRoot root) {
    return (one.key && one.key->root == root) || (other.key && other.key->root == root);
  });
  return spare;
}

void demandFile(const std::string& file) {
  std::error_code error;
  if (!std::filesystem::exists(fileOf(file), error)) {
    throw Failure(ExitCode::kAbsent, "there is no file " + inQuotes(file) +
                                         ", and no root of that name; give a key or a file");
  }
}

// A key comes with its parents, which a text need not name.
void addParents(Branch& branch, std::unordered_set<std::string>& known, const std::string& below) {
  for (std::size_t end = 0; end != std::string::npos && !below.empty();
       end = below.find('\\', end + 1)) {
    if (known.insert(foldedName(below.substr(0, end))).second) {
      branch.push_back({below.substr(0, end), {}});
    }
  }
  known.insert(foldedName(below));
}

// The part of a text below a path.
Branch branchOfText(const Document& document, const std::string& top) {
  Branch branch;
  std::unordered_set<std::string> known;
  for (const KeyEntry& entry : document) {
    const std::string& path = entry.key.path;
    const bool below = top.empty() || (path.size() > top.size() && path[top.size()] == '\\' &&
                                       sameName(path.substr(0, top.size()), top));
    if (entry.deleted || !(below || sameName(path, top))) {
      continue;
    }
    const std::size_t start = top.empty() ? 0 : std::min(top.size() + 1, path.size());
    KeyContent content{path.substr(start), {}};
    for (const ValueEntry& value : entry.values) {
      if (value.value) {
        content.values.push_back({value.name, *value.value});
      }
    }
    addParents(branch, known, content.below);
    branch.push_back(std::move(content));
  }
  return branch;
}

Branch readSide(const Request& request, const Side& side, const std::string& top,
                enumRegRoot spare) {
  if (side.file.empty()) {
    KeyArgument key = *side.key;
    Session session(request, key, Access::kRead);
    if (!session.keyExists(key.path)) {
      throwAbsentKey(session, key);
    }
    return readBranch(session, key.path);
  }
  demandFile(side.file);
  if (const std::string text = readTextFile(side.file); looksLikeRegText(text)) {
    return branchOfText(readRegText(text, side.file), top);
  }
  Request ofFile = request;
  ofFile.store = side.file;
  KeyArgument key{spare, top};
  Session session(ofFile, key, Access::kRead);
  return session.keyExists(key.path) ? readBranch(session, key.path) : Branch();
}

using Values = std::unordered_map<std::string, const NamedValue*>;

Values byName(const KeyContent* content) {
  Values values;
  if (content != nullptr) {
    for (const NamedValue& value : content->values) {
      values.emplace(foldedName(value.name), &value);
    }
  }
  return values;
}

// Tells the differences, as lines or as a document that makes the one side out of the other.
class Comparison {
 public:
  Comparison(const Request& request, Output& output, KeyArgument top)
      : m_request(request), m_output(output), m_top(std::move(top)) {}

  void compare(const Branch& before, const Branch& after) {
    const auto later = byPath(after);
    const auto earlier = byPath(before);
    for (const KeyContent& content : before) {
      const auto found = later.find(foldedName(content.below));
      compareKeys(&content, found != later.end() ? found->second : nullptr);
    }
    for (const KeyContent& content : after) {
      if (!earlier.contains(foldedName(content.below))) {
        compareKeys(nullptr, &content);
      }
    }
  }

  ExitCode finish() {
    if (m_request.asPatch) {
      m_output.bytes(writeRegText(m_patch));
    }
    return m_different ? ExitCode::kAbsent : ExitCode::kDone;
  }

 private:
  static std::unordered_map<std::string, const KeyContent*> byPath(const Branch& branch) {
    std::unordered_map<std::string, const KeyContent*> keys;
    for (const KeyContent& content : branch) {
      keys.emplace(foldedName(content.below), &content);
    }
    return keys;
  }

  void compareKeys(const KeyContent* before, const KeyContent* after) {
    const KeyContent& either = before != nullptr ? *before : *after;
    KeyEntry patch{{m_top.root, joinPaths(m_top.path, either.below)}, {}, after == nullptr, 0};
    const std::string name = fullName(patch.key.root, patch.key.path);
    // A key that holds nothing of its own shows by what is below it.
    if ((before == nullptr || after == nullptr) && either.values.empty()) {
      tell(before != nullptr ? '-' : '+', name, nullptr);
    }
    const Values earlier = byName(before);
    const Values later = byName(after);
    for (const NamedValue& value : before != nullptr ? before->values : kNone) {
      const auto found = later.find(foldedName(value.name));
      if (found == later.end() || !sameValue(found->second->value, value.value)) {
        tell('-', name, &value);
      }
      if (found == later.end() && after != nullptr) {
        patch.values.push_back({value.name, std::nullopt, 0});
      }
    }
    for (const NamedValue& value : after != nullptr ? after->values : kNone) {
      const auto found = earlier.find(foldedName(value.name));
      if (found == earlier.end() || !sameValue(found->second->value, value.value)) {
        tell('+', name, &value);
        patch.values.push_back({value.name, value.value, 0});
      }
    }
    if (!patch.values.empty() || before == nullptr || after == nullptr) {
      m_patch.push_back(std::move(patch));
    }
  }

  void tell(char sign, const std::string& key, const NamedValue* value) {
    m_different = true;
    if (!m_request.asPatch) {
      m_output.row(
          std::string(1, sign) + '\t' + escapeControls(key) +
              (value != nullptr ? '\t' + escapeControls(value->name) + '\t' +
                                      typeWord(value->value) + '\t' + onOneLine(value->value)
                                : std::string()),
          4);
    }
  }

  static inline const std::vector<NamedValue> kNone;

  const Request& m_request;
  Output& m_output;
  KeyArgument m_top;
  Document m_patch;
  bool m_different = false;
};

// Below which path of a file to look: that of the key on the other side.
std::string topFor(const Side& side, const Side& other) {
  const std::optional<KeyArgument>& key = side.key ? side.key : other.key;
  return key ? (key->path.find('%') != std::string::npos ? expandPath(key->path) : key->path) : "";
}

}  // namespace

ExitCode showDifferences(const Request& request, Output& output) {
  const Side one = sideOf(request, *request.key);
  const Side other = sideOf(request, *request.target);
  const std::vector<enumRegRoot> spare = spareRoots(one, other);
  const std::string top = topFor(one, other);
  const Branch before = readSide(request, one, top, spare[0]);
  const Branch after = readSide(request, other, topFor(other, one), spare[1]);
  const enumRegRoot root = one.key     ? one.key->root
                           : other.key ? other.key->root
                                       : REG_ROOT_LOCAL_MACHINE;
  Comparison comparison(request, output, {root, top});
  comparison.compare(before, after);
  return comparison.finish();
}

}  // namespace ltreg
