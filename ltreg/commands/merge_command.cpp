// Brings the changes of two sides together, as a version control system asks for it.
#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/changes_shown.h"
#include "ltreg/commands/commands.h"
#include "ltreg/exchange/form.h"
#include "ltreg/exchange/json_text.h"
#include "ltreg/exchange/reg_text.h"
#include "ltreg/exchange/store_text.h"
#include "ltreg/exchange/utf16.h"
#include "ltreg/registry/branch.h"
#include "ltreg/registry/changes.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

// What an export says, without the root, which is one for all of it.
struct Export {
  enumRegRoot root = REG_ROOT_LOCAL_MACHINE;  // that of a store does not matter
  Branch content;
};

Export exportIn(Form form, std::string text, const std::string& file) {
  Document document = readForm(form, std::move(text), file);
  Export read;
  for (const KeyEntry& entry : document) {
    read.root = document.front().key.root != REG_ROOT_NONE ? document.front().key.root : read.root;
    const bool deletes =
        entry.deleted || std::any_of(entry.values.begin(), entry.values.end(),
                                     [](const ValueEntry& value) { return !value.value; });
    if (deletes || entry.key.root != document.front().key.root) {
      throwBadLine(file, entry.line,
                   deletes ? "a deletion, which belongs to a patch; import it"
                           : "a key of a second root, which cannot be merged");
    }
  }
  read.content = branchOf(std::move(document), "");
  return read;
}

Branch contentOf(const std::string& file) {
  std::string text = readTextFile(file);
  const Form form = guessForm(text, file);
  return form == Form::kStore ? readKeyIn(form, std::move(text), file, {})
                              : exportIn(form, std::move(text), file).content;
}

// Finds values by key and name.
class Index {
 public:
  explicit Index(const Branch& branch) {
    for (const KeyContent& key : branch) {
      auto& values = m_keys[foldedName(key.below)];
      for (const NamedValue& value : key.values) {
        values.emplace(foldedName(value.name), &value);
      }
    }
  }

  [[nodiscard]] const NamedValue* find(const std::string& below, const std::string& name) const {
    const auto key = m_keys.find(foldedName(below));
    if (key == m_keys.end()) {
      return nullptr;
    }
    const auto value = key->second.find(foldedName(name));
    return value != key->second.end() ? value->second : nullptr;
  }

 private:
  std::unordered_map<std::string, std::unordered_map<std::string, const NamedValue*>> m_keys;
};

bool areSame(const NamedValue* one, const std::optional<NamedValue>& other) {
  return one != nullptr && other ? sameValue(one->value, other->value) : !one && !other;
}

// Finds those changes of their side that our side can take, and tells those that it has made
// otherwise.
class Merge {
 public:
  Merge(Output& output, enumRegRoot root, const Branch& ours)
      : m_output(output), m_root(root), m_ours(ours) {}

  Difference take(Difference theirs) {
    for (KeyDifference& key : theirs) {
      std::erase_if(key.values,
                    [&](const ValueDifference& change) { return !takes(key.below, change); });
    }
    return theirs;
  }

  [[nodiscard]] ExitCode outcome() const {
    return m_hasConflicts ? ExitCode::kConflict : ExitCode::kDone;
  }

 private:
  bool takes(const std::string& below, const ValueDifference& change) {
    const std::string& name = (change.before ? change.before : change.after)->name;
    const NamedValue* ours = m_ours.find(below, name);
    const bool isDone = areSame(ours, change.after);
    const bool isConflict = !isDone && !areSame(ours, change.before);
    if (isConflict) {
      tell(below, name, change, ours);
    }
    return !isDone && !isConflict;
  }

  void tell(const std::string& below, const std::string& name, const ValueDifference& change,
            const NamedValue* ours) {
    m_hasConflicts = true;
    m_output.line("conflict\t" + escapeControls(fullName(m_root, below)) + '\t' +
                  escapeControls(name.empty() ? nameInBackend("", true) : name));
    tellSide("base", change.before ? &*change.before : nullptr);
    tellSide("ours", ours);
    tellSide("theirs", change.after ? &*change.after : nullptr);
  }

  void tellSide(const char* side, const NamedValue* value) {
    m_output.line(
        std::string("\t") + side + '\t' +
        (value != nullptr ? typeWord(value->value) + '\t' + onOneLine(value->value) : "absent"));
  }

  Output& m_output;
  enumRegRoot m_root;
  Index m_ours;
  bool m_hasConflicts = false;
};

