// A registry's content in other forms. An import is read and judged as a whole before anything is
// changed, and saved once.
#include <unordered_set>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/changes_shown.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/read_key.h"
#include "ltreg/exchange/form.h"
#include "ltreg/exchange/json_text.h"
#include "ltreg/exchange/reg_text.h"
#include "ltreg/exchange/store_text.h"
#include "ltreg/exchange/utf16.h"
#include "ltreg/registry/branch.h"
#include "ltreg/registry/changes.h"
#include "ltreg/registry/spare_root.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

// Carries a document out in one root, and finds out ahead of that what cannot be held there.
class Import {
 public:
  Import(const Request& request, Session& session, std::string source)
      : m_lossy(request.lossy), m_session(session), m_source(std::move(source)) {}

  // Complains of all that the backend cannot hold. Throws Failure if there is any, unless it may be
  // left out.
  void judge(const Document& document) {
    std::unordered_set<std::string> filled;
    for (const KeyEntry& entry : document) {
      for (const ValueEntry& value : entry.values) {
        if (const std::string why = whyNotHeld(entry, value); !why.empty()) {
          noteLoss(value.line, why);
        } else {
          noteFilled(entry.key.path, filled);
        }
      }
    }
    if (m_session.onFiles()) {
      judgeEmptyKeys(document, filled);
    }
    if (m_lost != 0 && !m_lossy) {
      throw Failure(ExitCode::kBadInput,
                    "the registry cannot hold " + std::to_string(m_lost) +
                        (m_lost == 1 ? " entry" : " entries") +
                        " of these; nothing was changed; --lossy leaves them out");
    }
  }

  void apply(const Document& document) {
    for (const KeyEntry& entry : document) {
      if (entry.deleted) {
        removeKey(entry.key);
        continue;
      }
      m_session.makeKey(entry.key.path);
      for (const ValueEntry& value : entry.values) {
        if (m_lost == 0 || whyNotHeld(entry, value).empty()) {
          applyValue(entry.key, value);
        }
      }
    }
  }

 private:
  void noteLoss(std::size_t line, const std::string& why) {
    complain(placeIn(m_source, line) + why);
    ++m_lost;
  }

  static void noteFilled(std::string_view path, std::unordered_set<std::string>& filled) {
    while (!path.empty() && filled.insert(foldedName(path)).second) {
      path = parentPath(path);
    }
  }

  // A store file holds a key for the sake of its values.
  void judgeEmptyKeys(const Document& document, std::unordered_set<std::string>& filled) {
    for (const KeyEntry& entry : document) {
      const std::string& path = entry.key.path;
      if (!entry.deleted && !path.empty() && filled.insert(foldedName(path)).second &&
          !m_session.keyExists(path)) {
        noteLoss(entry.line, "the key " + inQuotes(path) +
                                 " would hold no value, and a store file holds no such key");
      }
    }
  }

  [[nodiscard]] std::string whyNotHeld(const KeyEntry& entry, const ValueEntry& value) const {
    if (!value.value) {
      return {};
    }
    for (const std::string& item :
         value.value->type == REG_MULTI_SZ ? itemsOf(*value.value) : std::vector<std::string>()) {
      if (item.empty()) {
        return "the list " + inQuotes(value.name) + " has an empty item among the others";
      }
    }
    if (!m_session.onFiles()) {
      return {};
    }
    if (!value.name.empty() && nameInDocument(value.name, true).empty()) {
      return "a value named " + inQuotes(value.name) +
             " would be the key's default value in a store file, which is told as one without a"
             " name";
    }
    return whyNoForm(entry.key.path, {nameInBackend(value.name, true), *value.value});
  }

  void removeKey(const KeyArgument& key) {
    if (!key.path.empty() && m_session.keyExists(key.path)) {
      deleteBranch(m_session, key);
    }
  }

  void applyValue(const KeyArgument& key, const ValueEntry& entry) {
    const std::string name = nameInBackend(entry.name, m_session.onFiles());
    const std::optional<Value> present = m_session.value(key.path, name);
    // A store file never changes the type of a value that is there.
    if (present && (!entry.value || present->type != entry.value->type)) {
      eraseValue(m_session, key.path, name);
    }
    if (entry.value) {
      putCopy(m_session, key.path, {name, *entry.value});
    }
  }

