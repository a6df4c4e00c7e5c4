// A registry's content in the forms of other tools. An import is read and judged as a whole before
// anything is changed, and saved once.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/read_key.h"
#include "ltreg/exchange/reg_text.h"
#include "ltreg/exchange/utf16.h"
#include "ltreg/registry/branch.h"
#include "ltreg/registry/changes.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

Document documentOf(const ReadKey& key, Branch branch) {
  Document document;
  for (KeyContent& content : branch) {
    KeyEntry entry{{key.root(), joinPaths(key.path(), content.below)}, {}, false, 0};
    for (NamedValue& value : content.values) {
      entry.values.push_back({std::move(value.name), std::move(value.value), 0});
    }
    document.push_back(std::move(entry));
  }
  return document;
}

// The one root of a document, since two stores cannot be changed in one step.
enumRegRoot rootOf(const Document& document, const std::string& file) {
  if (document.empty()) {
    throw Failure(ExitCode::kBadInput, "the file " + inQuotes(file) + " names no key");
  }
  const enumRegRoot root = document.front().key.root;
  for (const KeyEntry& entry : document) {
    if (entry.key.root != root) {
      throwBadLine(file, entry.line, "a key of a second root; give each root a file of its own");
    }
  }
  return root;
}

// Carries a document out in one root, and finds out ahead of that what cannot be held there.
class Import {
 public:
  Import(const Request& request, Output& output, Session& session)
      : m_request(request), m_output(output), m_session(session) {}

  // Complains of each value that the backend cannot hold; how many there are.
  std::size_t judge(const Document& document) const {
    std::size_t lost = 0;
    for (const KeyEntry& entry : document) {
      for (const ValueEntry& value : entry.values) {
        if (const std::string why = whyNotHeld(entry, value); !why.empty()) {
          complain(escapeControls(*m_request.file) + ':' + std::to_string(value.line) + ": " + why);
          ++lost;
        }
      }
    }
    return lost;
  }

  void apply(const Document& document) {
    for (const KeyEntry& entry : document) {
      if (entry.deleted) {
        removeKey(entry.key);
        continue;
      }
      if (!m_request.dryRun) {
        m_session.makeKey(entry.key.path);
      }
      for (const ValueEntry& value : entry.values) {
        if (whyNotHeld(entry, value).empty()) {
          applyValue(entry.key, value);
        }
      }
    }
  }

 private:
  [[nodiscard]] std::string whyNotHeld(const KeyEntry& entry, const ValueEntry& value) const {
    return value.value && m_session.onFiles()
               ? whyNoForm(entry.key.path, {nameOf(value), *value.value})
               : std::string();
  }

  // A key's default value has a name in a store file.
  [[nodiscard]] std::string nameOf(const ValueEntry& value) const {
    return value.name.empty() && m_session.onFiles() ? "Default" : value.name;
  }

  void show(const char* what, const KeyArgument& key, const std::string& rest) const {
    if (m_request.dryRun) {
      m_output.line(what + escapeControls(fullName(key.root, key.path)) + rest);
    }
  }

  void removeKey(const KeyArgument& key) {
    if (key.path.empty() || !m_session.keyExists(key.path)) {
      return;
    }
    show("delete\t", key, "");
    if (!m_request.dryRun) {
      deleteBranch(m_session, key);
    }
  }

  void applyValue(const KeyArgument& key, const ValueEntry& entry) {
    const std::string name = nameOf(entry);
    const std::optional<Value> present = m_session.value(key.path, name);
    if (entry.value ? present && sameValue(*present, *entry.value) : !present) {
      return;
    }
    show(entry.value ? "set\t" : "delete\t", key,
         '\t' + escapeControls(name) +
             (entry.value ? '\t' + typeWord(*entry.value) + '\t' + onOneLine(*entry.value) : ""));
    if (m_request.dryRun) {
      return;
    }
    // A store file never changes the type of a value that is there.
    if (present && (!entry.value || present->type != entry.value->type)) {
      eraseValue(m_session, key.path, name);
    }
    if (entry.value) {
      putCopy(m_session, key.path, {name, *entry.value});
    }
  }

  const Request& m_request;
  Output& m_output;
  Session& m_session;
};

}  // namespace

ExitCode exportKey(const Request& request, Output& output) {
  ReadKey key(request);
  const std::string text = writeRegText(documentOf(key, readBranch(key.session(), key.path())));
  const bool wide = request.encoding.value_or("utf16") == "utf16";
  std::optional<std::string> bytes = wide ? utf16Of(text) : text;
  if (!bytes) {
    throw Failure(ExitCode::kBadInput,
                  "a key or a name is no UTF-8; '--encoding utf8' writes its"
                  " bytes as they are");
  }
  const std::string marked = (wide ? "\xFF\xFE" : "\xEF\xBB\xBF") + *bytes;
  if (request.outputFile) {
    writeTextFile(*request.outputFile, marked);
  } else {
    output.bytes(marked);
  }
  return ExitCode::kDone;
}

ExitCode importFile(const Request& request, Output& output) {
  const Document document = readRegText(readTextFile(*request.file), *request.file);
  KeyArgument root{rootOf(document, *request.file), ""};
  Session session(request, root, Access::kWrite);
  Import import(request, output, session);
  const std::size_t lost = import.judge(document);
  if (lost != 0 && !request.lossy) {
    throw Failure(ExitCode::kBadInput, "a store file cannot hold " + std::to_string(lost) +
                                           (lost == 1 ? " value" : " values") +
                                           " of these; nothing was changed; --lossy leaves them"
                                           " out");
  }
  import.apply(document);
  session.save();
  return ExitCode::kDone;
}

}  // namespace ltreg