// What our side is with the changes. A key that their side has deleted goes once nothing is left in
// it.
Branch applied(Branch ours, Difference changes) {
  std::unordered_set<std::string> doomed;
  for (KeyDifference& key : changes) {
    if (!key.isThere) {
      doomed.insert(foldedName(key.below));
      key.isThere = true;
    }
  }
  Document document = documentOf({}, std::move(ours));
  for (KeyEntry& entry : patchOf({}, std::move(changes))) {
    document.push_back(std::move(entry));
  }
  Branch merged = branchOf(std::move(document), "");
  std::unordered_set<std::string> parents;
  for (auto key = merged.rbegin(); key != merged.rend(); ++key) {
    const std::string folded = foldedName(key->below);
    if (key->values.empty() && !parents.contains(folded) && doomed.contains(folded)) {
      continue;
    }
    doomed.erase(folded);
    parents.insert(std::string(parentPath(folded)));
  }
  std::erase_if(merged,
                [&](const KeyContent& key) { return doomed.contains(foldedName(key.below)); });
  return merged;
}

void carryOut(Session& session, const Difference& difference) {
  for (const KeyDifference& key : difference) {
    for (const ValueDifference& value : key.values) {
      const NamedValue& either = value.before ? *value.before : *value.after;
      const std::string name = nameInBackend(either.name, true);
      if (value.before && (!value.after || value.before->value.type != value.after->value.type)) {
        eraseValue(session, key.below, name);
      }
      if (value.after) {
        putCopy(session, key.below, {name, value.after->value});
      }
    }
  }
}

// The side that the changes come into.
class OurSide {
 public:
  explicit OurSide(const std::string& file)
      : m_file(file), m_text(readTextFile(file)), m_form(guessForm(m_text, file)) {
    if (m_form == Form::kStore) {
      m_store.emplace(m_text, file);
      m_export.content = m_store->content("");
    } else {
      m_export = exportIn(m_form, m_text, file);
    }
  }

  [[nodiscard]] enumRegRoot root() const { return m_export.root; }
  [[nodiscard]] const Branch& content() const { return m_export.content; }

  // Takes changes up, and gives what becomes different.
  Difference take(Difference changes) {
    if (m_store) {
      // There are no keys without values.
      std::erase_if(changes, [](const KeyDifference& key) { return key.values.empty(); });
      return changes;
    }
    Branch before = m_export.content;
    m_export.content = applied(before, std::move(changes));
    return differenceOf(std::move(before), m_export.content);
  }

  // The text with what became different. Throws Failure where it would lose lines.
  [[nodiscard]] std::string textWith(const Difference& difference, bool force) {
    if (difference.empty()) {
      return m_text;
    }
    if (!m_store) {
      return exportedText();
    }
    if (!force) {
      demandNothingLost();
    }
    carryOut(m_store->session(), difference);
    return m_store->text();
  }

 private:
  // In the form and the encoding that the text had.
  [[nodiscard]] std::string exportedText() const {
    const Document document = documentOf({m_export.root, ""}, m_export.content);
    if (m_form == Form::kJson) {
      return writeJsonText(document);
    }
    const std::string written = writeRegText(document);
    const bool wide = m_text.starts_with("\xFF\xFE") || m_text.starts_with("\xFE\xFF");
    const std::optional<std::string> units = wide ? utf16Of(written) : std::nullopt;
    return units ? "\xFF\xFE" + *units : "\xEF\xBB\xBF" + written;
  }

  void demandNothingLost() const {
    if (const std::size_t dropped = m_store->droppedLines(); dropped != 0) {
      throw Failure(ExitCode::kBadInput,
                    inQuotes(m_file) + " has " + std::to_string(dropped) +
                        (dropped == 1 ? " line" : " lines") +
                        ", such as comments, that the merged store would lose; nothing was changed;"
                        " --force lets them go");
    }
  }

  std::string m_file;
  std::string m_text;
  Form m_form;
  Export m_export;
  std::optional<StoreText> m_store;
};

}  // namespace

ExitCode mergeFiles(const Request& request, Output& output) {
  Difference theirs = differenceOf(contentOf(*request.file), contentOf(*request.target));
  OurSide ours(*request.key);
  Merge merge(output, ours.root(), ours.content());
  const Difference difference = ours.take(merge.take(std::move(theirs)));
  if (request.dryRun) {
    showDifference(request, output, {ours.root(), ""}, difference, nameInBackend("", true));
  } else if (!difference.empty() || request.outputFile) {
    writeTextFile(request.outputFile.value_or(*request.key),
                  ours.textWith(difference, request.force));
  }
  return merge.outcome();
}

}  // namespace ltreg