  bool m_lossy;
  Session& m_session;
  std::string m_source;  // the file that is named in messages
  std::size_t m_lost = 0;
};

// The one root of a document, since two stores cannot be changed in one step.
enumRegRoot rootOf(const Document& document, const std::string& file) {
  if (document.empty()) {
    throw Failure(ExitCode::kBadInput, "the file " + inQuotes(file) + " names no key");
  }
  const enumRegRoot root = document.front().key.root;
  for (const KeyEntry& entry : document) {
    if (entry.key.root != root) {
      throwBadLine(file, entry.line,
                   "a key of a second root; import them one by one, each with its root as KEY");
    }
  }
  return root;
}

// A default value that two names stand for can be told in one way.
std::string regText(const Request& request, const Document& document) {
  for (const KeyEntry& entry : document) {
    for (const ValueEntry& value : entry.values) {
      if ((isText(value.value->type) || value.value->type == REG_MULTI_SZ) &&
          !isUtf8(value.value->data)) {
        complain("warning: the value " + inQuotes(value.name) + " of " +
                 inQuotes(fullName(entry.key.root, entry.key.path)) +
                 " is no UTF-8, and no such text can hold it; its bytes were written as they are");
      }
    }
  }
  const std::string text = writeRegText(document);
  if (request.encoding.value_or("utf16") == "utf8") {
    return "\xEF\xBB\xBF" + text;
  }
  const std::optional<std::string> wide = utf16Of(text);
  if (!wide) {
    throw Failure(ExitCode::kBadInput,
                  "a key or a name is no UTF-8; '--encoding utf8' writes its bytes as they are");
  }
  return "\xFF\xFE" + *wide;
}

std::string storeText(const Request& request, ReadKey& key) {
  if (key.session().onFiles()) {
    return savedText(key.session(), key.path());
  }
  keepRoot(key.root());
  StoreText store("", "");
  const Document document =
      documentOf({key.root(), key.path()}, readContent(key.session(), key.path()));
  Import import(request, store.session(), key.name());
  import.judge(document);
  import.apply(document);
  return store.text();
}

std::string exportedText(const Request& request, Form form, ReadKey& key) {
  if (form == Form::kStore) {
    return storeText(request, key);
  }
  const Document document =
      documentOf({key.root(), key.path()}, readContent(key.session(), key.path()));
  return form == Form::kJson ? writeJsonText(document) : regText(request, document);
}

Form formToWrite(const Request& request) {
  const Form form =
      request.format ? *formOfWord(*request.format) : formOfFile(request.outputFile.value_or(""));
  if (request.encoding && form != Form::kReg) {
    throw Failure(ExitCode::kUsage, "--encoding goes with --format reg alone");
  }
  return form;
}

}  // namespace

ExitCode exportKey(const Request& request, Output& output) {
  const Form form = formToWrite(request);
  ReadKey key(request);
  const std::string text = exportedText(request, form, key);
  if (request.outputFile) {
    writeTextFile(*request.outputFile, text);
  } else {
    output.bytes(text);
  }
  return ExitCode::kDone;
}

ExitCode importFile(const Request& request, Output& output) {
  const std::string& file = *request.file;
  KeyArgument key = request.key ? parseKey(*request.key) : KeyArgument{};
  keepRoot(key.root);
  std::string text = readTextFile(file);
  const Form form = request.format ? *formOfWord(*request.format) : guessForm(text, file);
  if (form == Form::kStore && !request.key) {
    throw Failure(ExitCode::kUsage,
                  "the text of a store file names no root; give one as KEY, as in 'ltreg import " +
                      escapeControls(file) + " HKLM'");
  }
  Document document = readForm(form, std::move(text), file);
  if (!request.key) {
    key.root = rootOf(document, file);
  }
  Session session(request, key, Access::kWrite);
  if (request.key) {
    document = partOf(std::move(document), key);
  }
  Import import(request, session, file);
  import.judge(document);
  import.apply(document);
  return conclude(request, output, session, key.root);
}

}  // namespace ltreg
